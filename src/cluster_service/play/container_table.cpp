#include "play/container_table.h"

#include <algorithm>
#include <cstdint>
#include <list>

#include "framework_service/container_mgr.h"

namespace {

/// As plug-ins see it: what is reported as used and what the tasks cost are two views of one thing,
/// of which the larger counts.
int LoadPercent(const CContainer& container, int32_t (CSystemResource::*pReported)() const,
                int32_t (CResourceTask::*pCost)() const) {
    const int64_t llTotal = (container.GetTotalResource().*pReported)();
    const int64_t llUsed = (container.GetStatus().GetCurSysResource().*pReported)();
    std::list<CResourceTask> tasks;
    container.GetResoureTask(tasks);
    int64_t llCosts = 0;
    for (const CResourceTask& task : tasks) {
        llCosts += (task.*pCost)();
    }
    return llTotal > 0 ? static_cast<int>(100 * std::max(llUsed, llCosts) / llTotal) : 0;
}

}  // namespace

CTable PlayedContainers() {
    static const std::vector<CColumn<CContainer>> columns{
        {"node", [](const CContainer& container) { return container.GetNodeId(); }},
        {"container", [](const CContainer& container) { return container.GetContainerType(); }},
        {"online", [](const CContainer& container) { return container.IsOnline(); }},
        {"tasks", [](const CContainer& container) { return container.GetTotalTask(); }},
        {"disk_percent",
         [](const CContainer& container) {
             return LoadPercent(container, &CSystemResource::GetDisk, &CResourceTask::GetDisk);
         }},
        {"net_percent",
         [](const CContainer& container) {
             return LoadPercent(container, &CSystemResource::GetNet, &CResourceTask::GetNet);
         }},
    };
    ContainerMap containerMap;
    CContainerMgr::Instance().GetAllContainer(containerMap);
    std::list<CContainer> containers;
    for (const auto& [addr, container] : containerMap) {
        containers.push_back(container);
    }
    return {"containers", columns, containers};
}
