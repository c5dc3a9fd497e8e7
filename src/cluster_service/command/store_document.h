#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common_service/data/communication_data.h"
#include "framework_service/document_keys.h"
#include "framework_service/store_path.h"

/// A document of the store and its file.
struct CStoreDocument {
    const ORVA_STORE_NODE& node;
    const char* pszFile;
    std::unique_ptr<CBaseJsonObject> (*pMake)();
    const CDocumentKey& keys;  ///< to name the place of a fault

    unsigned int GetMaxSize() const { return node.uiBufLen - 1; }
};

/// Every document that is imported, exported and checked.
const std::vector<CStoreDocument>& StoreDocuments();

/// The document of that node.
const CStoreDocument& FindDocument(const ORVA_STORE_NODE& node);

/// The document's path in the store.
std::string StorePath(const CStoreDocument& document);
