#include "cluster_engine/json_fields.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cluster_engine/input.h"

namespace {

struct CInner {
    int32_t iNumber = 0;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("number", self.iNumber);
    }
};

struct CSample {
    std::string strId = "i";
    std::string strText;
    bool bFlag = false;
    uint32_t uiCount = 0;
    std::vector<CInner> list;
    std::map<std::string, std::string> pairs;
    std::optional<CInner> inner;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("id", self.strId);
        form.May("text", self.strText);
        form.May("flag", self.bFlag);
        form.May("count", self.uiCount);
        form.May("list", self.list);
        form.May("pairs", self.pairs);
        form.May("inner", self.inner);
    }
};

/// Parses and reads the text: its fault, or the text that is written again.
std::string ReadAgain(const std::string& strText) {
    Json::Value json;
    CFieldFault fault;
    CSample sample;
    const bool bRead =
        ParseJsonText(strText.data(), strText.data() + strText.size(), json, fault) &&
        FromJson(json, sample, fault);
    EXPECT_EQ(bRead, fault.strFault.empty());
    return bRead ? JsonLine(ToJson(sample)) : fault.strPlace + ": " + fault.strFault;
}

TEST(JsonFields, WhatWasWrittenReadsBackToTheByte) {
    for (const char* pszText : {
             R"({"id":"i"})",
             R"({"count":4294967295,"flag":true,"id":"a/b%c \"d\\","inner":{"number":-2147483648},)"
             R"("list":[{"number":0},{"number":2147483647}],"pairs":{"":"","k":"\u0000\n"},)"
             R"("text":"中 \t"})",
         }) {
        EXPECT_EQ(ReadAgain(pszText), pszText);
    }
}

TEST(JsonFields, TextWithoutAValueBetweenSaysTheSame) {
    CSample sample;
    EXPECT_EQ(JsonText(sample), R"({"id":"i"})");
    sample.strId = "a/b \"d\\";
    sample.strText = "\xE4\xB8\xAD \t\x7F";
    sample.bFlag = true;
    sample.uiCount = 4294967295;
    sample.list = {{0}, {-2147483648}};
    sample.pairs = {{"", ""}, {std::string("\"\0", 2), "\n"}};
    sample.inner = CInner{7};
    const std::string strText = JsonText(sample);
    Json::Value json;
    CFieldFault fault;
    ASSERT_TRUE(ParseJsonText(strText.data(), strText.data() + strText.size(), json, fault))
        << strText;
    EXPECT_EQ(JsonLine(json), JsonLine(ToJson(sample)));
    EXPECT_EQ(strText.find('\n'), std::string::npos);
    EXPECT_EQ(strText.rfind(R"({"id":"a/b \"d\\","text":)", 0), 0U) << strText;
}

TEST(JsonFields, FaultNamesItsPlace) {
    const std::string strNoId = ": must be an id: printable, of 1 to 128 bytes";
    const std::vector<std::pair<std::string, std::string>> faults = {
        {R"({})", "id: is missing"},
        {R"([])", ": must be an object"},
        {R"({"id":5})", "id: must be a text"},
        {R"({"id":""})", "id" + strNoId},
        {R"({"id":"a\u0007"})", "id" + strNoId},
        {R"({"id":"a\u0085"})", "id" + strNoId},
        {R"({"id":")" + std::string(129, 'a') + R"("})", "id" + strNoId},
        {"{\"id\":\"\xC3\"}", "id: must be UTF-8"},
        {R"({"id":"\udc00"})", "id: must be UTF-8"},
        {"{\"id\":\"i\",\"text\":\"\xFF\"}", "text: must be UTF-8"},
        {"{\"id\":\"i\",\"pairs\":{\"\xFF\":\"\"}}", "pairs: has a key that is no UTF-8"},
        {R"({"id":"i","pairs":{"k":1}})", "pairs.k: must be a text"},
        {R"({"id":"i","flag":1})", "flag: must be true or false"},
        {R"({"id":"i","count":-1})", "count: must be a whole number from 0 to 4294967295"},
        {R"({"id":"i","count":4294967296})", "count: must be a whole number from 0 to 4294967295"},
        {R"({"id":"i","count":1.0})", "count: must be a whole number from 0 to 4294967295"},
        {R"({"id":"i","list":{}})", "list: must be a list"},
        {R"({"id":"i","list":[{"number":1},{"number":2147483648}]})",
         "list[1].number: must be a whole number from -2147483648 to 2147483647"},
        {R"({"id":"i","list":[{"number":1,"more":1}]})", "list[0].more: is not known"},
        {R"({"id":"i","inner":7})", "inner: must be an object"},
    };
    for (const auto& [strText, strFault] : faults) {
        EXPECT_EQ(ReadAgain(strText), strFault) << strText;
    }
}

TEST(JsonFields, TextThatIsNoJsonIsNamed) {
    for (const std::string& strText :
         {std::string(), std::string("{"), std::string(R"({"id":"i"} x)"),
          std::string(R"({"id":"i","id":"j"})"), std::string(R"({"id":"i",})"),
          std::string(1000, '[') + std::string(1000, ']'), std::string(R"({"id":'i'})")}) {
        EXPECT_THAT(ReadAgain(strText), testing::HasSubstr("is no JSON")) << strText;
    }
}

TEST(JsonFields, UnknownFieldsAreCountedOnlyWhereTheyArePassedOver) {
    Json::Value json;
    json["id"] = "i";
    json["later"] = 1;
    json["inner"]["number"] = 1;
    json["inner"]["later"] = 1;
    CSample sample;
    CFieldFault fault;
    std::size_t uiUnknown = 0;
    EXPECT_TRUE(FromJson(json, sample, fault, &uiUnknown));
    EXPECT_EQ(uiUnknown, 2U);
    EXPECT_FALSE(FromJson(json, sample, fault));
}

TEST(JsonFields, IdsArePrintableUtf8OfUpTo128Bytes) {
    EXPECT_TRUE(IsId(std::string(128, 'a')));
    EXPECT_TRUE(IsId("../a b%\"\\\xE4\xB8\xAD\xF0\x9F\x98\x80"));
    for (const std::string& strText :
         {std::string(), std::string("a\0b", 3), std::string("\x7F"), std::string("\xC0\xAF"),
          std::string("\xE0\x80\x80"), std::string("\xED\xA0\x80"), std::string("\xF0\x80\x80\x80"),
          std::string("\xF4\x90\x80\x80"), std::string("\xF5\x80\x80\x80"), std::string("\x80"),
          std::string("a\xE4\xB8")}) {
        EXPECT_FALSE(IsId(strText)) << testing::PrintToString(strText);
    }
}

}  // namespace
