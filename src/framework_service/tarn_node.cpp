#include "framework_service/tarn_node.h"

#include "common_service/oper_common.h"
#include "internal/sample_buffer.h"

using namespace framework_internal;

namespace {

constexpr time_t NUMERIC_REPORT_TIMEOUT = 90;

}

CNode::CNode() : m_tLastReportTime(time(nullptr)) {}

void CNode::SetNodeIp(const std::string& strData) {
    m_strNodeIp = strData;
    m_uiNodeIp = COperCommon::IPToUint(m_strNodeIp);
}

const CSystemResource& CNode::GetCurResource() const {
    return m_status.GetCurSysResource();
}

void CNode::SetCurResource(const CSystemResource& systemResource) {
    // The slot never moves: a node's figures are the latest report with the second and the third.
    m_status.SetCurSysResource(TakeSample(m_statusVector.Edit(), m_iCurStatusPos, systemResource));
}

void CNode::SetStatusReportTime() {
    m_tLastReportTime = time(nullptr);
}

bool CNode::IsReportStatusOutTime() {
    const time_t tNow = time(nullptr);
    if (m_tLastReportTime > tNow) {
        m_tLastReportTime = tNow;
        return true;
    }
    return tNow - m_tLastReportTime > NUMERIC_REPORT_TIMEOUT;
}

void CNode::GetContainerList(std::list<std::string>& containerList) const {
    containerList.insert(containerList.end(), m_containerList->begin(), m_containerList->end());
}

void CNode::SetContainerList(const std::list<std::string>& containerList) {
    m_containerList = containerList;
}
