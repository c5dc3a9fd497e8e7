#pragma once

#include <json/value.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "operation_log/operation_log.h"

/// Reading and writing the JSON text of the store documents.
namespace [[gnu::visibility("hidden")]] framework_internal {

inline constexpr char OPERATION_NULL_JSON[] = "Point pszJson is null.";

/// A required member of an object and where its value goes: the type of the target is the type
/// that the member must have.
struct JsonMember {
    std::string_view key;
    std::variant<std::string*, int*, bool*> target;

    JsonMember(const char* pszMemberKey, std::string& strTarget)
        : key(pszMemberKey), target(&strTarget) {}
    JsonMember(const char* pszMemberKey, int& iTarget) : key(pszMemberKey), target(&iTarget) {}
    JsonMember(const char* pszMemberKey, bool& bTarget) : key(pszMemberKey), target(&bTarget) {}
};

/// Parses the text; a failed parse leaves a partial value behind.
bool ParseJsonText(const char* pszJson, Json::Value& root);

/// The text of a string, nothing for any other value. Lives as long as the value.
std::optional<std::string_view> TextOf(const Json::Value& value);

/// The member of that key; null when it is absent. Throws on a value that has no members.
const Json::Value* FindMember(const Json::Value& object, const char* pszKey);

/// The member when it is an array, null for anything else.
const Json::Value* FindArray(const Json::Value& object, const char* pszKey);

/// Reads the members. False when one is absent, null or of another type; some targets may have been
/// written then. Clears *pbAsWritten, if given, when a number has another form than an integer is
/// written in: 3.0 counts as one.
bool ReadMembers(const Json::Value& object, std::initializer_list<JsonMember> members,
                 bool* pbAsWritten = nullptr);

/// Renders the value into the buffer, zeroing the rest; a text that does not fit is cut.
void WriteJsonText(const Json::Value& root, char* pszJson, uint32_t iMaxLen);

}  // namespace framework_internal
