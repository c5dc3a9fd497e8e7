#include "cluster_engine/scripted_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

bool IsListed(const CContainerAddr& addr) {
    std::list<CContainerAddr> listed;
    CScheduleMgr::Instance().GetAllShiftContainer(listed);
    return std::find(listed.begin(), listed.end(), addr) != listed.end();
}

/// Recorders with room for 1000 each.
class FaultShift : public CEngineTest {
protected:
    void Build(const std::vector<CStoredNode>& nodes) {
        Store(nodes);
        Load();
        Settle();
    }

    void BuildTwo() { Build({{"r1", {"MeroRecord"}}, {"r2", {"MeroRecord"}}}); }

    /// Of r1's two large tasks there is room for one in r2.
    void BuildCrowded() {
        BuildTwo();
        ASSERT_EQ(Record({{"of r1", 450}, {"of r2", 450}, {"more", 450}}).eFault, EFault::NONE);
        ASSERT_THAT(TasksOf(m_r1), ElementsAre("of r1", "more"));
        m_events.Clear();
    }

    const CContainerAddr m_r1 = Recorder("r1");
    const CContainerAddr m_r2 = Recorder("r2");
};

TEST_F(FaultShift, SilentContainersWorkMoves) {
    BuildTwo();
    Record({{"a", 5}, {"b", 5}, {"c", 5}});
    PassReporting(91, {m_r2});
    EXPECT_THAT(TasksOf(m_r1), IsEmpty());
    EXPECT_THAT(TasksOf(m_r2), UnorderedElementsAre("a", "b", "c"));
    const std::vector<CEvent> shifted = m_events.Of(EEvent::SHIFTED);
    ASSERT_THAT(shifted, SizeIs(1));
    EXPECT_EQ(shifted[0].strNodeId, "r2");
    EXPECT_EQ(shifted[0].uiTasks, 2U);
    EXPECT_EQ(shifted[0].ullDecision, 2U);
    EXPECT_EQ(m_events.Of(EEvent::SHIFT_STARTED)[0].uiTasks, 2U);
    EXPECT_EQ(m_events.Of(EEvent::SHIFT_ENDED)[0].strCause, "all has moved");
}

TEST_F(FaultShift, WhatMovedIsWrittenDown) {
    BuildTwo();
    Record({{"a", 5}});
    PassReporting(91, {m_r2});
    Restart();
    EXPECT_EQ(NodeOf("a"), "r2");
}

TEST_F(FaultShift, MarksStandWhileItRunsAndEndWithIt) {
    BuildCrowded();
    PassReporting(91, {m_r2});
    ASSERT_THAT(TasksOf(m_r1), SizeIs(1));
    EXPECT_TRUE(IsListed(m_r1));
    EXPECT_TRUE(AllContainers().at(m_r1).GetFaultStatus());
    EXPECT_TRUE(AllContainers().at(m_r1).IsFaultShift());
    EXPECT_EQ(CNodeMgr::Instance().GetContainerShiftFaultTimes(m_r1), 1U);
    PassReporting(10, {m_r2});
    EXPECT_EQ(CNodeMgr::Instance().GetContainerShiftFaultTimes(m_r1), 2U);

    Must(CEndTasks{"MeroRecord", TasksOf(m_r1)});
    PassReporting(1, {m_r2});
    EXPECT_FALSE(IsListed(m_r1));
    EXPECT_FALSE(AllContainers().at(m_r1).GetFaultStatus());
    EXPECT_TRUE(AllContainers().at(m_r1).IsFaultShift());
    EXPECT_EQ(CNodeMgr::Instance().GetContainerShiftFaultTimes(m_r1), 0U);
    Must(ReportOf(m_r1));
    EXPECT_FALSE(AllContainers().at(m_r1).IsFaultShift());
}

TEST_F(FaultShift, ConfigurationForbidsIt) {
    m_pStore->Put(Path("/ClusterConfig"), ConfigurationText({true, false, true}));
    BuildTwo();
    Record({{"a", 5}});
    PassReporting(200, {m_r2});
    EXPECT_EQ(NodeOf("a"), "r1");
    EXPECT_FALSE(AllContainers().at(m_r1).IsOnline());
    m_pStore->Put(Path("/ClusterConfig"), ConfigurationText({}));
    Must(CDocumentChanged{EDocument::CONFIGURATION});
    PassReporting(1, {m_r2});
    EXPECT_EQ(NodeOf("a"), "r2");
}

