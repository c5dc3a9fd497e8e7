#pragma once

#include <filesystem>
#include <string>

#include "command/store_document.h"

/// The document's file in a folder.
inline std::string DocumentFile(const std::string& strDir, const CStoreDocument& document) {
    return std::filesystem::path(strDir) / document.pszFile;
}
