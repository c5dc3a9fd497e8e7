#include "cluster_engine/registry_form.h"

#include <list>
#include <utility>

#include "cluster_engine/library_document.h"
#include "common_service/data/version_znode.h"
#include "common_service/net_factory.h"
#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/schedule_mgr.h"

namespace {

CNodeForm FormOf(const CNode& node) {
    CNodeForm form;
    std::list<std::string> types;
    node.GetContainerList(types);
    form.strNodeId = node.GetNodeId();
    form.strIp = node.GetNodeIp();
    form.iIpType = node.GetNodeIpType();
    form.iNodeRole = node.GetNodeRole();
    form.iDomainRole = node.GetDomainRole();
    form.iServiceType = node.GetNodeServiceType();
    form.iMemberStatus = node.GetMemberStatus();
    form.bOnline = node.IsOnline();
    form.total = FiguresOf(node.GetTotalResource());
    form.types.assign(types.begin(), types.end());
    return form;
}

/// The clock stands where the node's entry was made.
CNode NodeOf(const CNodeForm& form, const std::vector<CFigures>& samples) {
    CNode node;
    node.SetNodeId(form.strNodeId);
    node.SetNodeIp(form.strIp);
    node.SetNodeIpType(form.iIpType);
    node.SetNodeRole(form.iNodeRole);
    node.SetDomainRole(form.iDomainRole);
    node.SetNodeServiceType(form.iServiceType);
    node.SetMemberStatus(form.iMemberStatus);
    node.SetOnline(form.bOnline);
    node.SetTotalResource(form.total.ToResource());
    node.SetContainerList({form.types.begin(), form.types.end()});
    for (const CFigures& sample : samples) {
        node.SetCurResource(sample.ToResource());
    }
    return node;
}

CContainerForm FormOf(const CContainer& container) {
    CContainerForm form;
    form.place = CPlace({container.GetNodeId(), container.GetContainerType()});
    form.bOnline = container.IsOnline();
    form.bFaultShift = container.IsFaultShift();
    form.bSupportFaultShift = container.IsSupportFaultShift();
    form.bDoingFaultShift = container.GetFaultStatus();
    form.bNeedUpdate = container.IsNeedUpdateResTask();
    form.bHasReported = container.GetHasReportedFlag();
    form.iMemberStatus = container.GetMemberStatus();
    container.GetProcessState(form.processes);
    form.total = FiguresOf(container.GetTotalResource());
    container.GetAllPrivateInfo(form.parameters);
    std::list<CResourceTask> tasks;
    container.GetResoureTask(tasks);
    for (const CResourceTask& task : tasks) {
        form.tasks.emplace_back(task);
    }
    form.iTaskDisk = container.GetTaskTotalDisk();
    form.iTaskNet = container.GetTaskTotalNet();
    form.ullShiftFaults =
        CNodeMgr::Instance().GetContainerShiftFaultTimes(CContainerAddr(form.place));
    if (container.GetContainerType() == CONTAINER_TYPE_CLOUD_STORAGE) {
        form.storage = StorageOf(container);
    }
    return form;
}

/// A report of the allocations brings them in; the figures that it brings along are set anew.
void RestoreStorage(CContainer& container, const CStorageForm& form) {
    CTableTask task;
    task.allocations = form.allocations;
    container.SetResourceTask({CResourceTask(task)}, ALLOC_CLOUD_STORAGE_NOTIFY_RSP);
}

void SetStorageFigures(CContainer& container, const CStorageForm& form) {
    container.SetProductType(form.strProductType);
    container.SetServiceType(form.strServiceType);
    container.SetReqStorage(form.iReqStorage);
    container.SetReqPicStorage(form.iReqPicStorage);
    container.SetBitRate(form.iBitRate);
    container.SetTranBandWidth(form.iTranBandWidth);
    container.SetUptadeFlag(form.bUpdate);
}

/// The table comes by a report, which alone tells that there was one; a removed member has
/// forgotten it.
void RestoreTable(CContainer& container, const CContainerForm& form) {
    std::list<CResourceTask> tasks;
    for (const CTableTask& task : form.tasks) {
        tasks.push_back(CResourceTask(task));
    }
    if (form.storage) {
        RestoreStorage(container, *form.storage);
    }
    container.SetMemberStatus(form.iMemberStatus);
    container.SetResourceTask(tasks, ALLOC_CLOUD_STORAGE_NOTIFY_RSP);
    if (form.storage) {
        SetStorageFigures(container, *form.storage);
    }
    if (!form.bHasReported) {
        container.SetMemberStatus(CLUSTER_MEMBER_REMOVED);
        container.SetMemberStatus(form.iMemberStatus);
    }
    container.SetResTaskNeedUpdate(form.bNeedUpdate);
    container.SetTaskTotalDisk(form.iTaskDisk);
    container.SetTaskTotalNet(form.iTaskNet);
}

/// The clock stands where the container reported last.
CContainer ContainerOf(const CContainerForm& form, const std::vector<CFigures>& samples) {
    CContainer container;
    container.SetNodeId(form.place.strNodeId);
    container.SetContainerType(form.place.strType);
    container.SetOnline(form.bOnline);
    container.SetFaultShift(form.bFaultShift);
    container.SetSupportFaultShift(form.bSupportFaultShift);
    container.SetFaultStatus(form.bDoingFaultShift);
    container.SetProcessState(form.processes);
    container.SetTotalResource(form.total.ToResource());
    for (const CFigures& sample : samples) {
        container.SetCurResource(sample.ToResource());
    }
    container.SetExtParam(form.parameters);
    RestoreTable(container, form);
    return container;
}

void RestoreNodes(CCluster& cluster, const CRegistryForm& form) {
    std::list<CNode> nodes;
    for (const CNodeForm& node : form.nodes) {
        const CNodeRecord& record = cluster.state.nodes[node.strNodeId];
        cluster.host.clock.Set(record.iEntered);
        nodes.push_back(NodeOf(node, record.samples));
        if (node.iMemberStatus != CLUSTER_MEMBER_REMOVED) {
            HALD::CNetFactory::Instance().AddValidatedLink(node.strIp, VALIDATED_LINK_TYPE);
        }
    }
    CNodeMgr::Instance().Init(nodes);
}

void RestoreContainers(CCluster& cluster, const CRegistryForm& form) {
    ContainerMap containers;
    for (const CContainerForm& container : form.containers) {
        const CContainerAddr addr(container.place);
        const CContainerRecord& record = cluster.state.containers[addr];
        cluster.host.clock.Set(record.iLastReport);
        containers[addr] = ContainerOf(container, record.samples);
        CNodeMgr::Instance().SetContainerShiftFaultTimes(addr, container.ullShiftFaults);
    }
    CContainerMgr::Instance().Init(containers);
    for (const CPlace& place : form.shifting) {
        CScheduleMgr::Instance().AddShiftContainer(CContainerAddr(place));
    }
}

/// A document that is not as at the start of a process is written where the library reads it.
int RestoreDocument(CCluster& cluster, const ORVA_STORE_NODE& node, const std::string& strText,
                    int (*pReload)()) {
    const int iCode = cluster.store.Write(node.pszSuffix, strText);
    return iCode != ORVA_SUCCEED ? iCode : pReload();
}

int RestoreVersions(CCluster& cluster, const CRegistryForm& form) {
    CVersionZNode document;
    document.SetDecisionVerNum(form.ullDecision);
    document.SetMasterVerNum(form.ullMaster);
    return RestoreDocument(cluster, STORE_NODE_VERSION, LibraryText(document),
                           [] { return CScheduleMgr::Instance().Reload(); });
}

int RestoreConfiguration(CCluster& cluster, const CRegistryForm& form) {
    return RestoreDocument(cluster, STORE_NODE_CLUSTER_CONFIG, form.strConfiguration,
                           [] { return CFrameworkCommon::Instance().InitClusterConfigFromZK(); });
}

int RestoreCgList(CCluster& cluster, const CRegistryForm& form) {
    return RestoreDocument(cluster, STORE_NODE_CG_LIST, form.strCgList,
                           [] { return CFrameworkCGCommon::Instance().ReloadClusterCGInfoList(); });
}

/// Nothing to read is nothing to restore.
int ParseCopy(CBaseJsonObject& document, const std::string& strText) {
    return strText == LibraryText(document) ? ORVA_SUCCEED : document.ParseJson(strText.c_str());
}

int RestoreCenterDb(CCluster& /*cluster*/, const CRegistryForm& form) {
    CFrameworkCommon& framework = CFrameworkCommon::Instance();
    while (framework.GetCDBVersion() < form.iCenterDbVersion) {
        framework.IncreaseCDBVersion();
    }
    return ParseCopy(framework.GetClusterDBInfo(), form.strCenterDb);
}

int RestoreManager(CCluster& /*cluster*/, const CRegistryForm& form) {
    return ParseCopy(CFrameworkCommon::Instance().GetClusterMGRInfo(), form.strManager);
}

}  // namespace

