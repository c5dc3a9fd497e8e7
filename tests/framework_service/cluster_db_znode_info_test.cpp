#include "framework_service/cluster_db_znode_info.h"

#include <json/json.h>

#include <limits>
#include <optional>
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

constexpr char FILE_NAME[] = "cluster_db_znode_info";
constexpr char DEFAULT_DB[] = " 2  6001 ";

/// Node, role, address, port and token.
std::string Tell(const CClusterDBInfo& info) {
    return info.GetNodeId() + ' ' + std::to_string(info.GetDBType()) + ' ' + info.GetNodeIp() +
           ' ' + std::to_string(info.GetPort()) + ' ' + info.GetCDBToken();
}

CClusterDBInfo MakeDB(const std::string& strNodeId, int iDBType, const std::string& strNodeIp,
                      int iPort, const std::string& strToken = "") {
    CClusterDBInfo info;
    info.SetNodeId(strNodeId);
    info.SetDBType(iDBType);
    info.SetNodeIp(strNodeIp);
    info.SetPort(iPort);
    info.SetCDBToken(strToken);
    return info;
}

using JsonText = std::optional<std::string>;

/// The JSON text of a record; its address is the node's name with "-ip", its port 7.
std::string Record(const std::string& strNodeId, const JsonText& token = "\"t\"") {
    return R"({"NodeCode":")" + strNodeId + R"(","NodeIp":")" + strNodeId + R"(-ip","DBPort":7)" +
           (token ? R"(,"DBToken":)" + *token : "") + "}";
}

std::string Document(const std::string& strMaster, const std::string& strSlaves) {
    return R"({"MasterDB":)" + strMaster + R"(,"SlaveDB":)" + strSlaves + "}";
}

CLogLine ParseLine(const std::string& strMessage, const std::string& strText) {
    return Err("ccluster db znode info", ORVA_DATA_INVALID, FILE_NAME, "ParseJson",
               strMessage + ", json text[" + strText + "].");
}

CLogLine IllegalLine(const std::string& strText) {
    return ParseLine("json illegal", strText);
}

CLogLine LastSlaveLine(const std::string& strText) {
    return ParseLine("parse salve db info", strText);
}

const CLogLine BAD_SLAVE = Err("ccluster db znode info", ORVA_DATA_INVALID, FILE_NAME,
                               "ParseSingleSlaveDB", "illegal salve db json.");

class DatabaseDocument : public CHostTest {
protected:
    int Parse(const std::string& strText) { return m_document.ParseJson(strText.c_str()); }

    /// The records, the master first.
    std::vector<std::string> Arrangement() const {
        std::list<CClusterDBInfo> slaves;
        m_document.GetAllSlaveDB(slaves);
        std::vector<std::string> records = {Tell(m_document.GetMasterDB())};
        for (const CClusterDBInfo& info : slaves) {
            records.push_back(Tell(info));
        }
        return records;
    }

    std::vector<std::string> Tokens() const {
        std::vector<std::string> tokens;
        for (const std::string& strRecord : Arrangement()) {
            tokens.push_back(strRecord.substr(strRecord.rfind(' ') + 1));
        }
        return tokens;
    }

    CClusterDBZNodeInfo m_document;
};

TEST(DatabaseRecord, StartsAsASlaveOnTheDefaultPort) {
    EXPECT_EQ(Tell(CClusterDBInfo()), DEFAULT_DB);
}

TEST(DatabaseRecord, CopyAndAssignmentCarryEveryField) {
    const CClusterDBInfo original = MakeDB("N1", CLUSTER_DB_MASTER, "10.0.0.1", 7001, "005");
    const CClusterDBInfo copy(original);
    CClusterDBInfo assigned;
    assigned = original;
    EXPECT_EQ(Tell(copy), "N1 1 10.0.0.1 7001 005");
    EXPECT_EQ(Tell(assigned), "N1 1 10.0.0.1 7001 005");
}

class DatabaseToken : public testing::TestWithParam<std::pair<int, std::string>> {};

