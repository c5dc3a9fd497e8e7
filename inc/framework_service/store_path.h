#pragma once

#include <string>

#include "common_service/tarn_conf.h"

/// Every store path is this text, the cluster code and a document's suffix, with nothing between.
inline constexpr char PSZ_STORE_ROOT[] = "/Cloud";

/// Where a document lies below the cluster's root, and the buffer that bounds its text. The
/// longest text is one character shorter than the buffer.
struct ORVA_STORE_NODE {
    const char* pszSuffix;
    unsigned int uiBufLen;
};

/// Where a document lies in the store, below the root of the host's own cluster. Composed anew by
/// each call, since the cluster code is the host's to change.
inline std::string StorePath(const ORVA_STORE_NODE& node) {
    return PSZ_STORE_ROOT + CTARNConf::m_oConf.GetCstClusterCode() + node.pszSuffix;
}
