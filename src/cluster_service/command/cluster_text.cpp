#include "command/cluster_text.h"

#include "framework_service/cluster_znode_info.h"

namespace {

/// What is no array counts as an empty one, as it does for a load.
const Json::Value& ElementsOf(const Json::Value& object, const char* pszKey) {
    static const Json::Value none(Json::arrayValue);
    const Json::Value& elements = object[pszKey];
    return elements.isArray() ? elements : none;
}

}  // namespace

const Json::Value& NodesOf(const Json::Value& cluster) {
    return ElementsOf(cluster, PSZ_CLUSTER_NODE);
}

std::list<std::string> NodeIdsOf(const Json::Value& cluster) {
    std::list<std::string> nodeIds;
    for (const Json::Value& node : NodesOf(cluster)) {
        nodeIds.push_back(node[PSZ_NODE_ID].asString());
    }
    return nodeIds;
}

std::list<std::string> ContainersOf(const Json::Value& cluster, const std::string& strNodeId) {
    std::list<std::string> containers;
    for (const Json::Value& node : NodesOf(cluster)) {
        if (node[PSZ_NODE_ID].asString() != strNodeId) {
            continue;
        }
        for (const Json::Value& container : ElementsOf(node, PSZ_NODE_CONTAINER)) {
            containers.push_back(container[PSZ_NODE_CONTAINER_TYPE].asString());
        }
    }
    return containers;
}

std::list<CTurnedNode> NodesReadAsRemoved(const Json::Value& cluster) {
    std::list<CTurnedNode> turned;
    std::string strRemoved;
    std::size_t index = 0;
    for (const Json::Value& node : NodesOf(cluster)) {
        const std::string strStatus = node[PSZ_NODE_STATUS].asString();
        const std::string strId = node[PSZ_NODE_ID].asString();
        if (strStatus == PSZ_NODE_STATUS_REMOVED) {
            strRemoved = strRemoved.empty() ? strId : strRemoved;
        } else if (!strRemoved.empty()) {
            turned.push_back({index, strId, strStatus, strRemoved});
        }
        ++index;
    }
    return turned;
}