TEST_P(DatabaseToken, HasThreeCharacters) {
    std::string strToken = "former text";
    CClusterDBInfo::GenerateCDBToken(strToken, GetParam().first);
    EXPECT_EQ(strToken, GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Slots, DatabaseToken,
                         testing::Values(std::pair(0, "000"), std::pair(7, "007"),
                                         std::pair(10, "010"), std::pair(999, "999"),
                                         std::pair(1000, "100"), std::pair(-1, "-01"),
                                         std::pair(std::numeric_limits<int>::max(), "214"),
                                         std::pair(std::numeric_limits<int>::min(), "-21")));

TEST_F(DatabaseDocument, StartsWithADefaultMasterAndNoSlaves) {
    EXPECT_THAT(Arrangement(), ElementsAre(DEFAULT_DB));
}

TEST_F(DatabaseDocument, BuiltFromRecordsItGivesEachTheTokenOfItsSlot) {
    m_document = CClusterDBZNodeInfo(
        MakeDB("M", CLUSTER_DB_SLAVE, "m", 1, "x"),
        {MakeDB("S1", CLUSTER_DB_MASTER, "s1", 2, "y"), MakeDB("S2", 5, "", 3)});
    EXPECT_THAT(Arrangement(), ElementsAre("M 2 m 1 000", "S1 1 s1 2 001", "S2 5  3 002"));
}

TEST_F(DatabaseDocument, RolesComeFromThePositionInTheText) {
    EXPECT_EQ(Parse(Document(Record("M"), "[" + Record("S1") + "," + Record("S2") + "]")),
              ORVA_SUCCEED);
    EXPECT_THAT(Arrangement(),
                ElementsAre("M 1 M-ip 7 000", "S1 2 S1-ip 7 001", "S2 2 S2-ip 7 002"));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseDocument, OneSlaveMayStandWithoutAnArray) {
    EXPECT_EQ(Parse(Document(Record("M"), Record("S"))), ORVA_SUCCEED);
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 M-ip 7 000", "S 2 S-ip 7 001"));
}

TEST_F(DatabaseDocument, EmptyArrayIsNoSlaves) {
    EXPECT_EQ(Parse(Document(Record("M"), "[]")), ORVA_SUCCEED);
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 M-ip 7 000"));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseDocument, EmptyObjectIsABadSlave) {
    const std::string strText = Document(Record("M"), "{}");
    EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BAD_SLAVE, LastSlaveLine(strText)));
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 M-ip 7 000"));
}

TEST_F(DatabaseDocument, SecondTextReplacesTheMasterAndAppendsSlaves) {
    Parse(Document(Record("M"), "[" + Record("S1") + "]"));
    EXPECT_EQ(Parse(Document(Record("M2"), "[" + Record("S2") + "]")), ORVA_SUCCEED);
    EXPECT_THAT(Arrangement(),
                ElementsAre("M2 1 M2-ip 7 000", "S1 2 S1-ip 7 001", "S2 2 S2-ip 7 001"));
}

TEST_F(DatabaseDocument, WholeNumberWithAFractionOfZeroIsAPort) {
    EXPECT_EQ(Parse(WithMember(Document(Record("M"), "[]"), {".MasterDB.DBPort", "7.0"})),
              ORVA_SUCCEED);
    EXPECT_EQ(m_document.GetMasterDB().GetPort(), 7);
}

/// The token members of the master and of each slave, and the tokens that they give.
struct CTokenCase {
    JsonText master;
    std::vector<JsonText> slaves;
    std::vector<std::string> tokens;
};

std::ostream& operator<<(std::ostream& stream, const CTokenCase& tokenCase) {
    return stream << tokenCase.master.value_or("absent") << ", "
                  << testing::PrintToString(tokenCase.slaves);
}

class ParsedToken : public DatabaseDocument, public testing::WithParamInterface<CTokenCase> {};

