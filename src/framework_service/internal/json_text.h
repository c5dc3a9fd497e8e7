#pragma once

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include "framework_service/document_keys.h"
#include "operation_log/operation_log.h"

/// Reading and writing the JSON text of the store documents.
namespace [[gnu::visibility("hidden")]] framework_internal {

inline constexpr char OPERATION_NULL_JSON[] = "Point pszJson is null.";

/// Parses the text; a failed parse leaves a partial value behind.
bool ParseJsonText(const char* pszJson, Json::Value& root);

/// The text of a string, nothing for any other value. Lives as long as the value.
std::optional<std::string_view> TextOf(const Json::Value& value);

/// The member of that key; null when it is absent. Throws on a value that has no members.
const Json::Value* FindMember(const Json::Value& object, const char* pszKey);

/// The member whatever it is, null when it is absent: for what its row alone does not say.
struct CAnyMember {
    const Json::Value* pValue = nullptr;
};

/// A member that is to be read, and where its value goes. A container's value stays where it is.
struct CJsonMember {
    std::string_view key;
    EKeyType eType;
    EKeyNeed eNeed;
    std::variant<std::string*, std::string_view*, int*, bool*, const Json::Value**, CAnyMember*>
        target;
};

/// The row of the key in the table.
template <const auto& KEYS, const auto& KEY>
constexpr const CDocumentKey& RowOf() {
    std::size_t uiRow = 0;
    while (std::string_view(KEYS[uiRow].pszKey) != KEY) {
        ++uiRow;  // past the end for a key that the table does not have, which does not compile
    }
    return KEYS[uiRow];
}

/// Is that where a value of the type goes?
template <typename Target>
constexpr bool Takes(EKeyType eType) {
    switch (eType) {
        case EKeyType::STRING:
            return std::is_same_v<Target, std::string> || std::is_same_v<Target, std::string_view>;
        case EKeyType::INTEGER:
            return std::is_same_v<Target, int>;
        case EKeyType::BOOLEAN:
            return std::is_same_v<Target, bool>;
        case EKeyType::OBJECT:
        case EKeyType::ARRAY:
        case EKeyType::OBJECT_OR_ARRAY:
            return std::is_same_v<Target, const Json::Value*>;
        default:
            return false;
    }
}

/// A key and where its value goes.
template <const auto& KEY, typename Target>
struct CKeyTarget {
    Target& target;
};

template <const auto& KEY, typename Target>
CKeyTarget<KEY, Target> To(Target& target) {
    return {target};
}

/// What is to be read by the row of a key.
template <const auto& KEYS, const auto& KEY, typename Target>
CJsonMember MakeMember(const CKeyTarget<KEY, Target>& keyTarget) {
    constexpr const CDocumentKey& ROW = RowOf<KEYS, KEY>();
    static_assert(std::is_same_v<Target, CAnyMember> || Takes<Target>(ROW.eType),
                  "the target has another type than the key");
    return {ROW.pszKey, ROW.eType, ROW.eNeed, &keyTarget.target};
}

/// Reads the members of an object. False when a required one is absent, null or of another type;
/// some targets may have been written then. An optional one that is so leaves its target. Clears
/// *pbAsWritten, if given, when a number has another form than an integer is written in: 3.0 counts
/// as one. Throws on a value that has no members.
bool ReadMembers(const Json::Value& object, const CJsonMember* pMembers, std::size_t uiSize,
                 bool* pbAsWritten);

/// Reads the keys by their rows in the table, as in
///     ReadMembers<CLUSTER_KEYS>(root, To<PSZ_CLUSTER_NAME>(strName), ...)
template <const auto& KEYS, typename... KeyTargets>
bool ReadMembers(const Json::Value& object, const KeyTargets&... keyTargets) {
    const CJsonMember members[] = {MakeMember<KEYS>(keyTargets)...};
    return ReadMembers(object, members, sizeof...(keyTargets), nullptr);
}

/// The same; clears bAsWritten as above.
template <const auto& KEYS, typename... KeyTargets>
bool ReadMembersAsWritten(const Json::Value& object, bool& bAsWritten,
                          const KeyTargets&... keyTargets) {
    const CJsonMember members[] = {MakeMember<KEYS>(keyTargets)...};
    return ReadMembers(object, members, sizeof...(keyTargets), &bAsWritten);
}

/// Renders the value into the buffer, zeroing the rest; a text that does not fit is cut.
void WriteJsonText(const Json::Value& root, char* pszJson, uint32_t iMaxLen);

}  // namespace framework_internal
