#include "command/remove.h"

#include <json/value.h>

#include <algorithm>
#include <list>
#include <optional>

#include "command/cluster_text.h"
#include "command/exit_code.h"
#include "command/held_log.h"
#include "command/joined.h"
#include "command/load.h"
#include "command/store_document.h"
#include "command/store_text.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/framework_common.h"
#include "reference_host/strict_json.h"

namespace {

bool Contains(const std::list<std::string>& texts, const std::string& strText) {
    return std::find(texts.begin(), texts.end(), strText) != texts.end();
}

/// The cluster document as it is stored, null when there is none. False on failure, said on the
/// stream.
bool ReadCluster(Json::Value& cluster, std::ostream& errors) {
    cluster = {};
    const CStoreDocument& document = FindDocument(STORE_NODE_CLUSTER);
    const CStoredText stored = ReadFromStore(document);
    if (!StoreAnswered(document, stored.iCode, errors)) {
        return false;
    }
    const auto fault =
        stored.strText.empty() ? std::nullopt : ParseStrictJson(stored.strText, cluster);
    if (fault) {
        errors << ShownText(StorePath(document)) << ": " << ShownText(TextOf(*fault)) << '\n';
    }
    return !fault;
}

/// Says why the container cannot be removed. Can it?
bool IsRemovable(const Json::Value& cluster, const std::string& strNodeId,
                 const std::string& strContainerType, const std::string& strPlace,
                 std::ostream& errors) {
    const std::list<std::string> nodeIds = NodeIdsOf(cluster);
    if (!Contains(nodeIds, strNodeId)) {
        errors << "no node \"" << ShownText(strNodeId) << "\" in " << strPlace
               << "; the nodes: " << Joined(nodeIds) << '\n';
        return false;
    }
    if (std::count(nodeIds.begin(), nodeIds.end(), strNodeId) > 1) {
        errors << "node \"" << ShownText(strNodeId)
               << "\" stands in the cluster more than once: which one is "
               << "meant is not certain, so nothing was removed\n";
        return false;
    }
    const std::list<std::string> containers = ContainersOf(cluster, strNodeId);
    if (!Contains(containers, strContainerType)) {
        errors << "no container \"" << ShownText(strContainerType) << "\" on node \""
               << ShownText(strNodeId) << "\"; its containers: " << Joined(containers) << '\n';
        return false;
    }
    return true;
}

std::string RemovalQuestion(const Json::Value& cluster, const std::string& strNodeId,
                            const std::string& strContainerType) {
    std::string strQuestion =
        "Remove container " + ShownText(strContainerType) + " from node " + ShownText(strNodeId);
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

void PrintNode(const Json::Value& cluster, const std::string& strNodeId,
               const std::string& strPlace, std::ostream& output) {
    if (Contains(NodeIdsOf(cluster), strNodeId)) {
        output << strPlace << " holds node " << ShownText(strNodeId)
               << " with: " << Joined(ContainersOf(cluster, strNodeId)) << '\n';
    } else {
        output << strPlace << " holds node " << ShownText(strNodeId) << " no longer\n";
    }
}

}  // namespace

int Remove(CStage& stage, const std::string& strNodeId, const std::string& strContainerType,
           const CChangeOptions& options, std::ostream& output, std::ostream& errors) {
    if (!LoadPlugins(errors)) {
        return EXIT_COULD_NOT;
    }
    Json::Value cluster;
    CPlannedChange change;
    change.workOut = [&] {
        if (!LoadCluster(errors) || !ReadCluster(cluster, errors)) {
            return EXIT_COULD_NOT;
        }
        if (!IsRemovable(cluster, strNodeId, strContainerType, options.strPlace, errors)) {
            return EXIT_REFUSED;
        }
        stage.BeginChange();
        const int iCode = RunLogged([&] {
            CFrameworkCommon::Instance().RemoveNodeContainerAndFlush(strNodeId, strContainerType);
            return stage.GetChanges().empty() ? ORVA_FAIL : ORVA_SUCCEED;
        });
        if (iCode != ORVA_SUCCEED) {
            errors << "the removal did not reach the store: written anew, the document would be "
                   << "longer than " << FindDocument(STORE_NODE_CLUSTER).GetMaxSize() << " bytes\n";
            return EXIT_COULD_NOT;
        }
        return EXIT_DONE;
    };
    change.question = [&] { return RemovalQuestion(cluster, strNodeId, strContainerType); };
    change.isAskedFor = [&](const std::string& strPath) {
        const std::string strNode = std::string(PSZ_CLUSTER_NODE) + "[\"" + strNodeId + "\"]";
        return strPath.compare(0, strNode.size(), strNode) == 0;
    };
    change.report = [&] {
        if (ReadCluster(cluster, errors)) {
            PrintNode(cluster, strNodeId, options.strPlace, output);
        }
    };
    return CarryOut(stage, change, options, output, errors);
}