TEST_P(ParsedToken, ComesFromThePositionAndNeverFromTheText) {
    std::string strSlaves;
    for (const JsonText& token : GetParam().slaves) {
        strSlaves += (strSlaves.empty() ? "" : ",") + Record("S", token);
    }
    EXPECT_EQ(Parse(Document(Record("M", GetParam().master), "[" + strSlaves + "]")), ORVA_SUCCEED);
    EXPECT_EQ(Tokens(), GetParam().tokens);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Database, ParsedToken,
    testing::Values(
        CTokenCase{"\"abc\"", {"\"abc\"", "\"000\""}, {"000", "001", "002"}},
        CTokenCase{"\"\"", {"\"\""}, {"000", "001"}},
        CTokenCase{std::nullopt, {"\"x\"", "\"y\""}, {"", "000", "001"}},
        CTokenCase{"null", {"\"x\"", "\"y\""}, {"", "000", "001"}},
        CTokenCase{"5", {"\"x\""}, {"5", "000"}}, CTokenCase{"-1.5", {"true"}, {"-1.5", "true"}},
        CTokenCase{"false", {"18446744073709551615"}, {"false", "18446744073709551615"}},
        CTokenCase{"\"x\"", {std::nullopt, "null", "3", "\"x\""}, {"000", "", "", "3", "004"}}));

TEST_F(DatabaseDocument, AbsentTokenReplacesAFormerOne) {
    Parse(Document(Record("M"), "[]"));
    EXPECT_EQ(Parse(Document(Record("M", std::nullopt), "[]")), ORVA_SUCCEED);
    EXPECT_THAT(Tokens(), ElementsAre(""));
}

class StructuredToken : public DatabaseDocument, public testing::WithParamInterface<std::string> {};

TEST_P(StructuredToken, OfTheMasterIsRefusedByTheJsonLibraryWithTheRecordTaken) {
    EXPECT_THROW(Parse(Document(Record("M", GetParam()), "[" + Record("S") + "]")),
                 Json::Exception);
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 M-ip 7 "));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_P(StructuredToken, OfASlaveIsRefusedByTheJsonLibraryWithTheSlavesBeforeItTaken) {
    EXPECT_THROW(Parse(Document(Record("M"), "[" + Record("S1") + "," + Record("S2", GetParam()) +
                                                 "," + Record("S3") + "]")),
                 Json::Exception);
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 M-ip 7 000", "S1 2 S1-ip 7 001"));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Database, StructuredToken,
                         testing::Values("[]", "{}", "[1]", "{\"a\":1}"));

class BadMasterDatabase : public DatabaseDocument,
                          public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadMasterDatabase, IsRefusedAndNothingIsTaken) {
    m_document = CClusterDBZNodeInfo(MakeDB("old", CLUSTER_DB_MASTER, "ip", 1), {CClusterDBInfo()});
    const std::vector<std::string> before = Arrangement();
    const std::string strText =
        WithMember(Document(Record("M"), "[" + Record("S") + "]"), GetParam());
    EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(IllegalLine(strText)));
    EXPECT_EQ(Arrangement(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Database, BadMasterDatabase,
    testing::ValuesIn(EveryBadMember({{".MasterDB.NodeCode", EMemberType::STRING},
                                      {".MasterDB.NodeIp", EMemberType::STRING},
                                      {".MasterDB.DBPort", EMemberType::INT}})));
INSTANTIATE_TEST_SUITE_P(Object, BadMasterDatabase,
                         testing::ValuesIn(std::vector<CMemberChange>{{".MasterDB", std::nullopt},
                                                                      {".MasterDB", "null"},
                                                                      {".MasterDB", "[]"},
                                                                      {".MasterDB", "{}"},
                                                                      {".MasterDB", "\"M\""},
                                                                      {".MasterDB", "1"},
                                                                      {".MasterDB", "true"},
                                                                      {".SlaveDB", std::nullopt},
                                                                      {".SlaveDB", "null"},
                                                                      {".SlaveDB", "\"S\""},
                                                                      {".SlaveDB", "1"},
                                                                      {".SlaveDB", "false"}}));

/// A bad member of the second of three slaves.
class BadSlaveDatabase : public DatabaseDocument,
                         public testing::WithParamInterface<CMemberChange> {
protected:
    static std::string Slaves(const std::vector<std::string>& slaves) {
        std::string strText;
        for (const std::string& strSlave : slaves) {
            strText += (strText.empty() ? "" : ",") + strSlave;
        }
        return Document(Record("M"), "[" + strText + "]");
    }

    const std::string m_strBadSlave = WithMember(Record("S2"), GetParam());
};

TEST_P(BadSlaveDatabase, BeforeAGoodOneIsLeftOutAndUsesItsPositionUp) {
    EXPECT_EQ(Parse(Slaves({Record("S1"), m_strBadSlave, Record("S3")})), ORVA_SUCCEED);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BAD_SLAVE));
    EXPECT_THAT(Arrangement(),
                ElementsAre("M 1 M-ip 7 000", "S1 2 S1-ip 7 001", "S3 2 S3-ip 7 003"));
}