CStorageForm StorageOf(const CContainer& container) {
    CStorageForm form;
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocations;
    container.GetAllocInfoList(allocations);
    form.strProductType = container.GetProductType();
    form.strServiceType = container.GetServiceType();
    form.iReqStorage = container.GetReqStorage();
    form.iReqPicStorage = container.GetReqPicStorage();
    form.iBitRate = container.GetBitRate();
    form.iTranBandWidth = container.GetTranBandWidth();
    form.bUpdate = container.GetUptadeFlag();
    form.allocations.assign(allocations.begin(), allocations.end());
    return form;
}

CRegistryForm ReadRegistries() {
    CRegistryForm form;
    std::list<CNode> nodes;
    CNodeMgr::Instance().GetAllNode(nodes);
    for (const CNode& node : nodes) {
        form.nodes.push_back(FormOf(node));
    }
    ContainerMap containers;
    CContainerMgr::Instance().GetAllContainer(containers);
    for (const auto& [addr, container] : containers) {
        form.containers.push_back(FormOf(container));
    }
    CScheduleMgr& versions = CScheduleMgr::Instance();
    std::list<CContainerAddr> shifting;
    versions.GetAllShiftContainer(shifting);
    form.shifting = {shifting.begin(), shifting.end()};
    form.ullDecision = versions.GetDecisionVerNum();
    form.ullMaster = versions.GetMasterVerNum();
    CFrameworkCommon& framework = CFrameworkCommon::Instance();
    CClusterConfigZNodeInfo configuration = framework.GetClusterConfig();
    CClusterCGInfoList list;
    CFrameworkCGCommon::Instance().GetClusterCGInfoList(list);
    form.iCenterDbVersion = framework.GetCDBVersion();
    form.strConfiguration = LibraryText(configuration);
    form.strCgList = LibraryText(list);
    form.strCenterDb = LibraryText(framework.GetClusterDBInfo());
    form.strManager = LibraryText(framework.GetClusterMGRInfo());
    return form;
}

int RestoreRegistries(CCluster& cluster, const CRegistryForm& form, std::string& strWhy) {
    struct CStep {
        const char* pszWhat;
        int (*pRestore)(CCluster&, const CRegistryForm&);
    };
    static constexpr CStep STEPS[] = {{"the versions", &RestoreVersions},
                                      {"the configuration", &RestoreConfiguration},
                                      {"the CG list", &RestoreCgList},
                                      {"the centre database", &RestoreCenterDb},
                                      {"the manager", &RestoreManager}};
    RestoreNodes(cluster, form);
    RestoreContainers(cluster, form);
    for (const CStep& step : STEPS) {
        if (const int iCode = step.pRestore(cluster, form); iCode != ORVA_SUCCEED) {
            strWhy = std::string("cannot restore ") + step.pszWhat;
            return iCode;
        }
    }
    return ORVA_SUCCEED;
}
