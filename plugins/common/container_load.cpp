#include "common/container_load.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr const char* RESOURCE_NAMES[RESOURCE_TYPES] = {"cpu", "memory", "io", "net", "disk"};

std::array<int32_t, RESOURCE_TYPES> FiguresOf(const CSystemResource& resource) {
    return {resource.GetCpu(), resource.GetMem(), resource.GetIO(), resource.GetNet(),
            resource.GetDisk()};
}

}  // namespace

CContainerLoad::CContainerLoad(const CContainer& container, const ResourceFigures& taskSum)
    : m_total(FiguresOf(container.GetTotalResource())), m_uiTasks(container.GetTotalTask()) {
    const auto reported = FiguresOf(container.GetStatus().GetCurSysResource());
    std::copy(reported.begin(), reported.end(), m_used.begin());
    if (container.GetTotalDisk() > 0) {
        // The disk ratio follows the last report, the status the average of the last three.
        m_used[RESOURCE_TYPE_DISK] =
            std::llround(static_cast<double>(container.GetDiskRatio()) * container.GetTotalDisk());
    }
    for (std::size_t i = 0; i < RESOURCE_TYPES; ++i) {
        m_used[i] = std::max(m_used[i], taskSum[i]);
    }
}

std::string CContainerLoad::WhyNoRoomFor(const TaskCosts& costs) const {
    const std::size_t uiType = FindShortage(costs);
    if (uiType == RESOURCE_TYPES) {
        return "";
    }
    const int64_t llLeft = std::max<int64_t>(m_total[uiType] - m_used[uiType], 0);
    return std::string("too little ") + RESOURCE_NAMES[uiType] + ": " + std::to_string(llLeft) +
           " of " + std::to_string(m_total[uiType]) + " left, " + std::to_string(costs[uiType]) +
           " asked";
}

std::size_t CContainerLoad::FindShortage(const TaskCosts& costs) const {
    std::size_t uiType = 0;
    while (uiType < RESOURCE_TYPES &&
           (costs[uiType] <= 0 || m_used[uiType] + costs[uiType] <= m_total[uiType])) {
        ++uiType;
    }
    return uiType;
}

double CContainerLoad::GetRatio(RESOURCE_TYPE eType) const {
    const auto uiType = static_cast<std::size_t>(eType);
    return m_total[uiType] > 0
               ? static_cast<double>(m_used[uiType]) / static_cast<double>(m_total[uiType])
               : std::numeric_limits<double>::infinity();
}

void CContainerLoad::Take(const TaskCosts& costs) {
    for (std::size_t i = 0; i < RESOURCE_TYPES; ++i) {
        m_used[i] += costs[i];
    }
    ++m_uiTasks;
}

void CContainerLoad::Give(const TaskCosts& costs) {
    for (std::size_t i = 0; i < RESOURCE_TYPES; ++i) {
        m_used[i] -= costs[i];
    }
    --m_uiTasks;
}
