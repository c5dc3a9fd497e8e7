#include "command/change.h"

#include <json/value.h>

#include <algorithm>
#include <list>
#include <map>
#include <optional>

#include "command/cluster_text.h"
#include "command/confirm.h"
#include "command/exit_code.h"
#include "command/load.h"
#include "command/store_document.h"
#include "command/store_text.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "reference_host/strict_json.h"

namespace {

std::string Joined(const std::list<std::string>& texts) {
    std::string strJoined;
    for (const std::string& strText : texts) {
        strJoined.append(strJoined.empty() ? "" : ", ").append(strText);
    }
    return strJoined.empty() ? "none" : strJoined;
}

bool Contains(const std::list<std::string>& texts, const std::string& strText) {
    return std::find(texts.begin(), texts.end(), strText) != texts.end();
}

/// The cluster document as it is stored, null when there is none. False on failure, said on the
/// stream.
bool ReadCluster(Json::Value& cluster, std::ostream& errors) {
    const CStoreDocument& document = FindDocument(STORE_NODE_CLUSTER);
    const CStoredText stored = ReadFromStore(document);
    if (!StoreAnswered(document, stored.iCode, errors)) {
        return false;
    }
    const auto fault =
        stored.strText.empty() ? std::nullopt : ParseStrictJson(stored.strText, cluster);
    if (fault) {
        errors << StorePath(document) << ": " << *fault << '\n';
    }
    return !fault;
}

/// Says why the container cannot be removed. Can it?
bool IsRemovable(const Json::Value& cluster, const std::string& strNodeId,
                 const std::string& strContainerType, std::ostream& errors) {
    const std::list<std::string> nodeIds = NodeIdsOf(cluster);
    if (!Contains(nodeIds, strNodeId)) {
        errors << "no node \"" << strNodeId << "\" in the cluster; the nodes: " << Joined(nodeIds)
               << '\n';
        return false;
    }
    if (std::count(nodeIds.begin(), nodeIds.end(), strNodeId) > 1) {
        errors << "node \"" << strNodeId << "\" stands in the cluster more than once: which one is "
               << "meant is not certain, so nothing was removed\n";
        return false;
    }
    const std::list<std::string> containers = ContainersOf(cluster, strNodeId);
    if (!Contains(containers, strContainerType)) {
        errors << "no container \"" << strContainerType << "\" on node \"" << strNodeId
               << "\"; its containers: " << Joined(containers) << '\n';
        return false;
    }
    return true;
}

std::string RemovalQuestion(const Json::Value& cluster, const std::string& strNodeId,
                            const std::string& strContainerType) {
    std::string strQuestion = "Remove container " + strContainerType + " from node " + strNodeId;
    if (ContainersOf(cluster, strNodeId).size() == 1) {
        strQuestion += ", and the node, since it is the last one";
    }
    std::list<std::string> turned;
    for (const CTurnedNode& node : NodesReadAsRemoved(cluster)) {
        if (node.strId != strNodeId) {
            turned.push_back(node.strId);
        }
    }
    if (!turned.empty()) {
        strQuestion += ", and write as removed the nodes behind a removed one: " + Joined(turned);
    }
    return strQuestion + "?";
}

void PrintNode(const Json::Value& cluster, const std::string& strNodeId, std::ostream& output) {
    if (Contains(NodeIdsOf(cluster), strNodeId)) {
        output << "the store holds node " << strNodeId
               << " with: " << Joined(ContainersOf(cluster, strNodeId)) << '\n';
    } else {
        output << "the store holds node " << strNodeId << " no longer\n";
    }
}

void PrintStatusChanges(const Json::Value& before, const Json::Value& after, std::ostream& output) {
    std::map<std::string, std::string> former;
    for (const Json::Value& node : NodesOf(before)) {
        former[node[PSZ_NODE_ID].asString()] = node[PSZ_NODE_STATUS].asString();
    }
    for (const Json::Value& node : NodesOf(after)) {
        const std::string strId = node[PSZ_NODE_ID].asString();
        const std::string strStatus = node[PSZ_NODE_STATUS].asString();
        if (former[strId] != strStatus) {
            output << "node " << strId << " is now \"" << strStatus << "\" in the store, was \""
                   << former[strId] << "\"\n";
        }
    }
}

/// The centre database as it is stored, in words.
std::string DatabaseText(const CClusterDBZNodeInfo& document) {
    std::list<CClusterDBInfo> slaves;
    document.GetAllSlaveDB(slaves);
    std::list<std::string> slaveIds;
    for (const CClusterDBInfo& slave : slaves) {
        slaveIds.push_back(slave.GetNodeId());
    }
    return "master " + document.GetMasterDB().GetNodeId() + ", slaves: " + Joined(slaveIds);
}

/// Says why the node cannot be promoted. Can it?
bool IsPromotable(const CClusterDBZNodeInfo& document, const std::string& strNodeId,
                  std::ostream& errors) {
    if (document.GetMasterDB().GetNodeId().empty()) {
        errors << "the store holds no centre database\n";
        return false;
    }
    if (document.IsMasterDB(strNodeId)) {
        errors << "node \"" << strNodeId << "\" is the master of the centre database already\n";
        return false;
    }
    std::list<CClusterDBInfo> slaves;
    document.GetAllSlaveDB(slaves);
    CClusterDBInfo slave;
    if (!document.GetCDBInfo(strNodeId, slave)) {
        errors << "node \"" << strNodeId << "\" is no slave of the centre database; it has "
               << DatabaseText(document) << '\n';
        return false;
    }
    const auto sameToken = [&slave](const CClusterDBInfo& other) {
        return other.GetCDBToken() == slave.GetCDBToken();
    };
    if (std::count_if(slaves.begin(), slaves.end(), sameToken) > 1) {
        errors << "node \"" << strNodeId << "\" shares its slot \"" << slave.GetCDBToken()
               << "\" with another slave: give each database a DBToken first\n";
        return false;
    }
    return true;
}

}  // namespace

