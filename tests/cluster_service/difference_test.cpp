#include "command/difference.h"

#include <gmock/gmock.h>
#include <json/reader.h>

#include <memory>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

Json::Value Parsed(const std::string& strText) {
    Json::Value value;
    const std::unique_ptr<Json::CharReader> pReader(Json::CharReaderBuilder().newCharReader());
    EXPECT_TRUE(pReader->parse(strText.data(), strText.data() + strText.size(), &value, nullptr))
        << strText;
    return value;
}

std::vector<std::string> Lines(const Json::Value* pBefore, const Json::Value* pAfter) {
    std::vector<std::string> lines;
    for (const CFieldChange& change : FindChanges(pBefore, pAfter)) {
        lines.push_back(TextOf(change));
    }
    return lines;
}

std::vector<std::string> Lines(const std::string& strBefore, const std::string& strAfter) {
    const Json::Value before = Parsed(strBefore);
    const Json::Value after = Parsed(strAfter);
    return Lines(&before, &after);
}

}  // namespace

TEST(Difference, OfEqualDocumentsIsNothing) {
    EXPECT_THAT(Lines(R"({"a": [1, {"b": 2}], "c": null})", R"({"c":null,"a":[1,{"b":2}]})"),
                IsEmpty());
}

TEST(Difference, NamesTheFieldWhatItWasAndWhatItWillBe) {
    EXPECT_THAT(Lines(R"({"Name": "a", "Type": 1})", R"({"Name": "b", "Type": 1})"),
                ElementsAre(R"(Name: was "a", will be "b")"));
    EXPECT_THAT(
        Lines(R"({"Gone": true})", R"({"New": {"x": 1}})"),
        ElementsAre("Gone: was true, will be nothing", R"(New: was nothing, will be {"x":1})"));
    EXPECT_THAT(Lines(R"({"n": 1})", R"({"n": "1"})"), ElementsAre(R"(n: was 1, will be "1")"));
}

TEST(Difference, TellsNodesByTheirIdsWhereverTheyStand) {
    EXPECT_THAT(
        Lines(R"({"ClusterNode": [{"NodeID": "a", "Status": "Normal"}, {"NodeID": "b"}]})",
              R"({"ClusterNode": [{"NodeID": "a", "Status": "Removed"}, {"NodeID": "c"}]})"),
        ElementsAre(R"(ClusterNode["a"].Status: was "Normal", will be "Removed")",
                    R"(ClusterNode["b"]: was {"NodeID":"b"}, will be nothing)",
                    R"(ClusterNode["c"]: was nothing, will be {"NodeID":"c"})"));
}

TEST(Difference, SaysThatEntriesChangedPlaces) {
    EXPECT_THAT(Lines(R"([{"FloatCGCode": "1"}, {"FloatCGCode": "2"}, {"FloatCGCode": "3"}])",
                      R"([{"FloatCGCode": "3"}, {"FloatCGCode": "1"}])"),
                ElementsAre(R"(["2"]: was {"FloatCGCode":"2"}, will be nothing)",
                            R"(order: was ["1","3"], will be ["3","1"])"));
}

TEST(Difference, GoesByPositionWhereNamesAreMissingOrDouble) {
    EXPECT_THAT(Lines(R"({"SlaveDB": [{"DBPort": 1}, {"DBPort": 2}]})",
                      R"({"SlaveDB": [{"DBPort": 1}, {"DBPort": 3}, {"DBPort": 4}]})"),
                ElementsAre("SlaveDB[1].DBPort: was 2, will be 3",
                            R"(SlaveDB[2]: was nothing, will be {"DBPort":4})"));
    EXPECT_THAT(Lines(R"([{"NodeID": "a"}, {"NodeID": "a", "x": 1}])", R"([{"NodeID": "a"}])"),
                ElementsAre(R"([1]: was {"NodeID":"a","x":1}, will be nothing)"));
}

TEST(Difference, TellsAListThatComesEntryByEntry) {
    const Json::Value after = Parsed(R"([{"NodeID": "a"}, {"NodeID": "b"}])");
    EXPECT_THAT(Lines(nullptr, &after),
                ElementsAre(R"(["a"]: was nothing, will be {"NodeID":"a"})",
                            R"(["b"]: was nothing, will be {"NodeID":"b"})"));
    const Json::Value none(Json::arrayValue);
    EXPECT_THAT(Lines(nullptr, &none), ElementsAre("all of it: was nothing, will be []"));
}

TEST(Difference, TellsADocumentThatComesOrGoesKeyByKey) {
    const Json::Value document = Parsed(R"({"a": 1, "b": [{"NodeID": "n"}]})");
    EXPECT_THAT(
        Lines(nullptr, &document),
        ElementsAre("a: was nothing, will be 1", R"(b["n"]: was nothing, will be {"NodeID":"n"})"));
    EXPECT_THAT(
        Lines(&document, nullptr),
        ElementsAre("a: was 1, will be nothing", R"(b["n"]: was {"NodeID":"n"}, will be nothing)"));
}

TEST(Difference, OfAListAndAnObjectIsAllOfIt) {
    EXPECT_THAT(Lines("[1]", R"({"a": 1})"), ElementsAre(R"(all of it: was [1], will be {"a":1})"));
}

TEST(Difference, ShowsNoTextThatPaintsTheTerminal) {
    const Json::Value before = Parsed(R"({"\u001b[31m": "\u202e"})");
    const Json::Value after(Json::objectValue);
    EXPECT_THAT(Lines(&before, &after), ElementsAre(R"(\x1b[31m: was "\u202e", will be nothing)"));
}

TEST(Difference, IsAnObjectForPrograms) {
    CFieldChange change{"a.b", Json::Value(1), std::nullopt};
    EXPECT_EQ(ToJson(change), Parsed(R"({"path": "a.b", "before": 1})"));
}
