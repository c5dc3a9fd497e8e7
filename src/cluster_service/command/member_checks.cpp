#include <algorithm>
#include <set>

#include "command/checks.h"
#include "common_service/tarn_def.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"

namespace {

/// A node that another document speaks of.
void CheckMember(const CCheckedStore& store, const CCheckedDocument& document,
                 const CDocumentEntry& nodeId, Findings& findings) {
    if (!store.HasNode(TextOf(nodeId))) {
        Add(findings, EWeight::WARNING, document, nodeId,
            "is " + Quoted(TextOf(nodeId)) + ", which is no node of the cluster");
    }
}

/// Reports each text that an entry before has under this key.
void CheckUnique(const CCheckedDocument& document, const std::vector<CDocumentEntry>& entries,
                 const char* pszKey, const std::string& strConsequence, Findings& findings) {
    std::set<std::string> texts;
    for (const CDocumentEntry& entry : entries) {
        const CDocumentEntry member = MemberOf(entry, pszKey);
        if (!texts.insert(TextOf(member)).second) {
            Add(findings, EWeight::WARNING, document, member,
                "is " + Quoted(TextOf(member)) + " once more" + strConsequence);
        }
    }
}

bool HasCloudStorage(const CCheckedStore& store, const std::string& strNodeId) {
    return std::any_of(store.nodes.begin(), store.nodes.end(), [&](const CCheckedNode& node) {
        return TextOf(node.id) == strNodeId && node.HasContainer(CONTAINER_TYPE_CLOUD_STORAGE);
    });
}

/// The slaves that a load takes: of a slave whose entry is bad it takes nothing.
std::vector<CDocumentEntry> SlavesOf(const CCheckedDocument& document) {
    std::vector<CDocumentEntry> slaves =
        ElementsOf(MemberOf(document.Root(), PSZ_CLUSTER_DB_SLAVE));
    const auto isBad = [](const CDocumentEntry& slave) {
        return !MemberOf(slave, PSZ_CLUSTER_DB_NODE).pValue->isString() ||
               !MemberOf(slave, PSZ_CLUSTER_DB_IP).pValue->isString() ||
               !MemberOf(slave, PSZ_CLUSTER_DB_PORT).pValue->isInt();
    };
    slaves.erase(std::remove_if(slaves.begin(), slaves.end(), isBad), slaves.end());
    return slaves;
}

/// A slave's token is that of its slot when the text has one, whatever it says, and else what
/// stands there.
void CheckSlaveTokens(const CCheckedDocument& document, const std::vector<CDocumentEntry>& slaves,
                      Findings& findings) {
    std::set<std::string> tokens;
    for (const CDocumentEntry& slave : slaves) {
        const CDocumentEntry token = MemberOf(slave, PSZ_CLUSTER_DB_TOKEN);
        if (!token.pValue->isString() && !tokens.insert(token.pValue->asString()).second) {
            Add(findings, EWeight::WARNING, document, {slave.strPath, slave.pValue},
                "has the token " + Quoted(token.pValue->asString()) +
                    " as another slave has: a promotion would confuse them");
        }
    }
}

}  // namespace

void CheckCloudStorageNodes(const CCheckedStore& store, Findings& findings) {
    const CCheckedDocument& document = store.Get(STORE_NODE_CLOUD_STORAGE);
    const std::vector<CDocumentEntry> entries =
        ElementsOf(MemberOf(document.Root(), PSZ_CLOUD_STORAGE_SET));
    for (const CDocumentEntry& entry : entries) {
        const CDocumentEntry nodeId = MemberOf(entry, PSZ_CLOUD_STORAGE_NVRCODE);
        CheckMember(store, document, nodeId, findings);
        const std::string strNodeId = TextOf(nodeId);
        if (store.IsClusterGood() && store.HasNode(strNodeId) &&
            !HasCloudStorage(store, strNodeId)) {
            Add(findings, EWeight::WARNING, document, nodeId,
                "is " + Quoted(strNodeId) + ", a node without the container " +
                    CONTAINER_TYPE_CLOUD_STORAGE + ": the entry is of no use");
        }
    }
    CheckUnique(document, entries, PSZ_CLOUD_STORAGE_NVRCODE, ": the later entry counts", findings);
}

void CheckCgEntries(const CCheckedStore& store, Findings& findings) {
    const CCheckedDocument& document = store.Get(STORE_NODE_CG_LIST);
    const std::vector<CDocumentEntry> entries =
        document.root.isArray() ? ElementsOf(document.Root()) : std::vector<CDocumentEntry>();
    for (const CDocumentEntry& entry : entries) {
        CheckMember(store, document, MemberOf(entry, PSZ_CG_NVRCODE), findings);
    }
    for (const char* pszKey : {PSZ_CG_NVRCODE, PSZ_CG_FLOAT_CODE, PSZ_CG_FLOAT_IP}) {
        CheckUnique(document, entries, pszKey, "", findings);
    }
    const std::size_t maxEntries = store.nodes.size() / 2;
    if (store.IsClusterGood() && entries.size() > maxEntries) {
        Add(findings, EWeight::WARNING, document,
            "has " + std::to_string(entries.size()) + " entries, and " +
                std::to_string(store.nodes.size()) + " nodes admit at most " +
                std::to_string(maxEntries));
    }
}

void CheckDatabase(const CCheckedStore& store, Findings& findings) {
    const CCheckedDocument& document = store.Get(STORE_NODE_CENTER_DB);
    if (!document.IsGood()) {
        return;
    }
    const CDocumentEntry master =
        MemberOf(MemberOf(document.Root(), PSZ_CLUSTER_DB_MASTER), PSZ_CLUSTER_DB_NODE);
    CheckMember(store, document, master, findings);
    const std::vector<CDocumentEntry> slaves = SlavesOf(document);
    for (const CDocumentEntry& slave : slaves) {
        const CDocumentEntry nodeId = MemberOf(slave, PSZ_CLUSTER_DB_NODE);
        CheckMember(store, document, nodeId, findings);
        if (TextOf(nodeId) == TextOf(master)) {
            Add(findings, EWeight::WARNING, document, nodeId,
                "is " + Quoted(TextOf(master)) + ", which is the master too");
        }
    }
    CheckUnique(document, slaves, PSZ_CLUSTER_DB_NODE, "", findings);
    CheckSlaveTokens(document, slaves, findings);
    if (slaves.empty()) {
        Add(findings, EWeight::WARNING, document,
            "has no slave: what a service writes of it cannot be read again");
    }
}

void CheckManager(const CCheckedStore& store, Findings& findings) {
    const CCheckedDocument& document = store.Get(STORE_NODE_MGR);
    if (document.IsGood()) {
        CheckMember(
            store, document,
            MemberOf(MemberOf(document.Root(), PSZ_CLUSTER_MGR_MASTER), PSZ_CLUSTER_MGR_NODE),
            findings);
    }
}
