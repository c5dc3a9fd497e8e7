#include <optional>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/registry_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int NUMERIC_STORE_CODE = 4711;
constexpr char FILE_STEM[] = "framework_common";

CFrameworkCommon& Framework() {
    return CFrameworkCommon::Instance();
}

const int CDB_VERSION_AT_LOAD = Framework().GetCDBVersion();

constexpr char ARRANGEMENT[] =
    "{\"MasterDB\":{\"DBPort\":6001,\"DBToken\":\"000\",\"NodeCode\":\"n1\",\"NodeIp\":\"i1\"},"
    "\"SlaveDB\":[{\"DBPort\":6002,\"DBToken\":\"001\",\"NodeCode\":\"n2\",\"NodeIp\":\"i2\"},"
    "{\"DBPort\":6003,\"DBToken\":\"002\",\"NodeCode\":\"n3\",\"NodeIp\":\"i3\"}]}\n";

constexpr char PROMOTED[] =
    "{\"MasterDB\":{\"DBPort\":6001,\"DBToken\":\"000\",\"NodeCode\":\"n3\",\"NodeIp\":\"new\"},"
    "\"SlaveDB\":[{\"DBPort\":6002,\"DBToken\":\"001\",\"NodeCode\":\"n2\",\"NodeIp\":\"i2\"},"
    "{\"DBPort\":6003,\"DBToken\":\"002\",\"NodeCode\":\"n1\",\"NodeIp\":\"i1\"}]}\n";

constexpr char MOVED_SLAVE[] =
    "{\"MasterDB\":{\"DBPort\":6001,\"DBToken\":\"000\",\"NodeCode\":\"n1\",\"NodeIp\":\"i1\"},"
    "\"SlaveDB\":[{\"DBPort\":6002,\"DBToken\":\"001\",\"NodeCode\":\"n9\",\"NodeIp\":\"i9\"},"
    "{\"DBPort\":6003,\"DBToken\":\"002\",\"NodeCode\":\"n3\",\"NodeIp\":\"i3\"}]}\n";

constexpr char MANAGER[] = "{\"MasterMGR\":{\"NodeCode\":\"n1\",\"NodeIp\":\"i1\"}}\n";

CClusterDBInfo MakeDB(int iType, const std::string& strNode, const std::string& strIp,
                      const std::string& strToken = "") {
    CClusterDBInfo info;
    info.SetDBType(iType);
    info.SetNodeId(strNode);
    info.SetNodeIp(strIp);
    info.SetCDBToken(strToken);
    info.SetPort(9999);
    return info;
}

std::string TextOf(CBaseJsonObject& document) {
    char szText[1024];
    EXPECT_EQ(document.ToJson(szText, sizeof(szText)), 0);
    return szText;
}

std::string CachedText() {
    return TextOf(Framework().GetClusterDBInfo());
}

class DatabaseFront : public CRegistryTest {
protected:
    void Load() {
        m_pStore->Put(Path("/CenterDB"), ARRANGEMENT);
        ASSERT_EQ(Framework().ParseCDBFromZK(false), 0);
        ASSERT_EQ(CachedText(), ARRANGEMENT);
        m_uiCallsBefore = m_pStore->GetCallCount();
    }

    std::optional<std::string> Stored() const { return m_pStore->Get(Path("/CenterDB")); }
    unsigned int Calls() const { return m_pStore->GetCallCount() - m_uiCallsBefore; }

    unsigned int m_uiCallsBefore = 0;
};

/// An update and what the cached document is after it.
struct CUpdate {
    std::string strName;
    CClusterDBInfo info;
    std::string strCachedAfter;
    bool bDone = true;
};

std::ostream& operator<<(std::ostream& stream, const CUpdate& update) {
    return stream << update.strName;
}

class DatabaseUpdate : public DatabaseFront, public testing::WithParamInterface<CUpdate> {};

TEST_P(DatabaseUpdate, StandsInTheCacheAloneWithoutAFlush) {
    Load();
    EXPECT_EQ(Framework().UpdateClusterCDB(GetParam().info, false),
              GetParam().bDone ? 0 : ORVA_FAIL);
    EXPECT_EQ(CachedText(), GetParam().strCachedAfter);
    EXPECT_EQ(Stored(), ARRANGEMENT);
    EXPECT_EQ(Calls(), 0U);
    EXPECT_THAT(m_logger.GetLinesOf(FILE_STEM), IsEmpty());
}

