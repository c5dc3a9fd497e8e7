#include "framework_service/cluster_cg_info.h"

#include <json/json.h>

#include <sstream>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/host_fixture.h"
#include "support/json_document.h"
#include "support/xml_place.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char FILE_NAME[] = "cluster_cg_info";
constexpr char ENTRY[] = R"({"NVRCode":"a","FloatCGCode":"b","FloatIP":"c","DecisionVerNum":"1"})";

/// Node, float code, float address and version number.
std::string Tell(const CClusterCGInfo& info) {
    return info.GetNodeCode() + ' ' + info.GetFloatCode() + ' ' + info.GetFloatIp() + ' ' +
           info.GetDecVerNum();
}

std::vector<std::string> Tell(const CClusterCGInfoList& list) {
    std::list<CClusterCGInfo> entries(1);
    list.GetClusterCGInfoList(entries);
    std::vector<std::string> records;
    for (const CClusterCGInfo& info : entries) {
        records.push_back(Tell(info));
    }
    return records;
}

CClusterCGInfo MakeCG(const std::string& strNode, const std::string& strFloatCode,
                      const std::string& strFloatIp, const std::string& strDecVerNum,
                      const std::string& strStatus = "") {
    CClusterCGInfo info;
    info.SetCGCode(strNode);
    info.SetFloatCode(strFloatCode);
    info.SetFloatIp(strFloatIp);
    info.SetDecVerNum(strDecVerNum);
    info.SetStatus(strStatus);
    return info;
}

CClusterCGInfoList MakeList(const std::list<CClusterCGInfo>& entries) {
    CClusterCGInfoList list;
    list.SetClusterCGInfoList(entries);
    return list;
}

std::string XmlOf(PELU::CXml& xml) {
    unsigned int uiLen = 0;
    const char* pszXml = xml.GetXMLStream(uiLen);
    return pszXml == nullptr ? "" : pszXml;
}

CLogLine JsonLine(const std::string& strFunction, const std::string& strMessage) {
    return Err("cluster cg info", ORVA_DATA_INVALID, FILE_NAME, strFunction, strMessage);
}

CLogLine TextLine(const std::string& strMessage, const std::string& strText) {
    return JsonLine("ParseJson", strMessage + ", json text[" + strText + "].");
}

CLogLine NullPointerLine(const std::string& strFunction) {
    return Err("Point pszJson is null.", ORVA_FAIL, FILE_NAME, strFunction,
               "Make sure there is something wrong");
}

const CLogLine BAD_ENTRY = JsonLine("ParseJson", "parse json fail.");
const CLogLine NO_ELEMENT = Err("parse cluster cg info xml fail", ORVA_DATA_INVALID, FILE_NAME,
                                "ParseXml", "not found CGInfo element.");

CLogLine ListXmlLine(const std::string& strMessage) {
    return Err("parse cluster cg info list xml fail", ORVA_DATA_INVALID, FILE_NAME, "ParseXml",
               strMessage);
}

class CGEntry : public CHostTest {
protected:
    /// Reads the element of that text into the entry.
    int ParseElement(const std::string& strText) {
        EXPECT_TRUE(m_xml.Parse(strText.c_str()));
        return m_entry.ParseXml(m_xml);
    }

    CClusterCGInfo m_entry;
    PELU::CXml m_xml{nullptr};
};

TEST_F(CGEntry, StartsEmptyWithVersionZero) {
    EXPECT_EQ(Tell(m_entry), "   0");
}

TEST_F(CGEntry, CopyAndAssignmentCarryEveryFieldTheStatusIncluded) {
    const CClusterCGInfo original = MakeCG("a", "b", "c", "1", "s");
    const CClusterCGInfo copy(original);
    m_entry = original;
    for (CClusterCGInfo info : {copy, m_entry}) {
        PELU::CXml xml(nullptr);
        info.DumpToXml(xml);
        EXPECT_EQ(Tell(info), "a b c 1");
        EXPECT_STREQ(xml.GetElemValueEx("CGInfo/FloatCGStatus"), "s");
    }
}

