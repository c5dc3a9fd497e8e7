#pragma once

#include <list>
#include <map>
#include <string>

#include "framework_service/base_data.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/container.h"
#include "framework_service/resource_task.h"
#include "framework_service/tarn_node.h"

/// The front door: loads the cluster from the store into the registries and keeps them in step on
/// membership changes. It has no lock, and its multi-step operations are not atomic: callers keep
/// each other apart. Failures are logged where they happen; nothing is rolled back.
class CFrameworkCommon {
public:
    static CFrameworkCommon& Instance() { return m_instance; }

    CFrameworkCommon(const CFrameworkCommon&) = delete;
    CFrameworkCommon& operator=(const CFrameworkCommon&) = delete;
    virtual ~CFrameworkCommon() = default;

    /// Reads the configuration document and hands its six settings to CGlobalConfig. Nothing to
    /// read is a success that sets nothing. Returns 0 or the store's code.
    int InitClusterConfigFromZK();

    /// Reads the cluster document, brings the validated links in line with it, replaces both
    /// registries, and hands each cloud storage container its stored figures. Nothing to read is a
    /// success. Plug-ins must be loaded before: a container's fault shift support is settled here.
    /// Returns 0 or the first failure's code, with what was done until then in force.
    int InitNodeAndContainerFromZK();

    /// @name Steps of the above
    /// @{
    int InitNodeAndContainer(const std::list<CNode>& nodeList);

    /// Replaces the node table. Always 0.
    int InitNodeMgr(const std::list<CNode>& nodeList);

    /// Replaces the container table; on failure it stays as it was.
    int InitContainerMgr(const std::list<CNode>& nodeList);

    /// Adds a container for each type of each node. ORVA_FAIL when a node has a type twice; what
    /// was added before stays in the map.
    int GenContainerTable(const std::list<CNode>& nodeList, ContainerMap& containerMap);
    int LoadContainerInfo(const std::list<CContainerAddr>& containerAddrList,
                          ContainerMap& containerMap);
    /// @}

private:
    CFrameworkCommon() = default;

    int AddCloudStorageContainer(const std::map<std::string, CloudStorageInfo>& CloudStorageMap);
    void CloudStorageInfoToResTask(const CloudStorageInfo& CloudStorage,
                                   std::list<CResourceTask>& resTaskList);

    static CFrameworkCommon m_instance;
};