TEST_P(DatabaseUpdate, IsStoredWithAFlush) {
    Load();
    m_pStore->FailCall(2, NUMERIC_STORE_CODE);
    EXPECT_EQ(Framework().UpdateClusterCDB(GetParam().info, true),
              GetParam().bDone ? 0 : ORVA_FAIL);
    EXPECT_EQ(CachedText(), GetParam().strCachedAfter);
    EXPECT_EQ(Stored(), GetParam().strCachedAfter);
    EXPECT_EQ(Calls(), GetParam().bDone ? 1U : 0U);
    EXPECT_THAT(m_logger.GetLinesOf(FILE_STEM), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Routes, DatabaseUpdate,
    testing::Values(
        CUpdate{"TypeOnePromotes", MakeDB(1, "n3", "new", "001"), PROMOTED},
        CUpdate{"TypeTwoMovesTheSlaveOfTheToken", MakeDB(2, "n9", "i9", "001"), MOVED_SLAVE},
        CUpdate{"TypeZeroIsASlave", MakeDB(0, "n9", "i9", "001"), MOVED_SLAVE},
        CUpdate{"NegativeTypeIsASlave", MakeDB(-1, "n9", "i9", "001"), MOVED_SLAVE},
        CUpdate{"UnknownNodeIsNotPromoted", MakeDB(1, "n9", "i9", "001"), ARRANGEMENT, false},
        CUpdate{"MasterIsNotPromotedAgain", MakeDB(1, "n1", "i9"), ARRANGEMENT, false},
        CUpdate{"MastersTokenIsNoSlaves", MakeDB(2, "n9", "i9", "000"), ARRANGEMENT, false},
        CUpdate{"UnknownTokenIsNoSlaves", MakeDB(2, "n2", "i9"), ARRANGEMENT, false}),
    NAME_OF_PARAMETER);

TEST_F(DatabaseFront, FailedUpdateLogsOnlyWhatTheDocumentSays) {
    Load();
    EXPECT_EQ(Framework().UpdateClusterCDB(MakeDB(1, "n9", "i9"), true), ORVA_FAIL);
    EXPECT_EQ(Framework().UpdateClusterCDB(MakeDB(2, "n9", "i9", "007"), true), ORVA_FAIL);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Err("update master db info", 1, "cluster_db_znode_info",
                                "UpdateMasterDBInfo", "not found slave cdb, node id[n9].")));
}

TEST_F(DatabaseFront, FailedFlushKeepsTheChangeInTheCache) {
    Load();
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    EXPECT_EQ(Framework().UpdateClusterCDB(MakeDB(2, "n9", "i9", "001"), true), NUMERIC_STORE_CODE);
    EXPECT_EQ(CachedText(), MOVED_SLAVE);
    EXPECT_EQ(Stored(), ARRANGEMENT);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Err("update cluster cdb", NUMERIC_STORE_CODE, FILE_STEM,
                                "UpdateClusterCDB", "set data to zookeeper fail.")));
}

TEST_F(DatabaseFront, FlushCarriesEarlierChanges) {
    Load();
    ASSERT_EQ(Framework().UpdateClusterCDB(MakeDB(2, "n9", "i9", "001"), false), 0);
    ASSERT_EQ(Framework().UpdateClusterCDB(MakeDB(1, "n3", "new"), true), 0);
    EXPECT_EQ(Stored(),
              "{\"MasterDB\":{\"DBPort\":6001,\"DBToken\":\"000\",\"NodeCode\":\"n3\","
              "\"NodeIp\":\"new\"},\"SlaveDB\":[{\"DBPort\":6002,\"DBToken\":\"001\","
              "\"NodeCode\":\"n9\",\"NodeIp\":\"i9\"},{\"DBPort\":6003,\"DBToken\":\"002\","
              "\"NodeCode\":\"n1\",\"NodeIp\":\"i1\"}]}\n");
}

TEST_F(DatabaseFront, TextThatFillsTheBufferIsStoredAndALongerOneIsNot) {
    Load();
    CClusterDBInfo slave = MakeDB(2, "n9", "", "001");
    const std::size_t room = 511 - std::string(MOVED_SLAVE).size() + 2;
    slave.SetNodeIp(std::string(room, 'x'));
    EXPECT_EQ(Framework().UpdateClusterCDB(slave, true), 0);
    const std::string strFull = CachedText();
    EXPECT_EQ(strFull.size(), 511U);
    EXPECT_EQ(Stored(), strFull);
    slave.SetNodeIp(std::string(room + 2, 'x'));
    EXPECT_EQ(Framework().UpdateClusterCDB(slave, true), ORVA_DATA_INVALID);
    EXPECT_EQ(Stored(), strFull) << "the last good text";
    EXPECT_EQ(CachedText().size(), 513U);
}

TEST_F(DatabaseFront, ReferenceIsTheLiveDocument) {
    Load();
    Framework().GetClusterDBInfo().RemoveSlaveDBInfoByNodeID("n3");
    EXPECT_EQ(Framework().UpdateClusterCDB(MakeDB(1, "n3", "i3"), false), ORVA_FAIL);
    EXPECT_EQ(&Framework().GetClusterDBInfo(), &Framework().GetClusterDBInfo());
    CClusterMGRInfo master;
    master.SetNodeId("n5");
    Framework().GetClusterMGRInfo().SetMasterMGRInfo(master);
    EXPECT_EQ(Framework().GetClusterMGRInfo().GetMasterMGR().GetNodeId(), "n5");
}

// ---------------------------------------------------------------- parsing from the store

