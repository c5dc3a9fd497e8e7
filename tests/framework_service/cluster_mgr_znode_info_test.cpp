#include "framework_service/cluster_mgr_znode_info.h"

#include <json/json.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/host_fixture.h"
#include "support/json_document.h"
#include "support/xml_place.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char FILE_NAME[] = "cluster_mgr_znode_info";
constexpr char ONE_MANAGER[] = R"({"MasterMGR":{"NodeCode":"N1","NodeIp":"10.0.0.1"}})";

/// Node, type and address.
std::string Tell(const CClusterMGRInfo& info) {
    return info.GetNodeId() + ' ' + std::to_string(info.GetMGRType()) + ' ' + info.GetNodeIp();
}

CClusterMGRInfo MakeManager(const std::string& strNodeId, int iMGRType,
                            const std::string& strNodeIp) {
    CClusterMGRInfo info;
    info.SetNodeId(strNodeId);
    info.SetMGRType(iMGRType);
    info.SetNodeIp(strNodeIp);
    return info;
}

CLogLine NullPointerLine(const std::string& strOperation, const std::string& strFunction) {
    return Err(strOperation, ORVA_FAIL, FILE_NAME, strFunction,
               "Make sure there is something wrong");
}

/// A document that holds a master, a candidate and one further record.
class ManagerDocument : public CHostTest {
protected:
    ManagerDocument() { m_document.SetMasterCandidateMGRInfo(MakeManager("C", 2, "c")); }

    int Parse(const std::string& strText) { return m_document.ParseJson(strText.c_str()); }

    std::string Master() const { return Tell(m_document.GetMasterMGR()); }

    std::vector<std::string> Others() {
        std::vector<std::string> records;
        for (const CClusterMGRInfo& info : m_document.GetAllEleMGRInfo()) {
            records.push_back(Tell(info));
        }
        return records;
    }

    void ExpectCandidateAndOthersUntouched() {
        EXPECT_EQ(Tell(m_document.GetMasterCandidateMGRInfo()), "C 2 c");
        EXPECT_THAT(Others(), ElementsAre("E 3 e"));
    }

    void ExpectRefused(const std::string& strText, const std::string& strOperation) {
        EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID);
        EXPECT_THAT(m_logger.GetLines(),
                    ElementsAre(Err(strOperation, ORVA_DATA_INVALID, FILE_NAME, "ParseJson",
                                    "json illegal, json text[" + strText + "].")));
        EXPECT_EQ(Master(), "M 2 m");
    }

    CClusterMGRZNodeInfo m_document{MakeManager("M", 2, "m"), {MakeManager("E", 3, "e")}};
};

TEST(ManagerRecord, StartsWithoutAType) {
    EXPECT_EQ(Tell(CClusterMGRInfo()), " 0 ");
}

TEST(ManagerRecord, CopyAndAssignmentCarryEveryField) {
    const CClusterMGRInfo original = MakeManager("N", TARN_E_DOMAIN_SLAVE, "ip");
    const CClusterMGRInfo copy(original);
    CClusterMGRInfo assigned;
    assigned = original;
    EXPECT_EQ(Tell(copy), "N 2 ip");
    EXPECT_EQ(Tell(assigned), "N 2 ip");
}

TEST(ManagerTypes, HaveTheirNumbers) {
    EXPECT_EQ(TARN_E_DOMAIN_NONE, 0);
    EXPECT_EQ(TARN_E_DOMAIN_MAIN, 1);
    EXPECT_EQ(TARN_E_DOMAIN_SLAVE, 2);
    EXPECT_EQ(TARN_E_DOMAIN_BUTT, 3);
}

TEST_F(ManagerDocument, StartsWithAMainManagerAndNothingElse) {
    m_document = CClusterMGRZNodeInfo();
    EXPECT_EQ(Master(), " 1 ");
    EXPECT_EQ(Tell(m_document.GetMasterCandidateMGRInfo()), " 0 ");
    EXPECT_THAT(Others(), IsEmpty());
}

TEST_F(ManagerDocument, BuiltFromARecordItTakesTheTypeToo) {
    m_document = CClusterMGRZNodeInfo(MakeManager("M", 0, "m"));
    EXPECT_EQ(Master(), "M 0 m");
    EXPECT_EQ(Tell(m_document.GetMasterCandidateMGRInfo()), " 0 ");
    EXPECT_THAT(Others(), IsEmpty());
}

