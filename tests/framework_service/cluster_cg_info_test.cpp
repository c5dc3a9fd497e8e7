#include <json/json.h>

#include <sstream>
#include <string>

#include "common_service/tarn_def.h"
#include "support/cg_document_fixture.h"
#include "support/json_document.h"
#include "support/xml_place.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace cg_document;

namespace {

TEST_F(CGDocument, HasItsPlaceAndItsSize) {
    EXPECT_STREQ(STORE_NODE_CG_LIST.pszSuffix, "/MERO/CGList");
    EXPECT_EQ(STORE_NODE_CG_LIST.uiBufLen, 1024U);
}

TEST_F(CGDocument, StartsEmptyAndCountsItsEntries) {
    EXPECT_TRUE(CClusterCGInfoList().Empty());
    EXPECT_EQ(CClusterCGInfoList().GetSize(), 0U);
    EXPECT_FALSE(m_document.Empty());
    EXPECT_EQ(m_document.GetSize(), 2U);
}

TEST_F(CGDocument, TakesAnyEntryAtTheEnd) {
    m_document.AddClusterCGInfo(MakeCG("a", "b", "c", "1"));
    m_document.AddClusterCGInfo(CClusterCGInfo());
    EXPECT_THAT(Tell(m_document), ElementsAre("a b c 1", "d e f 2", "a b c 1", "   0"));
}

TEST_F(CGDocument, CopyAndAssignmentCarryTheList) {
    const CClusterCGInfoList copy(m_document);
    CClusterCGInfoList assigned = MakeList({CClusterCGInfo()});
    assigned = m_document;
    EXPECT_EQ(Tell(copy), m_before);
    EXPECT_EQ(Tell(assigned), m_before);
    m_document.RemoveClusterCG("b");
    EXPECT_EQ(Tell(copy), m_before);
    EXPECT_EQ(Tell(assigned), m_before);
}

TEST_F(CGDocument, IsAnArrayWithoutTheStatus) {
    m_document.AddClusterCGInfo(MakeCG("\xE5\x8C\x97\"", "", "", "", "status"));
    EXPECT_EQ(TextOf(m_document),
              R"([{"DecisionVerNum":"1","FloatCGCode":"b","FloatIP":"c","NVRCode":"a"},)"
              R"({"DecisionVerNum":"2","FloatCGCode":"e","FloatIP":"f","NVRCode":"d"},)"
              R"({"DecisionVerNum":"","FloatCGCode":"","FloatIP":"","NVRCode":"\u5317\""}])"
              "\n");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGDocument, ReadsWhatItWrote) {
    m_document.AddClusterCGInfo(MakeCG("\xE5\x8C\x97\"", "", "\xF0\x9F\x98\x80", ""));
    CClusterCGInfoList read;
    EXPECT_EQ(read.ParseJson(TextOf(m_document).c_str()), ORVA_SUCCEED);
    EXPECT_EQ(Tell(read), Tell(m_document));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGDocument, TextIsCutToItsBufferAndTheRestOfTheBufferCleared) {
    const std::string strText = TextOf(m_document);
    for (std::size_t uiLen = 1; uiLen < strText.size() + 5; ++uiLen) {
        std::string strBuffer(uiLen + 1, '#');
        EXPECT_EQ(m_document.ToJson(strBuffer.data(), static_cast<uint32_t>(uiLen)), ORVA_SUCCEED);
        std::string strExpected = strText.substr(0, uiLen - 1);
        strExpected.resize(uiLen, '\0');
        EXPECT_EQ(strBuffer, strExpected + '#') << "length " << uiLen;
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGDocument, BufferIsNeededAndMustHaveALength) {
    char cBuffer = '#';
    EXPECT_EQ(m_document.ToJson(nullptr, 0), ORVA_FAIL);
    EXPECT_EQ(m_document.ToJson(nullptr, 100), ORVA_FAIL);
    EXPECT_EQ(m_document.ToJson(&cBuffer, 0), ORVA_DATA_INVALID);
    EXPECT_EQ(cBuffer, '#');
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(NullPointerLine("ToJson"), NullPointerLine("ToJson"),
                            JsonLine("ToJson", "to json fail, illegal length.")));
}

TEST_F(CGDocument, EmptyListIsEmptyTextWhateverTheBuffer) {
    const CLogLine line = Trace(FILE_NAME, "ToJson", "cluster cg info, no cg info.");
    CClusterCGInfoList empty;
    std::string strBuffer = "########";
    EXPECT_EQ(empty.ToJson(strBuffer.data(), 7), ORVA_SUCCEED);
    EXPECT_EQ(strBuffer, std::string(7, '\0') + '#');
    EXPECT_EQ(empty.ToJson(strBuffer.data() + 7, 0), ORVA_SUCCEED);
    EXPECT_EQ(strBuffer.back(), '#');
    EXPECT_EQ(empty.ToJson(nullptr, 100), ORVA_SUCCEED);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(line, line, line));
}

