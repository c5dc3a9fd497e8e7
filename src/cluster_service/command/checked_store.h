#pragma once

#include <json/value.h>

#include <list>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "command/store_document.h"
#include "command/store_text.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/plugin_mgr.h"
#include "framework_service/tarn_node.h"

struct CCheckedDocument {
    const CStoreDocument* pDocument;
    CStoredText stored;
    std::optional<std::string> fault;
    Json::Value root;  ///< null unless the document is good
};

/// Everything that the checks look at. Documents that are absent or bad are empty here.
struct CCheckedStore {
    std::vector<CCheckedDocument> documents;
    std::list<CNode> nodeList;
    std::map<std::string, CloudStorageInfo> cloudStorageMap;
    Json::Value cluster;
    Json::Value clusterConfig;
    std::list<CClusterCGInfo> cgList;
    std::optional<CClusterDBInfo> masterDatabase;
    std::list<CClusterDBInfo> slaveDatabases;
    std::optional<CClusterMGRInfo> manager;
    bool bPluginsLoaded = false;
    std::list<CPluginFile> pluginFiles;
};

/// The container types of a node.
std::list<std::string> ContainersOf(const CNode& node);

/// Fills what the documents hold. False when the store failed, said on the stream.
bool ReadStore(CCheckedStore& store, std::ostream& errors);