TEST_F(ManagerDocument, MasterIsReplacedWhole) {
    m_document.SetMasterMGRInfo(MakeManager("N", 3, "n"));
    EXPECT_EQ(Master(), "N 3 n");
    ExpectCandidateAndOthersUntouched();
}

TEST_F(ManagerDocument, SettingTheFurtherRecordsHandsTheFormerOnesBack) {
    std::list<CClusterMGRInfo> records = {MakeManager("A", 1, "a"), MakeManager("B", 2, "b")};
    m_document.SetAllEleMGRInfo(records);
    EXPECT_THAT(Others(), ElementsAre("A 1 a", "B 2 b"));
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(Tell(records.front()), "E 3 e");
}

TEST_F(ManagerDocument, FurtherRecordsAreHandedOutByReference) {
    m_document.GetAllEleMGRInfo().push_back(MakeManager("F", 0, ""));
    EXPECT_THAT(Others(), ElementsAre("E 3 e", "F 0 "));
}

TEST_F(ManagerDocument, UpdateOfTheFurtherRecordsDoesNothing) {
    m_document.UpdateAllEleMGRInfo({MakeManager("A", 1, "a")});
    m_document.UpdateAllEleMGRInfo({});
    EXPECT_EQ(Master(), "M 2 m");
    ExpectCandidateAndOthersUntouched();
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ManagerDocument, TextGivesNodeAndAddressAndTheTypeStays) {
    EXPECT_EQ(Parse(ONE_MANAGER), ORVA_SUCCEED);
    EXPECT_EQ(Master(), "N1 2 10.0.0.1");
    ExpectCandidateAndOthersUntouched();
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ManagerDocument, WritesTheMasterAlone) {
    EXPECT_EQ(TextOf(m_document), "{\"MasterMGR\":{\"NodeCode\":\"M\",\"NodeIp\":\"m\"}}\n");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ManagerDocument, NonAsciiNameReadsBack) {
    m_document.SetMasterMGRInfo(MakeManager("\xE5\x8C\x97\xF0\x9F\x98\x80\"", 1, "ip"));
    const std::string strText = TextOf(m_document);
    EXPECT_EQ(strText, R"({"MasterMGR":{"NodeCode":"\u5317\ud83d\ude00\"","NodeIp":"ip"}})"
                       "\n");
    m_document = CClusterMGRZNodeInfo();
    EXPECT_EQ(Parse(strText), ORVA_SUCCEED);
    EXPECT_EQ(Master(), "\xE5\x8C\x97\xF0\x9F\x98\x80\" 1 ip");
}

class DocumentWithoutAManager : public ManagerDocument,
                                public testing::WithParamInterface<std::string> {};

TEST_P(DocumentWithoutAManager, IsRefusedInTheWordsOfTheDatabase) {
    ExpectRefused(GetParam(), "ccluster db znode info");
}

INSTANTIATE_TEST_SUITE_P(Manager, DocumentWithoutAManager,
                         testing::Values("null", "{}", R"({"MasterMGR":null})",
                                         R"({"MasterMGR":[]})", R"({"MasterMGR":"N1"})",
                                         R"({"MasterMGR":1})", R"({"MasterMGR":true})"));

class BadManager : public ManagerDocument, public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadManager, IsRefusedAndNothingIsTaken) {
    ExpectRefused(WithMember(ONE_MANAGER, GetParam()), "ccluster mgr znode info");
}

INSTANTIATE_TEST_SUITE_P(
    Manager, BadManager,
    testing::ValuesIn(EveryBadMember({{".MasterMGR.NodeCode", EMemberType::STRING},
                                      {".MasterMGR.NodeIp", EMemberType::STRING}})));

TEST_F(ManagerDocument, EmptyManagerIsRefused) {
    ExpectRefused(R"({"MasterMGR":{}})", "ccluster mgr znode info");
}

TEST_F(ManagerDocument, LoadLeavesTheCandidateAndTheFurtherRecords) {
    m_pStore->Put(Path("/MEROMGR"), ONE_MANAGER);
    EXPECT_EQ(m_document.ParseFromZK(false), ORVA_SUCCEED);
    EXPECT_EQ(Master(), "N1 1 10.0.0.1");
    ExpectCandidateAndOthersUntouched();
}