TEST_F(CGEntry, EqualityLooksAtEverythingButTheStatus) {
    const CClusterCGInfo entry = MakeCG("a", "b", "c", "1", "s");
    EXPECT_TRUE(entry == MakeCG("a", "b", "c", "1", "other"));
    EXPECT_FALSE(entry != MakeCG("a", "b", "c", "1", "other"));
    for (const CClusterCGInfo& other : {MakeCG("x", "b", "c", "1"), MakeCG("a", "x", "c", "1"),
                                        MakeCG("a", "b", "x", "1"), MakeCG("a", "b", "c", "x")}) {
        EXPECT_FALSE(entry == other) << Tell(other);
        EXPECT_TRUE(entry != other) << Tell(other);
    }
}

TEST_F(CGEntry, SetsItsFourMembersOnAnObjectAndLeavesOthers) {
    Json::Value json;
    json["NVRCode"] = "former";
    json["Other"] = 1;
    EXPECT_EQ(MakeCG("a", "b", "c", "1", "s").ToJson(json), ORVA_SUCCEED);
    EXPECT_EQ(json.size(), 5U);
    EXPECT_EQ(json["NVRCode"], "a");
    EXPECT_EQ(json["FloatCGCode"], "b");
    EXPECT_EQ(json["FloatIP"], "c");
    EXPECT_EQ(json["DecisionVerNum"], "1");
    EXPECT_EQ(json["Other"], 1);
}

TEST_F(CGEntry, ReadsWhatItWroteAndKeepsItsStatus) {
    Json::Value json;
    MakeCG("a", "b", "c", "1", "other").ToJson(json);
    m_entry = MakeCG("x", "x", "x", "x", "s");
    EXPECT_EQ(m_entry.ParseJson(json), ORVA_SUCCEED);
    EXPECT_EQ(Tell(m_entry), "a b c 1");
    m_entry.DumpToXml(m_xml);
    EXPECT_STREQ(m_xml.GetElemValueEx("CGInfo/FloatCGStatus"), "s");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGEntry, NullIsRefused) {
    m_entry = MakeCG("a", "b", "c", "1");
    EXPECT_EQ(m_entry.ParseJson(Json::nullValue), ORVA_DATA_INVALID);
    EXPECT_EQ(Tell(m_entry), "a b c 1");
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BAD_ENTRY));
}

TEST_F(CGEntry, IsWrittenAsAnElementWithTheCursorOnIt) {
    m_xml.AddElem("Root");
    m_xml.AddChildElem("Before");
    m_xml.IntoElem();
    MakeCG("a&", "\xE5\x8C\x97", "", "1").DumpToXml(m_xml);
    EXPECT_EQ(CurrentElement(m_xml), "CGInfo");
    MakeCG("", "", "", "", "x").DumpToXml(m_xml);
    EXPECT_EQ(XmlOf(m_xml),
              "<Root><Before/>"
              "<CGInfo><NVRCode>a&amp;</NVRCode><FloatCGCode>\xE5\x8C\x97</FloatCGCode>"
              "<FloatIP></FloatIP><DecisionVerNum>1</DecisionVerNum></CGInfo>"
              "<CGInfo><NVRCode></NVRCode><FloatCGCode></FloatCGCode><FloatIP></FloatIP>"
              "<DecisionVerNum></DecisionVerNum><FloatCGStatus>x</FloatCGStatus></CGInfo>"
              "</Root>");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGEntry, StatusDoesNotSurviveTheXml) {
    MakeCG("a", "b", "c", "1", "x").DumpToXml(m_xml);
    EXPECT_EQ(m_entry.ParseXml(m_xml), ORVA_SUCCEED);
    EXPECT_EQ(Tell(m_entry), "a b c 1");
    PELU::CXml xml(nullptr);
    m_entry.DumpToXml(xml);
    EXPECT_EQ(xml.GetElemValueEx("CGInfo/FloatCGStatus"), nullptr);
}

TEST_F(CGEntry, ChildrenMayComeInAnyOrderAndTheFirstOfRepeatedOnesCounts) {
    EXPECT_EQ(ParseElement("<CGInfo>text<FloatIP>c</FloatIP><Other/><FloatCGCode>b</FloatCGCode>"
                           "<DecisionVerNum>1</DecisionVerNum><DecisionVerNum>2</DecisionVerNum>"
                           "<NVRCode>a</NVRCode><NVRCode>z</NVRCode></CGInfo>"),
              ORVA_SUCCEED);
    EXPECT_EQ(Tell(m_entry), "a b c 1");
}

