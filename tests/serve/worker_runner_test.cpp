#include "serve/worker_runner.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

#include "serve/comes_true.h"
#include "support/fake_clock.h"

using testing::ElementsAre;

namespace {

using std::chrono::milliseconds;

class CNotedClock : public IStepClock {
public:
    void Set(int64_t iSecond) override {
        m_iSecond = iSecond;
        m_thread = std::this_thread::get_id();
    }

    std::atomic<int64_t> m_iSecond{0};
    std::atomic<std::thread::id> m_thread{};
};

std::shared_ptr<std::function<void()>> Call(std::function<void()> call) {
    return std::make_shared<std::function<void()>>(std::move(call));
}

class WorkerRunner : public testing::Test {
protected:
    CWorkerRunner Make(CWorkerRunner::Duration limit) {
        return {m_clock, limit,
                [this](const std::string& strPlugin, const std::string& strOperation,
                       CWorkerRunner::Duration took, bool bBack) {
                    EXPECT_GE(took, CWorkerRunner::Duration::zero());
                    m_calls.push_back(strPlugin + ' ' + strOperation + (bBack ? " back" : " late"));
                }};
    }

    CNotedClock m_clock;
    std::vector<std::string> m_calls;
};

}  // namespace

TEST_F(WorkerRunner, MakesACallOnAnotherThreadAndComesBackAfterIt) {
    CWorkerRunner runner = Make(NUMERIC_AMPLE);
    std::thread::id where;

    EXPECT_TRUE(runner.Run("p", "TaskSchedule", Call([&] { where = std::this_thread::get_id(); })));

    EXPECT_NE(where, std::thread::id());
    EXPECT_NE(where, std::this_thread::get_id());
    EXPECT_FALSE(runner.IsBusy("p"));
    EXPECT_THAT(m_calls, ElementsAre("p TaskSchedule back"));
}

TEST_F(WorkerRunner, ShowsTheCallTheSecondOfItsCaller) {
    CWorkerRunner runner = Make(NUMERIC_AMPLE);
    std::thread::id where;
    SetClock(1'700'000'000);
    runner.Run("p", "o", Call([&] { where = std::this_thread::get_id(); }));
    ResetClock();

    EXPECT_EQ(m_clock.m_iSecond, 1'700'000'000);
    EXPECT_EQ(m_clock.m_thread.load(), where);
}

TEST_F(WorkerRunner, LeavesALateCallAloneAndMakesThoseOfOthers) {
    CWorkerRunner runner = Make(milliseconds(20));
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    std::atomic<bool> bOver{false};

    EXPECT_FALSE(runner.Run("slow", "o", Call([released, &bOver] {
                                released.wait();
                                bOver = true;
                            })));

    EXPECT_FALSE(bOver);
    EXPECT_TRUE(runner.IsBusy("slow"));
    EXPECT_FALSE(runner.IsBusy("other"));
    EXPECT_TRUE(runner.IsAnyBusy());
    // A machine that is busy may make this one late by itself: then it is made once more.
    EXPECT_TRUE(ComesTrue([&] { return runner.Run("other", "o", Call([] {})); }));

    release.set_value();
    EXPECT_TRUE(ComesTrue([&] { return !runner.IsBusy("slow"); }));
    EXPECT_TRUE(bOver);
    EXPECT_TRUE(ComesTrue([&] { return !runner.IsAnyBusy(); }));
}

TEST_F(WorkerRunner, CountsNoTimeInTheStore) {
    CWorkerRunner runner = Make(milliseconds(100));

    // A machine that is busy may make a call late by itself: then it is made once more.
    EXPECT_TRUE(ComesTrue([&] {
        return runner.Run("p", "o", Call([] {
                              const CStoreStay stay;
                              std::this_thread::sleep_for(milliseconds(300));
                          }));
    }));
}

TEST_F(WorkerRunner, CountsTheTimeBeforeAndBehindTheStore) {
    CWorkerRunner runner = Make(milliseconds(50));
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();

    EXPECT_FALSE(runner.Run("p", "o", Call([released] {
                                { const CStoreStay stay; }
                                released.wait();
                            })));

    release.set_value();
    EXPECT_TRUE(ComesTrue([&] { return !runner.IsAnyBusy(); }));
}

TEST_F(WorkerRunner, LetsAnotherThreadsStayInTheStoreStopNoLimit) {
    CWorkerRunner runner = Make(milliseconds(20));
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    const CStoreStay stay;

    EXPECT_FALSE(runner.Run("p", "o", Call([released] { released.wait(); })));

    release.set_value();
    EXPECT_TRUE(ComesTrue([&] { return !runner.IsAnyBusy(); }));
}

TEST_F(WorkerRunner, GoesWithoutWaitingForALateCall) {
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    const auto pOver = std::make_shared<std::promise<void>>();
    {
        CWorkerRunner runner = Make(milliseconds(20));
        ASSERT_FALSE(runner.Run("p", "o", Call([released, pOver] {
                                    released.wait();
                                    pOver->set_value();
                                })));
    }
    release.set_value();
    EXPECT_EQ(pOver->get_future().wait_for(NUMERIC_AMPLE), std::future_status::ready);
}
