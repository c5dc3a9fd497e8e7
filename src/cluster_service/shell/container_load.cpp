#include "shell/container_load.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {

int LoadPercent(const CContainer& container, int32_t (CSystemResource::*pReported)() const,
                int32_t (CResourceTask::*pCost)() const) {
    const int64_t llTotal = (container.GetTotalResource().*pReported)();
    const int64_t llUsed = (container.GetStatus().GetCurSysResource().*pReported)();
    int64_t llCosts = 0;
    for (const CResourceTask& task : container.GetTaskTable()) {
        llCosts += (task.*pCost)();
    }
    if (llTotal <= 0) {
        return 0;
    }
    const int64_t llPercent = 100 * std::max(llUsed, llCosts) / llTotal;
    return static_cast<int>(std::min<int64_t>(llPercent, std::numeric_limits<int>::max()));
}

}  // namespace

int DiskPercent(const CContainer& container) {
    return LoadPercent(container, &CSystemResource::GetDisk, &CResourceTask::GetDisk);
}

int NetPercent(const CContainer& container) {
    return LoadPercent(container, &CSystemResource::GetNet, &CResourceTask::GetNet);
}
