#include "framework_service/cluster_znode_info.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "internal/framework_internal.h"
#include "internal/json_text.h"
#include "internal/null_pointer.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

namespace {

constexpr char OPERATION[] = "cluster znode info";

/// The container type that an entry names, if it names one.
std::optional<std::string_view> ContainerTypeOf(const Json::Value& containerJson) {
    std::string_view type;
    return ReadMembers<NODE_CONTAINER_KEYS>(containerJson, To<PSZ_NODE_CONTAINER_TYPE>(type))
               ? std::make_optional(type)
               : std::nullopt;
}

/// Reads the container types of a node. A list that holds them already stays as it is: most nodes
/// run what the node before them runs, and share its list. False, with the list unchanged, when an
/// entry names no type.
bool ReadContainerTypes(const Json::Value* pContainers,
                        CCopyOnWrite<std::list<std::string>>& containerList) {
    if (pContainers == nullptr) {
        containerList = {};
        return true;
    }
    const auto isOfType = [](const Json::Value& containerJson, const std::string& strType) {
        return ContainerTypeOf(containerJson) == strType;
    };
    if (std::equal(pContainers->begin(), pContainers->end(), containerList->begin(),
                   containerList->end(), isOfType)) {
        return true;
    }
    std::list<std::string> types;
    for (const Json::Value& containerJson : *pContainers) {
        const std::optional<std::string_view> type = ContainerTypeOf(containerJson);
        if (!type) {
            return false;
        }
        types.emplace_back(*type);
    }
    containerList = std::move(types);
    return true;
}

}  // namespace

int BuildNodeJson(const CNode& node, Json::Value& nodeJson) {
    nodeJson[PSZ_NODE_ID] = node.GetNodeId();
    nodeJson[PSZ_NODE_IP] = node.GetNodeIp();
    nodeJson[PSZ_NODE_IP_TYPE] = node.GetNodeIpType();
    nodeJson[PSZ_NODE_ROLE] = node.GetNodeRole();
    nodeJson[PSZ_NODE_DOMAIN_ROLE] = node.GetDomainRole();
    nodeJson[PSZ_NODE_STATUS] = node.GetMemberStatus() == CLUSTER_MEMBER_REMOVED
                                    ? PSZ_NODE_STATUS_REMOVED
                                    : PSZ_NODE_STATUS_NORMAL;
    std::list<std::string> containerList;
    node.GetContainerList(containerList);
    Json::Value containersJson(Json::arrayValue);
    for (const std::string& strType : containerList) {
        containersJson.append(Json::objectValue)[PSZ_NODE_CONTAINER_TYPE] = strType;
    }
    if (!containersJson.empty()) {
        nodeJson[PSZ_NODE_CONTAINER] = std::move(containersJson);
    }
    return ORVA_SUCCEED;
}

int ParseNodeJson(const Json::Value& nodeJson, CNode& node) {
    std::string strNodeId;
    std::string strNodeIp;
    int iNodeIpType = 0;
    int iNodeRole = 0;
    int iDomainRole = 0;
    std::string_view status;
    const Json::Value* pContainers = nullptr;
    if (!ReadMembers<CLUSTER_NODE_KEYS>(
            nodeJson, To<PSZ_NODE_ID>(strNodeId), To<PSZ_NODE_IP>(strNodeIp),
            To<PSZ_NODE_IP_TYPE>(iNodeIpType), To<PSZ_NODE_ROLE>(iNodeRole),
            To<PSZ_NODE_STATUS>(status), To<PSZ_NODE_DOMAIN_ROLE>(iDomainRole),
            To<PSZ_NODE_CONTAINER>(pContainers)) ||
        !ReadContainerTypes(pContainers, CFrameworkInternal::ContainerTypes(node))) {
        return LogFailure(OPERATION, ORVA_DATA_INVALID, "node id or node name is null or illegal.");
    }
    node.SetNodeId(strNodeId);
    node.SetNodeIp(strNodeIp);
    node.SetNodeIpType(iNodeIpType);
    node.SetNodeRole(iNodeRole);
    node.SetDomainRole(iDomainRole);
    if (status == PSZ_NODE_STATUS_REMOVED) {
        node.SetMemberStatus(CLUSTER_MEMBER_REMOVED);
    }
    return ORVA_SUCCEED;
}

CClusterZNodeInfo::CClusterZNodeInfo(const std::string& strClusterName,
                                     const std::string& strClusterRemark,
                                     const std::string& strClusterCode, int iClusterForwardType)
    : m_strClusterName(strClusterName),
      m_strClusterRemark(strClusterRemark),
      m_strClusterCode(strClusterCode),
      m_iClusterForwardType(iClusterForwardType) {}

int32_t CClusterZNodeInfo::ParseJson(const char* pszJson) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_DATA_INVALID);
    }
    Json::Value root;
    if (!ParseJsonText(pszJson, root)) {
        return LogFailure(OPERATION, ORVA_DATA_INVALID, "parse json fail, json text[%s].", pszJson);
    }
    CClusterZNodeInfo parsed;
    const Json::Value* pNodes = nullptr;
    if (!ReadMembers<CLUSTER_KEYS>(root, To<PSZ_CLUSTER_REMARK>(parsed.m_strClusterRemark),
                                   To<PSZ_CLUSTER_NAME>(parsed.m_strClusterName),
                                   To<PSZ_CLUSTER_CODE>(parsed.m_strClusterCode),
                                   To<PSZ_CLUSTER_FORWARD_TYPE>(parsed.m_iClusterForwardType),
                                   To<PSZ_CLUSTER_NODE>(pNodes))) {
        return LogFailure(OPERATION, ORVA_DATA_INVALID,
                          "cluster id or name is null or illegal, json text[%s].", pszJson);
    }
    if (pNodes != nullptr) {
        // One node for all entries: "Removed" carries over from the entry that says it to the rest.
        CNode node;
        for (const Json::Value& nodeJson : *pNodes) {
            if (ParseNodeJson(nodeJson, node) != ORVA_SUCCEED) {
                return LogFailure(OPERATION, ORVA_DATA_INVALID,
                                  "parse node json fail, json text[%s].", pszJson);
            }
            parsed.m_nodeList.push_back(node);
        }
    }
    *this = std::move(parsed);
    return ORVA_SUCCEED;
}

int32_t CClusterZNodeInfo::ToJson(char* pszJson, uint32_t iMaxLen) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_FAIL);
    }
    if (iMaxLen == 0) {
        return LogFailure(OPERATION, ORVA_DATA_INVALID, "to json fail, illegal length.");
    }
    Json::Value root;
    root[PSZ_CLUSTER_NAME] = m_strClusterName;
    root[PSZ_CLUSTER_REMARK] = m_strClusterRemark;
    root[PSZ_CLUSTER_CODE] = m_strClusterCode;
    root[PSZ_CLUSTER_FORWARD_TYPE] = m_iClusterForwardType;
    for (const CNode& node : m_nodeList) {
        BuildNodeJson(node, root[PSZ_CLUSTER_NODE].append(Json::objectValue));
    }
    WriteJsonText(root, pszJson, iMaxLen);
    return ORVA_SUCCEED;
}

void CClusterZNodeInfo::GetNodeList(std::list<CNode>& nodeList) const {
    nodeList.insert(nodeList.end(), m_nodeList.begin(), m_nodeList.end());
}
