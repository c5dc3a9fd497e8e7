#include "shell/container_load.h"

#include <algorithm>
#include <cstdint>

namespace {

int LoadPercent(const CContainer& container, int32_t (CSystemResource::*pReported)() const,
                int32_t (CResourceTask::*pCost)() const) {
    const int64_t llTotal = (container.GetTotalResource().*pReported)();
    const int64_t llUsed = (container.GetStatus().GetCurSysResource().*pReported)();
    int64_t llCosts = 0;
    for (const CResourceTask& task : container.GetTaskTable()) {
        llCosts += (task.*pCost)();
    }
    return llTotal > 0 ? static_cast<int>(100 * std::max(llUsed, llCosts) / llTotal) : 0;
}

}  // namespace

int DiskPercent(const CContainer& container) {
    return LoadPercent(container, &CSystemResource::GetDisk, &CResourceTask::GetDisk);
}

int NetPercent(const CContainer& container) {
    return LoadPercent(container, &CSystemResource::GetNet, &CResourceTask::GetNet);
}
