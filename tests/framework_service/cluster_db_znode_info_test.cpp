#include <json/json.h>

#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/database_document_fixture.h"
#include "support/json_document.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace database_document;

namespace {

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

}  // namespace
