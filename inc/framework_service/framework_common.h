#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <mutex>
#include <string>

#include "common_service/thread_mutex.h"
#include "framework_service/base_data.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/container.h"
#include "framework_service/resource_task.h"
#include "framework_service/tarn_node.h"

/// The front door: loads the cluster from the store into the registries, keeps them in step on
/// membership changes, and holds the cached database and manager documents. It has no lock, and its
/// multi-step operations are not atomic: callers keep each other apart. Failures are logged where
/// they happen; nothing is rolled back.
class CFrameworkCommon {
public:
    static CFrameworkCommon& Instance() { return m_instance; }

    CFrameworkCommon(const CFrameworkCommon&) = delete;
    CFrameworkCommon& operator=(const CFrameworkCommon&) = delete;
    virtual ~CFrameworkCommon() = default;

    /// Reads the configuration document and hands its six settings to CGlobalConfig. Nothing to
    /// read is a success that sets nothing. Returns 0 or the store's code.
    int InitClusterConfigFromZK();

    /// The settings that were last handed over, all of one load; before the first, the document's
    /// defaults. Callable from any thread, also beside a load: it is here that a plug-in asks.
    CClusterConfigZNodeInfo GetClusterConfig() const;

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

    /// @name Membership
    /// @{

    /// Adds the nodes under the map's keys, then their containers; nothing is written to the store.
    /// ORVA_FAIL when a node has a type twice, with the nodes added and no container.
    int AddNodeAndContainer(const std::map<std::string, CNode>& nodeMap);

    /// Removes a container, and the node with its last one, from the registries; then from the
    /// stored cluster document, by what the registries said. Always 0: a store that cannot be read
    /// or written shows in the log alone.
    int RemoveNodeContainerAndFlush(const std::string& strNodeId,
                                    const std::string& strContainerType);

    /// Sets the member status of the known nodes, in memory alone. Always 0.
    int SetNodeClusterStatus(const std::list<std::string>& nodeCodeList, int iMemberStatus);

    /// Replaces the map by copies of the containers of that type that can take work: on a node that
    /// is a normal member, online, with every process running.
    void GetAvailableContainer(const std::string& strContainerType, ContainerMap& containerMap);
    /// @}

    /// @name The cached database and manager documents
    /// The references expose the live objects. Empty until they are parsed from the store.
    /// @{
    CClusterDBZNodeInfo& GetClusterDBInfo() { return m_clusterDBInfo; }
    CClusterMGRZNodeInfo& GetClusterMGRInfo() { return m_clusterMGRInfo; }

    /// Promotes the node to master, or for any type but 1 puts it into the slave slot of its token;
    /// with bFlushZK the whole cached document is written. Returns 0; ORVA_FAIL when there is no
    /// such entry; or, logged, the store's code with the change in the cache.
    int UpdateClusterCDB(const CClusterDBInfo& clusterDBInfo, bool bFlushZK);

    void IncreaseCDBVersion();
    int GetCDBVersion() const { return m_iCenterDBVersion; }

    int ParseCDBFromZK(bool bNeedWatcher);
    int ParseMGRFromZK(bool bNeedWatcher);

    CClusterDBZNodeInfo m_clusterDBInfo;
    CClusterMGRZNodeInfo m_clusterMGRInfo;
    /// @}

private:
    CFrameworkCommon() = default;

    int RemoveNodeContainer(const std::string& strNodeId, const std::string& strContainerType,
                            uint32_t& uiContainerNumLeft);
    int AddCloudStorageContainer(const std::map<std::string, CloudStorageInfo>& CloudStorageMap);
    void CloudStorageInfoToResTask(const CloudStorageInfo& CloudStorage,
                                   std::list<CResourceTask>& resTaskList);

    static CFrameworkCommon m_instance;

    int m_iCenterDBVersion = 0;

    mutable std::mutex m_clusterConfigMutex;
    CClusterConfigZNodeInfo m_clusterConfig;  ///< guarded by m_clusterConfigMutex
};

/// The CG entries of the cluster: who is admitted, and what of it is in the store. Callable from
/// any thread; every operation holds the lock for its whole length, store calls included, and
/// answers ORVA_FAIL, without a line, when it cannot be had. The cache is empty until it is loaded.
class CFrameworkCGCommon {
public:
    static CFrameworkCGCommon& Instance() { return m_instance; }

    CFrameworkCGCommon(const CFrameworkCGCommon&) = delete;
    CFrameworkCGCommon& operator=(const CFrameworkCGCommon&) = delete;
    virtual ~CFrameworkCGCommon() = default;

    /// Writes the list to the store and leaves the cache: the next reload brings it in. An empty
    /// list is a success that writes nothing. Returns 0 or, logged, the store's code.
    int SetClusterCGInfoList(CClusterCGInfoList& clusterCGInfoList);

    /// Adds a batch, without a limit and without asking for the nodes; entries whose float code is
    /// there are skipped. The store is written once at the end, also when nothing was added. What
    /// was added stays in the cache after any failure. Returns 0 or, logged, the code.
    int AddClusterCGInfo(const CClusterCGInfoList& clusterCGInfo);

    /// Adds an entry, if there are no more than half as many as nodes, its node is known and has
    /// none, and its float code and address are free. Returns 0 or, logged, the code of the first
    /// check that fails, or the store's; the cache is then as before.
    int AddSingleClusterCGInfo(const CClusterCGInfo& singleClusterCGInfo);

    /// Removes the entry of that float code from store and cache; none is a success. Returns 0 or,
    /// logged, the store's code with the cache as before.
    int RemoveClusterCGInfo(const std::string& strFloatCGCode);

    /// Reads the list from the store and sets the watcher. Returns 0 or, logged, ORVA_FAIL with the
    /// cache as before.
    int ReloadClusterCGInfoList();

    /// Replaces the argument by a copy of the cache; untouched without the lock.
    void GetClusterCGInfoList(CClusterCGInfoList& clusterCGInfo);

    /// Puts the entry at the end, in place of the one with its float code if there is one. Returns
    /// 0 or, logged, the store's code with the cache as before.
    int UpdateClusterCGInfoByFloatCode(const CClusterCGInfo& clusterCGInfo);

private:
    CFrameworkCGCommon() = default;

    static CFrameworkCGCommon m_instance;

    CClusterCGInfoList m_clusterCGList;                           ///< guarded by m_MutexCGInfo
    HALD_Recursive_Thread_Mutex m_MutexCGInfo{nullptr, nullptr};  ///< held during store calls
};