TEST_F(FaultShift, ConfigurationThatForbidsItStopsWhatWaits) {
    m_pStore->Put(Path("/ClusterConfig"), ConfigurationText({}));
    BuildCrowded();
    PassReporting(91, {m_r2});
    m_pStore->Put(Path("/ClusterConfig"), ConfigurationText({true, false, true}));
    Must(CDocumentChanged{EDocument::CONFIGURATION});
    CContainerReport report = ReportOf(m_r2);
    report.total->iDisk = 5000;
    Must(report);
    Pass(30);
    EXPECT_THAT(TasksOf(m_r1), SizeIs(1));
}

TEST_F(FaultShift, TypeThatNoPlugInShiftsStays) {
    const CContainerAddr strange("r1", "Strange");
    Build({{"r1", {"Strange"}}, {"r2", {"Strange", "MeroRecord"}}});
    CContainerReport report = ReportOf(strange);
    report.tasks->emplace_back().strTaskId = "a";
    Must(report);
    PassReporting(200, {m_r2, {"r2", "Strange"}});
    EXPECT_EQ(NodeOf("a"), "r1");
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_STARTED), 0U);
}

TEST_F(FaultShift, TaskThatMayNotMoveStaysAndIsStillItsOwn) {
    BuildTwo();
    Record({{"stays", 5, false}});
    PassReporting(120, {m_r2});
    EXPECT_EQ(NodeOf("stays"), "r1");
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_STARTED), 0U);
    CContainerReport empty = ReportOf(m_r1);
    empty.tasks->clear();
    EXPECT_THAT(Must(empty).takeUp, SizeIs(1));
}

TEST_F(FaultShift, ContainerThatReturnsKeepsWhatStillWaits) {
    BuildCrowded();
    PassReporting(91, {m_r2});
    ASSERT_EQ(m_events.Of(EEvent::WAITS_FOR_ROOM).size(), 1U);
    const std::vector<std::string> waiting = TasksOf(m_r1);
    Must(ReportOf(m_r1));
    EXPECT_EQ(TasksOf(m_r1), waiting);
    EXPECT_FALSE(IsListed(m_r1));
    EXPECT_FALSE(AllContainers().at(m_r1).GetFaultStatus());
    EXPECT_FALSE(AllContainers().at(m_r1).IsFaultShift());
    ASSERT_EQ(m_events.Of(EEvent::SHIFT_ENDED).size(), 1U);
    EXPECT_EQ(m_events.Of(EEvent::SHIFT_ENDED)[0].uiTasks, 1U);
    PassReporting(60, {m_r1, m_r2});
    EXPECT_EQ(TasksOf(m_r1), waiting);
}

TEST_F(FaultShift, ContainerThatReturnsDropsWhatMoved) {
    BuildCrowded();
    const CContainerReport before = ReportOf(m_r1);
    PassReporting(91, {m_r2});
    const std::string strMoved = NodeOf("more") == "r2" ? "more" : "of r1";
    Must(ReportOf(m_r2));
    EXPECT_THAT(Must(before).drop, ElementsAre(strMoved));
}

TEST_F(FaultShift, ReportThatRaisesTotalsIsRoom) {
    BuildCrowded();
    PassReporting(91, {m_r2});
    CContainerReport report = ReportOf(m_r2);
    report.total->iDisk = 2000;
    Must(report);
    Pass(1);
    EXPECT_THAT(TasksOf(m_r1), IsEmpty());
}

TEST_F(FaultShift, WhatWaitsAndEndsDoesNotWaitAnyMore) {
    BuildCrowded();
    PassReporting(91, {m_r2});
    Must(CEndTasks{"MeroRecord", TasksOf(m_r1)});
    Pass(1);
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_ENDED), 1U);
}

TEST_F(FaultShift, NodesAreToldOfMovesUntilTheyHeard) {
    BuildTwo();
    Record({{"a", 5}});
    PassReporting(91, {m_r2});
    CContainerReport report = ReportOf(m_r2);
    const CAnswer first = Must(report);
    ASSERT_THAT(first.messages, SizeIs(1));
    EXPECT_THAT(first.messages[0], HasSubstr("<TaskID>a</TaskID>"));
    EXPECT_THAT(first.messages[0], HasSubstr("<ShiftIn>1</ShiftIn>"));
    EXPECT_EQ(Must(report).messages, first.messages);
    report.ullSeen = first.ullNumber;
    EXPECT_THAT(Must(report).messages, IsEmpty());
    EXPECT_THAT(Must(ReportOf(m_r1)).messages, ElementsAre(HasSubstr("<ShiftIn>0</ShiftIn>")));
}