class ManagerXml : public ManagerDocument {
protected:
    int ParseXml(const std::string& strText) {
        EXPECT_TRUE(m_xml.Parse(strText.c_str()));
        return m_document.ParseFromXml(m_xml);
    }

    static std::string Content(const std::string& strChildren) {
        return "<Content><ClusterBody><DomainMainInfo>" + strChildren +
               "</DomainMainInfo></ClusterBody></Content>";
    }

    static CLogLine TextLine(const std::string& strText) {
        return Trace(FILE_NAME, "ParseFromXml",
                     "init cluster message, parse xml message[" + strText + "].");
    }

    static CLogLine ResultLine(const std::string& strNodeId, const std::string& strMaskedIp) {
        return Trace(FILE_NAME, "ParseFromXml",
                     "CClusterMGRZNodeInfo:NvrCode[" + strNodeId + "], NodeIp[" + strMaskedIp +
                         "], MGRType[1].");
    }

    PELU::CXml m_xml{nullptr};
};

TEST_F(ManagerXml, GivesTheMasterAsAMainManagerAndMasksItsAddressInTheLog) {
    const std::string strText = Content("<DomainMain>N1</DomainMain><FloatIP>10.1.2.3</FloatIP>");
    EXPECT_EQ(ParseXml(strText), ORVA_SUCCEED);
    EXPECT_EQ(Master(), "N1 1 10.1.2.3");
    ExpectCandidateAndOthersUntouched();
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(TextLine(strText), ResultLine("N1", "10.1.*.*")));
}

TEST_F(ManagerXml, WithoutAnAddressGivesTheEmptyOne) {
    const std::string strText = Content("<DomainMain>N1</DomainMain>");
    EXPECT_EQ(ParseXml(strText), ORVA_SUCCEED);
    EXPECT_EQ(Master(), "N1 1 ");
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(TextLine(strText), ResultLine("N1", "")));
}

TEST_F(ManagerXml, EmptyNodeIsANode) {
    EXPECT_EQ(ParseXml(Content("<FloatIP>ip</FloatIP><DomainMain/>")), ORVA_SUCCEED);
    EXPECT_EQ(Master(), " 1 ip");
}

TEST_F(ManagerXml, FirstOfRepeatedElementsCounts) {
    EXPECT_EQ(ParseXml(Content("<DomainMain>a</DomainMain><DomainMain>b</DomainMain>"
                               "<FloatIP>c</FloatIP><FloatIP>d</FloatIP>")),
              ORVA_SUCCEED);
    EXPECT_EQ(Master(), "a 1 c");
}

TEST_F(ManagerXml, IsReadFromTheRootWhereverTheCursorStands) {
    m_xml.Parse(Content("<DomainMain>N1</DomainMain>").c_str());
    m_xml.FindElemEx("Content/ClusterBody/DomainMainInfo");
    m_xml.FindElem("DomainMain");
    EXPECT_EQ(m_document.ParseFromXml(m_xml), ORVA_SUCCEED);
    EXPECT_EQ(Master(), "N1 1 ");
    EXPECT_EQ(CurrentElement(m_xml), "DomainMain");
}

TEST_F(ManagerXml, EmptyDocumentIsInvalidDataButLoggedAsAFailure) {
    EXPECT_EQ(m_document.ParseFromXml(m_xml), ORVA_DATA_INVALID);
    EXPECT_EQ(Master(), "M 2 m");
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(NullPointerLine("Point pszXml is null.", "ParseFromXml")));
}

class ManagerXmlWithoutANode : public ManagerXml,
                               public testing::WithParamInterface<std::string> {};

TEST_P(ManagerXmlWithoutANode, IsRefusedAndNothingIsTaken) {
    EXPECT_EQ(ParseXml(GetParam()), ORVA_XML_INVALID);
    EXPECT_EQ(Master(), "M 2 m");
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(TextLine(GetParam()),
                            NullPointerLine("Point strNodeId is null.", "ParseFromXml")));
}

