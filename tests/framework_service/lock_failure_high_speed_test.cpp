#include <optional>

#include "support/high_speed_fixture.h"
#include "support/refused_locks.h"

using testing::IsEmpty;
using namespace high_speed;

namespace {

TEST_P(HighSpeedSelection, CannotBeMadeWithoutTheLock) {
    Report("nvr", 1000);
    m_logger.Clear();
    {
        const CRefusedLocks refused;
        Report("nvr", 5000);
        Report("other", 5000);
        EXPECT_EQ(Pick(1), std::nullopt);
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    EXPECT_EQ(Pick(62), "nvr") << "992 of 1000";
    EXPECT_EQ(Pick(1), std::nullopt);
}

}  // namespace