TEST_P(BadSlaveDatabase, AtTheEndFailsWithTheMasterAndTheOtherSlavesTaken) {
    const std::string strText = Slaves({Record("S1"), Record("S3"), m_strBadSlave});
    EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BAD_SLAVE, LastSlaveLine(strText)));
    EXPECT_THAT(Arrangement(),
                ElementsAre("M 1 M-ip 7 000", "S1 2 S1-ip 7 001", "S3 2 S3-ip 7 002"));
}

INSTANTIATE_TEST_SUITE_P(Database, BadSlaveDatabase,
                         testing::ValuesIn(EveryBadMember({{".NodeCode", EMemberType::STRING},
                                                           {".NodeIp", EMemberType::STRING},
                                                           {".DBPort", EMemberType::INT}})));

TEST_F(DatabaseDocument, EveryBadSlaveIsLogged) {
    const std::string strText = Document(Record("M"), "[null,{},null]");
    EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(BAD_SLAVE, BAD_SLAVE, BAD_SLAVE, LastSlaveLine(strText)));
}

TEST_F(DatabaseDocument, SlaveThatIsNoObjectIsRefusedByTheJsonLibrary) {
    for (const std::string strSlave : {"1", "\"S\"", "true", "[]"}) {
        EXPECT_THROW(Parse(Document(Record("M"), "[" + strSlave + "]")), Json::Exception)
            << strSlave;
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseDocument, SingleSlaveIsAppendedWithTheTokenOfTheGivenSlot) {
    Json::Value slave;
    slave["NodeCode"] = "S";
    slave["NodeIp"] = "ip";
    slave["DBPort"] = -1;
    EXPECT_EQ(m_document.ParseSingleSlaveDB(slave, 12), ORVA_SUCCEED);
    slave["DBToken"] = "x";
    EXPECT_EQ(m_document.ParseSingleSlaveDB(slave, 12), ORVA_SUCCEED);
    EXPECT_EQ(m_document.ParseSingleSlaveDB(Json::nullValue, 13), ORVA_DATA_INVALID);
    EXPECT_THAT(Arrangement(), ElementsAre(DEFAULT_DB, "S 2 ip -1 ", "S 2 ip -1 012"));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BAD_SLAVE));
}

TEST_F(DatabaseDocument, WritesEveryRecordWithItsToken) {
    m_document.SetMasterDBInfo(MakeDB("M", CLUSTER_DB_SLAVE, "m", -1, "t\"\\"));
    m_document.AddSlaveDBInfo(MakeDB("S1", 9, "s1", std::numeric_limits<int>::max(), ""));
    m_document.AddSlaveDBInfo(MakeDB("\xE5\x8C\x97", 9, "s2", 0, "001"));
    EXPECT_EQ(TextOf(m_document),
              R"({"MasterDB":{"DBPort":-1,"DBToken":"t\"\\","NodeCode":"M","NodeIp":"m"},)"
              R"("SlaveDB":[{"DBPort":2147483647,"DBToken":"","NodeCode":"S1","NodeIp":"s1"},)"
              R"({"DBPort":0,"DBToken":"001","NodeCode":"\u5317","NodeIp":"s2"}]})"
              "\n");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseDocument, OwnTextReadsBackWithTheTokensOfThePositions) {
    m_document.SetMasterDBInfo(MakeDB("\xE5\x8C\x97", CLUSTER_DB_SLAVE, "m", 1, "007"));
    m_document.AddSlaveDBInfo(MakeDB("\xF0\x9F\x98\x80", CLUSTER_DB_MASTER, "s1", 2, ""));
    m_document.AddSlaveDBInfo(MakeDB("S2", CLUSTER_DB_SLAVE, "s2", 3, "000"));
    const std::string strText = TextOf(m_document);
    m_document = CClusterDBZNodeInfo();
    EXPECT_EQ(Parse(strText), ORVA_SUCCEED);
    EXPECT_THAT(Arrangement(), ElementsAre("\xE5\x8C\x97 1 m 1 000", "\xF0\x9F\x98\x80 2 s1 2 001",
                                           "S2 2 s2 3 002"));
}