TEST_F(CGEntry, MissingElementsLeaveTheirFields) {
    m_entry = MakeCG("a", "b", "c", "1");
    EXPECT_EQ(ParseElement("<CGInfo><NVRCode>n</NVRCode></CGInfo>"), ORVA_SUCCEED);
    EXPECT_EQ(Tell(m_entry), "n b c 1");
    EXPECT_EQ(ParseElement("<CGInfo><FloatIP>f</FloatIP></CGInfo>"), ORVA_SUCCEED);
    EXPECT_EQ(Tell(m_entry), "n b f 1");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGEntry, EmptyElementsEmptyTheirFieldsAndAnEmptyVersionIsZero) {
    m_entry = MakeCG("a", "b", "c", "1");
    EXPECT_EQ(ParseElement("<CGInfo><NVRCode>n</NVRCode><FloatCGCode/><FloatIP/>"
                           "<DecisionVerNum/></CGInfo>"),
              ORVA_SUCCEED);
    EXPECT_EQ(Tell(m_entry), "n   0");
}

TEST_F(CGEntry, MissingVersionOfAFreshEntryIsZero) {
    EXPECT_EQ(ParseElement("<CGInfo><NVRCode>n</NVRCode></CGInfo>"), ORVA_SUCCEED);
    EXPECT_EQ(Tell(m_entry), "n   0");
}

TEST_F(CGEntry, NextElementFromTheCursorOnIsRead) {
    ASSERT_TRUE(
        m_xml.Parse("<L><CGInfo><NVRCode>1</NVRCode></CGInfo><Other/>"
                    "<CGInfo><NVRCode>2</NVRCode></CGInfo></L>"));
    m_xml.FindElemEx("L");
    m_xml.FindElem("Other");
    EXPECT_EQ(m_entry.ParseXml(m_xml), ORVA_SUCCEED);
    EXPECT_EQ(m_entry.GetNodeCode(), "2");
    EXPECT_EQ(CurrentElement(m_xml), "CGInfo");
    EXPECT_FALSE(m_xml.NextElem());
}

class CGElementThatIsNone : public CGEntry, public testing::WithParamInterface<std::string> {};

TEST_P(CGElementThatIsNone, IsRefused) {
    EXPECT_EQ(ParseElement(GetParam()), ORVA_DATA_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(NO_ELEMENT));
}

INSTANTIATE_TEST_SUITE_P(CG, CGElementThatIsNone,
                         testing::Values("<Other><NVRCode>a</NVRCode></Other>",
                                         "<L><CGInfo><NVRCode>a</NVRCode></CGInfo></L>",
                                         "<CGInfo/>", "<CGInfo>text</CGInfo>",
                                         "<CGInfo><NVRCode/></CGInfo>",
                                         "<CGInfo><NVRCode></NVRCode><NVRCode>a</NVRCode></CGInfo>",
                                         "<CGInfo><FloatIP>c</FloatIP></CGInfo>"));

TEST_F(CGEntry, ElementWithoutANodeIsLeftAgain) {
    ParseElement("<CGInfo><NVRCode/></CGInfo>");
    EXPECT_EQ(CurrentElement(m_xml), "CGInfo");
}

class CGDocument : public CHostTest {
protected:
    int Parse(const std::string& strText) { return m_document.ParseJson(strText.c_str()); }