INSTANTIATE_TEST_SUITE_P(
    Manager, ManagerXmlWithoutANode,
    testing::Values(
        "<Content/>", "<Content><ClusterBody/></Content>",
        "<Content><ClusterBody><DomainMainInfo><FloatIP>ip</FloatIP></DomainMainInfo>"
        "</ClusterBody></Content>",
        "<Other><ClusterBody><DomainMainInfo><DomainMain>N1</DomainMain></DomainMainInfo>"
        "</ClusterBody></Other>",
        "<Content><ClusterBody/><ClusterBody><DomainMainInfo><DomainMain>N1</DomainMain>"
        "</DomainMainInfo></ClusterBody></Content>",
        "<Content><DomainMainInfo><DomainMain>%s%n</DomainMain></DomainMainInfo></Content>"));

TEST_F(ManagerXml, IsWrittenWithoutTheBodyThatTheReaderLooksFor) {
    m_document.SetMasterMGRInfo(MakeManager("N<1>", 2, "10.0.0.1"));
    EXPECT_EQ(m_document.DumpToXml(m_xml), ORVA_SUCCEED);
    const std::string strText =
        "<Content><DomainMainInfo><DomainMain>N&lt;1&gt;</DomainMain><FloatIP>10.0.0.1</FloatIP>"
        "</DomainMainInfo></Content>";
    unsigned int uiLen = 0;
    EXPECT_EQ(m_xml.GetXMLStream(uiLen), strText);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Trace(FILE_NAME, "DumpToXml", "tarn. pcNodeInfoXml[" + strText + "]")));
    EXPECT_EQ(m_document.ParseFromXml(m_xml), ORVA_XML_INVALID);
    EXPECT_EQ(Master(), "N<1> 2 10.0.0.1");
}

TEST_F(ManagerXml, LeavesTheCursorOnTheAddress) {
    m_document.DumpToXml(m_xml);
    EXPECT_EQ(CurrentElement(m_xml), "FloatIP");
    m_xml.AddElem("After");
    unsigned int uiLen = 0;
    EXPECT_STREQ(m_xml.GetXMLStream(uiLen),
                 "<Content><DomainMainInfo><DomainMain>M</DomainMain><FloatIP>m</FloatIP><After/>"
                 "</DomainMainInfo></Content>");
}

TEST_F(ManagerXml, IsAddedBehindTheCurrentElementAndTracedWithTheWholeDocument) {
    m_xml.Parse("<Root><Before/></Root>");
    m_xml.FindElemEx("Root/Before");
    m_xml.OutOfElem();
    m_xml.IntoElem();
    EXPECT_EQ(m_document.DumpToXml(m_xml), ORVA_SUCCEED);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Trace(
                    FILE_NAME, "DumpToXml",
                    "tarn. pcNodeInfoXml[<Root><Before/><Content><DomainMainInfo><DomainMain>"
                    "M</DomainMain><FloatIP>m</FloatIP></DomainMainInfo></Content></Root>]")));
}

/// An object with a text of four characters and a number.
class ManagerUtility : public ManagerDocument {
protected:
    ManagerUtility() {
        m_json["text"] = "abcd";
        m_json["number"] = 5;
        m_json["null"] = Json::nullValue;
        m_json["object"] = Json::objectValue;
    }

    static CLogLine NullArgumentLine(const std::string& strOperation,
                                     const std::string& strFunction) {
        return Err(strOperation, ORVA_FAIL, FILE_NAME, strFunction, "");
    }

    static CLogLine NoStringLine(const std::string& strKey) {
        return Warn("Get stromg frome json", FILE_NAME, "GetStringFromJson",
                    "Get [" + strKey + "] return other value, not string.\r\n");
    }

    static CLogLine NoIntLine(const std::string& strKey) {
        return Warn("Get int frome json", FILE_NAME, "GetIntFromJson",
                    "Get [" + strKey + "] return other value, not string.");
    }

    Json::Value m_json;
    std::string m_strBuffer = "########";
    int m_iValue = 77;
};

/// The length passed, and what a buffer of eight then holds.
class ManagerText : public ManagerUtility,
                    public testing::WithParamInterface<std::pair<int, std::string>> {};

