#include "serve/document_name.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/schedule_mgr.h"

namespace {

/// By EDocument.
constexpr const ORVA_STORE_NODE* NODES[] = {
    &STORE_NODE_CLUSTER, &STORE_NODE_CLOUD_STORAGE, &STORE_NODE_CLUSTER_CONFIG,
    &STORE_NODE_CG_LIST, &STORE_NODE_CENTER_DB,     &STORE_NODE_MGR,
    &STORE_NODE_VERSION,
};
static_assert(std::size(NODES) == AllDocuments().size());

constexpr char PSZ_ENGINE[] = "/Engine/";

/// "/Engine/Assignment/a/b/1" is an "engine_assignment".
std::string EngineName(const std::string& strSuffix) {
    const std::size_t uiBegin = sizeof(PSZ_ENGINE) - 1;
    std::string strName = strSuffix.substr(uiBegin, strSuffix.find('/', uiBegin) - uiBegin);
    std::transform(strName.begin(), strName.end(), strName.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return "engine_" + strName;
}

}  // namespace

const CStoreDocument& StoreDocumentOf(EDocument eDocument) {
    return FindDocument(*NODES[static_cast<std::size_t>(eDocument)]);
}

std::string DocumentName(const std::string& strPath) {
    const std::string strRoot = StorePath(ORVA_STORE_NODE{"", 0});
    if (strPath.compare(0, strRoot.size(), strRoot) != 0) {
        return "other";
    }
    const std::string strSuffix = strPath.substr(strRoot.size());
    const auto it = std::find_if(
        std::begin(NODES), std::end(NODES),
        [&strSuffix](const ORVA_STORE_NODE* pNode) { return strSuffix == pNode->pszSuffix; });
    if (it != std::end(NODES)) {
        return NameOf(static_cast<EDocument>(it - std::begin(NODES)));
    }
    return strSuffix.rfind(PSZ_ENGINE, 0) == 0 ? EngineName(strSuffix) : "other";
}
