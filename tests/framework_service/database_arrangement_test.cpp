#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/database_document_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace database_document;

namespace {

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

}  // namespace
