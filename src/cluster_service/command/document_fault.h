#pragma once

#include <optional>
#include <string>
#include <vector>

#include "command/document_entry.h"
#include "command/store_document.h"
#include "command/text_place.h"

/// Something wrong in a document: where, with which key, and what. Without a place it is the
/// document as a whole, without a path no key in particular.
struct CDocumentFault {
    std::optional<CTextPlace> place;
    std::string strPath;
    std::string strWhat;  ///< said of the key where there is one, as "is missing"
};

/// The fault as a sentence: line 1, column 14: "MasterMGR.NodeCode" is missing
std::string TextOf(const CDocumentFault& fault);

/// A fault at the place where the value begins.
CDocumentFault FaultAt(const std::string& strText, const CDocumentEntry& entry,
                       std::string strWhat);

/// Why the text does not fit or the library would not take it; nothing if it would. Nothing is
/// logged.
std::optional<CDocumentFault> FindFault(const CStoreDocument& document, const std::string& strText);

/// What keeps a cluster from loading whose document the library takes: containers with one address.
std::vector<CDocumentFault> FindContainerClashes(const std::string& strText,
                                                 const Json::Value& cluster);

/// Why the text is not imported; nothing if it would be.
std::optional<CDocumentFault> FindRefusal(const CStoreDocument& document,
                                          const std::string& strText);