TEST_F(FaultShift, TaskThatIsNotTakenUpGoesElsewhere) {
    BuildTwo();
    Record({{"a", 5}});
    CContainerReport report = ReportOf(m_r1);
    report.tasks->clear();
    for (int i = 0; i < 31; ++i) {
        report.ullSeen = Must(report).ullNumber;
        Must(ReportOf(m_r2));
        Pass(10);
    }
    EXPECT_EQ(NodeOf("a"), "r2");
}

TEST_F(FaultShift, TaskThatRunsElsewhereIsAssignedThereWhenItIsNotTakenUp) {
    Build({{"r1", {"MeroRecord"}}, {"r2", {"MeroRecord"}}, {"r3", {"MeroRecord"}}});
    Record({{"a", 5}});
    CContainerReport without = ReportOf(m_r1);
    without.tasks->clear();
    CContainerReport with = ReportOf(Recorder("r3"));
    with.tasks->emplace_back().strTaskId = "a";
    for (int i = 0; i < 32; ++i) {
        without.ullSeen = Must(without).ullNumber;
        Must(ReportOf(m_r2));
        EXPECT_THAT(Must(with).drop, IsEmpty());
        Pass(10);
    }
    EXPECT_EQ(NodeOf("a"), "r3");
    EXPECT_EQ(m_events.Count(EEvent::SHIFTED), 0U);
}

/// What waits, with the scripted plug-in: n1 has "a" and falls silent, and there is no room.
class WaitingWork : public CScriptedTest {
protected:
    static CContainerAddr N(int i) { return Scripted("n" + std::to_string(i)); }

    void Refuse() {
        Script().schedule = [](const auto&, auto&, auto&) { return static_cast<int>(ORVA_FAIL); };
    }

    void Strand() {
        ASSERT_EQ(Place({{"a"}}).eFault, EFault::NONE);
        ASSERT_EQ(NodeOf("a"), "n1");
        Refuse();
        PassReporting(91, {N(2), N(3)});
        ASSERT_EQ(m_events.Count(EEvent::WAITS_FOR_ROOM), 1U);
        Script().calls.clear();
    }

    int Tries() { return Calls("TaskSchedule"); }

    /// The next tick alone tries once, and after it none before a pause is over.
    void ExpectOneTry() {
        Pass(1);
        EXPECT_EQ(Tries(), 1);
        Pass(1);
        EXPECT_EQ(Tries(), 1);
    }

    /// Waits so long that the next try by time is far away.
    void WaitLong() {
        PassReporting(10 + 20 + 40 + 80 + 1, {N(2), N(3)});
        Script().calls.clear();
    }
};

TEST_F(WaitingWork, IsTriedWithDoublingPauses) {
    Strand();
    std::vector<int> tried;
    for (int iSecond = 1; iSecond <= 2500; ++iSecond) {
        const int iBefore = Tries();
        PassReporting(1, {N(2), N(3)});
        if (Tries() != iBefore) {
            tried.push_back(iSecond);
        }
    }
    EXPECT_THAT(tried, ElementsAre(9, 29, 69, 149, 309, 629, 1229, 1829, 2429));
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_STARTED), 1U);
    EXPECT_EQ(m_events.Count(EEvent::WAITS_FOR_ROOM), 1U);
}

TEST_F(WaitingWork, LimitEndsTheTryingByTimeAlone) {
    m_settings.iTriesEnd = 200;
    Restart();
    Settle();
    Strand();
    PassReporting(300, {N(2), N(3)});
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_GIVEN_UP), 1U);
    Script().calls.clear();
    PassReporting(2000, {N(2), N(3)});
    EXPECT_EQ(Tries(), 0);
    Must(CEndTasks{PSZ_SCRIPTED_TYPE, {}});
    CJoin join;
    join.strNodeId = "n4";
    join.strIp = "10.0.0.4";
    join.types = {PSZ_SCRIPTED_TYPE};
    Must(join);
    ExpectOneTry();
}

