#include "command/check.h"

#include <json/value.h>

#include <algorithm>
#include <cstring>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "command/cluster_text.h"
#include "command/document_fault.h"
#include "command/exit_code.h"
#include "command/json_text.h"
#include "command/load.h"
#include "command/plugin_table.h"
#include "command/store_document.h"
#include "command/store_text.h"
#include "command/table.h"
#include "common_service/oper_common.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "reference_host/store.h"

namespace {

/// A document may grow by this much when the library writes it: it renders a character as six.
constexpr std::size_t NUMERIC_MAX_GROWTH = 6;

constexpr char PSZ_NOTE[] = "note";
constexpr char PSZ_WARNING[] = "warning";
constexpr char PSZ_ERROR[] = "error";

/// Where a finding stands that is about the plug-in folder and no document.
constexpr char PSZ_PLUGINS[] = "plugins";

struct CFinding {
    const char* pszSeverity;
    std::string strDocument;
    std::string strText;
};

struct CCheckedDocument {
    const CStoreDocument* pDocument;
    CStoredText stored;
    std::optional<std::string> fault;
    Json::Value root;  ///< null unless the document is good
};

/// Everything that the checks look at. Documents that are absent or bad are empty here.
struct CCheckedStore {
    std::vector<CCheckedDocument> documents;
    std::list<CNode> nodeList;
    std::map<std::string, CloudStorageInfo> cloudStorageMap;
    Json::Value cluster;
    Json::Value clusterConfig;
    std::list<CClusterCGInfo> cgList;
    std::optional<CClusterDBInfo> masterDatabase;
    std::list<CClusterDBInfo> slaveDatabases;
    std::optional<CClusterMGRInfo> manager;
    bool bPluginsLoaded = false;
    std::list<CPluginFile> pluginFiles;
};

using Findings = std::list<CFinding>;

std::string Quoted(const std::string& strText) {
    return "\"" + strText + "\"";
}

/// A document is called by its suffix in the store, as "Cluster".
void Add(Findings& findings, const char* pszSeverity, const ORVA_STORE_NODE& node,
         const std::string& strText) {
    findings.push_back({pszSeverity, node.pszSuffix + 1, strText});
}

void CheckPresence(const CCheckedStore& store, Findings& findings) {
    const bool bNothing =
        std::none_of(store.documents.begin(), store.documents.end(),
                     [](const CCheckedDocument& checked) { return checked.stored.bExists; });
    for (const CCheckedDocument& checked : store.documents) {
        if (!checked.stored.bExists && checked.stored.iCode == ORVA_SUCCEED) {
            Add(findings, bNothing ? PSZ_WARNING : PSZ_NOTE, checked.pDocument->node, "is absent");
        } else if (checked.stored.strText.empty() && !checked.fault) {
            Add(findings, PSZ_NOTE, checked.pDocument->node, "is without data");
        }
    }
}

void CheckText(const CCheckedStore& store, Findings& findings) {
    for (const CCheckedDocument& checked : store.documents) {
        if (checked.fault) {
            Add(findings, PSZ_ERROR, checked.pDocument->node, *checked.fault);
        }
    }
}

/// The size of the text as the library would write it.
std::size_t RenderedSize(const CCheckedDocument& checked) {
    std::vector<char> buffer(checked.stored.strText.size() * NUMERIC_MAX_GROWTH +
                             checked.pDocument->node.uiBufLen);
    const auto pDocument = checked.pDocument->pMake();
    pDocument->ParseJson(checked.stored.strText.c_str());
    pDocument->ToJson(buffer.data(), static_cast<uint32_t>(buffer.size()));
    return std::strlen(buffer.data());
}

void CheckSize(const CCheckedStore& store, Findings& findings) {
    for (const CCheckedDocument& checked : store.documents) {
        if (checked.root.isNull()) {
            continue;
        }
        const std::size_t size = std::max(checked.stored.strText.size(), RenderedSize(checked));
        const std::size_t maxSize = checked.pDocument->GetMaxSize();
        if (size > maxSize) {
            Add(findings, PSZ_ERROR, checked.pDocument->node,
                "would take " + std::to_string(size) +
                    " bytes when the service writes it, at most " + std::to_string(maxSize) +
                    " fit");
        } else if (IsNearlyFull(size, maxSize)) {
            Add(findings, PSZ_WARNING, checked.pDocument->node,
                "takes " + std::to_string(size) + " bytes of at most " + std::to_string(maxSize) +
                    ", more than which the service does not write");
        }
    }
}

void CheckNodeIds(const CCheckedStore& store, Findings& findings) {
    std::map<std::string, int> counts;
    for (const CNode& node : store.nodeList) {
        if (++counts[node.GetNodeId()] == 2) {
            Add(findings, PSZ_ERROR, STORE_NODE_CLUSTER,
                "node id " + Quoted(node.GetNodeId()) + " stands there more than once");
        }
    }
}

std::list<std::string> ContainersOf(const CNode& node) {
    std::list<std::string> containerList;
    node.GetContainerList(containerList);
    return containerList;
}

std::string AddressText(const CContainerAddr& addr) {
    return Quoted(addr.GetContainerType()) + " on node " + Quoted(addr.GetNodeId());
}

void CheckContainerAddresses(const CCheckedStore& store, Findings& findings) {
    std::set<CContainerAddr> addresses;
    for (const CNode& node : store.nodeList) {
        for (const std::string& strType : ContainersOf(node)) {
            const CContainerAddr addr(node.GetNodeId(), strType);
            const auto [it, bNew] = addresses.insert(addr);
            if (!bNew) {
                const std::string strFault = *it == addr ? " stands there more than once"
                                                         : " reads the same as " + AddressText(*it);
                Add(findings, PSZ_ERROR, STORE_NODE_CLUSTER,
                    "container " + AddressText(addr) + strFault + ", the cluster will not load");
            }
        }
    }
}

void CheckNormalBehindRemoved(const CCheckedStore& store, Findings& findings) {
    for (const CTurnedNode& node : NodesReadAsRemoved(store.cluster)) {
        Add(findings, PSZ_WARNING, STORE_NODE_CLUSTER,
            "node " + Quoted(node.strId) + " says " + Quoted(node.strStatus) +
                " and loads as removed, since it stands behind the removed node " +
                Quoted(node.strRemoved));
    }
}

void CheckNodeIps(const CCheckedStore& store, Findings& findings) {
    for (const CNode& node : store.nodeList) {
        if (COperCommon::IPToUint(node.GetNodeIp()) == 0) {
            Add(findings, PSZ_WARNING, STORE_NODE_CLUSTER,
                "node " + Quoted(node.GetNodeId()) + " has " + Quoted(node.GetNodeIp()) +
                    " for an address");
        }
    }
}

/// Every container type that a plug-in has an answer for.
std::set<std::string> KnownContainerTypes(const CCheckedStore& store) {
    std::set<std::string> types{CONTAINER_TYPE_CLOUD_STORAGE};
    for (const CPluginFile& file : store.pluginFiles) {
        const CPluginClaims& held = file.held;
        types.insert(held.containers.begin(), held.containers.end());
        types.insert(held.faultShiftContainers.begin(), held.faultShiftContainers.end());
        types.insert(held.loadBalanceContainers.begin(), held.loadBalanceContainers.end());
        for (const auto& [strRealType, logicTypes] : held.containerBinds) {
            types.insert(strRealType);
            types.insert(logicTypes.begin(), logicTypes.end());
        }
    }
    return types;
}

void CheckContainerTypes(const CCheckedStore& store, Findings& findings) {
    if (!store.bPluginsLoaded) {
        return;
    }
    const std::set<std::string> knownTypes = KnownContainerTypes(store);
    std::map<std::string, int> unknownTypes;
    for (const CNode& node : store.nodeList) {
        for (const std::string& strType : ContainersOf(node)) {
            if (knownTypes.count(strType) == 0) {
                ++unknownTypes[strType];
            }
        }
    }
    for (const auto& [strType, iCount] : unknownTypes) {
        Add(findings, PSZ_WARNING, STORE_NODE_CLUSTER,
            "no plug-in knows the container type " + Quoted(strType) + ", which stands there " +
                std::to_string(iCount) + " times");
    }
}

void CheckCloudStorageNodes(const CCheckedStore& store, Findings& findings) {
    for (const auto& [strNodeId, info] : store.cloudStorageMap) {
        bool bNode = false;
        bool bContainer = false;
        for (const CNode& node : store.nodeList) {
            const auto containerList = ContainersOf(node);
            bNode = bNode || node.GetNodeId() == strNodeId;
            bContainer =
                bContainer || (node.GetNodeId() == strNodeId &&
                               std::find(containerList.begin(), containerList.end(),
                                         CONTAINER_TYPE_CLOUD_STORAGE) != containerList.end());
        }
        if (!bContainer) {
            Add(findings, PSZ_WARNING, STORE_NODE_CLOUD_STORAGE,
                "the entry of node " + Quoted(strNodeId) + " is of no use: the node " +
                    (bNode ? std::string("has no container ") + CONTAINER_TYPE_CLOUD_STORAGE
                           : "is not in the cluster"));
        }
    }
}

void CheckThresholds(const CCheckedStore& store, Findings& findings) {
    if (!store.clusterConfig[PSZ_CLUSTER_LOAD_BALANCE_THRESHOLD].isNull()) {
        Add(findings, PSZ_WARNING, STORE_NODE_CLUSTER_CONFIG,
            Quoted(PSZ_CLUSTER_LOAD_BALANCE_THRESHOLD) +
                " is ignored on reading: the thresholds stay at their defaults");
    }
}

bool IsInCluster(const CCheckedStore& store, const std::string& strNodeId) {
    return std::any_of(store.nodeList.begin(), store.nodeList.end(),
                       [&](const CNode& node) { return node.GetNodeId() == strNodeId; });
}

/// A node that another document speaks of, and as what.
void CheckMember(const CCheckedStore& store, const ORVA_STORE_NODE& document,
                 const std::string& strWhat, const std::string& strNodeId, Findings& findings) {
    if (!IsInCluster(store, strNodeId)) {
        Add(findings, PSZ_WARNING, document,
            strWhat + " " + Quoted(strNodeId) + " is not in the cluster");
    }
}

/// Reports each text that several records have.
template <class Record>
void CheckUnique(const std::list<Record>& records, const std::string& (Record::*pGet)() const,
                 const ORVA_STORE_NODE& document, const std::string& strWhat, Findings& findings) {
    std::map<std::string, int> counts;
    for (const Record& record : records) {
        if (++counts[(record.*pGet)()] == 2) {
            Add(findings, PSZ_WARNING, document,
                strWhat + " " + Quoted((record.*pGet)()) + " stands there more than once");
        }
    }
}

void CheckCgEntries(const CCheckedStore& store, Findings& findings) {
    const ORVA_STORE_NODE& document = STORE_NODE_CG_LIST;
    for (const CClusterCGInfo& info : store.cgList) {
        CheckMember(store, document, "the node", info.GetNodeCode(), findings);
    }
    CheckUnique(store.cgList, &CClusterCGInfo::GetNodeCode, document, "node", findings);
    CheckUnique(store.cgList, &CClusterCGInfo::GetFloatCode, document, "float code", findings);
    CheckUnique(store.cgList, &CClusterCGInfo::GetFloatIp, document, "float address", findings);
    const std::size_t maxEntries = store.nodeList.size() / 2;
    if (store.cgList.size() > maxEntries) {
        Add(findings, PSZ_WARNING, document,
            "has " + std::to_string(store.cgList.size()) + " entries, and " +
                std::to_string(store.nodeList.size()) + " nodes admit at most " +
                std::to_string(maxEntries));
    }
}

void CheckDatabase(const CCheckedStore& store, Findings& findings) {
    if (!store.masterDatabase) {
        return;
    }
    const ORVA_STORE_NODE& document = STORE_NODE_CENTER_DB;
    const std::string& strMaster = store.masterDatabase->GetNodeId();
    CheckMember(store, document, "the master", strMaster, findings);
    for (const CClusterDBInfo& slave : store.slaveDatabases) {
        CheckMember(store, document, "the slave", slave.GetNodeId(), findings);
        if (slave.GetNodeId() == strMaster) {
            Add(findings, PSZ_WARNING, document,
                "the master " + Quoted(strMaster) + " is a slave too");
        }
    }
    CheckUnique(store.slaveDatabases, &CClusterDBInfo::GetNodeId, document, "slave", findings);
    CheckUnique(store.slaveDatabases, &CClusterDBInfo::GetCDBToken, document, "slave token",
                findings);
    if (store.slaveDatabases.empty()) {
        Add(findings, PSZ_WARNING, document,
            "has no slave: what a service writes of it cannot be read again");
    }
}

void CheckManager(const CCheckedStore& store, Findings& findings) {
    if (store.manager) {
        CheckMember(store, STORE_NODE_MGR, "the manager", store.manager->GetNodeId(), findings);
    }
}

void CheckPlugins(const CCheckedStore& store, Findings& findings) {
    for (const CPluginFile& file : store.pluginFiles) {
        for (const CLostClaim& claim : file.lost) {
            findings.push_back(
                {PSZ_WARNING, PSZ_PLUGINS, file.strFile + " loses " + LostText(claim)});
        }
        if (!file.strFailure.empty()) {
            findings.push_back(
                {PSZ_ERROR, PSZ_PLUGINS, file.strFile + " is not loaded: " + file.strFailure});
        }
    }
}

constexpr void (*CHECKS[])(const CCheckedStore&, Findings&) = {
    CheckPresence,
    CheckText,
    CheckSize,
    CheckNodeIds,
    CheckContainerAddresses,
    CheckNormalBehindRemoved,
    CheckNodeIps,
    CheckContainerTypes,
    CheckCloudStorageNodes,
    CheckThresholds,
    CheckCgEntries,
    CheckDatabase,
    CheckManager,
    CheckPlugins,
};

/// Reads one document. A text that the store would not hand out, being too long, is a fault of the
/// document and not of the store.
CCheckedDocument ReadDocument(const CStoreDocument& document) {
    CCheckedDocument checked{&document, ReadFromStore(document), {}, {}};
    if (checked.stored.iCode == STORE_TEXT_TOO_LONG) {
        checked.stored.iCode = ORVA_SUCCEED;
        checked.stored.bExists = true;
        checked.fault = "is longer than " + std::to_string(document.GetMaxSize()) + " bytes";
    } else if (!checked.stored.strText.empty()) {
        checked.fault = FindFault(document, checked.stored.strText);
    }
    if (!checked.fault && !checked.stored.strText.empty()) {
        ParseText(checked.stored.strText, checked.root);
    }
    return checked;
}

const CCheckedDocument& Find(const CCheckedStore& store, const ORVA_STORE_NODE& node) {
    return *std::find_if(
        store.documents.begin(), store.documents.end(),
        [&node](const CCheckedDocument& checked) { return &checked.pDocument->node == &node; });
}

template <class Document>
Document Parse(const CCheckedDocument& checked) {
    Document document;
    if (!checked.root.isNull()) {
        document.ParseJson(checked.stored.strText.c_str());
    }
    return document;
}

bool ReadStore(CCheckedStore& store, std::ostream& errors) {
    for (const CStoreDocument& document : StoreDocuments()) {
        store.documents.push_back(ReadDocument(document));
        if (!StoreAnswered(document, store.documents.back().stored.iCode, errors)) {
            return false;
        }
    }
    store.cluster = Find(store, STORE_NODE_CLUSTER).root;
    store.clusterConfig = Find(store, STORE_NODE_CLUSTER_CONFIG).root;
    Parse<CClusterZNodeInfo>(Find(store, STORE_NODE_CLUSTER)).GetNodeList(store.nodeList);
    store.cloudStorageMap =
        Parse<CClusterCloudStorageZNodeInfo>(Find(store, STORE_NODE_CLOUD_STORAGE))
            .GetCloudStorageInfoMap();
    Parse<CClusterCGInfoList>(Find(store, STORE_NODE_CG_LIST)).GetClusterCGInfoList(store.cgList);
    const CCheckedDocument& database = Find(store, STORE_NODE_CENTER_DB);
    if (!database.root.isNull()) {
        const auto parsed = Parse<CClusterDBZNodeInfo>(database);
        store.masterDatabase = parsed.GetMasterDB();
        parsed.GetAllSlaveDB(store.slaveDatabases);
    }
    const CCheckedDocument& manager = Find(store, STORE_NODE_MGR);
    if (!manager.root.isNull()) {
        store.manager = Parse<CClusterMGRZNodeInfo>(manager).GetMasterMGR();
    }
    return true;
}

int Report(const Findings& findings, std::ostream& output) {
    if (findings.empty()) {
        output << "all well: " << StoreDocuments().size() << " documents checked\n";
        return EXIT_DONE;
    }
    CTable("findings",
           std::vector<CColumn<CFinding>>{
               {"severity", [](const CFinding& finding) { return finding.pszSeverity; }},
               {"document", [](const CFinding& finding) { return finding.strDocument; }},
               {"finding", [](const CFinding& finding) { return finding.strText; }}},
           findings)
        .Print(output);
    const bool bOnlyNotes =
        std::all_of(findings.begin(), findings.end(),
                    [](const CFinding& finding) { return finding.pszSeverity == PSZ_NOTE; });
    return bOnlyNotes ? EXIT_DONE : EXIT_FINDINGS;
}

}  // namespace

int Check(std::ostream& output, std::ostream& errors) {
    CCheckedStore store;
    if (!ReadStore(store, errors)) {
        return EXIT_COULD_NOT;
    }
    store.bPluginsLoaded = LoadPlugins(errors);
    store.pluginFiles = CPluginMgr::Instance().GetPluginFiles();
    Findings findings;
    for (const auto pCheck : CHECKS) {
        pCheck(store, findings);
    }
    const int iResult = Report(findings, output);
    return store.bPluginsLoaded ? iResult : EXIT_COULD_NOT;
}