TEST_F(DatabaseDocument, MasterAloneCannotReadItsOwnText) {
    m_document.SetMasterDBInfo(MakeDB("M", CLUSTER_DB_MASTER, "m", 1, "000"));
    const std::string strText = TextOf(m_document);
    EXPECT_EQ(strText, R"({"MasterDB":{"DBPort":1,"DBToken":"000","NodeCode":"M","NodeIp":"m"},)"
                       R"("SlaveDB":null})"
                       "\n");
    EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(IllegalLine(strText)));
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 m 1 000"));
}

/// The master M and the slaves S1, S2 and a second record of S1.
class DatabaseArrangement : public DatabaseDocument {
protected:
    DatabaseArrangement() {
        m_document = CClusterDBZNodeInfo(
            MakeDB("M", CLUSTER_DB_MASTER, "m", 1),
            {MakeDB("S1", CLUSTER_DB_SLAVE, "s1", 2), MakeDB("S2", CLUSTER_DB_SLAVE, "s2", 3),
             MakeDB("S1", CLUSTER_DB_SLAVE, "again", 4)});
        m_before = Arrangement();
    }

    static CLogLine PromotionLine(const std::string& strMessage) {
        return Err("update master db info", ORVA_FAIL, FILE_NAME, "UpdateMasterDBInfo", strMessage);
    }

    std::vector<std::string> m_before;
};

TEST_F(DatabaseArrangement, ListIsHandedOutAndReplacedWhole) {
    std::list<CClusterDBInfo> slaves(5, MakeDB("x", 0, "", 0));
    m_document.GetAllSlaveDB(slaves);
    EXPECT_EQ(slaves.size(), 3U);
    slaves.pop_back();
    EXPECT_EQ(Arrangement(), m_before);
    m_document.SetSlaveDBInfoList(slaves);
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 m 1 000", "S1 2 s1 2 001", "S2 2 s2 3 002"));
}

TEST_F(DatabaseArrangement, FirstSlaveOnTheNodeIsRemoved) {
    m_document.RemoveSlaveDBInfoByNodeID("S1");
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 m 1 000", "S2 2 s2 3 002", "S1 2 again 4 003"));
}

TEST_F(DatabaseArrangement, RemovingAnotherNodeOrTheMastersChangesNothing) {
    m_document.RemoveSlaveDBInfoByNodeID("M");
    m_document.RemoveSlaveDBInfoByNodeID("");
    m_document.RemoveSlaveDBInfoByNodeID("s1");
    EXPECT_EQ(Arrangement(), m_before);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseArrangement, NodesAreKnownByTheirRole) {
    EXPECT_TRUE(m_document.IsMasterDB("M"));
    EXPECT_FALSE(m_document.IsMasterDB("S1"));
    EXPECT_FALSE(m_document.IsMasterDB(""));
    EXPECT_TRUE(m_document.IsSlaveDB("S1"));
    EXPECT_TRUE(m_document.IsSlaveDB("S2"));
    EXPECT_FALSE(m_document.IsSlaveDB("M"));
    EXPECT_FALSE(m_document.IsSlaveDB(""));
}

