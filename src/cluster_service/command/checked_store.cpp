#include "command/checked_store.h"

#include <algorithm>

#include "command/document_fault.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "reference_host/store.h"
#include "reference_host/strict_json.h"

namespace {

/// Reads one document. A text that the store would not hand out, being too long, is a fault of the
/// document and not of the store.
CCheckedDocument ReadDocument(const CStoreDocument& document) {
    CCheckedDocument checked{&document, ReadFromStore(document), {}, {}};
    if (checked.stored.iCode == STORE_TEXT_TOO_LONG) {
        checked.stored.iCode = ORVA_SUCCEED;
        checked.stored.bExists = true;
        checked.fault = "is longer than " + std::to_string(document.GetMaxSize()) + " bytes";
    } else if (!checked.stored.strText.empty()) {
        checked.fault = FindFault(document, checked.stored.strText);
    }
    if (!checked.fault && !checked.stored.strText.empty()) {
        ParseStrictJson(checked.stored.strText, checked.root);
    }
    return checked;
}

const CCheckedDocument& Find(const CCheckedStore& store, const ORVA_STORE_NODE& node) {
    return *std::find_if(
        store.documents.begin(), store.documents.end(),
        [&node](const CCheckedDocument& checked) { return &checked.pDocument->node == &node; });
}

template <typename Document>
Document Parse(const CCheckedDocument& checked) {
    Document document;
    if (!checked.root.isNull()) {
        document.ParseJson(checked.stored.strText.c_str());
    }
    return document;
}

}  // namespace

std::list<std::string> ContainersOf(const CNode& node) {
    std::list<std::string> containerList;
    node.GetContainerList(containerList);
    return containerList;
}

bool ReadStore(CCheckedStore& store, std::ostream& errors) {
    for (const CStoreDocument& document : StoreDocuments()) {
        store.documents.push_back(ReadDocument(document));
        if (!StoreAnswered(document, store.documents.back().stored.iCode, errors)) {
            return false;
        }
    }
    store.cluster = Find(store, STORE_NODE_CLUSTER).root;
    store.clusterConfig = Find(store, STORE_NODE_CLUSTER_CONFIG).root;
    Parse<CClusterZNodeInfo>(Find(store, STORE_NODE_CLUSTER)).GetNodeList(store.nodeList);
    store.cloudStorageMap =
        Parse<CClusterCloudStorageZNodeInfo>(Find(store, STORE_NODE_CLOUD_STORAGE))
            .GetCloudStorageInfoMap();
    Parse<CClusterCGInfoList>(Find(store, STORE_NODE_CG_LIST)).GetClusterCGInfoList(store.cgList);
    const CCheckedDocument& database = Find(store, STORE_NODE_CENTER_DB);
    if (!database.root.isNull()) {
        const auto parsed = Parse<CClusterDBZNodeInfo>(database);
        store.masterDatabase = parsed.GetMasterDB();
        parsed.GetAllSlaveDB(store.slaveDatabases);
    }
    const CCheckedDocument& manager = Find(store, STORE_NODE_MGR);
    if (!manager.root.isNull()) {
        store.manager = Parse<CClusterMGRZNodeInfo>(manager).GetMasterMGR();
    }
    return true;
}
