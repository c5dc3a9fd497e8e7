#include "serve/wakeups.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

CWakeups::Clock::time_point Now() {
    return CWakeups::Clock::now();
}

}  // namespace

TEST(Wakeups, ComeInTheirOrder) {
    const CWakeups wakeups;
    wakeups.Send(EWakeup::TRIED_TO_LOAD);
    wakeups.Send(EWakeup::HOLD_LOST);

    EXPECT_EQ(wakeups.Await(), EWakeup::TRIED_TO_LOAD);
    EXPECT_EQ(wakeups.Await(), EWakeup::HOLD_LOST);
    EXPECT_EQ(wakeups.Await(Now()), std::nullopt);
}

TEST(Wakeups, ComeFromOtherThreads) {
    const CWakeups wakeups;
    std::thread sender([&] { wakeups.Send(EWakeup::HOLD_LOST); });

    EXPECT_EQ(wakeups.Await(), EWakeup::HOLD_LOST);
    sender.join();
}
