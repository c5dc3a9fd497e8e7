#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/container_mgr.h"
#include "framework_service/node_mgr.h"

/// The one back door: what the library's own sources do to its public classes that users must not,
/// and what users get as a copy only. Longer bodies stand in their class's source.
class [[gnu::visibility("hidden")]] CFrameworkInternal {
public:
    using CContainerTable = CSnapshotTable<CContainerAddr, CContainer>;
    using CContainerTypes = CCopyOnWrite<std::list<std::string>>;
    using CNodeTable = CSnapshotTable<std::string, CNode>;

    /// Finds the container that an operation works on, anew after each call to the host, which may
    /// come back and add, remove and change containers. Null when there is none any more: what is
    /// left of the operation then goes nowhere.
    using ContainerFinder = std::function<CContainer*()>;
    using ConstContainerFinder = std::function<const CContainer*()>;

    /// A reported task table, made ready before the container's lock is taken.
    struct CTaskReport {
        explicit CTaskReport(std::list<CResourceTask> resTaskTable);

        CTaskTable taskTable;
        int32_t iTotalNet;
    };

    /// @name CContainer
    /// @{

    /// SetResourceTask by swapping: the report leaves with the former table. The container is the
    /// one that find() finds first.
    static void TakeReport(CContainer & container, CTaskReport & report, int iMsgType,
                           const ContainerFinder& find);

    /// CalcCloudStorageInfo on a table that stands still, into the container that is found.
    static void CalcCloudStorage(const CTaskTable& taskTable, int iMsgType,
                                 const ContainerFinder& find);

    /// SaveCloudStorageReportInfoToZK of the container that is found after the read, or of what was
    /// found before it.
    static void SaveCloudStorage(const ConstContainerFinder& find);

    /// AddResourceTask by moving the tasks out of the argument.
    static void TakeTasks(CContainer & container, std::list<CResourceTask> & tasks);

    /// RemoveResourceTask by moving the tasks behind what the argument holds.
    static void TakeOutTasks(CContainer & container, const std::list<std::string>& taskIdList,
                             std::list<CResourceTask>& removed);

    static CCopyOnWrite<std::map<std::string, int>>& ProcessTable(CContainer & container) {
        return container.m_processTable;
    }
    static CCopyOnWrite<KeyValueMap>& PrivateInfo(CContainer & container) {
        return container.m_privateInfo;
    }
    static const std::string& ServiceType(const CContainer& container) {
        return container.m_cloudStorage->strServiceType;
    }
    /// @}

    static const CContainerTypes& ContainerTypes(const CNode& node) {
        return node.m_containerList;
    }
    static CContainerTypes& ContainerTypes(CNode & node) {
        return node.m_containerList;
    }

    /// @name The registries
    /// @{
    static std::optional<CContainerTable> Snapshot(CContainerMgr & mgr) {
        return mgr.Snapshot();
    }
    static std::optional<CNodeTable> Snapshot(CNodeMgr & mgr) {
        return mgr.Snapshot();
    }
    static void ReplaceTable(CContainerMgr & mgr, CContainerTable containerTable) {
        mgr.ReplaceTable(std::move(containerTable));
    }
    static void TakeResourceTask(CContainerMgr & mgr, const CContainerAddr& containerAddr,
                                 std::list<CResourceTask> taskTable, int iMsgType) {
        mgr.TakeResourceTask(containerAddr, std::move(taskTable), iMsgType);
    }
    /// @}

    /// @name The documents
    /// @{
    static const std::list<CNode>& Nodes(const CClusterZNodeInfo& document) {
        return document.m_nodeList;
    }
    static std::map<std::string, CloudStorageInfo> TakeMap(CClusterCloudStorageZNodeInfo &
                                                           document) {
        return document.TakeMap();
    }
    /// @}

private:
    /// The figures of one task, each taken over as soon as it is read.
    static void TakeFigures(const CResourceTask& task, const ContainerFinder& find);
};
