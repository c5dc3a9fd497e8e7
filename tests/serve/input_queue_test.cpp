#include "serve/input_queue.h"

#include <gmock/gmock.h>

#include <future>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using EPush = CInputQueue::EPush;

InputBody Report(const std::string& strNodeId) {
    CNodeReport report;
    report.strNodeId = strNodeId;
    return report;
}

std::vector<InputBody> Reports(std::size_t uiCount) {
    return std::vector<InputBody>(uiCount, Report("n"));
}

OnAnswers Nobody() {
    return [](const std::vector<CAnswer>&) {};
}

std::chrono::steady_clock::time_point Now() {
    return std::chrono::steady_clock::now();
}

std::chrono::steady_clock::time_point Soon() {
    return Now() + std::chrono::seconds(60);
}

std::vector<std::string> KindsOf(const std::vector<CInputBatch>& batches) {
    std::vector<std::string> kinds;
    for (const CInputBatch& batch : batches) {
        for (const InputBody& input : batch.inputs) {
            kinds.emplace_back(InputName(input));
        }
    }
    return kinds;
}

}  // namespace

TEST(InputQueue, GivesWhatCameInItsOrder) {
    CInputQueue queue(10);
    ASSERT_EQ(queue.Push({Report("a"), CBalanceNow()}, Nobody()), EPush::TAKEN);
    ASSERT_EQ(queue.Push({CNextMasterVersion()}, Nobody()), EPush::TAKEN);
    EXPECT_EQ(queue.GetLength(), 3U);

    const std::vector<CInputBatch> taken = queue.Take(100, Soon());

    EXPECT_THAT(KindsOf(taken), ElementsAre("node_report", "balance_now", "next_master_version"));
    EXPECT_EQ(taken.size(), 2U);
    EXPECT_EQ(queue.GetLength(), 0U);
}

TEST(InputQueue, RefusesWhatIsTooMuchWhole) {
    CInputQueue queue(3);
    ASSERT_EQ(queue.Push(Reports(2), Nobody()), EPush::TAKEN);

    EXPECT_EQ(queue.Push(Reports(2), Nobody()), EPush::FULL);

    EXPECT_EQ(queue.GetLength(), 2U);
    EXPECT_EQ(queue.Push(Reports(1), Nobody()), EPush::TAKEN);
}

TEST(InputQueue, HasRoomAgainOnceItWasTaken) {
    CInputQueue queue(2);
    ASSERT_EQ(queue.Push(Reports(2), Nobody()), EPush::TAKEN);
    ASSERT_EQ(queue.Push(Reports(1), Nobody()), EPush::FULL);

    queue.Take(100, Soon());

    EXPECT_EQ(queue.Push(Reports(2), Nobody()), EPush::TAKEN);
}

TEST(InputQueue, TellsWithTheNextTickThatReportsWereRefused) {
    CInputQueue queue(1);
    const auto tellsRefused = [&queue] {
        queue.PushTick();
        return std::get<CTick>(queue.Take(1, Soon()).at(0).inputs.at(0)).bReportsRefused;
    };
    ASSERT_EQ(queue.Push({CBalanceNow(), Report("two")}, Nobody()), EPush::FULL);
    EXPECT_TRUE(tellsRefused());
    EXPECT_FALSE(tellsRefused());

    ASSERT_EQ(queue.Push({CBalanceNow(), CBalanceNow()}, Nobody()), EPush::FULL);
    EXPECT_FALSE(tellsRefused());
}

TEST(InputQueue, NeverRefusesATickAndGivesItInItsPlace) {
    CInputQueue queue(1);
    queue.PushTick();
    ASSERT_EQ(queue.Push(Reports(1), Nobody()), EPush::TAKEN);
    queue.Close();
    queue.PushTick();
    EXPECT_EQ(queue.GetLength(), 1U);

    EXPECT_THAT(KindsOf(queue.Take(100, Soon())), ElementsAre("tick", "node_report", "tick"));
    EXPECT_EQ(queue.GetLength(), 0U);
}

