#include "cluster_engine/load.h"

#include <algorithm>
#include <list>
#include <utility>
#include <vector>

#include "cluster_engine/document.h"
#include "cluster_engine/fault_shift.h"
#include "cluster_engine/membership.h"
#include "cluster_engine/settling.h"
#include "common_service/tarn_def.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/plugin_mgr.h"
#include "framework_service/schedule_mgr.h"

namespace {

bool HasFailed(const CPluginFile& file) {
    return !file.strFailure.empty();
}

}  // namespace

/// Those that failed are tried again.
int LoadPlugins() {
    CPluginMgr& plugins = CPluginMgr::Instance();
    const std::list<CPluginFile> files = plugins.GetPluginFiles();
    const bool bFailed = std::any_of(files.begin(), files.end(), &HasFailed);
    if (bFailed) {
        plugins.UnLoadAllPlugin();
    }
    return files.empty() || bFailed ? plugins.LoadAllPlugin() : ORVA_SUCCEED;
}

namespace {

/// One step of a load. A step with a document is left out when that is not there.
struct CLoadStep {
    const char* pszWhat;
    const char* pszSuffix;  ///< null: no document that may be absent
    int (*pLoad)();
    std::string (*pFound)();
};

std::string Counted(std::size_t uiCount, const char* pszOne) {
    return std::to_string(uiCount) + ' ' + pszOne + (uiCount == 1 ? "" : "s");
}

std::string FoundPlugins() {
    std::string strNames;
    for (const CPluginFile& file : CPluginMgr::Instance().GetPluginFiles()) {
        if (file.pPlugin != nullptr) {
            strNames += (strNames.empty() ? "" : ", ") + file.strName;
        }
    }
    return strNames.empty() ? "none" : strNames;
}

std::string FoundConfiguration() {
    const CClusterConfigZNodeInfo configuration = CFrameworkCommon::Instance().GetClusterConfig();
    return std::string("fault shift ") + (configuration.IsFaultShift() ? "on" : "off") +
           ", load balance " + (configuration.IsLoadBalance() ? "on" : "off");
}

std::string FoundVersions() {
    const CScheduleMgr& versions = CScheduleMgr::Instance();
    return "decision " + std::to_string(versions.GetDecisionVerNum()) + ", master " +
           std::to_string(versions.GetMasterVerNum());
}

std::string FoundCluster() {
    std::list<CNode> nodes;
    CNodeMgr::Instance().GetAllNode(nodes);
    ContainerMap containers;
    CContainerMgr::Instance().GetAllContainer(containers);
    return Counted(nodes.size(), "node") + ", " + Counted(containers.size(), "container");
}

std::string FoundCgList() {
    CClusterCGInfoList list;
    CFrameworkCGCommon::Instance().GetClusterCGInfoList(list);
    return std::to_string(list.GetSize()) + (list.GetSize() == 1 ? " entry" : " entries");
}

std::string FoundCenterDb() {
    const CClusterDBZNodeInfo& databases = CFrameworkCommon::Instance().GetClusterDBInfo();
    std::list<CClusterDBInfo> slaves;
    databases.GetAllSlaveDB(slaves);
    return "master " + databases.GetMasterDB().GetNodeId() + ", " + Counted(slaves.size(), "slave");
}

std::string FoundManager() {
    return "master " + CFrameworkCommon::Instance().GetClusterMGRInfo().GetMasterMGR().GetNodeId();
}

constexpr CLoadStep STEPS[] = {
    {"the plug-ins", nullptr, &LoadPlugins, &FoundPlugins},
    {"the configuration", nullptr,
     [] { return CFrameworkCommon::Instance().InitClusterConfigFromZK(); }, &FoundConfiguration},
    {"the versions", STORE_NODE_VERSION.pszSuffix, [] { return CScheduleMgr::Instance().Reload(); },
     &FoundVersions},
    {"the cluster", nullptr,
     [] { return CFrameworkCommon::Instance().InitNodeAndContainerFromZK(); }, &FoundCluster},
    {"the CG list", STORE_NODE_CG_LIST.pszSuffix,
     [] { return CFrameworkCGCommon::Instance().ReloadClusterCGInfoList(); }, &FoundCgList},
    {"the centre database", STORE_NODE_CENTER_DB.pszSuffix,
     [] { return CFrameworkCommon::Instance().ParseCDBFromZK(false); }, &FoundCenterDb},
    {"the manager", STORE_NODE_MGR.pszSuffix,
     [] { return CFrameworkCommon::Instance().ParseMGRFromZK(false); }, &FoundManager},
};

int RunStep(CCluster& cluster, const CLoadStep& step, const OnLoadStep& onStep) {
    bool bAbsent = false;
    int iCode = ORVA_SUCCEED;
    if (step.pszSuffix != nullptr) {
        std::string strText;
        iCode = cluster.store.Read(step.pszSuffix, strText, bAbsent);
    }
    if (iCode == ORVA_SUCCEED && !bAbsent) {
        iCode = step.pLoad();
    }
    if (iCode == ORVA_SUCCEED) {
        onStep(step.pszWhat, bAbsent ? "absent" : step.pFound());
    }
    return iCode;
}

/// As in ": bad.so: file too short"; empty when all are loaded.
std::string FailedPlugin() {
    const std::list<CPluginFile> files = CPluginMgr::Instance().GetPluginFiles();
    const auto it = std::find_if(files.begin(), files.end(), &HasFailed);
    return it != files.end() ? ": " + it->strFile + ": " + it->strFailure : "";
}

/// A record for each member of the registries.
void TakeMembers(CCluster& cluster) {
    std::list<CNode> nodes;
    CNodeMgr::Instance().GetAllNode(nodes);
    for (const CNode& node : nodes) {
        CNodeRecord& record = cluster.state.nodes[node.GetNodeId()];
        record.iLastReport = cluster.state.iNow;
        record.iEntered = cluster.state.iNow;
    }
    ContainerMap containers;
    CContainerMgr::Instance().GetAllContainer(containers);
    for (const auto& [addr, container] : containers) {
        cluster.state.containers[addr].iLastReport = cluster.state.iNow;
    }
}

/// Tables are filled by adding, so that nobody counts as having reported.
void FillTables(const CCluster& cluster) {
    for (const auto& [addr, record] : cluster.state.containers) {
        std::list<CResourceTask> tasks;
        for (const auto& [strTaskId, task] : record.tasks) {
            tasks.push_back(task.task);
        }
        if (!tasks.empty()) {
            CContainerMgr::Instance().AddResourceTask(addr, tasks);
        }
    }
}

int LoadAssignments(CCluster& cluster) {
    std::vector<std::string> unreadable;
    const int iCode = cluster.assignments.Load(unreadable);
    for (const std::string& strSuffix : unreadable) {
        CEvent event;
        event.eEvent = EEvent::DOCUMENT_UNREADABLE;
        event.strCause = strSuffix;
        cluster.Tell(std::move(event));
    }
    if (iCode != ORVA_SUCCEED) {
        return iCode;
    }
    FillTables(cluster);
    for (const auto& [strType, record] : cluster.state.homeless) {
        WaitHomeless(cluster, strType);
    }
    return iCode;
}

/// How many tasks are in containers.
std::size_t TasksOf(const CCluster& cluster) {
    std::size_t uiTasks = 0;
    for (const auto& [addr, record] : cluster.state.containers) {
        uiTasks += record.tasks.size();
    }
    return uiTasks;
}

void TellLoaded(CCluster& cluster) {
    CEvent event;
    event.eEvent = EEvent::LOADED;
    event.strCause = std::to_string(cluster.state.nodes.size()) + " nodes, " +
                     std::to_string(cluster.state.containers.size()) + " containers";
    event.uiTasks = static_cast<uint32_t>(TasksOf(cluster));
    cluster.Tell(std::move(event));
}

}  // namespace

