#include <string>

#include "common_service/tarn_def.h"
#include "support/database_front_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace database_front;

namespace {

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

}  // namespace
