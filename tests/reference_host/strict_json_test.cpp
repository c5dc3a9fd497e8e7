#include "reference_host/strict_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common_service/data/version_znode.h"
#include "common_service/tarn_def.h"

namespace {

/// What is wrong with a text.
std::string FaultOf(const std::string& strText) {
    Json::Value root;
    const std::optional<CJsonFault> fault = ParseStrictJson(strText, root);
    return fault ? TextOf(*fault) : "";
}

/// What is wrong with one that somebody sent.
std::string ForeignFaultOf(const std::string& strText) {
    Json::Value root;
    const std::optional<CJsonFault> fault = ParseForeignJson(strText, root);
    return fault ? TextOf(*fault) : "";
}

std::string Nested(std::size_t uiDepth) {
    return std::string(uiDepth, '[') + '1' + std::string(uiDepth, ']');
}

TEST(StrictJson, TakesOneValueOfAnyKind) {
    for (const char* pszText : {"{}", "[1, 2]", "5", "\"x\"", "null", " {}\n"}) {
        EXPECT_EQ(FaultOf(pszText), "") << pszText;
    }
}

TEST(StrictJson, HandsTheValueOver) {
    Json::Value root;
    EXPECT_FALSE(ParseStrictJson(std::string_view(R"({"a":7} and more)", 7), root));
    EXPECT_EQ(root["a"], 7);
}

TEST(StrictJson, TellsWhatIsWrongFirstAndWhere) {
    EXPECT_EQ(FaultOf("{\n  \"a\": tru\n}"),
              "line 2, column 8: Syntax error: value, object or array expected.");
    EXPECT_EQ(FaultOf("{} {}"), "line 1, column 4: Extra non-whitespace after JSON value.");
    EXPECT_NE(FaultOf(""), "");
}

TEST(StrictJson, RefusesATrailingCommaAndAByteOrderMark) {
    EXPECT_THAT(FaultOf(R"({"a":1,})"), ::testing::StartsWith("line 1, column 8: "));
    EXPECT_THAT(FaultOf("[1,\n]"), ::testing::StartsWith("line 2, column 1: "));
    EXPECT_THAT(FaultOf("\xEF\xBB\xBF{}"), ::testing::StartsWith("line 1, column 1: "));
}

TEST(StrictJson, RefusesWhatIsNestedTooDeeply) {
    const std::string strText = std::string(5000, '[') + std::string(5000, ']');
    EXPECT_NE(FaultOf(strText), "");
    EXPECT_EQ(CVersionZNode().ParseJson(strText.c_str()), ORVA_DATA_INVALID);
}

TEST(ForeignJson, TakesOneValueOfAnyKind) {
    for (const char* pszText : {"{}", "[1, 2]", "5", "\"x\"", "null", " {}\n"}) {
        EXPECT_EQ(ForeignFaultOf(pszText), "") << pszText;
    }
}

TEST(ForeignJson, RefusesKeysTwiceAndComments) {
    EXPECT_THAT(ForeignFaultOf("{\"a\":1,\n\"a\":2}"), ::testing::StartsWith("line 2, column "));
    EXPECT_THAT(ForeignFaultOf("{} // why"), ::testing::StartsWith("line 1, column 4: "));
    EXPECT_EQ(ForeignFaultOf("{} {}"), "line 1, column 4: Extra non-whitespace after JSON value.");
}

TEST(ForeignJson, TellsWhereItIsNestedTooDeeply) {
    EXPECT_EQ(ForeignFaultOf(Nested(64)), "");
    EXPECT_EQ(ForeignFaultOf(Nested(65)), "line 1, column 65: This is nested too deeply.");
    EXPECT_EQ(ForeignFaultOf("\n[\"[\\\"[\",\n" + Nested(1000) + ']'),
              "line 3, column 64: This is nested too deeply.");
    EXPECT_EQ(ForeignFaultOf("[1]"), "") << "after a refusal too";
}

}  // namespace