int LoadCluster(CCluster& cluster, std::string& strWhy, const OnLoadStep& onStep) {
    const OnLoadStep tell = onStep ? onStep : [](const std::string&, const std::string&) {};
    cluster.Begin();
    cluster.store.LetVersionsWait();
    for (const CLoadStep& step : STEPS) {
        if (const int iCode = RunStep(cluster, step, tell); iCode != ORVA_SUCCEED) {
            strWhy = std::string("cannot load ") + step.pszWhat + FailedPlugin();
            return iCode;
        }
    }
    ReadStandardTasks(cluster);
    tell("the standard tasks", std::to_string(cluster.state.standardTasks.size()));
    cluster.plugins.Load();
    TakeMembers(cluster);
    int iCode = LoadMemberStatus(cluster);
    iCode = iCode != ORVA_SUCCEED ? iCode : LoadAssignments(cluster);
    if (iCode != ORVA_SUCCEED) {
        strWhy = "cannot load what the containers are to do";
        return iCode;
    }
    iCode = cluster.assignments.Write();
    if (iCode != ORVA_SUCCEED) {
        strWhy = "cannot write down who has what stood in two places";
        return iCode;
    }
    tell("what the containers are to do", Counted(TasksOf(cluster), "task"));
    cluster.state.ullDecision = CScheduleMgr::Instance().GetDecisionVerNum();
    cluster.state.ullAnswers = static_cast<uint64_t>(cluster.state.iNow) << 20U;
    cluster.state.bLoaded = true;
    TellLoaded(cluster);
    BeginSettling(cluster, "the cluster has been loaded");
    return ORVA_SUCCEED;
}
