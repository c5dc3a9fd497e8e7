#include "common_service/xml_common.h"

#include <gmock/gmock.h>

#include "common_service/tarn_def.h"
#include "support/xml_place.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

class XmlValues : public testing::Test {
protected:
    XmlValues() {
        EXPECT_TRUE(
            m_xml.Parse("<r><name>n</name><none/><port>80</port><blank> 81\n</blank>"
                        "<name k=\"v\" e=\"\">second</name><neg>-5</neg><tail>80x</tail>"
                        "<big>2147483648</big><word>abc</word></r>"));
        EXPECT_TRUE(m_xml.FindElemEx("r"));
    }

    CXmlCommon& m_common = CXmlCommon::Instance();
    PELU::CXml m_xml{nullptr};
    std::string m_strValue = "untouched";
    int m_iValue = 4711;
};

TEST_F(XmlValues, ValueOnTheLevelIsThatOfTheFirstOfItsName) {
    EXPECT_TRUE(m_common.GetElemValue(m_xml, "name", m_strValue, true));
    EXPECT_EQ(m_strValue, "n");
}

TEST_F(XmlValues, ElementThatFindElemExFoundIsTheCurrentOneAndItsChildrenAreTheLevel) {
    m_xml.Parse("<r><a x=\"1\">text<b>2</b></a><b>3</b></r>");
    m_xml.FindElemEx("r/a");
    EXPECT_TRUE(m_common.GetElemValue(m_xml, "a", m_strValue, false));
    EXPECT_EQ(m_strValue, "text");
    EXPECT_TRUE(m_common.GetAttributeValue(m_xml, "x", m_strValue));
    EXPECT_TRUE(m_common.GetElemValueInt(m_xml, "b", m_iValue));
    EXPECT_EQ(m_iValue, 2);
    std::map<std::string, std::string> keyValues;
    EXPECT_EQ(m_common.ParseKeyValueInfoFromXml(m_xml, keyValues), 0);
    EXPECT_THAT(keyValues, ElementsAre(Pair("b", "2")));
}

TEST_F(XmlValues, ReadingLeavesTheCursor) {
    m_xml.FindElem("port");
    m_common.GetElemValue(m_xml, "name", m_strValue, true);
    m_common.GetElemValueInt(m_xml, "neg", m_iValue);
    std::map<std::string, std::string> keyValues;
    m_common.ParseKeyValueInfoFromXml(m_xml, keyValues);
    EXPECT_EQ(CurrentElement(m_xml), "port");
}

TEST_F(XmlValues, EmptyElementCountsOnTheLevelButNotAtTheCursor) {
    EXPECT_TRUE(m_common.GetElemValue(m_xml, "none", m_strValue, true));
    EXPECT_EQ(m_strValue, "");
    m_strValue = "untouched";
    m_xml.FindElem("none");
    EXPECT_FALSE(m_common.GetElemValue(m_xml, "none", m_strValue, false));
    EXPECT_EQ(m_strValue, "untouched");
}

TEST_F(XmlValues, ValueAtTheCursorNeedsTheName) {
    EXPECT_FALSE(m_common.GetElemValue(m_xml, "port", m_strValue, false));
    m_xml.FindElem("port");
    EXPECT_FALSE(m_common.GetElemValue(m_xml, "name", m_strValue, false));
    EXPECT_EQ(m_strValue, "untouched");
    EXPECT_TRUE(m_common.GetElemValue(m_xml, "port", m_strValue, false));
    EXPECT_EQ(m_strValue, "80");
}

TEST_F(XmlValues, AbsentElementLeavesTheValue) {
    EXPECT_FALSE(m_common.GetElemValue(m_xml, "absent", m_strValue, true));
    EXPECT_EQ(m_strValue, "untouched");
    EXPECT_FALSE(m_common.GetElemValueInt(m_xml, "absent", m_iValue));
    EXPECT_EQ(m_iValue, 4711);
}

TEST_F(XmlValues, NumbersAreReadWithBlanksAndSign) {
    EXPECT_TRUE(m_common.GetElemValueInt(m_xml, "port", m_iValue));
    EXPECT_EQ(m_iValue, 80);
    EXPECT_TRUE(m_common.GetElemValueInt(m_xml, "blank", m_iValue));
    EXPECT_EQ(m_iValue, 81);
    EXPECT_TRUE(m_common.GetElemValueInt(m_xml, "neg", m_iValue));
    EXPECT_EQ(m_iValue, -5);
}

TEST_F(XmlValues, TextThatIsNoNumberLeavesTheValue) {
    for (const char* pszName : {"tail", "big", "word", "none"}) {
        EXPECT_FALSE(m_common.GetElemValueInt(m_xml, pszName, m_iValue)) << pszName;
        EXPECT_EQ(m_iValue, 4711);
    }
}

TEST_F(XmlValues, AttributeIsThatOfTheCurrentElement) {
    EXPECT_FALSE(m_common.GetAttributeValue(m_xml, "k", m_strValue));
    m_xml.FindElem("blank");
    m_xml.NextElem();
    EXPECT_FALSE(m_common.GetAttributeValue(m_xml, "absent", m_strValue));
    EXPECT_EQ(m_strValue, "untouched");
    EXPECT_TRUE(m_common.GetAttributeValue(m_xml, "k", m_strValue));
    EXPECT_EQ(m_strValue, "v");
    EXPECT_TRUE(m_common.GetAttributeValue(m_xml, "e", m_strValue));
    EXPECT_EQ(m_strValue, "");
}

TEST_F(XmlValues, LevelBecomesKeysAndValuesAndKnownKeysStay) {
    m_xml.Parse("<r><a>1</a><b/><a>2</a><c>3</c></r>");
    m_xml.FindElemEx("r");
    std::map<std::string, std::string> keyValues{{"c", "known"}};
    EXPECT_EQ(m_common.ParseKeyValueInfoFromXml(m_xml, keyValues), 0);
    EXPECT_THAT(keyValues, ElementsAre(Pair("a", "1"), Pair("b", ""), Pair("c", "known")));
}

TEST_F(XmlValues, EmptyLevelIsNoListOfKeys) {
    m_xml.FindElemEx("r/port");
    std::map<std::string, std::string> keyValues;
    EXPECT_EQ(m_common.ParseKeyValueInfoFromXml(m_xml, keyValues), ORVA_XML_INVALID);
    EXPECT_THAT(keyValues, IsEmpty());
}

}  // namespace
