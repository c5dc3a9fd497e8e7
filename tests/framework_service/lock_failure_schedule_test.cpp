#include <list>

#include "common_service/tarn_def.h"
#include "support/refused_locks.h"
#include "support/schedule_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace schedule;

namespace {

TEST_P(VersionChange, CannotBeMadeWithoutTheLock) {
    Load(10, 20);
    unsigned long long ullOutput = 99;
    {
        const CRefusedLocks refused;
        EXPECT_EQ(GetParam().call(ullOutput), ORVA_FAIL);
        ExpectNumbers(10, 20);
    }
    EXPECT_EQ(ullOutput, 99U);
    EXPECT_EQ(Stored(), VersionText(10, 20));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(VersionNumbers, ReloadWithoutTheLockKeepsThem) {
    Load(10, 20);
    Put(VersionText(1, 2));
    const CRefusedLocks refused;
    EXPECT_EQ(Manager().Reload(), ORVA_FAIL);
    ExpectNumbers(10, 20);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ShiftList, CountsAsSchedulingAndStaysWithoutTheLock) {
    Manager().AddShiftContainer(A);
    std::list<CContainerAddr> addresses = {C};
    {
        const CRefusedLocks refused;
        Manager().AddShiftContainer(B);
        Manager().RemoveShiftContainer(A);
        Manager().GetAllShiftContainer(addresses);
    }
    EXPECT_THAT(addresses, ElementsAre(C));
    EXPECT_THAT(All(), ElementsAre(A));
    Manager().RemoveShiftContainer(A);
    const CRefusedLocks refused;
    EXPECT_TRUE(Manager().IsScheduling()) << "errs on the side of busy";
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
