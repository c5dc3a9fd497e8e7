#pragma once

#include <json/value.h>

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "common_service/data/communication_data.h"
#include "common_service/tarn_def.h"
#include "framework_service/store_path.h"

/// A type that a key's value must have.
struct CKeyType {
    bool (*pIs)(const Json::Value& value);
    const char* pszName;
};

/// A key that a document cannot do without, in the object that a path of keys leads to from the
/// root. An array on the path stands for each of its elements. Where the path ends early nothing is
/// required.
struct CRequiredKey {
    std::vector<const char*> path;
    const char* pszKey;
    const CKeyType& type;
};

/// A document of the store and its file.
struct CStoreDocument {
    const ORVA_STORE_NODE& node;
    const char* pszFile;
    std::unique_ptr<CBaseJsonObject> (*pMake)();
    const std::vector<CRequiredKey>& requiredKeys;  ///< to name the place of a fault

    unsigned int GetMaxSize() const { return node.uiBufLen - 1; }
};

/// Every document that is imported, exported and checked.
const std::vector<CStoreDocument>& StoreDocuments();

/// The document of that node.
const CStoreDocument& FindDocument(const ORVA_STORE_NODE& node);

/// Parses JSON text. Returns what is wrong with it and where, or nothing.
std::optional<std::string> ParseText(const std::string& strText, Json::Value& root);

/// Why the text does not fit or the library would not take it, with the place; nothing if it would.
/// Nothing is logged.
std::optional<std::string> FindFault(const CStoreDocument& document, const std::string& strText);

/// What the store answered for a document.
struct CStoredText {
    int iCode = ORVA_SUCCEED;  ///< not 0 when the store failed
    bool bExists = false;
    std::string strText;
};

CStoredText ReadFromStore(const CStoreDocument& document);

/// Writes the text as it stands. Returns 0, or a code with the store unchanged.
int WriteToStore(const CStoreDocument& document, const std::string& strText);

/// Says on the stream that the store failed with this code, unless it is 0. Is it?
bool StoreAnswered(const CStoreDocument& document, int iCode, std::ostream& errors);

/// The document's path in the store.
std::string StorePath(const CStoreDocument& document);
