#include <map>
#include <set>

#include "command/checks.h"
#include "command/cluster_text.h"
#include "common_service/oper_common.h"
#include "framework_service/cluster_znode_info.h"

namespace {

std::string AddressText(const CContainerAddr& addr) {
    return Quoted(addr.GetContainerType()) + " on node " + Quoted(addr.GetNodeId());
}

}  // namespace

void CheckNodeIds(const CCheckedStore& store, Findings& findings) {
    std::map<std::string, int> counts;
    for (const CNode& node : store.nodeList) {
        if (++counts[node.GetNodeId()] == 2) {
            Add(findings, PSZ_ERROR, STORE_NODE_CLUSTER,
                "node id " + Quoted(node.GetNodeId()) + " stands there more than once");
        }
    }
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
