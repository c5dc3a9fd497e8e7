#include "target.h"

#include <cstdio>
#include <cstdlib>
#include <map>

#include "common_service/data/version_znode.h"
#include "common_service/logger.h"
#include "engine_target.h"
#include "formatting_logger.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/schedule_mgr.h"
#include "json_target.h"
#include "reference_host/store.h"
#include "request_target.h"
#include "xml_target.h"

namespace {

template <typename Document, unsigned int uiBufLen>
void FeedJsonOf(const std::string& strInput) {
    FeedJson([]() -> std::unique_ptr<CBaseJsonObject> { return std::make_unique<Document>(); },
             uiBufLen, strInput);
}

const std::map<std::string, FuzzTarget> TARGETS = {
    {"center_db", FeedJsonOf<CClusterDBZNodeInfo, STORE_NODE_CENTER_DB.uiBufLen>},
    {"center_db_versions", FeedJsonOf<CClusterDBVerZNodeInfo, 1024>},
    {"cg_list", FeedJsonOf<CClusterCGInfoList, STORE_NODE_CG_LIST.uiBufLen>},
    {"cloud_storage", FeedJsonOf<CClusterCloudStorageZNodeInfo, STORE_NODE_CLOUD_STORAGE.uiBufLen>},
    {"cluster", FeedJsonOf<CClusterZNodeInfo, STORE_NODE_CLUSTER.uiBufLen>},
    {"cluster_config", FeedJsonOf<CClusterConfigZNodeInfo, STORE_NODE_CLUSTER_CONFIG.uiBufLen>},
    {"manager", FeedJsonOf<CClusterMGRZNodeInfo, STORE_NODE_MGR.uiBufLen>},
    {"version", FeedJsonOf<CVersionZNode, STORE_NODE_VERSION.uiBufLen>},
    {"cg_list_xml", FeedCGListXml},
    {"center_db_xml", FeedDatabaseXml},
    {"manager_xml", FeedManagerXml},
    {"private_info_xml", FeedPrivateInfoXml},
    {"task_file", FeedTaskFile},
    {"input", FeedInput},
    {"request", FeedRequest},
};

const std::shared_ptr<CMemoryStore>& Store() {
    static const auto& pStore = *new std::shared_ptr<CMemoryStore>(new CMemoryStore);
    return pStore;
}

}  // namespace

FuzzTarget FindFuzzTarget(const std::string& strName) {
    const auto it = TARGETS.find(strName);
    Require(it != TARGETS.end(), "a program is named after a target");
    return it->second;
}

void OpenFuzzHost() {
    static CFormattingLogger& logger = *new CFormattingLogger;
    OMAdapter::getInstance().setLogger(&logger);
    SetStore(Store());
}

CMemoryStore& GetFuzzStore() {
    return *Store();
}

void Require(bool bHolds, const char* pszPromise) {
    if (!bHolds) {
        std::fprintf(stderr, "broken promise: %s\n", pszPromise);
        std::abort();
    }
}