TEST_F(CGDocument, TextReplacesTheListWhole) {
    EXPECT_EQ(Parse(R"([{"NVRCode":"x","FloatCGCode":"y","FloatIP":"z","DecisionVerNum":"3"}])"),
              ORVA_SUCCEED);
    EXPECT_THAT(Tell(m_document), ElementsAre("x y z 3"));
    EXPECT_EQ(
        Parse(R"([{"NVRCode":"","FloatCGCode":"","FloatIP":"","DecisionVerNum":"","Other":1},)" +
              std::string(ENTRY_TEXT) + "," + ENTRY_TEXT + "] behind"),
        ORVA_SUCCEED);
    EXPECT_THAT(Tell(m_document), ElementsAre("   ", "a b c 1", "a b c 1"));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGDocument, EmptyTextKeepsTheListWithoutALine) {
    EXPECT_EQ(Parse(""), ORVA_SUCCEED);
    EXPECT_EQ(Tell(m_document), m_before);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGDocument, EmptyDocumentKeepsTheListAndIsTraced) {
    for (const char* pszText : {"[]", "{}", "null", " [ ] // none", "[]["}) {
        m_logger.Clear();
        EXPECT_EQ(Parse(pszText), ORVA_SUCCEED) << pszText;
        EXPECT_EQ(Tell(m_document), m_before) << pszText;
        EXPECT_THAT(m_logger.GetLines(), ElementsAre(Trace(FILE_NAME, "ParseJson",
                                                           "cluster cg info, no cg info found")));
    }
}

TEST_F(CGDocument, NullTextIsInvalidDataButLoggedAsAFailure) {
    EXPECT_EQ(m_document.ParseJson(nullptr), ORVA_DATA_INVALID);
    EXPECT_EQ(Tell(m_document), m_before);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(NullPointerLine("ParseJson")));
}

TEST_F(CGDocument, MalformedTextKeepsTheList) {
    for (const std::string strText : {" ", "[", "[{]", "nul", "%s%n", "[{\"NVRCode\":\"a\"}"}) {
        m_logger.Clear();
        EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID) << strText;
        EXPECT_EQ(Tell(m_document), m_before) << strText;
        EXPECT_THAT(m_logger.GetLines(), ElementsAre(TextLine("parse json fail", strText)));
    }
}

TEST_F(CGDocument, WhatIsNoArrayKeepsTheList) {
    for (const std::string& strText :
         {std::string(ENTRY_TEXT), std::string("1"), std::string("\"\""), std::string("false"),
          std::string("1.5")}) {
        m_logger.Clear();
        EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID) << strText;
        EXPECT_EQ(Tell(m_document), m_before) << strText;
        EXPECT_THAT(m_logger.GetLines(), ElementsAre(TextLine("not found cg list", strText)));
    }
}

TEST_F(CGDocument, EntryThatIsNoObjectIsRefusedByTheJsonLibraryAndKeepsTheList) {
    for (const std::string strEntry : {"1", "\"a\"", "true", "[]"}) {
        EXPECT_THROW(Parse("[" + strEntry + "]"), Json::Exception) << strEntry;
        EXPECT_EQ(Tell(m_document), m_before) << strEntry;
    }
    EXPECT_THROW(Parse(std::string(2000, '[')), Json::Exception);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

class BadCGEntry : public CGDocument, public testing::WithParamInterface<CMemberChange> {
protected:
    const std::string m_strEntry = WithMember(ENTRY_TEXT, GetParam());
};

TEST_P(BadCGEntry, IsLeftUntouched) {
    CClusterCGInfo entry = MakeCG("x", "y", "z", "0");
    Json::Value json;
    std::istringstream(m_strEntry) >> json;
    EXPECT_EQ(entry.ParseJson(json), ORVA_DATA_INVALID);
    EXPECT_EQ(Tell(entry), "x y z 0");
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BAD_ENTRY));
}

TEST_P(BadCGEntry, KeepsTheWholeListAndEndsTheReading) {
    const std::string strText =
        "[" + std::string(ENTRY_TEXT) + "," + m_strEntry + "," + m_strEntry + "]";
    EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID);
    EXPECT_EQ(Tell(m_document), m_before);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(BAD_ENTRY, TextLine("parse cg json fail", strText)));
}

INSTANTIATE_TEST_SUITE_P(CG, BadCGEntry,
                         testing::ValuesIn(EveryBadMember({{".NVRCode", EMemberType::STRING},
                                                           {".FloatCGCode", EMemberType::STRING},
                                                           {".FloatIP", EMemberType::STRING},
                                                           {".DecisionVerNum",
                                                            EMemberType::STRING}})));

