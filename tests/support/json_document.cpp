#include "support/json_document.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <map>
#include <sstream>

namespace {

constexpr uint32_t NUMERIC_BUFFER = 65536;

/// What is of none of the types.
const std::vector<std::string> COMMON_TEXTS = {"null", "{}", "1.5"};

const std::map<EMemberType, std::vector<std::string>> OTHER_TEXTS = {
    {EMemberType::STRING, {"true", "1", "[]"}},
    {EMemberType::INT,
     {"true", "\"1\"", "[]", "2147483648", "-2147483649", "18446744073709551615", "1e300"}},
    {EMemberType::BOOL, {"0", "1", "\"true\"", "[]"}},
    {EMemberType::ARRAY, {"true", "1", "\"[]\""}},
};

Json::Value Parse(const std::string& strText) {
    Json::Value value;
    std::istringstream(strText) >> value;
    return value;
}

}  // namespace

std::string TextOf(CBaseJsonObject& document) {
    std::vector<char> buffer(NUMERIC_BUFFER);
    EXPECT_EQ(document.ToJson(buffer.data(), NUMERIC_BUFFER), 0);
    return buffer.data();
}

std::ostream& operator<<(std::ostream& stream, const CMemberChange& change) {
    return stream << change.strPath << ' ' << change.jsonText.value_or("absent");
}

std::vector<CMemberChange> EveryBadMember(const std::vector<CRequiredMember>& members) {
    std::vector<CMemberChange> badMembers;
    for (const CRequiredMember& member : members) {
        badMembers.push_back({member.strPath, std::nullopt});
        for (const auto& texts : {COMMON_TEXTS, OTHER_TEXTS.at(member.eType)}) {
            for (const std::string& strText : texts) {
                badMembers.push_back({member.strPath, strText});
            }
        }
    }
    return badMembers;
}

std::string WithMember(const std::string& strText, const CMemberChange& change) {
    Json::Value root = Parse(strText);
    const std::size_t uiKey = change.strPath.rfind('.');
    const std::string strKey = change.strPath.substr(uiKey + 1);
    Json::Value& parent = Json::Path(change.strPath.substr(0, uiKey)).make(root);
    if (change.jsonText) {
        parent[strKey] = Parse(*change.jsonText);
    } else {
        parent.removeMember(strKey);
    }
    return Json::writeString(Json::StreamWriterBuilder(), root);
}