TEST_F(DatabaseFront, HoldsNothingUntilItIsParsed) {
    m_pStore->Put(Path("/CenterDB"), ARRANGEMENT);
    m_pStore->Put(Path("/MEROMGR"), MANAGER);
    EXPECT_EQ(CachedText(),
              "{\"MasterDB\":{\"DBPort\":6001,\"DBToken\":\"\",\"NodeCode\":\"\",\"NodeIp\":\"\"},"
              "\"SlaveDB\":null}\n");
    EXPECT_EQ(TextOf(Framework().GetClusterMGRInfo()),
              "{\"MasterMGR\":{\"NodeCode\":\"\",\"NodeIp\":\"\"}}\n");
    EXPECT_EQ(Framework().ParseCDBFromZK(false), 0);
    EXPECT_EQ(Framework().ParseMGRFromZK(false), 0);
    EXPECT_EQ(CachedText(), ARRANGEMENT);
    EXPECT_EQ(TextOf(Framework().GetClusterMGRInfo()), MANAGER);
    EXPECT_EQ(Framework().ParseCDBFromZK(false), 0);
    EXPECT_EQ(CachedText(), ARRANGEMENT) << "a second parse replaces";
}

/// One of the two cached documents.
struct CDocument {
    std::string strName;
    std::string strSuffix;
    std::string strText;
    int (CFrameworkCommon::*pParse)(bool);
    std::string (*pCached)();
    CLogLine failure;
};

std::ostream& operator<<(std::ostream& stream, const CDocument& document) {
    return stream << document.strName;
}

class CachedDocument : public DatabaseFront, public testing::WithParamInterface<CDocument> {
protected:
    static int Parse(bool bNeedWatcher) { return (Framework().*GetParam().pParse)(bNeedWatcher); }
};

TEST_P(CachedDocument, StaysAsItWasWhenItCannotBeParsed) {
    const std::string strPath = Path(GetParam().strSuffix);
    m_pStore->Put(strPath, GetParam().strText);
    ASSERT_EQ(Parse(false), 0);
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    EXPECT_EQ(Parse(false), ORVA_FAIL);
    m_pStore->Put(strPath, "{}");
    EXPECT_EQ(Parse(false), ORVA_FAIL);
    m_pStore->Erase(strPath);
    EXPECT_EQ(Parse(true), ORVA_FAIL);
    EXPECT_EQ(GetParam().pCached(), GetParam().strText);
    std::vector<CLogLine> failures;
    for (const CLogLine& line : m_logger.GetLines()) {
        if (line.strOperation == GetParam().failure.strOperation) {
            failures.push_back(line);
        }
    }
    EXPECT_EQ(failures, std::vector<CLogLine>(3, GetParam().failure));
}

std::vector<std::string>& FiredPaths() {
    static std::vector<std::string> paths;
    return paths;
}

TEST_P(CachedDocument, IsWatchedOnRequestAlone) {
    FiredPaths().clear();
    SetNodeEventHandler([](const std::string& strPath) { FiredPaths().push_back(strPath); });
    const std::string strPath = Path(GetParam().strSuffix);
    m_pStore->Put(strPath, GetParam().strText);
    ASSERT_EQ(Parse(false), 0);
    ASSERT_EQ(m_pStore->Write(strPath, GetParam().strText), 0);
    EXPECT_THAT(FiredPaths(), IsEmpty());
    ASSERT_EQ(Parse(true), 0);
    ASSERT_EQ(m_pStore->Write(strPath, GetParam().strText), 0);
    EXPECT_THAT(FiredPaths(), ElementsAre(strPath));
}

INSTANTIATE_TEST_SUITE_P(
    Documents, CachedDocument,
    testing::Values(CDocument{"Database", "/CenterDB", ARRANGEMENT,
                              &CFrameworkCommon::ParseCDBFromZK, &CachedText,
                              Err("cdb info, parse form zk", 1, "cluster_db_znode_info",
                                  "ParseFromZK", "get center db info from zk fail.")},
                    CDocument{"Manager", "/MEROMGR", MANAGER, &CFrameworkCommon::ParseMGRFromZK,
                              [] { return TextOf(Framework().GetClusterMGRInfo()); },
                              Err("cmgr info, parse form zk", 1, "cluster_mgr_znode_info",
                                  "ParseFromZK", "get center mgr info from zk fail.")}),
    NAME_OF_PARAMETER);

// ---------------------------------------------------------------- the version counter

TEST_F(DatabaseFront, VersionStartsAtZeroAndOnlyIncreasingChangesIt) {
    EXPECT_EQ(CDB_VERSION_AT_LOAD, 0);
    const int iBefore = Framework().GetCDBVersion();
    Load();
    ASSERT_EQ(Framework().UpdateClusterCDB(MakeDB(1, "n3", "new"), true), 0);
    EXPECT_EQ(Framework().GetCDBVersion(), iBefore);
    const unsigned int uiCalls = Calls();
    Framework().IncreaseCDBVersion();
    EXPECT_EQ(Framework().GetCDBVersion(), iBefore + 1);
    Framework().IncreaseCDBVersion();
    EXPECT_EQ(Framework().GetCDBVersion(), iBefore + 2);
    EXPECT_EQ(Calls(), uiCalls) << "it is not stored";
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
