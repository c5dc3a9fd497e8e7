#include "common_service/tarn_def.h"
#include "support/cg_registry_fixture.h"
#include "support/refused_locks.h"

using testing::IsEmpty;
using namespace cg_registry;

namespace {

TEST_P(CGWrite, CannotBeDoneWithoutTheLock) {
    SetNodes(6);
    Fill({E1, E2});
    {
        const CRefusedLocks refused;
        EXPECT_EQ(GetParam().call(), ORVA_FAIL);
    }
    EXPECT_EQ(Cached(), (Entries{E1, E2}));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    EXPECT_EQ(Calls(), 0U);
}

TEST_F(CGRegistry, ReadersWithoutTheLockLeaveTheirArgument) {
    Fill({E1});
    const CRefusedLocks refused;
    CClusterCGInfoList list = ToList({E2});
    Registry().GetClusterCGInfoList(list);
    EXPECT_EQ(FromList(list), Entries{E2});
    EXPECT_EQ(Registry().ReloadClusterCGInfoList(), ORVA_FAIL);
    EXPECT_EQ(Registry().AddClusterCGInfo({}), 0) << "nothing to add needs no lock";
    CClusterCGInfoList empty;
    EXPECT_EQ(Registry().SetClusterCGInfoList(empty), 0);
    EXPECT_EQ(Calls(), 0U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
