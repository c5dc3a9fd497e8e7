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

bool ReadValue(const Json::Value& value, EKeyType, std::string& strTarget) {
    const std::optional<std::string_view> text = TextOf(value);
    if (text) {
        strTarget = *text;
    }
    return text.has_value();
}

bool ReadValue(const Json::Value& value, EKeyType, std::string_view& target) {
    const std::optional<std::string_view> text = TextOf(value);
    target = text.value_or(target);
    return text.has_value();
}

bool ReadValue(const Json::Value& value, EKeyType, int& iTarget) {
    if (!value.isInt()) {
        return false;
    }
    iTarget = static_cast<int>(value.asLargestInt());
    return true;
}

bool ReadValue(const Json::Value& value, EKeyType, bool& bTarget) {
    if (!value.isBool()) {
        return false;
    }
    bTarget = value.asBool();
    return true;
}

// isObject and isArray of the JSON library hold for these types alone, null excepted.
bool ReadValue(const Json::Value& value, EKeyType eType, const Json::Value*& pTarget) {
    const bool bObject = value.type() == Json::objectValue && eType != EKeyType::ARRAY;
    const bool bArray = value.type() == Json::arrayValue && eType != EKeyType::OBJECT;
    if (bObject || bArray) {
        pTarget = &value;
    }
    return bObject || bArray;
}

bool ReadValue(const Json::Value& value, EKeyType, CAnyMember& target) {
    target.pValue = &value;
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

bool ReadMembers(const Json::Value& object, const CJsonMember* pMembers, std::size_t uiSize,
                 bool* pbAsWritten) {
    const CJsonMember* const pEnd = pMembers + uiSize;
    const auto isRequired = [](const CJsonMember& member) {
        return member.eNeed == EKeyNeed::REQUIRED;
    };
    auto iMissing = std::count_if(pMembers, pEnd, isRequired);
    if (!object.isObject()) {
        FindMember(object, "");  // null has no members, the rest throws
        return iMissing == 0;
    }
    // One pass over what the object holds costs less than a look-up for each member.
    const auto itEnd = object.end();
    for (auto it = object.begin(); it != itEnd; ++it) {
        const char* pszEnd = nullptr;
        const char* pszName = it.memberName(&pszEnd);
        const std::string_view name(pszName, static_cast<std::size_t>(pszEnd - pszName));
        const auto* const pMember = std::find_if(
            pMembers, pEnd, [name](const CJsonMember& member) { return member.key == name; });
        if (pMember == pEnd) {
            continue;
        }
        const bool bRead =
            std::visit([&](auto* pTarget) { return ReadValue(*it, pMember->eType, *pTarget); },
                       pMember->target);
        if (isRequired(*pMember)) {
            if (!bRead) {
                return false;
            }
            --iMissing;
        }
        if (pbAsWritten != nullptr && it->type() == Json::realValue) {
            *pbAsWritten = false;
        }
    }
    return iMissing == 0;
}

void WriteJsonText(const Json::Value& root, char* pszJson, uint32_t iMaxLen) {
    const std::string strText = Json::FastWriter().write(root);
    memset_s(pszJson, iMaxLen, 0, iMaxLen);
    if (iMaxLen != 0) {
        strncpy_s(pszJson, iMaxLen, strText.c_str(), iMaxLen - 1);
    }
}

}  // namespace framework_internal
