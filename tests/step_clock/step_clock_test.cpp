#include "step_clock/step_clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <thread>

namespace {

constexpr int64_t NUMERIC_SECOND = 1000000;

class StepClock : public ::testing::Test {
protected:
    ~StepClock() override { CStepClock::Release(); }

    CStepClock m_clock;
};

std::time_t RealTime() {
    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

TEST_F(StepClock, StandsStillAtTheSecondThatWasSet) {
    m_clock.Set(NUMERIC_SECOND);
    std::time_t tmStored = 0;
    EXPECT_EQ(time(&tmStored), NUMERIC_SECOND);
    EXPECT_EQ(tmStored, NUMERIC_SECOND);
    m_clock.Set(NUMERIC_SECOND - 1);
    EXPECT_EQ(time(nullptr), NUMERIC_SECOND - 1);
}

TEST_F(StepClock, IsRealOnEveryOtherThread) {
    m_clock.Set(NUMERIC_SECOND);
    std::time_t tmElsewhere = 0;
    const std::time_t tmBefore = RealTime();
    std::thread([&] { tmElsewhere = time(nullptr); }).join();
    EXPECT_GE(tmElsewhere, tmBefore);
    EXPECT_LE(tmElsewhere, RealTime());
}

TEST_F(StepClock, IsRealAgainWhenReleased) {
    m_clock.Set(NUMERIC_SECOND);
    CStepClock::Release();
    EXPECT_GE(time(nullptr), RealTime() - 1);
}

}  // namespace