int Remove(const std::string& strNodeId, const std::string& strContainerType, bool bYes,
           std::ostream& output, std::ostream& errors) {
    if (!LoadService(errors)) {
        return EXIT_COULD_NOT;
    }
    Json::Value before;
    if (!ReadCluster(before, errors)) {
        return EXIT_COULD_NOT;
    }
    if (!IsRemovable(before, strNodeId, strContainerType, errors) ||
        !Confirm(RemovalQuestion(before, strNodeId, strContainerType), bYes, errors)) {
        return EXIT_FINDINGS;
    }
    CFrameworkCommon::Instance().RemoveNodeContainerAndFlush(strNodeId, strContainerType);
    Json::Value after;
    if (!ReadCluster(after, errors)) {
        errors << "what the store holds now is not known\n";
        return EXIT_COULD_NOT;
    }
    PrintNode(after, strNodeId, output);
    PrintStatusChanges(before, after, output);
    if (Contains(ContainersOf(after, strNodeId), strContainerType)) {
        errors << "the removal did not reach the store, the log says why\n";
        return EXIT_COULD_NOT;
    }
    return EXIT_DONE;
}

int Promote(const std::string& strNodeId, bool bYes, std::ostream& output, std::ostream& errors) {
    if (!LoadDatabase(errors)) {
        return EXIT_COULD_NOT;
    }
    CFrameworkCommon& framework = CFrameworkCommon::Instance();
    const CClusterDBZNodeInfo before = framework.GetClusterDBInfo();
    if (!IsPromotable(before, strNodeId, errors) ||
        !Confirm("Make node " + strNodeId + " the master of the centre database, in place of " +
                     before.GetMasterDB().GetNodeId() + "?",
                 bYes, errors)) {
        return EXIT_FINDINGS;
    }
    CClusterDBInfo promoted;
    before.GetCDBInfo(strNodeId, promoted);
    promoted.SetDBType(CLUSTER_DB_MASTER);
    const int iCode = framework.UpdateClusterCDB(promoted, true);
    CClusterDBZNodeInfo after;
    if (after.ParseFromZK(false) != ORVA_SUCCEED) {
        errors << "the promotion answered code " << iCode
               << ", and what the store holds now is not known, the log says why\n";
        return EXIT_COULD_NOT;
    }
    output << "the store holds " << DatabaseText(after) << '\n';
    if (iCode != ORVA_SUCCEED || !after.IsMasterDB(strNodeId)) {
        errors << "the promotion did not reach the store: code " << iCode << ", the log says why\n";
        return EXIT_COULD_NOT;
    }
    return EXIT_DONE;
}
