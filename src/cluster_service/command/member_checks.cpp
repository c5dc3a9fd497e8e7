#include <algorithm>
#include <map>

#include "command/checks.h"
#include "common_service/tarn_def.h"

namespace {

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
template <typename Record>
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

}  // namespace

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
