#include "command/show.h"

#include <json/writer.h>

#include <algorithm>
#include <list>
#include <map>
#include <utility>

#include "command/exit_code.h"
#include "command/load.h"
#include "command/plugin_table.h"
#include "command/table.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/schedule_mgr.h"
#include "framework_service/standard_task_mgr.h"
#include "reference_host/host_settings.h"

namespace {

const char* MemberText(int iMemberStatus) {
    return iMemberStatus == CLUSTER_MEMBER_REMOVED ? "removed" : "normal";
}

CTable NodeTable() {
    static const std::vector<CColumn<CNode>> columns{
        {"node", [](const CNode& node) { return node.GetNodeId(); }},
        {"address", [](const CNode& node) { return node.GetNodeIp(); }},
        {"role", [](const CNode& node) { return node.GetNodeRole(); }},
        {"domain", [](const CNode& node) { return node.GetDomainRole(); }},
        {"member", [](const CNode& node) { return MemberText(node.GetMemberStatus()); }},
        {"containers",
         [](const CNode& node) {
             std::list<std::string> containerList;
             node.GetContainerList(containerList);
             return ListValue(containerList);
         }},
    };
    std::list<CNode> nodeList;
    CNodeMgr::Instance().GetAllNode(nodeList);
    return {"nodes", columns, nodeList};
}

CTable ContainerTable() {
    static const std::vector<CColumn<CContainer>> columns{
        {"node", [](const CContainer& container) { return container.GetNodeId(); }},
        {"container", [](const CContainer& container) { return container.GetContainerType(); }},
        {"fault_shift",
         [](const CContainer& container) { return container.IsSupportFaultShift(); }},
        {"tasks", [](const CContainer& container) { return container.GetTotalTask(); }},
        {"requested_storage",
         [](const CContainer& container) { return container.GetReqStorage(); }},
        {"allocations",
         [](const CContainer& container) {
             std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfoList;
             container.GetAllocInfoList(allocInfoList);
             std::list<std::string> codes;
             for (const auto& info : allocInfoList) {
                 codes.push_back(info.cloudStorageCode + " " + std::to_string(info.usedStorage) +
                                 "/" + std::to_string(info.allocStorage));
             }
             return ListValue(codes);
         }},
    };
    ContainerMap containerMap;
    CContainerMgr::Instance().GetAllContainer(containerMap);
    std::list<CContainer> containerList;
    for (const auto& [addr, container] : containerMap) {
        containerList.push_back(container);
    }
    return {"containers", columns, containerList};
}

using Setting = std::pair<const char*, Json::Value>;

CTable SettingTable(const char* pszName, const std::list<Setting>& settings) {
    static const std::vector<CColumn<Setting>> columns{
        {"setting", [](const Setting& setting) { return setting.first; }},
        {"value", [](const Setting& setting) { return setting.second; }},
    };
    return {pszName, columns, settings};
}

CTable ConfigTable() {
    const CHostSettings& host = GetHostSettings();
    const CHandedOverSettings cluster = GetHandedOverSettings();
    return SettingTable("config", {
                                      {"cluster_code", host.strClusterCode},
                                      {"local_ip", host.strLocalIp},
                                      {"load_balance", cluster.bLoadBalance},
                                      {"fault_shift", cluster.bFaultShift},
                                      {"load_balance_one_period", cluster.bLoadBalanceOnePeriod},
                                      {"disk_threshold", cluster.iLoadBalanceDiskThreshold},
                                      {"net_threshold", cluster.iLoadBalanceNetThreshold},
                                      {"channel_threshold", cluster.iLoadBalanceChannelThreshold},
                                      {"cluster_forward_type", cluster.iClusterForwardType},
                                  });
}

CTable CgTable() {
    static const std::vector<CColumn<CClusterCGInfo>> columns{
        {"node", [](const CClusterCGInfo& info) { return info.GetNodeCode(); }},
        {"float_code", [](const CClusterCGInfo& info) { return info.GetFloatCode(); }},
        {"float_address", [](const CClusterCGInfo& info) { return info.GetFloatIp(); }},
        {"decision_version", [](const CClusterCGInfo& info) { return info.GetDecVerNum(); }},
    };
    CClusterCGInfoList document;
    CFrameworkCGCommon::Instance().GetClusterCGInfoList(document);
    std::list<CClusterCGInfo> cgList;
    document.GetClusterCGInfoList(cgList);
    return {"cg", columns, cgList};
}

/// A record that was never loaded names no node and no address.
template <typename Info>
bool IsLoaded(const Info& info) {
    return !info.GetNodeId().empty() || !info.GetNodeIp().empty();
}

CTable DatabaseTable() {
    static const std::vector<CColumn<CClusterDBInfo>> columns{
        {"role",
         [](const CClusterDBInfo& info) {
             return info.GetDBType() == CLUSTER_DB_MASTER ? "master" : "slave";
         }},
        {"node", [](const CClusterDBInfo& info) { return info.GetNodeId(); }},
        {"address", [](const CClusterDBInfo& info) { return info.GetNodeIp(); }},
        {"port", [](const CClusterDBInfo& info) { return info.GetPort(); }},
        {"token", [](const CClusterDBInfo& info) { return info.GetCDBToken(); }},
    };
    const CClusterDBZNodeInfo& document = CFrameworkCommon::Instance().GetClusterDBInfo();
    std::list<CClusterDBInfo> databases;
    document.GetAllSlaveDB(databases);
    if (IsLoaded(document.GetMasterDB())) {
        databases.push_front(document.GetMasterDB());
    }
    return {"database", columns, databases};
}

CTable ManagerTable() {
    static const std::vector<CColumn<CClusterMGRInfo>> columns{
        {"node", [](const CClusterMGRInfo& info) { return info.GetNodeId(); }},
        {"address", [](const CClusterMGRInfo& info) { return info.GetNodeIp(); }},
    };
    const CClusterMGRInfo& master = CFrameworkCommon::Instance().GetClusterMGRInfo().GetMasterMGR();
    return {"manager", columns,
            IsLoaded(master) ? std::list<CClusterMGRInfo>{master} : std::list<CClusterMGRInfo>{}};
}

CTable TaskTable() {
    using Model = std::pair<const std::string, CResourceTask>;
    static const std::vector<CColumn<Model>> columns{
        {"task", [](const Model& model) { return model.first; }},
        {"cpu", [](const Model& model) { return model.second.GetCpu(); }},
        {"mem", [](const Model& model) { return model.second.GetMem(); }},
        {"io", [](const Model& model) { return model.second.GetIO(); }},
        {"net", [](const Model& model) { return model.second.GetNet(); }},
        {"disk", [](const Model& model) { return model.second.GetDisk(); }},
    };
    CStdTaskMgr::TaskMap taskMap;
    CStdTaskMgr::Instance().GetAllStandardTask(taskMap);
    return {"tasks", columns, taskMap};
}

CTable VersionTable() {
    CScheduleMgr& schedule = CScheduleMgr::Instance();
    return SettingTable("versions", {
                                        {"decision", Json::UInt64{schedule.GetDecisionVerNum()}},
                                        {"master", Json::UInt64{schedule.GetMasterVerNum()}},
                                        {"scheduling", schedule.IsScheduling()},
                                    });
}

using Loader = bool (*)(std::ostream& errors);

/// A table, what must have loaded for it to be shown, and what belongs to it beside that; null for
/// nothing. A table without what is beside it shows what holds then.
struct CSubject {
    const char* pszName;
    CTable (*pTable)();
    Loader pLoad = nullptr;
    Loader pLoadBeside = nullptr;
};

constexpr char PSZ_PLUGINS[] = "plugins";

constexpr CSubject SUBJECTS[] = {
    {"nodes", NodeTable, LoadNodes},
    {"containers", ContainerTable, LoadNodes, LoadCloudStorage},
    {PSZ_PLUGINS, PluginTable},
    {"config", ConfigTable, LoadClusterConfig, LoadNodes},
    {"cg", CgTable, LoadCgList},
    {"database", DatabaseTable, LoadDatabase},
    {"manager", ManagerTable, LoadManager},
    {"tasks", TaskTable, LoadTasks},
    {"versions", VersionTable, LoadVersions},
};

/// Loads what subjects need, once each.
class CLoads {
public:
    explicit CLoads(std::ostream& errors) : m_errors(errors) {}