TEST_F(CGDocument, NullAndEmptyEntriesAreRefused) {
    for (const std::string strText : {"[null]", "[{}]"}) {
        m_logger.Clear();
        EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID);
        EXPECT_THAT(m_logger.GetLines(),
                    ElementsAre(BAD_ENTRY, TextLine("parse cg json fail", strText)));
    }
}

TEST_F(CGDocument, EqualityForgetsOrderAndStatus) {
    const CClusterCGInfoList list =
        MakeList({MakeCG("d", "e", "f", "2", "x"), MakeCG("a", "b", "c", "1")});
    EXPECT_TRUE(m_document == list);
    EXPECT_TRUE(CClusterCGInfoList() == CClusterCGInfoList());
}

TEST_F(CGDocument, EqualityNeedsEveryEntryAndNoMore) {
    const CClusterCGInfo first = MakeCG("a", "b", "c", "1");
    const CClusterCGInfo second = MakeCG("d", "e", "f", "2");
    EXPECT_FALSE(m_document == MakeList({first}));
    EXPECT_FALSE(MakeList({first}) == m_document);
    EXPECT_FALSE(m_document == CClusterCGInfoList());
    EXPECT_FALSE(m_document == MakeList({first, MakeCG("x", "e", "f", "2")}));
    EXPECT_FALSE(m_document == MakeList({first, MakeCG("d", "x", "f", "2")}));
    EXPECT_FALSE(m_document == MakeList({first, MakeCG("d", "e", "x", "2")}));
    EXPECT_FALSE(m_document == MakeList({first, MakeCG("d", "e", "f", "x")}));
    EXPECT_FALSE(m_document == MakeList({first, second, second}));
}

TEST_F(CGDocument, FirstEntryOfANodeStandsForAllOfIt) {
    const CClusterCGInfo first = MakeCG("a", "b", "c", "1");
    const CClusterCGInfo other = MakeCG("a", "x", "x", "x");
    EXPECT_TRUE(MakeList({first, first}) == MakeList({first, other}));
    EXPECT_FALSE(MakeList({first, other}) == MakeList({first, other}));
}

TEST_F(CGDocument, LookupsEachCompareOneField) {
    EXPECT_TRUE(m_document.IsNodeExist("a"));
    EXPECT_FALSE(m_document.IsNodeExist("b"));
    EXPECT_TRUE(m_document.IsCGExist("e"));
    EXPECT_FALSE(m_document.IsCGExist("d"));
    EXPECT_TRUE(m_document.IsFloatIPExist("f"));
    EXPECT_FALSE(m_document.IsFloatIPExist("e"));
    EXPECT_FALSE(m_document.IsNodeExist(""));
    EXPECT_FALSE(CClusterCGInfoList().IsCGExist(""));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGDocument, LookupCopiesTheFirstMatchOut) {
    m_document.AddClusterCGInfo(MakeCG("a", "later", "x", "9"));
    m_document.AddClusterCGInfo(MakeCG("later", "b", "x", "9"));
    CClusterCGInfo info;
    EXPECT_TRUE(m_document.GetCGInfo("a", info));
    EXPECT_EQ(Tell(info), "a b c 1");
    EXPECT_TRUE(m_document.GetCGInfoByFloatCode("e", info));
    EXPECT_EQ(Tell(info), "d e f 2");
    EXPECT_TRUE(m_document.GetCGInfoByFloatCode("b", info));
    EXPECT_EQ(Tell(info), "a b c 1");
}

TEST_F(CGDocument, LookupThatFindsNothingLeavesTheArgument) {
    CClusterCGInfo info = MakeCG("x", "y", "z", "0");
    EXPECT_FALSE(m_document.GetCGInfo("b", info));
    EXPECT_FALSE(m_document.GetCGInfoByFloatCode("a", info));
    EXPECT_EQ(Tell(info), "x y z 0");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGDocument, FirstEntryOfAFloatCodeIsRemoved) {
    m_document.AddClusterCGInfo(MakeCG("later", "b", "x", "9"));
    m_document.RemoveClusterCG("b");
    EXPECT_THAT(Tell(m_document), ElementsAre("d e f 2", "later b x 9"));
}

TEST_F(CGDocument, RemovingAnUnknownFloatCodeChangesNothing) {
    m_document.RemoveClusterCG("a");
    m_document.RemoveClusterCG("");
    EXPECT_EQ(Tell(m_document), m_before);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGDocument, StoredEmptyArrayEmptiesTheListAndAnEmptyTextKeepsIt) {
    m_pStore->Put(Path("/MERO/CGList"), "");
    EXPECT_EQ(m_document.ParseFromZK(), ORVA_SUCCEED);
    EXPECT_EQ(Tell(m_document), m_before);
    m_pStore->Put(Path("/MERO/CGList"), "[]");
    EXPECT_EQ(m_document.ParseFromZK(), ORVA_SUCCEED);
    EXPECT_TRUE(m_document.Empty());
}

}  // namespace
