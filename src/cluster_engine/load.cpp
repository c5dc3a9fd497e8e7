#include "cluster_engine/load.h"

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

int LoadPlugins() {
    CPluginMgr& plugins = CPluginMgr::Instance();
    return plugins.GetPluginFiles().empty() ? plugins.LoadAllPlugin() : ORVA_SUCCEED;
}

namespace {

/// One step of a load. A step with a document is left out when that is not there.
struct CLoadStep {
    const char* pszWhat;
    const char* pszSuffix;  ///< null: no document that may be absent
    int (*pLoad)();
};

constexpr CLoadStep STEPS[] = {
    {"the plug-ins", nullptr, &LoadPlugins},
    {"the configuration", nullptr,
     [] { return CFrameworkCommon::Instance().InitClusterConfigFromZK(); }},
    {"the versions", STORE_NODE_VERSION.pszSuffix,
     [] { return CScheduleMgr::Instance().Reload(); }},
    {"the cluster", nullptr,
     [] { return CFrameworkCommon::Instance().InitNodeAndContainerFromZK(); }},
    {"the CG list", STORE_NODE_CG_LIST.pszSuffix,
     [] { return CFrameworkCGCommon::Instance().ReloadClusterCGInfoList(); }},
    {"the centre database", STORE_NODE_CENTER_DB.pszSuffix,
     [] { return CFrameworkCommon::Instance().ParseCDBFromZK(false); }},
    {"the manager", STORE_NODE_MGR.pszSuffix,
     [] { return CFrameworkCommon::Instance().ParseMGRFromZK(false); }},
};

int RunStep(CCluster& cluster, const CLoadStep& step) {
    if (step.pszSuffix != nullptr) {
        std::string strText;
        bool bAbsent = false;
        const int iCode = cluster.store.Read(step.pszSuffix, strText, bAbsent);
        if (iCode != ORVA_SUCCEED || bAbsent) {
            return iCode;
        }
    }
    return step.pLoad();
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

void TellLoaded(CCluster& cluster) {
    CEvent event;
    event.eEvent = EEvent::LOADED;
    event.strCause = std::to_string(cluster.state.nodes.size()) + " nodes, " +
                     std::to_string(cluster.state.containers.size()) + " containers";
    for (const auto& [addr, record] : cluster.state.containers) {
        event.uiTasks += static_cast<uint32_t>(record.tasks.size());
    }
    cluster.Tell(std::move(event));
}

}  // namespace

int LoadCluster(CCluster& cluster, std::string& strWhy) {
    cluster.Begin();
    for (const CLoadStep& step : STEPS) {
        if (const int iCode = RunStep(cluster, step); iCode != ORVA_SUCCEED) {
            strWhy = std::string("cannot load ") + step.pszWhat;
            return iCode;
        }
    }
    ReadStandardTasks(cluster);
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
    cluster.state.ullDecision = CScheduleMgr::Instance().GetDecisionVerNum();
    cluster.state.ullAnswers = static_cast<uint64_t>(cluster.state.iNow) << 20U;
    cluster.state.bLoaded = true;
    TellLoaded(cluster);
    BeginSettling(cluster, "the cluster has been loaded");
    return ORVA_SUCCEED;
}