TEST_P(ManagerText, IsCutToTheLengthAndTerminated) {
    std::string strExpected = GetParam().second;
    strExpected += std::string(m_strBuffer).substr(strExpected.size());
    EXPECT_TRUE(m_document.GetStringFromJson(m_json, "text", m_strBuffer.data(), GetParam().first));
    EXPECT_EQ(m_strBuffer, strExpected);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Manager, ManagerText,
                         testing::Values(std::pair(0, std::string()), std::pair(-1, std::string()),
                                         std::pair(std::numeric_limits<int>::min(), std::string()),
                                         std::pair(1, std::string(1, '\0')),
                                         std::pair(3, std::string("ab\0", 3)),
                                         std::pair(4, std::string("abc\0", 4)),
                                         std::pair(5, std::string("abcd\0", 5)),
                                         std::pair(8, std::string("abcd\0", 5))));

TEST_F(ManagerUtility, EmptyTextIsCopied) {
    m_json["text"] = "";
    EXPECT_TRUE(m_document.GetStringFromJson(m_json, "text", m_strBuffer.data(), 8));
    EXPECT_EQ(m_strBuffer.front(), '\0');
}

TEST_F(ManagerUtility, WhatIsNoTextLeavesTheBuffer) {
    for (const char* pszKey : {"number", "null", "object", "absent", "%s"}) {
        m_logger.Clear();
        EXPECT_FALSE(m_document.GetStringFromJson(m_json, pszKey, m_strBuffer.data(), 8));
        EXPECT_THAT(m_logger.GetLines(), ElementsAre(NoStringLine(pszKey)));
    }
    EXPECT_FALSE(m_document.GetStringFromJson(Json::nullValue, "text", m_strBuffer.data(), 8));
    EXPECT_EQ(m_strBuffer, "########");
}

TEST_F(ManagerUtility, TextNeedsAKeyAndABuffer) {
    const CLogLine line = NullArgumentLine("pcKeyStr or acVal is NULL", "GetStringFromJson");
    EXPECT_FALSE(m_document.GetStringFromJson(m_json, nullptr, m_strBuffer.data(), 8));
    EXPECT_FALSE(m_document.GetStringFromJson(m_json, "text", nullptr, 8));
    EXPECT_FALSE(m_document.GetStringFromJson(m_json, nullptr, nullptr, 0));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(line, line, line));
    EXPECT_EQ(m_strBuffer, "########");
}

TEST_F(ManagerUtility, NumberIsCopied) {
    EXPECT_TRUE(m_document.GetIntFromJson(m_json, "number", &m_iValue));
    EXPECT_EQ(m_iValue, 5);
    m_json["number"] = std::numeric_limits<int>::min();
    EXPECT_TRUE(m_document.GetIntFromJson(m_json, "number", &m_iValue));
    EXPECT_EQ(m_iValue, std::numeric_limits<int>::min());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ManagerUtility, WhatIsNoNumberLeavesTheTarget) {
    m_json["bool"] = true;
    m_json["fraction"] = 1.5;
    m_json["huge"] = Json::Value::maxUInt64;
    for (const char* pszKey : {"text", "null", "object", "bool", "fraction", "huge", "absent"}) {
        m_logger.Clear();
        EXPECT_FALSE(m_document.GetIntFromJson(m_json, pszKey, &m_iValue));
        EXPECT_THAT(m_logger.GetLines(), ElementsAre(NoIntLine(pszKey)));
    }
    EXPECT_EQ(m_iValue, 77);
}

TEST_F(ManagerUtility, NumberNeedsAKeyAndATarget) {
    const CLogLine line = NullArgumentLine("pcKeyStr or piVal is NULL", "GetIntFromJson");
    EXPECT_FALSE(m_document.GetIntFromJson(m_json, nullptr, &m_iValue));
    EXPECT_FALSE(m_document.GetIntFromJson(m_json, "number", nullptr));
    EXPECT_FALSE(m_document.GetIntFromJson(m_json, nullptr, nullptr));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(line, line, line));
    EXPECT_EQ(m_iValue, 77);
}

TEST_F(ManagerUtility, ValueThatHasNoMembersIsRefusedByTheJsonLibrary) {
    EXPECT_THROW(m_document.GetStringFromJson("text", "text", m_strBuffer.data(), 8),
                 Json::Exception);
    EXPECT_THROW(m_document.GetIntFromJson(Json::arrayValue, "number", &m_iValue), Json::Exception);
}

}  // namespace
