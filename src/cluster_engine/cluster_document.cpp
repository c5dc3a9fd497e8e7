#include "cluster_engine/cluster_document.h"

#include <algorithm>
#include <utility>

#include "cluster_engine/library_document.h"
#include "cluster_engine/members.h"
#include "common_service/global_config.h"
#include "common_service/net_factory.h"
#include "common_service/tarn_def.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/node_mgr.h"

namespace {

std::list<std::string> TypesOf(const CNode& node) {
    std::list<std::string> types;
    node.GetContainerList(types);
    return types;
}

bool Has(const std::list<std::string>& types, const std::string& strType) {
    return std::find(types.begin(), types.end(), strType) != types.end();
}

/// Why the nodes cannot be the members of a cluster; empty when they can.
std::string FaultOf(const CCluster& cluster, const std::list<CNode>& nodes) {
    std::set<std::string> ids;
    std::set<CContainerAddr> addresses;
    for (const CNode& node : nodes) {
        const std::string& strNodeId = node.GetNodeId();
        if (!IsId(strNodeId)) {
            return "the id of a node is none";
        }
        if (!ids.insert(strNodeId).second) {
            return "node " + strNodeId + " stands twice";
        }
        for (const std::string& strType : TypesOf(node)) {
            if (!IsId(strType)) {
                return "a container type of node " + strNodeId + " is none";
            }
            const CContainerAddr addr(strNodeId, strType);
            if (!addresses.insert(addr).second || !WhyRunsTogether(cluster, addr).empty()) {
                return std::string(strNodeId).append(1, ' ').append(strType).append(
                    " stands twice, or runs together with another");
            }
        }
    }
    return "";
}

CLeaving LeavingOf(const CCluster& cluster, const std::list<CNode>& nodes) {
    std::map<std::string, std::list<std::string>> wanted;
    for (const CNode& node : nodes) {
        wanted[node.GetNodeId()] = TypesOf(node);
    }
    CLeaving leaving;
    for (const auto& [strNodeId, node] : cluster.state.nodes) {
        if (wanted.count(strNodeId) == 0) {
            leaving.nodes.insert(strNodeId);
        }
    }
    for (const auto& [addr, record] : cluster.state.containers) {
        const auto it = wanted.find(addr.GetNodeId());
        if (it == wanted.end() || !Has(it->second, addr.GetContainerType())) {
            leaving.containers.push_back(addr);
        }
    }
    return leaving;
}

bool IsSameRecord(const CNode& left, const CNode& right) {
    return left.GetNodeIp() == right.GetNodeIp() && left.GetNodeIpType() == right.GetNodeIpType() &&
           left.GetNodeRole() == right.GetNodeRole() &&
           left.GetDomainRole() == right.GetDomainRole() && TypesOf(left) == TypesOf(right);
}

/// Changes what the document says of a node; its figures, samples and flags are no part of that.
void TakeRecord(CNode& node, const CNode& wanted) {
    node.SetNodeIp(wanted.GetNodeIp());
    node.SetNodeIpType(wanted.GetNodeIpType());
    node.SetNodeRole(wanted.GetNodeRole());
    node.SetDomainRole(wanted.GetDomainRole());
    node.SetContainerList(TypesOf(wanted));
}

/// The status that an input gave a node counts more than the document's.
EMemberStatus StatusOf(const CCluster& cluster, const CNode& wanted) {
    const auto it = cluster.state.members.find(wanted.GetNodeId());
    if (it != cluster.state.members.end()) {
        return it->second.eStatus;
    }
    return wanted.GetMemberStatus() == CLUSTER_MEMBER_NORMAL ? EMemberStatus::NORMAL
                                                             : EMemberStatus::REMOVED;
}

/// Brings a node of the document in. True when that changed something.
bool BringIn(CCluster& cluster, const CNode& wanted) {
    const std::string& strNodeId = wanted.GetNodeId();
    const EMemberStatus eStatus = StatusOf(cluster, wanted);
    CNode node;
    if (!CNodeMgr::Instance().GetNode(strNodeId, node)) {
        EnterNode(cluster, wanted);
        ApplyStatus(cluster, strNodeId, eStatus);
        return true;
    }
    const bool bWasNormal = node.GetMemberStatus() == CLUSTER_MEMBER_NORMAL;
    const bool bSameStatus = bWasNormal == (eStatus == EMemberStatus::NORMAL);
    if (bSameStatus && IsSameRecord(node, wanted)) {
        return false;
    }
    std::list<std::string> entering = TypesOf(wanted);
    entering.remove_if([&](const std::string& strType) {
        return cluster.state.containers.count({strNodeId, strType}) != 0;
    });
    TakeRecord(node, wanted);
    CNodeMgr::Instance().AddNode({{strNodeId, node}});
    if (!entering.empty()) {
        EnterContainers(cluster, node, entering);
    }
    if (!bSameStatus || !entering.empty()) {
        ApplyStatus(cluster, strNodeId, eStatus);
    }
    return true;
}

/// Links are accepted as after a load: not from nodes that the document calls removed.
void RenewLinks(const std::list<CNode>& before, const std::list<CNode>& nodes) {
    std::set<std::string> accepted;
    for (const CNode& node : nodes) {
        if (node.GetMemberStatus() != CLUSTER_MEMBER_REMOVED) {
            accepted.insert(node.GetNodeIp());
        }
    }
    for (const std::string& strIp : accepted) {
        HALD::CNetFactory::Instance().AddValidatedLink(strIp, VALIDATED_LINK_TYPE);
    }
    DropLinks(before, accepted);
}

}  // namespace

CAnswer ReloadCluster(CCluster& cluster) {
    CClusterZNodeInfo document;
    bool bAbsent = false;
    CAnswer answer = ReadLibraryDocument(cluster, STORE_NODE_CLUSTER, document, bAbsent);
    if (answer.eFault != EFault::NONE || bAbsent) {
        return answer;
    }
    std::list<CNode> nodes;
    document.GetNodeList(nodes);
    if (const std::string strFault = FaultOf(cluster, nodes); !strFault.empty()) {
        return RefuseText(cluster, STORE_NODE_CLUSTER, strFault);
    }
    const CLeaving leaving = LeavingOf(cluster, nodes);
    bool bChanged = !leaving.nodes.empty() || !leaving.containers.empty();
    if (bChanged) {
        answer = TakeWorkOut(cluster, leaving);
    }
    if (answer.eFault != EFault::NONE) {
        return answer;
    }
    std::list<CNode> before;
    CNodeMgr::Instance().GetAllNode(before);
    RemoveMembers(cluster, leaving, false);
    for (const CNode& node : nodes) {
        bChanged = BringIn(cluster, node) || bChanged;
    }
    CGlobalConfig::Instance().SetClusterForwardType(document.GetClusterForwardType());
    if (bChanged) {
        RenewLinks(before, nodes);
        TellReloaded(cluster, STORE_NODE_CLUSTER);
    }
    return answer;
}
