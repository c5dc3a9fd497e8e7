#include "cluster_engine/engine_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class Placement : public CEngineTest {
protected:
    Placement() {
        Store({{"n1", {"MeroRecord"}}, {"n2", {"MeroRecord"}}});
        Load();
        Settle();
    }
};

TEST_F(Placement, JobGoesToTheLeastLoadedContainer) {
    const CAnswer answer = Record({{"a", 5}, {"b", 5}});
    ASSERT_EQ(answer.eFault, EFault::NONE);
    EXPECT_THAT(TasksOf(Recorder("n1")), ElementsAre("a"));
    EXPECT_THAT(TasksOf(Recorder("n2")), ElementsAre("b"));
    EXPECT_EQ(answer.tasks[0].eResult, ETaskResult::PLACED);
    EXPECT_EQ(answer.tasks[0].strNodeId, "n1");
    EXPECT_EQ(answer.tasks[0].ullDecision, 1U);
    EXPECT_THAT(answer.strXml, HasSubstr("<TaskID>a</TaskID>"));
    EXPECT_TRUE(answer.bDurable);
}

TEST_F(Placement, TaskThatIsPlacedStaysWithoutADecision) {
    Record({{"a", 5}});
    const CAnswer answer = Record({{"a", 5}});
    EXPECT_EQ(answer.tasks[0].eResult, ETaskResult::STAYS);
    EXPECT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(), 1U);
}

TEST_F(Placement, TaskWithoutRoomIsRefusedAndTheOthersHold) {
    const CAnswer answer = Record({{"a", 5}, {"huge", 5000}});
    EXPECT_EQ(answer.eFault, EFault::NONE);
    EXPECT_TRUE(answer.bInPart);
    EXPECT_EQ(answer.tasks[1].eResult, ETaskResult::REFUSED);
    EXPECT_EQ(answer.tasks[1].strFault, "no_room");
    EXPECT_EQ(NodeOf("huge"), "");
}

TEST_F(Placement, AcknowledgedJobSurvivesARestart) {
    Record({{"a", 5}, {"b", 7, false, "x"}});
    Restart();
    EXPECT_THAT(TasksOf(Recorder("n1")), ElementsAre("a"));
    EXPECT_THAT(TasksOf(Recorder("n2")), ElementsAre("b"));
}

TEST_F(Placement, DryRunChangesNothing) {
    const auto before = Texts();
    CDryRun dry;
    dry.strNodeId = "n1";
    dry.uiJobType = 1001;
    dry.strXml = JobXml({{"a", 5}});
    const CAnswer answer = Must(dry);
    EXPECT_EQ(answer.tasks[0].strNodeId, "n1");
    EXPECT_EQ(NodeOf("a"), "");
    EXPECT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(), 0U);
    EXPECT_EQ(Texts(), before);
}

TEST_F(Placement, SilentRecordersWorkMoves) {
    Record({{"a", 5}, {"b", 5}});
    PassReporting(100, {Recorder("n2")});
    EXPECT_EQ(NodeOf("a"), "n2");
    EXPECT_EQ(m_events.Count(EEvent::OFFLINE), 3U);
    EXPECT_EQ(m_events.Count(EEvent::SHIFTED), 1U);
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_ENDED), 1U);
}

}  // namespace
