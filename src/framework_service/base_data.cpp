#include "framework_service/base_data.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "common_service/tarn_def.h"
#include "internal/wrap.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

int32_t CSystemResource::GetResourceByType(RESOURCE_TYPE eType) const {
    switch (eType) {
        case RESOURCE_TYPE_CPU:
            return m_iCpu;
        case RESOURCE_TYPE_MEM:
            return m_iMem;
        case RESOURCE_TYPE_IO:
            return m_iIO;
        case RESOURCE_TYPE_NET:
            return m_iNet;
        case RESOURCE_TYPE_DISK:
            return m_iDisk;
    }
    return LogFailure("get resource by type", ORVA_FAIL, "type[%d] not found.",
                      static_cast<int>(eType));
}

void CSystemResource::GetAvgSystemResource(std::vector<CSystemResource>& resourceVector,
                                           CSystemResource& sysResource) {
    const auto iCount = static_cast<int32_t>(resourceVector.size());
    if (iCount == 0) {
        return;
    }
    CSystemResource sum;
    for (const CSystemResource& resource : resourceVector) {
        sum.m_iCpu = WrapAdd(sum.m_iCpu, resource.m_iCpu);
        sum.m_iMem = WrapAdd(sum.m_iMem, resource.m_iMem);
        sum.m_iIO = WrapAdd(sum.m_iIO, resource.m_iIO);
        sum.m_iNet = WrapAdd(sum.m_iNet, resource.m_iNet);
        sum.m_iDisk = WrapAdd(sum.m_iDisk, resource.m_iDisk);
    }
    sysResource.m_iCpu = sum.m_iCpu / iCount;
    sysResource.m_iMem = sum.m_iMem / iCount;
    sysResource.m_iIO = sum.m_iIO / iCount;
    sysResource.m_iNet = sum.m_iNet / iCount;
    sysResource.m_iDisk = sum.m_iDisk / iCount;
}

namespace {

/// Compares head1 + tail1 with head2 + tail2, neither of which is built. head2 is the start of
/// head1, so what is left is the rest of head1 before tail1 against tail2.
int CompareRest(std::string_view head1, std::string_view tail1, std::string_view head2,
                std::string_view tail2) {
    const std::string_view rest1 = head1.substr(head2.size());
    const std::size_t uiCommon = std::min(rest1.size(), tail2.size());
    if (const int iMiddle = rest1.substr(0, uiCommon).compare(tail2.substr(0, uiCommon));
        iMiddle != 0) {
        return iMiddle;
    }
    return uiCommon < rest1.size() ? 1 : tail1.compare(tail2.substr(uiCommon));
}

}  // namespace

bool CContainerAddr::operator==(const CContainerAddr& other) const {
    return m_strNodeId == other.m_strNodeId && m_strContainerType == other.m_strContainerType;
}

bool CContainerAddr::IsConcatenationLess(const CContainerAddr& other) const {
    const std::size_t uiSize = m_strNodeId.size();
    const std::size_t uiOtherSize = other.m_strNodeId.size();
    if (const int iHeads = std::memcmp(m_strNodeId.data(), other.m_strNodeId.data(),
                                       std::min(uiSize, uiOtherSize));
        iHeads != 0) {
        return iHeads < 0;
    }
    if (uiSize > uiOtherSize) {
        return CompareRest(m_strNodeId, m_strContainerType, other.m_strNodeId,
                           other.m_strContainerType) < 0;
    }
    return CompareRest(other.m_strNodeId, other.m_strContainerType, m_strNodeId,
                       m_strContainerType) > 0;
}