    CClusterCGInfoList m_document =
        MakeList({MakeCG("a", "b", "c", "1"), MakeCG("d", "e", "f", "2")});
    const std::vector<std::string> m_before = Tell(m_document);
};

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
              std::string(ENTRY) + "," + ENTRY + "] behind"),
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
    for (const std::string& strText : {std::string(ENTRY), std::string("1"), std::string("\"\""),
                                       std::string("false"), std::string("1.5")}) {
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
    const std::string m_strEntry = WithMember(ENTRY, GetParam());
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
        "[" + std::string(ENTRY) + "," + m_strEntry + "," + m_strEntry + "]";
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

class CGListXml : public CGDocument {
protected:
    int ParseList(const std::string& strText) {
        EXPECT_TRUE(m_xml.Parse(strText.c_str()));
        return m_document.ParseXml(m_xml);
    }

    static std::string Element(const std::string& strNode) {
        return "<CGInfo><NVRCode>" + strNode + "</NVRCode></CGInfo>";
    }

    static CLogLine EmptyLine() {
        return Warn("parse cluster cg info list xml fail", FILE_NAME, "ParseXml",
                    "no CGInfo exist.");
    }

    PELU::CXml m_xml{nullptr};
};

TEST_F(CGListXml, HoldsTheEntriesInTheirOrder) {
    m_document.DumpToXml(m_xml);
    EXPECT_EQ(XmlOf(m_xml),
              "<CGList><CGInfo><NVRCode>a</NVRCode><FloatCGCode>b</FloatCGCode><FloatIP>c</FloatIP>"
              "<DecisionVerNum>1</DecisionVerNum></CGInfo><CGInfo><NVRCode>d</NVRCode>"
              "<FloatCGCode>e</FloatCGCode><FloatIP>f</FloatIP><DecisionVerNum>2</DecisionVerNum>"
              "</CGInfo></CGList>");
    EXPECT_EQ(CurrentElement(m_xml), "CGList");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGListXml, ReadsBackWhatItWrote) {
    m_document.DumpToXml(m_xml);
    CClusterCGInfoList read;
    EXPECT_EQ(read.ParseXml(m_xml), ORVA_SUCCEED);
    EXPECT_EQ(Tell(read), m_before);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGListXml, EmptyListLeavesNothingBehindAndReadsBackWithAWarning) {
    CClusterCGInfoList empty;
    empty.DumpToXml(m_xml);
    EXPECT_EQ(XmlOf(m_xml), "<CGList/>");
    EXPECT_EQ(m_document.ParseXml(m_xml), ORVA_SUCCEED);
    EXPECT_EQ(Tell(m_document), m_before);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(EmptyLine()));
}

TEST_F(CGListXml, ListOfTextAloneIsEmpty) {
    EXPECT_EQ(ParseList("<CGList>text</CGList>"), ORVA_SUCCEED);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(EmptyLine()));
}

TEST_F(CGListXml, EntriesAreAppended) {
    EXPECT_EQ(ParseList("<CGList>" + Element("x") + Element("y") + Element("x") + "</CGList>"),
              ORVA_SUCCEED);
    EXPECT_THAT(Tell(m_document), ElementsAre("a b c 1", "d e f 2", "x   0", "y   0", "x   0"));
    EXPECT_EQ(CurrentElement(m_xml), "CGList");
}

TEST_F(CGListXml, FirstListOfTheCursorsLevelIsRead) {
    ASSERT_TRUE(m_xml.Parse(("<R><Other/><CGList>" + Element("x") + "</CGList><CGList>" +
                             Element("y") + "</CGList></R>")
                                .c_str()));
    m_xml.FindElemEx("R");
    EXPECT_EQ(m_document.ParseXml(m_xml), ORVA_SUCCEED);
    EXPECT_THAT(Tell(m_document), ElementsAre("a b c 1", "d e f 2", "x   0"));
}

TEST_F(CGListXml, WithoutAListIsRefused) {
    EXPECT_EQ(ParseList("<Root><CGList>" + Element("x") + "</CGList></Root>"), ORVA_DATA_INVALID);
    EXPECT_EQ(Tell(m_document), m_before);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(ListXmlLine("not found CGList element.")));
}

TEST_F(CGListXml, ElementsBeforeAnEntryAreSkipped) {
    EXPECT_EQ(
        ParseList("<CGList><Other/>" + Element("x") + "<Other/>" + Element("y") + "</CGList>"),
        ORVA_SUCCEED);
    EXPECT_THAT(Tell(m_document), ElementsAre("a b c 1", "d e f 2", "x   0", "y   0"));
}

class BadCGListXml : public CGListXml, public testing::WithParamInterface<std::string> {};

TEST_P(BadCGListXml, EndsTheReadingWithTheEntriesBeforeItAppended) {
    EXPECT_EQ(ParseList("<CGList>" + Element("x") + GetParam() + "</CGList>"), ORVA_DATA_INVALID);
    EXPECT_THAT(Tell(m_document), ElementsAre("a b c 1", "d e f 2", "x   0"));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(NO_ELEMENT, ListXmlLine("parse single cg info fail.")));
    EXPECT_EQ(CurrentElement(m_xml), "CGList");
}

INSTANTIATE_TEST_SUITE_P(CG, BadCGListXml,
                         testing::Values("<Other/>", "<CGInfo/>",
                                         "<CGInfo><NVRCode/></CGInfo><CGInfo><NVRCode>y</NVRCode>"
                                         "</CGInfo>",
                                         "<CGInfo><FloatIP>c</FloatIP></CGInfo>"));

}  // namespace
