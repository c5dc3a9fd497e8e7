#pragma once

#include <string>

#include "common_service/tarn_conf.h"
#include "common_service/tarn_def.h"

/// Where a document lies in the store, below the root of the host's own cluster. Composed anew by
/// each call, since the cluster code is the host's to change.
inline std::string StorePath(const ORVA_STORE_NODE& node) {
    return PSZ_STORE_ROOT + CTARNConf::m_oConf.GetCstClusterCode() + node.pszSuffix;
}
