#include "command/key_fault.h"

#include <optional>

#include "command/document_entry.h"

namespace {

/// What is wrong with the member of an object.
std::optional<CDocumentFault> FindFault(const CDocumentEntry& object, const CDocumentKey& key,
                                        const std::string& strText) {
    const CDocumentEntry member = MemberOf(object, key.pszKey);
    if (!object.pValue->isMember(key.pszKey)) {
        return key.eNeed == EKeyNeed::REQUIRED
                   ? std::make_optional(
                         FaultAt(strText, {member.strPath, object.pValue}, "is missing"))
                   : std::nullopt;
    }
    if (member.pValue->isNull()) {
        return FaultAt(strText, member, std::string("is null, not ") + NameOf(key.eType));
    }
    return IsOfType(key.eType, *member.pValue)
               ? std::nullopt
               : std::make_optional(
                     FaultAt(strText, member, std::string("is not ") + NameOf(key.eType)));
}

}  // namespace

std::vector<CKeyFault> FindKeyFaults(const CDocumentKey& document, const std::string& strText,
                                     const Json::Value& root) {
    if (!IsOfType(document.eType, root)) {
        const char* pszWhat = document.eType == EKeyType::ARRAY ? "the document is no array"
                                                                : "the document is no object";
        return {{EKeyNeed::REQUIRED, FaultAt(strText, {"", &root}, pszWhat)}};
    }
    std::vector<CKeyFault> faults;
    VisitObjects(
        document, root, [&](const CDocumentEntry& entry, const CConstants<CDocumentKey>& keys) {
            if (!entry.pValue->isObject()) {
                faults.push_back({EKeyNeed::REQUIRED, FaultAt(strText, entry, "is no object")});
                return;
            }
            for (const CDocumentKey& key : keys) {
                if (auto fault = FindFault(entry, key, strText)) {
                    faults.push_back({key.eNeed, std::move(*fault)});
                }
            }
        });
    return faults;
}