TEST(InputQueue, TakesNothingWhileItIsClosedAndKeepsWhatWaits) {
    CInputQueue queue(10);
    ASSERT_EQ(queue.Push(Reports(1), Nobody()), EPush::TAKEN);
    queue.Close();

    EXPECT_EQ(queue.Push(Reports(1), Nobody()), EPush::CLOSED);
    EXPECT_THAT(KindsOf(queue.Take(100, Soon())), ElementsAre("node_report"));
    EXPECT_FALSE(queue.IsWorkedOff());
}

TEST(InputQueue, IsWorkedOffWhenItHasEndedAndWhatCameBeforeIsTaken) {
    CInputQueue queue(10);
    ASSERT_EQ(queue.Push(Reports(1), Nobody()), EPush::TAKEN);
    queue.End();

    EXPECT_EQ(queue.Push(Reports(1), Nobody()), EPush::CLOSED);
    EXPECT_FALSE(queue.IsWorkedOff());
    EXPECT_THAT(KindsOf(queue.Take(100, Soon())), ElementsAre("node_report"));
    EXPECT_TRUE(queue.IsWorkedOff());

    queue.PushUrgent(CDocumentChanged{EDocument::CLUSTER});
    EXPECT_FALSE(queue.IsWorkedOff());
}

TEST(InputQueue, NeverRefusesWhatIsUrgentAndGivesItFirst) {
    CInputQueue queue(1);
    ASSERT_EQ(queue.Push(Reports(1), Nobody()), EPush::TAKEN);
    queue.PushUrgent(CDocumentChanged{EDocument::CLUSTER});
    queue.Close();
    queue.PushUrgent(CDocumentChanged{EDocument::MANAGER});
    EXPECT_EQ(queue.GetLength(), 3U);

    EXPECT_THAT(KindsOf(queue.Take(100, Soon())),
                ElementsAre("document_changed", "document_changed", "node_report"));
}

TEST(InputQueue, GivesABatchWholeHoweverLong) {
    CInputQueue queue(100);
    ASSERT_EQ(queue.Push(Reports(7), Nobody()), EPush::TAKEN);
    ASSERT_EQ(queue.Push(Reports(2), Nobody()), EPush::TAKEN);
    ASSERT_EQ(queue.Push(Reports(2), Nobody()), EPush::TAKEN);

    EXPECT_EQ(KindsOf(queue.Take(4, Soon())).size(), 7U);
    EXPECT_EQ(KindsOf(queue.Take(4, Soon())).size(), 4U);
}

TEST(InputQueue, GivesNothingAtTheDeadline) {
    CInputQueue queue(1);

    EXPECT_THAT(queue.Take(1, Now()), IsEmpty());
}

TEST(InputQueue, WakesWhoWaits) {
    CInputQueue queue(1);
    auto waiting = std::async(std::launch::async, [&] { return queue.Take(1, Soon()); });
    queue.PushUrgent(CDocumentChanged{EDocument::CLUSTER});
    EXPECT_THAT(KindsOf(waiting.get()), ElementsAre("document_changed"));

    waiting = std::async(std::launch::async, [&] { return queue.Take(1, Soon()); });
    queue.End();
    EXPECT_THAT(waiting.get(), IsEmpty());
}

TEST(InputQueue, WakesWhoWaitsForWhatIsHandedOver) {
    CInputQueue queue(1);
    const auto deadline = Soon();
    auto waiting = std::async(std::launch::async, [&] { return queue.Take(1, deadline); });
    queue.Push(Reports(1), Nobody());
    queue.HandOver();
    EXPECT_THAT(KindsOf(waiting.get()), ElementsAre("node_report"));
    EXPECT_LT(Now(), deadline);
}

TEST(InputQueue, NotesWhenAnInputCame) {
    CInputQueue queue(1);
    const int64_t iBefore = std::time(nullptr);
    const auto before = Now();
    queue.Push(Reports(1), Nobody());

    const CInputBatch batch = queue.Take(1, Soon()).at(0);

    EXPECT_GE(batch.iTime, iBefore);
    EXPECT_LE(batch.iTime, std::time(nullptr));
    EXPECT_GE(batch.entered, before);
    EXPECT_LE(batch.entered, Now());
}
