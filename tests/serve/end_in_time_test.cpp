#include "serve/end_in_time.h"

#include <gtest/gtest.h>

#include <csignal>

#include "command/exit_code.h"

using testing::ExitedWithCode;
using testing::KilledBySignal;

TEST(EndInTime, WakesToStopAtEachSignalThatAsksForIt) {
    for (const int iSignal : {SIGTERM, SIGINT}) {
        const CWakeups wakeups;
        const CEndInTime end(wakeups);
        std::raise(iSignal);

        EXPECT_EQ(wakeups.Await(), EWakeup::STOP);
        EXPECT_EQ(wakeups.Await(CWakeups::Clock::now()), std::nullopt);
    }
}

TEST(EndInTime, EndsTheProcessAtOnceAtASecondSignal) {
    const CWakeups wakeups;
    const auto raiseTwice = [] {
        std::raise(SIGTERM);
        std::raise(SIGINT);
    };
    EXPECT_EXIT(
        {
            const CEndInTime end(wakeups);
            raiseTwice();
        },
        ExitedWithCode(EXIT_COULD_NOT), "ended at once");
    EXPECT_EXIT(
        {
            CEndInTime end(wakeups);
            end.WorkedOff(EXIT_DONE);
            raiseTwice();
        },
        ExitedWithCode(EXIT_DONE), "ended at once");
}

TEST(EndInTime, EndsTheProcessAtOnceWhenItIsAskedWhileItEndsByItself) {
    const CWakeups wakeups;
    EXPECT_EXIT(
        {
            CEndInTime end(wakeups);
            end.Begin();
            std::raise(SIGTERM);
        },
        ExitedWithCode(EXIT_COULD_NOT), "ended at once");
}

TEST(EndInTime, LeavesTheSignalsUnlessOneHasAsked) {
    const CWakeups wakeups;
    {
        CEndInTime end(wakeups);
        EXPECT_TRUE(end.LeaveSignals());
        EXPECT_EXIT(std::raise(SIGTERM), KilledBySignal(SIGTERM), "");
    }
    CEndInTime asked(wakeups);
    std::raise(SIGTERM);
    EXPECT_FALSE(asked.LeaveSignals());
}

TEST(EndInTime, LeavesTheSignalsToTheProcessWhenItIsGone) {
    const CWakeups wakeups;
    { const CEndInTime end(wakeups); }
    for (const int iSignal : {SIGTERM, SIGINT, SIGALRM}) {
        struct sigaction action {};
        sigaction(iSignal, nullptr, &action);
        EXPECT_EQ(action.sa_handler, SIG_DFL);
    }
}
