#include "serve/wakeups.h"

#include <gtest/gtest.h>

#include <csignal>
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

TEST(Wakeups, ComeOfEachSignalThatAsksForAnEnd) {
    const CWakeups wakeups;
    std::raise(SIGTERM);
    std::raise(SIGINT);

    EXPECT_EQ(wakeups.Await(), EWakeup::STOP);
    EXPECT_EQ(wakeups.Await(), EWakeup::STOP);
    EXPECT_EQ(wakeups.Await(Now()), std::nullopt);
}

TEST(Wakeups, ComeFromOtherThreads) {
    const CWakeups wakeups;
    std::thread sender([&] { wakeups.Send(EWakeup::HOLD_LOST); });

    EXPECT_EQ(wakeups.Await(), EWakeup::HOLD_LOST);
    sender.join();
}

TEST(Wakeups, LeaveTheSignalsToTheProcessWhenTheyAreGone) {
    { const CWakeups wakeups; }
    struct sigaction action {};
    sigaction(SIGTERM, nullptr, &action);

    EXPECT_EQ(action.sa_handler, SIG_DFL);
}
