#pragma once

#include <json/value.h>

#include <cstdint>
#include <list>
#include <string>

#include "common_service/data/communication_data.h"
#include "common_service/tarn_def.h"
#include "framework_service/document_keys.h"
#include "framework_service/store_path.h"
#include "framework_service/tarn_node.h"

inline constexpr ORVA_STORE_NODE STORE_NODE_CLUSTER{"/Cluster", 65536};

inline constexpr char PSZ_CLUSTER_NAME[] = "ClusterName";
inline constexpr char PSZ_CLUSTER_REMARK[] = "ClusterRemark";
inline constexpr char PSZ_CLUSTER_CODE[] = "ClusterCode";
inline constexpr char PSZ_CLUSTER_FORWARD_TYPE[] = "ClusterForwardType";
inline constexpr char PSZ_CLUSTER_NODE[] = "ClusterNode";
inline constexpr char PSZ_NODE_ID[] = "NodeID";
inline constexpr char PSZ_NODE_IP[] = "NodeIP";
inline constexpr char PSZ_NODE_IP_TYPE[] = "NodeIPType";
inline constexpr char PSZ_NODE_ROLE[] = "NodeRole";
inline constexpr char PSZ_NODE_DOMAIN_ROLE[] = "DomainRole";
inline constexpr char PSZ_NODE_STATUS[] = "Status";
inline constexpr char PSZ_NODE_CONTAINER[] = "Container";
inline constexpr char PSZ_NODE_CONTAINER_TYPE[] = "ContainerType";
inline constexpr char PSZ_NODE_STATUS_NORMAL[] = "Normal";
inline constexpr char PSZ_NODE_STATUS_REMOVED[] = "Removed";

inline constexpr const char* NODE_STATUS_TEXTS[] = {PSZ_NODE_STATUS_NORMAL,
                                                    PSZ_NODE_STATUS_REMOVED};

inline constexpr CDocumentKey NODE_CONTAINER_KEYS[] = {
    {PSZ_NODE_CONTAINER_TYPE, EKeyType::STRING, EKeyNeed::REQUIRED},
};

inline constexpr CDocumentKey CLUSTER_NODE_KEYS[] = {
    {PSZ_NODE_ID, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_NODE_IP, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_NODE_IP_TYPE, EKeyType::INTEGER, EKeyNeed::REQUIRED},
    {PSZ_NODE_ROLE, EKeyType::INTEGER, EKeyNeed::REQUIRED},
    {PSZ_NODE_DOMAIN_ROLE, EKeyType::INTEGER, EKeyNeed::REQUIRED},
    {PSZ_NODE_STATUS, EKeyType::STRING, EKeyNeed::REQUIRED, {}, NODE_STATUS_TEXTS},
    {PSZ_NODE_CONTAINER, EKeyType::ARRAY, EKeyNeed::OPTIONAL, NODE_CONTAINER_KEYS},
};

inline constexpr CDocumentKey CLUSTER_KEYS[] = {
    {PSZ_CLUSTER_NAME, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_REMARK, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_CODE, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_FORWARD_TYPE, EKeyType::INTEGER, EKeyNeed::OPTIONAL},
    {PSZ_CLUSTER_NODE, EKeyType::ARRAY, EKeyNeed::OPTIONAL, CLUSTER_NODE_KEYS},
};

inline constexpr CDocumentKey CLUSTER_DOCUMENT{"", EKeyType::OBJECT, EKeyNeed::REQUIRED,
                                               CLUSTER_KEYS};

/// Sets a node's stored members on an object. Always 0.
int BuildNodeJson(const CNode& node, Json::Value& nodeJson);

/// Reads a node's stored members. Returns 0; or, logged, ORVA_DATA_INVALID with the node untouched.
/// Only "Removed" acts on the member status, any other status leaves it as it is.
int ParseNodeJson(const Json::Value& nodeJson, CNode& node);

/// The membership of the cluster: its name, its forward type, its nodes with their containers. What
/// is configured about a node is stored, what is measured is not.
class CClusterZNodeInfo : public CBaseJsonObject {
public:
    CClusterZNodeInfo() = default;
    CClusterZNodeInfo(const std::string& strClusterName, const std::string& strClusterRemark,
                      const std::string& strClusterCode, int iClusterForwardType);

    /// Replaces everything, or changes nothing. Once a node says "Removed", it and every node
    /// behind it come out as removed.
    int32_t ParseJson(const char* pszJson) override;

    /// A length of 0 is refused with ORVA_DATA_INVALID.
    int32_t ToJson(char* pszJson, uint32_t iMaxLen) override;

    void AddNode(const CNode& node) { m_nodeList.push_back(node); }
    void SetNodeList(const std::list<CNode>& nodeList) { m_nodeList = nodeList; }

    /// Appends copies behind what the argument holds.
    void GetNodeList(std::list<CNode>& nodeList) const;

    const std::string& GetClusterName() const { return m_strClusterName; }
    void SetClusterName(const std::string& strName) { m_strClusterName = strName; }
    const std::string& GetClusterRemark() const { return m_strClusterRemark; }
    void SetClusterRemark(const std::string& strRemark) { m_strClusterRemark = strRemark; }
    const std::string& GetClusterCode() const { return m_strClusterCode; }
    void SetClusterCode(const std::string& strCode) { m_strClusterCode = strCode; }
    int GetClusterForwardType() const { return m_iClusterForwardType; }
    void SetClusterForwardType(int iForwardType) { m_iClusterForwardType = iForwardType; }

private:
    friend class CFrameworkInternal;

    std::string m_strClusterName;
    std::string m_strClusterRemark;
    std::string m_strClusterCode;
    int m_iClusterForwardType = 0;
    std::list<CNode> m_nodeList;
};
