#pragma once

#include <cstddef>
#include <string>

#include "command/store_document.h"

/// The document's file in a folder.
std::string DocumentFile(const std::string& strDir, const CStoreDocument& document);

/// Is there anything of that name?
bool IsThere(const std::string& strFile);

/// Reads a file, of one that is longer than this one character more: enough to see that it is.
/// Returns why it cannot be read; empty when it was. Anything but a file, which may have no end, is
/// not read.
std::string ReadTextFile(const std::string& strFile, std::size_t maxSize, std::string& strText);
