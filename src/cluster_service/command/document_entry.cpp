#include "command/document_entry.h"

#include <cstddef>
#include <cstring>

#include "command/json_keys.h"

namespace {

void VisitBelow(const CDocumentKey& key, const CDocumentEntry& entry, const EntryVisitor& visitor);

void VisitObject(const CConstants<CDocumentKey>& keys, const CDocumentEntry& entry,
                 const EntryVisitor& visitor) {
    visitor(entry, keys);
    if (!entry.pValue->isObject()) {
        return;
    }
    for (const CDocumentKey& key : keys) {
        const CDocumentEntry member = MemberOf(entry, key.pszKey);
        if (!key.keys.empty() && IsOfType(key.eType, *member.pValue)) {
            VisitBelow(key, member, visitor);
        }
    }
}

void VisitBelow(const CDocumentKey& key, const CDocumentEntry& entry, const EntryVisitor& visitor) {
    if (!entry.pValue->isArray()) {
        VisitObject(key.keys, entry, visitor);
        return;
    }
    for (const CDocumentEntry& element : ElementsOf(entry)) {
        VisitObject(key.keys, element, visitor);
    }
}

}  // namespace

CDocumentEntry MemberOf(const CDocumentEntry& entry, const char* pszKey) {
    const Json::Value* const pMember =
        entry.pValue->isObject() ? entry.pValue->find(pszKey, pszKey + std::strlen(pszKey))
                                 : nullptr;
    return {Joined(entry.strPath, pszKey),
            pMember != nullptr ? pMember : &Json::Value::nullSingleton()};
}

std::vector<CDocumentEntry> ElementsOf(const CDocumentEntry& entry) {
    std::vector<CDocumentEntry> elements;
    if (entry.pValue->type() == Json::objectValue) {
        elements.push_back(entry);
    } else if (entry.pValue->type() == Json::arrayValue) {
        for (Json::ArrayIndex uiIndex = 0; uiIndex < entry.pValue->size(); ++uiIndex) {
            elements.push_back(
                {Joined(entry.strPath, std::size_t{uiIndex}), &(*entry.pValue)[uiIndex]});
        }
    }
    return elements;
}

std::string TextOf(const CDocumentEntry& entry) {
    return entry.pValue->isString() ? entry.pValue->asString() : "";
}

bool IsOfType(EKeyType eType, const Json::Value& value) {
    switch (eType) {
        case EKeyType::STRING:
            return value.isString();
        case EKeyType::INTEGER:
            return value.isInt();
        case EKeyType::UNSIGNED:
            return value.isUInt64() && value.type() != Json::realValue;
        case EKeyType::BOOLEAN:
            return value.isBool();
        case EKeyType::OBJECT:
            return value.type() == Json::objectValue;
        case EKeyType::ARRAY:
            return value.type() == Json::arrayValue;
        default:
            return value.type() == Json::objectValue || value.type() == Json::arrayValue;
    }
}

const char* NameOf(EKeyType eType) {
    switch (eType) {
        case EKeyType::STRING:
            return "a string";
        case EKeyType::INTEGER:
            return "an integer";
        case EKeyType::UNSIGNED:
            return "a version number";
        case EKeyType::BOOLEAN:
            return "true or false";
        case EKeyType::OBJECT:
            return "an object";
        case EKeyType::ARRAY:
            return "an array";
        default:
            return "an object or an array";
    }
}

void VisitObjects(const CDocumentKey& document, const Json::Value& root,
                  const EntryVisitor& visitor) {
    VisitBelow(document, {"", &root}, visitor);
}
