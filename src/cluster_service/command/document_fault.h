#pragma once

#include <optional>
#include <string>

#include "command/store_document.h"

/// Why the text does not fit or the library would not take it, with the place; nothing if it would.
/// Nothing is logged.
std::optional<std::string> FindFault(const CStoreDocument& document, const std::string& strText);
