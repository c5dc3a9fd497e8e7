#include "internal/json_text.h"

#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <cstring>

#include "common_service/bounded_string.h"

// The documents' exact text is that of these two classes; their successors format differently.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace framework_internal {

namespace {

bool ReadValue(const Json::Value& value, std::string& strTarget) {
    const std::optional<std::string_view> text = TextOf(value);
    if (text) {
        strTarget = *text;
    }
    return text.has_value();
}

bool ReadValue(const Json::Value& value, int& iTarget) {
    if (!value.isInt()) {
        return false;
    }
    iTarget = static_cast<int>(value.asLargestInt());
    return true;
}

bool ReadValue(const Json::Value& value, bool& bTarget) {
    if (!value.isBool()) {
        return false;
    }
    bTarget = value.asBool();
    return true;
}

}  // namespace

bool ParseJsonText(const char* pszJson, Json::Value& root) {
    return Json::Reader().parse(pszJson, pszJson + std::strlen(pszJson), root, true);
}

std::optional<std::string_view> TextOf(const Json::Value& value) {
    const char* pszBegin = nullptr;
    const char* pszEnd = nullptr;
    if (!value.getString(&pszBegin, &pszEnd)) {
        return std::nullopt;
    }
    return std::string_view(pszBegin, static_cast<std::size_t>(pszEnd - pszBegin));
}

const Json::Value* FindMember(const Json::Value& object, const char* pszKey) {
    return object.find(pszKey, pszKey + std::strlen(pszKey));
}

const Json::Value* FindArray(const Json::Value& object, const char* pszKey) {
    const Json::Value* pMember = FindMember(object, pszKey);
    return pMember != nullptr && pMember->isArray() ? pMember : nullptr;
}

bool ReadMembers(const Json::Value& object, std::initializer_list<JsonMember> members,
                 bool* pbAsWritten) {
    if (!object.isObject()) {
        return FindMember(object, "") != nullptr;  // null has no members, the rest throws
    }
    // One pass over what the object holds costs less than a look-up for each member.
    std::size_t uiRead = 0;
    const auto itEnd = object.end();
    for (auto it = object.begin(); uiRead < members.size() && it != itEnd; ++it) {
        const char* pszEnd = nullptr;
        const char* pszName = it.memberName(&pszEnd);
        const std::string_view name(pszName, static_cast<std::size_t>(pszEnd - pszName));
        const auto itMember =
            std::find_if(members.begin(), members.end(),
                         [name](const JsonMember& member) { return member.key == name; });
        if (itMember == members.end()) {
            continue;
        }
        if (!std::visit([&it](auto* pTarget) { return ReadValue(*it, *pTarget); },
                        itMember->target)) {
            return false;
        }
        if (pbAsWritten != nullptr && it->type() == Json::realValue) {
            *pbAsWritten = false;
        }
        ++uiRead;
    }
    return uiRead == members.size();
}

void WriteJsonText(const Json::Value& root, char* pszJson, uint32_t iMaxLen) {
    const std::string strText = Json::FastWriter().write(root);
    memset_s(pszJson, iMaxLen, 0, iMaxLen);
    if (iMaxLen != 0) {
        strncpy_s(pszJson, iMaxLen, strText.c_str(), iMaxLen - 1);
    }
}

}  // namespace framework_internal
