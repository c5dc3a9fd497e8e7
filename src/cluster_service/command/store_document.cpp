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
#include "reference_host/version_keys.h"

namespace {

constexpr CDocumentKey VERSION_KEYS[] = {
    {PSZ_DECISION_VER_NUM, EKeyType::UNSIGNED, EKeyNeed::REQUIRED},
    {PSZ_MASTER_VER_NUM, EKeyType::UNSIGNED, EKeyNeed::REQUIRED},
};

constexpr CDocumentKey VERSION_DOCUMENT{"", EKeyType::OBJECT, EKeyNeed::REQUIRED, VERSION_KEYS};

template <typename Document>
std::unique_ptr<CBaseJsonObject> Make() {
    return std::make_unique<Document>();
}

}  // namespace

const std::vector<CStoreDocument>& StoreDocuments() {
    static const std::vector<CStoreDocument> documents{
        {STORE_NODE_CLUSTER, "cluster.json", Make<CClusterZNodeInfo>, CLUSTER_DOCUMENT},
        {STORE_NODE_CLOUD_STORAGE, "cloud_storage.json", Make<CClusterCloudStorageZNodeInfo>,
         CLOUD_STORAGE_DOCUMENT},
        {STORE_NODE_CLUSTER_CONFIG, "cluster_config.json", Make<CClusterConfigZNodeInfo>,
         CLUSTER_CONFIG_DOCUMENT},
        {STORE_NODE_CENTER_DB, "center_db.json", Make<CClusterDBZNodeInfo>, CLUSTER_DB_DOCUMENT},
        {STORE_NODE_MGR, "manager.json", Make<CClusterMGRZNodeInfo>, CLUSTER_MGR_DOCUMENT},
        {STORE_NODE_CG_LIST, "cg_list.json", Make<CClusterCGInfoList>, CG_LIST_DOCUMENT},
        {STORE_NODE_VERSION, "version.json", Make<CVersionZNode>, VERSION_DOCUMENT},
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
