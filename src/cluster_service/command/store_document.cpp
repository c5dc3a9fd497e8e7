#include "command/store_document.h"

#include <algorithm>

#include "common_service/data/version_znode.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/schedule_mgr.h"

namespace {

template <class Document>
std::unique_ptr<CBaseJsonObject> Make() {
    return std::make_unique<Document>();
}

}  // namespace

const std::vector<CStoreDocument>& StoreDocuments() {
    static const std::vector<CStoreDocument> documents{
        {STORE_NODE_CLUSTER, "cluster.json", Make<CClusterZNodeInfo>, CLUSTER_KEYS},
        {STORE_NODE_CLOUD_STORAGE, "cloud_storage.json", Make<CClusterCloudStorageZNodeInfo>,
         CLOUD_STORAGE_KEYS},
        {STORE_NODE_CLUSTER_CONFIG, "cluster_config.json", Make<CClusterConfigZNodeInfo>,
         CLUSTER_CONFIG_KEYS},
        {STORE_NODE_CENTER_DB, "center_db.json", Make<CClusterDBZNodeInfo>, CENTER_DB_KEYS},
        {STORE_NODE_MGR, "manager.json", Make<CClusterMGRZNodeInfo>, MANAGER_KEYS},
        {STORE_NODE_CG_LIST, "cg_list.json", Make<CClusterCGInfoList>, CG_LIST_KEYS},
        {STORE_NODE_VERSION, "version.json", Make<CVersionZNode>, VERSION_KEYS},
    };
    return documents;
}

const CStoreDocument& FindDocument(const ORVA_STORE_NODE& node) {
    return *std::find_if(
        StoreDocuments().begin(), StoreDocuments().end(),
        [&node](const CStoreDocument& document) { return &document.node == &node; });
}

std::string StorePath(const CStoreDocument& document) {
    return StorePath(document.node);
}
