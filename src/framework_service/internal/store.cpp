#include "internal/store.h"

#include "framework_service/store_path.h"

namespace framework_internal {

int ReadStore(const ORVA_STORE_NODE& node, EWatch eWatch, CBaseJsonObject& document,
              bool& bDataEmpty) {
    void* pWatcher =
        eWatch == EWatch::YES ? reinterpret_cast<void*>(&ClusterNodeEventWatcher) : nullptr;
    return COperCommon::GetDataFromZK(StorePath(node).c_str(), pWatcher, node.uiBufLen, &document,
                                      bDataEmpty);
}

int WriteStore(const ORVA_STORE_NODE& node, CBaseJsonObject& document) {
    return COperCommon::SetDataToZK(StorePath(node).c_str(), node.uiBufLen, &document);
}

}  // namespace framework_internal
