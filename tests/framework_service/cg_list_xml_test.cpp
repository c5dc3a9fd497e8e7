#include <string>

#include "common_service/tarn_def.h"
#include "support/cg_document_fixture.h"
#include "support/xml_place.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace cg_document;

namespace {

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
