#include "support/database_front_fixture.h"

using testing::IsEmpty;
using namespace database_front;

namespace {

const int CDB_VERSION_AT_LOAD = Framework().GetCDBVersion();

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
