#include "command/json_keys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command/text_place.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// Each key as "path at offset", with a sign when the object has had it before.
std::vector<std::string> KeyTexts(const std::string& strText) {
    std::vector<std::string> texts;
    for (const CTextKey& key : KeysOf(strText)) {
        texts.push_back(key.strPath + " at " + std::to_string(key.offset) +
                        (key.bRepeated ? " again" : ""));
    }
    return texts;
}

std::string PlaceText(const std::string& strText, std::size_t offset) {
    const CTextPlace place = PlaceAt(strText, offset);
    return std::to_string(place.iLine) + ":" + std::to_string(place.iColumn);
}

TEST(JsonKeys, StandInTheOrderOfTheTextWithTheirPaths) {
    EXPECT_THAT(
        KeyTexts(R"({"a":{"b":1},"c":[{"d":"e"},[2,{"f":{}}]],"g":3})"),
        ElementsAre("a at 1", "a.b at 6", "c at 13", "c[0].d at 19", "c[1][1].f at 32", "g at 42"));
    EXPECT_THAT(KeyTexts(R"(["a",{"b":"c"}])"), ElementsAre("[1].b at 6"));
    EXPECT_THAT(KeyTexts(R"("a")"), IsEmpty());
}

TEST(JsonKeys, AreRepeatedWithinOneObjectOnly) {
    EXPECT_THAT(KeyTexts(R"([{"a":1,"a":2},{"a":3}])"),
                ElementsAre("[0].a at 2", "[0].a at 8 again", "[1].a at 16"));
    EXPECT_THAT(KeyTexts(R"({"a":1,"\u0061":2})"), ElementsAre("a at 1", "a at 7 again"));
}

TEST(JsonKeys, AreNotLookedForInTextsAndComments) {
    EXPECT_THAT(KeyTexts("{// \"x\":1,\n\"a\":\"\\\"}{\", /* \"y\":{ */ \"b\":2}"),
                ElementsAre("a at 11", "b at 35"));
}

TEST(JsonKeys, LeadToAnOffset) {
    const std::string strText = R"({"a":[1,{"b":tru}],"c":2})";
    EXPECT_EQ(KeyPathAt(strText, strText.find("tru")), "a[1].b");
    EXPECT_EQ(KeyPathAt(strText, strText.find("2}")), "c");
    EXPECT_EQ(KeyPathAt(strText, 0), "");
}

TEST(JsonKeys, TellWhereATextIsDeeperThanItMayBe) {
    EXPECT_EQ(OffsetBelow("[1,[2],[3,[4]]]", 2), 10U);
    EXPECT_EQ(OffsetBelow("[1]", 2), 3U);
}

TEST(TextPlace, CountsLinesAndCharacters) {
    EXPECT_EQ(PlaceText("ab\ncd", 0), "1:1");
    EXPECT_EQ(PlaceText("ab\ncd", 2), "1:3");
    EXPECT_EQ(PlaceText("ab\ncd", 4), "2:2");
    EXPECT_EQ(PlaceText("a\r\nb\rc", 3), "2:1");
    EXPECT_EQ(PlaceText("a\r\nb\rc", 5), "3:1");
    EXPECT_EQ(PlaceText("\xE5\x8C\x97\xE5\x8C\x97x", 6), "1:3");
    EXPECT_EQ(PlaceText("a\n", 2), "2:1");
}

TEST(TextPlace, IsWhereTheJsonReaderCountsItInBytes) {
    EXPECT_EQ(OffsetOf("ab\r\ncd", 2, 2), 5U);
    EXPECT_EQ(OffsetOf("ab", 1, 1), 0U);
    EXPECT_EQ(OffsetOf("ab", 7, 7), 2U);
}

TEST(TextPlace, TellsWhereATextIsNoUtf8) {
    for (const char* pszText : {"", "a", "\xC2\x80", "\xE5\x8C\x97", "\xF0\x9F\x98\x80"}) {
        EXPECT_EQ(FindNonUtf8(pszText), std::nullopt) << pszText;
    }
    for (const char* pszBad : {"\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xE5\x8C",
                               "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5", "\xFF"}) {
        EXPECT_EQ(FindNonUtf8(std::string("ab") + pszBad), 2U) << pszBad;
    }
}

}  // namespace