TEST_F(WaitingWork, IsTriedWhenAContainerJoins) {
    Strand();
    WaitLong();
    CJoin join;
    join.strNodeId = "n4";
    join.strIp = "10.0.0.4";
    join.types = {PSZ_SCRIPTED_TYPE};
    Must(join);
    ExpectOneTry();
}

TEST_F(WaitingWork, IsTriedWhenAContainerReturns) {
    Strand();
    PassReporting(330, {N(3)});
    Script().calls.clear();
    Must(ReportOf(N(2)));
    Pass(1);
    EXPECT_EQ(Tries(), 1);
}

TEST_F(WaitingWork, IsTriedWhenANodeIsANormalMemberAgain) {
    Must(CMemberStatus{{"n3"}, EMemberStatus::REMOVED});
    Strand();
    WaitLong();
    Must(CMemberStatus{{"n3"}, EMemberStatus::NORMAL});
    ExpectOneTry();
}

TEST_F(WaitingWork, IsTriedWhenAProcessRunsAgain) {
    CContainerReport report = ReportOf(N(3));
    report.processes = {{"worker", 1 + PROCESS_STATE_RUNNING}};
    Must(report);
    Strand();
    WaitLong();
    report.processes = {{"worker", PROCESS_STATE_RUNNING}};
    Must(report);
    ExpectOneTry();
}

TEST_F(WaitingWork, IsTriedWhenATaskEnds) {
    Script().schedule = [](const auto&, CTaskContainerMap& bound, unsigned long long& ullDecision) {
        bound = {{"other", Scripted("n2")}};
        return CScheduleMgr::Instance().IncreaseDecisionVerNum(ullDecision);
    };
    Place({{"other"}});
    Script().schedule = nullptr;
    Strand();
    WaitLong();
    Must(CEndTasks{PSZ_SCRIPTED_TYPE, {"other"}});
    ExpectOneTry();
}

TEST_F(WaitingWork, IsTriedWhenAPlugInIsReadmitted) {
    Strand();
    Script().schedule = [](const auto&, auto&, auto&) -> int { throw 17; };
    PassReporting(80, {N(2), N(3)});
    ASSERT_EQ(m_events.Count(EEvent::PLUGIN_OUT), 1U);
    Script().calls.clear();
    PassReporting(700, {N(2), N(3)});
    EXPECT_EQ(Tries(), 0);
    Script().schedule = nullptr;
    Must(CReadmit{"scripted"});
    Pass(1);
    EXPECT_EQ(NodeOf("a"), "n2");
}

TEST_F(WaitingWork, ReportsThatSpeakOfRoomAreHeardOnceInTenSeconds) {
    Strand();
    WaitLong();
    CContainerReport report = ReportOf(N(2));
    for (int i = 0; i < 30; ++i) {
        ++report.total->iDisk;
        Must(report);
        Pass(1);
    }
    EXPECT_EQ(Tries(), 3);
}

TEST_F(WaitingWork, ReportThatFreesEnoughIsRoomOnce) {
    ASSERT_EQ(Place({{"a", 100}}).eFault, EFault::NONE);
    CContainerReport full = ReportOf(N(2));
    full.used->iDisk = 950;
    CContainerReport fuller = ReportOf(N(3));
    fuller.used->iDisk = 990;
    Refuse();
    for (int i = 0; i < 25; ++i) {
        Must(full);
        Must(fuller);
        Pass(10);
    }
    Script().calls.clear();
    full.used->iDisk = 901;
    Must(full);
    Pass(1);
    EXPECT_EQ(Tries(), 0) << "too little";
    full.used->iDisk = 900;
    Must(full);
    ExpectOneTry();
    PassReporting(12, {});
    full.used->iDisk = 800;
    Must(full);
    Pass(1);
    EXPECT_EQ(Tries(), 1) << "there was enough at its last refusal";
}

TEST_F(WaitingWork, IsNotTriedWhileItsTypeIsHeld) {
    ASSERT_EQ(Place({{"a"}}).eFault, EFault::NONE);
    Refuse();
    Pass(91);
    ASSERT_EQ(m_events.Count(EEvent::HELD), 1U);
    Script().schedule = nullptr;
    Must(ReportOf(N(2)));
    Pass(3);
    EXPECT_EQ(NodeOf("a"), "n1");
    Must(CShiftAnyway{PSZ_SCRIPTED_TYPE});
    Pass(1);
    EXPECT_EQ(NodeOf("a"), "n2");
}

}  // namespace