    /// Is it there?
    bool Load(Loader pLoad) {
        if (pLoad == nullptr) {
            return true;
        }
        const auto [it, bNew] = m_loads.try_emplace(pLoad, false);
        if (bNew) {
            it->second = pLoad(m_errors);
            m_bAllGood = m_bAllGood && it->second;
        }
        return it->second;
    }

    bool IsAllGood() const { return m_bAllGood; }

private:
    std::ostream& m_errors;
    std::map<Loader, bool> m_loads;
    bool m_bAllGood = true;
};

void PrintText(const std::list<CTable>& tables, std::ostream& output) {
    for (const CTable& table : tables) {
        output << (&table == &tables.front() ? "" : "\n");
        table.Print(output);
    }
}

void PrintJson(const std::list<CTable>& tables, std::ostream& output) {
    Json::Value root(Json::objectValue);
    for (const CTable& table : tables) {
        root[table.GetName()] = table.ToJson();
    }
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    builder["emitUTF8"] = true;
    output << Json::writeString(builder, root) << '\n';
}

void Print(const std::list<CTable>& tables, bool bJson, std::ostream& output) {
    (bJson ? PrintJson : PrintText)(tables, output);
}

/// Of the plug-ins also what did not load is shown.
int ShowPlugins(bool bJson, std::ostream& output, std::ostream& errors) {
    const bool bLoaded = LoadPlugins(errors);
    Print({PluginTable()}, bJson, output);
    return bLoaded ? EXIT_DONE : EXIT_COULD_NOT;
}

}  // namespace

std::vector<std::string> ShowSubjects() {
    std::vector<std::string> names;
    for (const CSubject& subject : SUBJECTS) {
        names.emplace_back(subject.pszName);
    }
    return names;
}

bool ShowNeedsStore(const std::string& strSubject) {
    return strSubject != PSZ_PLUGINS;
}

int Show(const std::string& strSubject, bool bJson, std::ostream& output, std::ostream& errors) {
    if (strSubject == PSZ_PLUGINS) {
        return ShowPlugins(bJson, output, errors);
    }
    if (!LoadPlugins(errors)) {
        return EXIT_COULD_NOT;
    }
    CLoads loads(errors);
    std::list<CTable> tables;
    for (const CSubject& subject : SUBJECTS) {
        if (!strSubject.empty() && strSubject != subject.pszName) {
            continue;
        }
        if (!loads.Load(subject.pLoad)) {
            errors << subject.pszName << ": not shown\n";
            continue;
        }
        loads.Load(subject.pLoadBeside);
        tables.push_back(subject.pTable());
    }
    Print(tables, bJson, output);
    return loads.IsAllGood() ? EXIT_DONE : EXIT_COULD_NOT;
}
