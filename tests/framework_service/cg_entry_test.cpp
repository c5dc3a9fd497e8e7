#include <json/json.h>

#include <string>

#include "common_service/tarn_def.h"
#include "support/cg_document_fixture.h"
#include "support/xml_place.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace cg_document;

namespace {

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

}  // namespace
