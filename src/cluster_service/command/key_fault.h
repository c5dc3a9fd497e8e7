#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "command/document_fault.h"
#include "framework_service/document_keys.h"

/// A key that is absent or has another type than its row says.
struct CKeyFault {
    EKeyNeed eNeed;
    CDocumentFault fault;
};

/// Every such key of a document with this text and root; an optional one that is absent is none.
std::vector<CKeyFault> FindKeyFaults(const CDocumentKey& document, const std::string& strText,
                                     const Json::Value& root);
