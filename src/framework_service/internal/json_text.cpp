#include "internal/json_text.h"

#include <json/reader.h>
#include <json/writer.h>

#include <cstring>

#include "common_service/bounded_string.h"

// The documents' exact text is that of these two classes; their successors format differently.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace framework_internal {

namespace {

bool ReadValue(const Json::Value& value, std::string& strTarget) {
    const char* pszBegin = nullptr;
    const char* pszEnd = nullptr;
    if (!value.getString(&pszBegin, &pszEnd)) {
        return false;
    }
    strTarget.assign(pszBegin, pszEnd);
    return true;
}

bool ReadValue(const Json::Value& value, int& iTarget) {
    if (!value.isInt()) {
        return false;
    }
    iTarget = value.asInt();
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

const Json::Value* FindMember(const Json::Value& object, const char* pszKey) {
    return object.find(pszKey, pszKey + std::strlen(pszKey));
}

const Json::Value* FindArray(const Json::Value& object, const char* pszKey) {
    const Json::Value* pMember = FindMember(object, pszKey);
    return pMember != nullptr && pMember->isArray() ? pMember : nullptr;
}

bool ReadMembers(const Json::Value& object, std::initializer_list<JsonMember> members) {
    for (const JsonMember& member : members) {
        const Json::Value* pValue = FindMember(object, member.pszKey);
        if (pValue == nullptr ||
            !std::visit([pValue](auto* pTarget) { return ReadValue(*pValue, *pTarget); },
                        member.target)) {
            return false;
        }
    }
    return true;
}

void WriteJsonText(const Json::Value& root, char* pszJson, uint32_t iMaxLen) {
    const std::string strText = Json::FastWriter().write(root);
    memset_s(pszJson, iMaxLen, 0, iMaxLen);
    if (iMaxLen != 0) {
        strncpy_s(pszJson, iMaxLen, strText.c_str(), iMaxLen - 1);
    }
}

}  // namespace framework_internal
