#include <set>

#include "command/checks.h"
#include "command/cluster_text.h"
#include "framework_service/cluster_znode_info.h"
#include "reference_host/host_settings.h"

void CheckClusterCode(const CCheckedStore& store, Findings& findings) {
    const CCheckedDocument& document = store.Get(STORE_NODE_CLUSTER);
    const CDocumentEntry code = MemberOf(document.Root(), PSZ_CLUSTER_CODE);
    const std::string& strOurs = GetHostSettings().strClusterCode;
    if (document.IsGood() && TextOf(code) != strOurs) {
        Add(findings, EWeight::WARNING, document, code,
            "is " + Quoted(TextOf(code)) + ", and this is the cluster " + Quoted(strOurs));
    }
}

void CheckNodeIds(const CCheckedStore& store, Findings& findings) {
    std::set<std::string> nodeIds;
    for (const CCheckedNode& node : store.nodes) {
        if (!nodeIds.insert(TextOf(node.id)).second) {
            Add(findings, EWeight::WARNING, store.Get(STORE_NODE_CLUSTER), node.id,
                "is " + Quoted(TextOf(node.id)) + " once more: the later entry counts");
        }
    }
}

void CheckContainerAddresses(const CCheckedStore& store, Findings& findings) {
    const CCheckedDocument& document = store.Get(STORE_NODE_CLUSTER);
    for (CDocumentFault& clash : FindContainerClashes(document.stored.strText, document.root)) {
        findings.push_back({EWeight::ERROR, document.strName, std::move(clash)});
    }
}

void CheckNormalBehindRemoved(const CCheckedStore& store, Findings& findings) {
    const CCheckedDocument& document = store.Get(STORE_NODE_CLUSTER);
    for (const CTurnedNode& node : NodesReadAsRemoved(document.root)) {
        Add(findings, EWeight::WARNING, document, store.nodes[node.index].status,
            "is " + Quoted(node.strStatus) + ", and node " + Quoted(node.strId) +
                " loads as removed, since it stands behind the removed node " +
                Quoted(node.strRemoved));
    }
}

void CheckNodesWithoutContainers(const CCheckedStore& store, Findings& findings) {
    for (const CCheckedNode& node : store.nodes) {
        if (TextOf(node.status) == PSZ_NODE_STATUS_REMOVED) {
            return;  // and those behind it load as removed
        }
        if (node.containerTypes.empty()) {
            Add(findings, EWeight::WARNING, store.Get(STORE_NODE_CLUSTER), node.id,
                "is " + Quoted(TextOf(node.id)) + ", a node without containers");
        }
    }
}
