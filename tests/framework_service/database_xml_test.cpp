#include <string>
#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/database_document_fixture.h"
#include "support/xml_place.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace database_document;

namespace {

class DatabaseXml : public DatabaseDocument {
protected:
    /// An element of the list; a child that is not named is left out.
    static std::string Info(const std::string& strCode, const std::string& strRole,
                            const std::string& strMissing = "") {
        std::string strText;
        for (const auto& [strName, strValue] :
             std::vector<std::pair<std::string, std::string>>{{"DBCode", strCode},
                                                              {"DBIP", strCode + "-ip"},
                                                              {"DBPort", "7"},
                                                              {"DBRole", strRole}}) {
            if (strName != strMissing) {
                strText += "<" + strName + ">" + strValue + "</" + strName + ">";
            }
        }
        return "<DBInfo>" + strText + "</DBInfo>";
    }

    /// Reads with the cursor on the first element of the list.
    int ParseList(const std::string& strInfos) {
        EXPECT_TRUE(m_xml.Parse(("<DBList>" + strInfos + "</DBList>").c_str()));
        EXPECT_TRUE(m_xml.FindElem("DBList"));
        EXPECT_TRUE(m_xml.IntoElem());
        return m_document.ParseFromXml(m_xml);
    }

    std::string Dump() {
        EXPECT_EQ(m_document.DumpToXml(m_xml), ORVA_SUCCEED);
        unsigned int uiLen = 0;
        return m_xml.GetXMLStream(uiLen);
    }

    static CLogLine XmlLine(const std::string& strMessage) {
        return Err("cluster db info, parse from xml", ORVA_XML_INVALID, FILE_NAME, "ParseFromXml",
                   strMessage);
    }

