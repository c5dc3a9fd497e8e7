#include "internal/store.h"

#include <string>

#include "common_service/tarn_conf.h"

namespace framework_internal {

namespace {

std::string ComposePath(const ORVA_STORE_NODE& node) {
    return PSZ_STORE_ROOT + CTARNConf::m_oConf.GetCstClusterCode() + node.pszSuffix;
}

}  // namespace

int ReadStore(const ORVA_STORE_NODE& node, EWatch eWatch, CBaseJsonObject& document,
              bool& bDataEmpty) {
    void* pWatcher =
        eWatch == EWatch::YES ? reinterpret_cast<void*>(&ClusterNodeEventWatcher) : nullptr;
    return COperCommon::GetDataFromZK(ComposePath(node).c_str(), pWatcher, node.uiBufLen, &document,
                                      bDataEmpty);
}

int WriteStore(const ORVA_STORE_NODE& node, CBaseJsonObject& document) {
    return COperCommon::SetDataToZK(ComposePath(node).c_str(), node.uiBufLen, &document);
}

}  // namespace framework_internal
