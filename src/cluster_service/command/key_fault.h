#pragma once

#include <json/value.h>

#include <optional>
#include <string>

#include "framework_service/document_keys.h"

/// The first required key that the text of a document, with this root, lacks or has with another
/// type, and its place; nothing if there is none.
std::optional<std::string> FindKeyFault(const CDocumentKey& document, const std::string& strText,
                                        const Json::Value& root);
