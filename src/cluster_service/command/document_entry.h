#pragma once

#include <json/value.h>

#include <functional>
#include <string>
#include <vector>

#include "command/store_document.h"
#include "framework_service/document_keys.h"

/// A value of a document, and the path of keys that leads to it from the root. The value belongs to
/// the document.
struct CDocumentEntry {
    std::string strPath;
    const Json::Value* pValue;
};

/// The member of an object; its value is null when there is none.
CDocumentEntry MemberOf(const CDocumentEntry& entry, const char* pszKey);

/// The elements of a list that is the value, or the value itself where it is an object, as a
/// document may have one for a list of one. Nothing else has any.
std::vector<CDocumentEntry> ElementsOf(const CDocumentEntry& entry);

/// The text of a string, empty for anything else.
std::string TextOf(const CDocumentEntry& entry);

/// Is that what a load takes for a value of this type?
bool IsOfType(EKeyType eType, const Json::Value& value);

/// The type in words, as "an integer".
const char* NameOf(EKeyType eType);

/// Calls back for what stands where the table has an object, be it one or not, an object before
/// what lies in it. Values that are of another type than their key are not gone into.
using EntryVisitor =
    std::function<void(const CDocumentEntry& entry, const CConstants<CDocumentKey>& keys)>;
void VisitObjects(const CDocumentKey& document, const Json::Value& root,
                  const EntryVisitor& visitor);