    PELU::CXml m_xml{nullptr};
};

TEST_F(DatabaseXml, IsAListWithTheMasterFirst) {
    m_document.SetMasterDBInfo(MakeDB("M&", CLUSTER_DB_MASTER, "<m>", 1, "000"));
    m_document.AddSlaveDBInfo(MakeDB("S1", CLUSTER_DB_SLAVE, "", -2, "001"));
    m_document.AddSlaveDBInfo(MakeDB("\xE5\x8C\x97", CLUSTER_DB_MASTER, "s2", 3, "002"));
    EXPECT_EQ(Dump(),
              "<DBList>"
              "<DBInfo><DBCode>M&amp;</DBCode><DBIPType>0</DBIPType><DBIP>&lt;m&gt;</DBIP>"
              "<DBPort>1</DBPort><DBRole>1</DBRole></DBInfo>"
              "<DBInfo><DBCode>S1</DBCode><DBIPType>0</DBIPType><DBIP></DBIP>"
              "<DBPort>-2</DBPort><DBRole>2</DBRole></DBInfo>"
              "<DBInfo><DBCode>\xE5\x8C\x97</DBCode><DBIPType>0</DBIPType><DBIP>s2</DBIP>"
              "<DBPort>3</DBPort><DBRole>1</DBRole></DBInfo>"
              "</DBList>");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseXml, LeavesTheCursorOnTheListSoThatAnElementCanFollow) {
    m_xml.AddElem("Root");
    m_xml.AddChildElem("Before");
    m_xml.IntoElem();
    m_document.DumpToXml(m_xml);
    EXPECT_EQ(CurrentElement(m_xml), "DBList");
    m_xml.AddElem("After");
    unsigned int uiLen = 0;
    EXPECT_STREQ(m_xml.GetXMLStream(uiLen),
                 "<Root><Before/><DBList><DBInfo><DBCode></DBCode><DBIPType>0</DBIPType>"
                 "<DBIP></DBIP><DBPort>6001</DBPort><DBRole>2</DBRole></DBInfo></DBList>"
                 "<After/></Root>");
}

TEST_F(DatabaseXml, RoleThatIsNoneIsWrittenEmpty) {
    for (const int iRole : {0, 3, -1}) {
        PELU::CXml xml(nullptr);
        m_document.SetMasterDBInfo(MakeDB("M", iRole, "m", 1));
        m_document.DumpToXml(xml);
        EXPECT_STREQ(xml.GetElemValueEx("DBList/DBInfo/DBRole"), "") << iRole;
    }
}

TEST_F(DatabaseXml, ReadsBackWhatItWroteWithoutTheTokens) {
    m_document = CClusterDBZNodeInfo(MakeDB("M", CLUSTER_DB_MASTER, "m", 1),
                                     {MakeDB("S1", CLUSTER_DB_SLAVE, "s1", 2),
                                      MakeDB("\xE5\x8C\x97<", CLUSTER_DB_SLAVE, "", 3)});
    Dump();
    m_document = CClusterDBZNodeInfo();
    m_xml.IntoElem();
    EXPECT_EQ(m_document.ParseFromXml(m_xml), ORVA_SUCCEED);
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 m 1 ", "S1 2 s1 2 ", "\xE5\x8C\x97< 2  3 "));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseXml, NamesOfTheElementsAroundTheChildrenPlayNoPart) {
    ASSERT_TRUE(
        m_xml.Parse("<Any><One><DBRole>2</DBRole><DBPort> 7 </DBPort><DBIP/><Else/>"
                    "<DBCode>S</DBCode></One><Two><DBCode>M</DBCode><DBIP>m</DBIP>"
                    "<DBPort>8</DBPort><DBRole>1</DBRole></Two></Any>"));
    m_xml.FindElem("Any");
    m_xml.IntoElem();
    EXPECT_EQ(m_document.ParseFromXml(m_xml), ORVA_SUCCEED);
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 m 8 ", "S 2  7 "));
}

TEST_F(DatabaseXml, AppendsSlavesAndTheLastMasterStays) {
    m_document.AddSlaveDBInfo(MakeDB("old", CLUSTER_DB_SLAVE, "ip", 1, "001"));
    EXPECT_EQ(ParseList(Info("M1", "1") + Info("S1", "2") + Info("M2", "1") + Info("S2", "2")),
              ORVA_SUCCEED);
    EXPECT_THAT(Arrangement(),
                ElementsAre("M2 1 M2-ip 7 ", "old 2 ip 1 001", "S1 2 S1-ip 7 ", "S2 2 S2-ip 7 "));
}

TEST_F(DatabaseXml, FirstOfARepeatedChildCounts) {
    EXPECT_EQ(ParseList("<DBInfo><DBCode>a</DBCode><DBCode>b</DBCode><DBIP>c</DBIP><DBIP>d</DBIP>"
                        "<DBPort>1</DBPort><DBPort>x</DBPort><DBRole>1</DBRole><DBRole>2</DBRole>"
                        "</DBInfo>" +
                        Info("S", "2")),
              ORVA_SUCCEED);
    EXPECT_THAT(Arrangement(), ElementsAre("a 1 c 1 ", "S 2 S-ip 7 "));
}

TEST_F(DatabaseXml, MasterAloneIsStoredAndFails) {
    EXPECT_EQ(ParseList(Info("M", "1")), ORVA_XML_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(XmlLine("master or slave db not found[1:0]")));
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 M-ip 7 "));
}

TEST_F(DatabaseXml, SlavesAloneAreStoredAndFail) {
    EXPECT_EQ(ParseList(Info("S1", "2") + Info("S2", "2")), ORVA_XML_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(XmlLine("master or slave db not found[0:1]")));
    EXPECT_THAT(Arrangement(), ElementsAre(DEFAULT_DB, "S1 2 S1-ip 7 ", "S2 2 S2-ip 7 "));
}

TEST_F(DatabaseXml, CursorWithoutAnElementFails) {
    EXPECT_EQ(m_document.ParseFromXml(m_xml), ORVA_XML_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(XmlLine("can not into node"),
                                                 XmlLine("master or slave db not found[0:0]")));
    EXPECT_THAT(Arrangement(), ElementsAre(DEFAULT_DB));
}

TEST_F(DatabaseXml, EmptyElementBehindAGoodPairFails) {
    EXPECT_EQ(
        ParseList(Info("M", "1") + Info("S1", "2") + "<DBInfo>text</DBInfo>" + Info("S2", "2")),
        ORVA_XML_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(XmlLine("can not into node")));
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 M-ip 7 ", "S1 2 S1-ip 7 "));
}

/// An element that cannot be read, and the line that tells why.
struct CBadElement {
    std::string strText;
    std::string strMessage;
};

std::ostream& operator<<(std::ostream& stream, const CBadElement& bad) {
    return stream << bad.strText;
}

class BadDatabaseXml : public DatabaseXml, public testing::WithParamInterface<CBadElement> {
public:
    static CBadElement Without(const std::string& strChild) {
        return {Info("B", "2", strChild), "can to find elem"};
    }