TEST_F(DatabaseArrangement, RecordOfANodeIsTheMastersOrTheFirstSlaves) {
    m_document.AddSlaveDBInfo(MakeDB("M", CLUSTER_DB_SLAVE, "other", 5));
    CClusterDBInfo info;
    EXPECT_TRUE(m_document.GetCDBInfo("M", info));
    EXPECT_EQ(Tell(info), "M 1 m 1 000");
    EXPECT_TRUE(m_document.GetCDBInfo("S1", info));
    EXPECT_EQ(Tell(info), "S1 2 s1 2 001");
    EXPECT_FALSE(m_document.GetCDBInfo("unknown", info));
    EXPECT_EQ(Tell(info), "S1 2 s1 2 001");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseArrangement, SlotOfATokenTakesNodeAndAddressAlone) {
    const CClusterDBInfo info = MakeDB("N", CLUSTER_DB_MASTER, "n", 99, "099");
    EXPECT_TRUE(m_document.UpdateSlaveDBInfoByToken("002", info));
    EXPECT_THAT(Arrangement(),
                ElementsAre("M 1 m 1 000", "S1 2 s1 2 001", "N 2 n 3 002", "S1 2 again 4 003"));
}

TEST_F(DatabaseArrangement, FirstOfTwoSlotsOfOneTokenIsTaken) {
    m_document.AddSlaveDBInfo(MakeDB("S4", CLUSTER_DB_SLAVE, "s4", 5, "002"));
    EXPECT_TRUE(m_document.UpdateSlaveDBInfoByToken("002", MakeDB("N", 0, "n", 0)));
    EXPECT_THAT(Arrangement(), ElementsAre("M 1 m 1 000", "S1 2 s1 2 001", "N 2 n 3 002",
                                           "S1 2 again 4 003", "S4 2 s4 5 002"));
}

TEST_F(DatabaseArrangement, MastersTokenAndUnknownOnesNameNoSlaveSlot) {
    for (const char* pszToken : {"000", "", "1", "004"}) {
        EXPECT_FALSE(m_document.UpdateSlaveDBInfoByToken(pszToken, CClusterDBInfo())) << pszToken;
    }
    EXPECT_EQ(Arrangement(), m_before);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseArrangement, PromotionSwapsNodesAndKeepsSlots) {
    EXPECT_TRUE(m_document.UpdateMasterDBInfo(MakeDB("S2", 7, "new address", 99, "099")));
    EXPECT_THAT(Arrangement(), ElementsAre("S2 1 new address 1 000", "S1 2 s1 2 001", "M 2 m 3 002",
                                           "S1 2 again 4 003"));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseArrangement, PromotionBackRestoresTheArrangement) {
    m_document.UpdateMasterDBInfo(MakeDB("S2", 0, "s2", 0));
    EXPECT_TRUE(m_document.UpdateMasterDBInfo(MakeDB("M", 0, "m", 0)));
    EXPECT_EQ(Arrangement(), m_before);
}

TEST_F(DatabaseArrangement, PromotionOfAnUnknownNodeChangesNothing) {
    EXPECT_FALSE(m_document.UpdateMasterDBInfo(MakeDB("unknown", CLUSTER_DB_SLAVE, "ip", 1)));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(PromotionLine("not found slave cdb, node id[unknown].")));
    EXPECT_EQ(Arrangement(), m_before);
}

TEST_F(DatabaseArrangement, PromotionOfTheMasterChangesNothing) {
    EXPECT_FALSE(m_document.UpdateMasterDBInfo(MakeDB("M", CLUSTER_DB_MASTER, "other", 1)));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(PromotionLine("update salve db info fail, node id[M].")));
    EXPECT_EQ(Arrangement(), m_before);
}

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

constexpr char TWO_VERSIONS[] =
    R"({"CdbVerSet":[{"NvrCode":"N2","CdbVer":"2"},{"NvrCode":"N1","CdbVer":"1"}]})";

class DatabaseVersions : public CHostTest {
protected:
    DatabaseVersions() { m_document.SetVerInfo("old", {"0"}); }

    int Parse(const std::string& strText) { return m_document.ParseJson(strText.c_str()); }

    std::string Version(const std::string& strCode) const {
        CenterDbVerInfo info{"none"};
        m_document.GetVerInfo(strCode, info);
        return info.m_cdbVer;
    }

