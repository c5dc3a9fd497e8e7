#include "play/container_table.h"

#include <list>

#include "framework_service/container_mgr.h"
#include "shell/container_load.h"

CTable PlayedContainers() {
    static const std::vector<CColumn<CContainer>> columns{
        {"node", [](const CContainer& container) { return container.GetNodeId(); }},
        {"container", [](const CContainer& container) { return container.GetContainerType(); }},
        {"online", [](const CContainer& container) { return container.IsOnline(); }},
        {"tasks", [](const CContainer& container) { return container.GetTotalTask(); }},
        {"disk_percent", DiskPercent},
        {"net_percent", NetPercent},
    };
    ContainerMap containerMap;
    CContainerMgr::Instance().GetAllContainer(containerMap);
    std::list<CContainer> containers;
    for (const auto& [addr, container] : containerMap) {
        containers.push_back(container);
    }
    return {"containers", columns, containers};
}