    static CBadElement WithNumber(const std::string& strPort, const std::string& strRole) {
        return {"<DBInfo><DBCode>B</DBCode><DBIP>b</DBIP><DBPort>" + strPort + "</DBPort><DBRole>" +
                    strRole + "</DBRole></DBInfo>",
                "can to find elem"};
    }

    static CBadElement WithRole(const std::string& strRole) {
        return {Info("B", strRole), "wrong dbtype[" + strRole + "]"};
    }
};

TEST_P(BadDatabaseXml, EndsTheReading) {
    EXPECT_EQ(ParseList(Info("M", "1") + GetParam().strText + Info("S", "2")), ORVA_XML_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(XmlLine(GetParam().strMessage),
                                                 XmlLine("master or slave db not found[1:0]")));
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 M-ip 7 "));
}

TEST_P(BadDatabaseXml, BehindAGoodPairIsLoggedAndNoFailure) {
    EXPECT_EQ(ParseList(Info("M", "1") + Info("S1", "2") + GetParam().strText + Info("S2", "2")),
              ORVA_SUCCEED);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(XmlLine(GetParam().strMessage)));
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 M-ip 7 ", "S1 2 S1-ip 7 "));
}

TEST_P(BadDatabaseXml, LeavesTheCursorOnIt) {
    ParseList(Info("M", "1") + GetParam().strText + "<After/>");
    ASSERT_TRUE(m_xml.NextElem());
    EXPECT_EQ(CurrentElement(m_xml), "After");
}

INSTANTIATE_TEST_SUITE_P(
    Database, BadDatabaseXml,
    testing::Values(BadDatabaseXml::Without("DBCode"), BadDatabaseXml::Without("DBIP"),
                    BadDatabaseXml::Without("DBPort"), BadDatabaseXml::Without("DBRole"),
                    BadDatabaseXml::WithNumber("", "2"), BadDatabaseXml::WithNumber("x", "2"),
                    BadDatabaseXml::WithNumber("1.5", "2"),
                    BadDatabaseXml::WithNumber("2147483648", "2"),
                    BadDatabaseXml::WithNumber("1", ""), BadDatabaseXml::WithNumber("1", "two"),
                    BadDatabaseXml::WithNumber("1", "99999999999999999999"),
                    BadDatabaseXml::WithRole("0"), BadDatabaseXml::WithRole("3"),
                    BadDatabaseXml::WithRole("-2147483648")));

TEST_F(DatabaseXml, WithoutTokensTheFirstSlaveSlotStandsForAll) {
    ASSERT_EQ(ParseList(Info("M", "1") + Info("S1", "2") + Info("S2", "2")), ORVA_SUCCEED);
    EXPECT_TRUE(m_document.UpdateSlaveDBInfoByToken("", MakeDB("N", 0, "n", 0)));
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 M-ip 7 ", "N 2 n 7 ", "S2 2 S2-ip 7 "));
    EXPECT_TRUE(m_document.UpdateMasterDBInfo(MakeDB("S2", 0, "s2", 0)));
    EXPECT_THAT(Arrangement(), ElementsAre("S2 1 s2 7 ", "M 2 M-ip 7 ", "S2 2 S2-ip 7 "));
}

}  // namespace