    void ExpectRefused(const std::string& strText) {
        EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID);
        EXPECT_THAT(
            m_logger.GetLines(),
            ElementsAre(Err("CClusterDBVerZNodeInfo::ParseJson", ORVA_DATA_INVALID, FILE_NAME,
                            "ParseJson", "json illegal, json text[" + strText + "].")));
        EXPECT_EQ(Version("old"), "0");
    }

    CClusterDBVerZNodeInfo m_document;
};

TEST_F(DatabaseVersions, VersionIsInsertedReplacedAndHandedOut) {
    m_document.SetVerInfo("N", {"1"});
    m_document.SetVerInfo("N", {"2"});
    CenterDbVerInfo info;
    EXPECT_EQ(m_document.GetVerInfo("N", info), ORVA_SUCCEED);
    EXPECT_EQ(info.m_cdbVer, "2");
}

TEST_F(DatabaseVersions, UnknownNodeLeavesTheArgument) {
    CenterDbVerInfo info{"untouched"};
    EXPECT_EQ(m_document.GetVerInfo("unknown", info), ORVA_FAIL);
    EXPECT_EQ(info.m_cdbVer, "untouched");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseVersions, TextIsAddedToTheMapAndReplacesItsNodes) {
    m_document.SetVerInfo("N1", {"former"});
    EXPECT_EQ(Parse(TWO_VERSIONS), ORVA_SUCCEED);
    EXPECT_EQ(TextOf(m_document),
              R"({"CdbVerSet":[{"CdbVer":"1","NvrCode":"N1"},{"CdbVer":"2","NvrCode":"N2"},)"
              R"({"CdbVer":"0","NvrCode":"old"}]})"
              "\n");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseVersions, LastOfTwoEntriesOfANodeCounts) {
    EXPECT_EQ(Parse(R"({"CdbVerSet":[{"NvrCode":"N","CdbVer":"1"},{"NvrCode":"N","CdbVer":"2"}]})"),
              ORVA_SUCCEED);
    EXPECT_EQ(Version("N"), "2");
}

TEST_F(DatabaseVersions, EmptyArrayKeepsTheMap) {
    EXPECT_EQ(Parse(R"({"CdbVerSet":[]})"), ORVA_SUCCEED);
    EXPECT_EQ(Version("old"), "0");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseVersions, NothingKnownCannotReadItsOwnText) {
    CClusterDBVerZNodeInfo fresh;
    EXPECT_EQ(TextOf(fresh), "{\"CdbVerSet\":null}\n");
    ExpectRefused(TextOf(fresh));
}

TEST_F(DatabaseVersions, NullEntryIsRefused) {
    ExpectRefused(R"({"CdbVerSet":[null]})");
}

TEST_F(DatabaseVersions, EntryThatIsNoObjectIsRefusedByTheJsonLibrary) {
    for (const char* pszText :
         {R"({"CdbVerSet":[1]})", R"({"CdbVerSet":["x"]})", R"({"CdbVerSet":[[]]})"}) {
        EXPECT_THROW(Parse(pszText), Json::Exception) << pszText;
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

class BadVersionSet : public DatabaseVersions, public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadVersionSet, IsRefusedAndNothingIsTaken) {
    ExpectRefused(WithMember(TWO_VERSIONS, GetParam()));
    EXPECT_EQ(Version("N2"), "none");
}

INSTANTIATE_TEST_SUITE_P(Database, BadVersionSet,
                         testing::ValuesIn(EveryBadMember({{".CdbVerSet", EMemberType::ARRAY}})));

class BadVersionEntry : public DatabaseVersions,
                        public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadVersionEntry, EndsTheReadingWithTheEntriesBeforeItTaken) {
    ExpectRefused(WithMember(TWO_VERSIONS, GetParam()));
    EXPECT_EQ(Version("N2"), "2");
    EXPECT_EQ(Version("N1"), "none");
}

INSTANTIATE_TEST_SUITE_P(
    Database, BadVersionEntry,
    testing::ValuesIn(EveryBadMember({{".CdbVerSet[1].NvrCode", EMemberType::STRING},
                                      {".CdbVerSet[1].CdbVer", EMemberType::STRING}})));

}  // namespace
