#include "cluster_engine/engine_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

/// Recorders r1 to rN, each with a task of its own after Work.
class Silence : public CEngineTest {
protected:
    void Build(std::size_t uiRecorders) {
        std::vector<CStoredNode> nodes;
        for (std::size_t ui = 1; ui <= uiRecorders; ++ui) {
            nodes.push_back({"r" + std::to_string(ui), {"MeroRecord"}});
            m_all.push_back(Recorder(nodes.back().strId));
        }
        Store(nodes);
        Load();
        Settle();
    }

    void Work() {
        std::vector<CTestTask> tasks;
        for (const CContainerAddr& addr : m_all) {
            tasks.push_back({"of " + addr.GetNodeId(), 5});
        }
        ASSERT_EQ(Record(tasks).eFault, EFault::NONE);
        for (const CContainerAddr& addr : m_all) {
            ASSERT_EQ(NodeOf("of " + addr.GetNodeId()), addr.GetNodeId());
        }
        m_events.Clear();
    }

    /// The recorders from that one on.
    std::vector<CContainerAddr> From(std::size_t uiFirst) const {
        return {m_all.begin() + static_cast<std::ptrdiff_t>(uiFirst) - 1, m_all.end()};
    }

    /// The containers of the events of that kind; those of nodes have no type.
    std::vector<std::string> NodesOf(EEvent eEvent) {
        std::vector<std::string> nodes;
        for (const CEvent& event : m_events.Of(eEvent)) {
            if (!event.strType.empty()) {
                nodes.push_back(event.strNodeId);
            }
        }
        return nodes;
    }

    /// Falls silent and comes back.
    void Falter(const CContainerAddr& addr, const std::vector<CContainerAddr>& others) {
        PassReporting(91, others);
        ASSERT_FALSE(CContainerMgr::Instance().IsContainerOnline(addr));
        Must(ReportOf(addr));
    }

    std::vector<CContainerAddr> m_all;
};

TEST_F(Silence, ContainerIsSilentAfterNinetySecondsWithoutAReport) {
    Build(2);
    Pass(89);
    EXPECT_THAT(NodesOf(EEvent::OFFLINE), SizeIs(0));
    Pass(1);
    EXPECT_THAT(NodesOf(EEvent::OFFLINE), ElementsAre("r1", "r2"));
    EXPECT_FALSE(CContainerMgr::Instance().IsContainerOnline(Recorder("r1")));
    Must(ReportOf(Recorder("r1")));
    EXPECT_TRUE(CContainerMgr::Instance().IsContainerOnline(Recorder("r1")));
    EXPECT_THAT(NodesOf(EEvent::ONLINE), ElementsAre("r1"));
}

TEST_F(Silence, NodesOwnSilenceSetsItsFlagAndMovesNothing) {
    Build(2);
    Work();
    PassReporting(200, m_all);
    EXPECT_FALSE(CNodeMgr::Instance().IsNodeOnline("r1"));
    EXPECT_EQ(m_events.Count(EEvent::OFFLINE), 2U);
    EXPECT_THAT(NodesOf(EEvent::OFFLINE), SizeIs(0));
    EXPECT_EQ(NodeOf("of r1"), "r1");
    Must(CNodeReport{"r1", {}, {}});
    EXPECT_TRUE(CNodeMgr::Instance().IsNodeOnline("r1"));
    EXPECT_EQ(m_events.Count(EEvent::ONLINE), 1U);
}

TEST_F(Silence, ClockThatGoesBackRenewsReportTimes) {
    for (const int64_t iBack : {1, 3600}) {
        SCOPED_TRACE(iBack);
        m_all.clear();
        m_events.Clear();
        Restart();
        Build(2);
        Pass(80);
        m_iNow -= iBack;
        Pass(90);
        EXPECT_THAT(NodesOf(EEvent::OFFLINE), SizeIs(0));
        Pass(2);
        EXPECT_THAT(NodesOf(EEvent::OFFLINE), ElementsAre("r1", "r2"));
        EXPECT_EQ(m_events.Count(EEvent::SETTLING), 0U);
    }
}

TEST_F(Silence, TimeOfEventsNeverGoesBack) {
    Build(2);
    Pass(5);
    const int64_t iLast = m_iNow;
    m_iNow -= 1800;
    Record({{"a", 5}});
    EXPECT_EQ(m_events.Of(EEvent::PLACED).front().iTime, iLast);
    EXPECT_EQ(time(nullptr), iLast);
}

TEST_F(Silence, ReportThatIsOlderThanTheTickBeforeItIsNoClockThatWentBack) {
    Build(2);
    for (int i = 0; i < 91; ++i) {
        Pass(1);
        --m_iNow;
        Must(ReportOf(Recorder("r2")));
        ++m_iNow;
    }
    EXPECT_THAT(NodesOf(EEvent::OFFLINE), ElementsAre("r1"));
}

TEST_F(Silence, ClockThatIsSetRightAgainLeavesTheEngineWithIt) {
    Build(2);
    m_iNow -= 3600;
    Pass(5);
    m_iNow += 3600;
    Pass(1);
    m_events.Clear();
    Record({{"a", 5}});
    EXPECT_EQ(m_events.Of(EEvent::PLACED).front().iTime, m_iNow);
}

TEST_F(Silence, ManyThatFallSilentTogetherHoldTheirShifts) {
    Build(8);
    Work();
    PassReporting(300, From(4));
    const std::vector<CEvent> held = m_events.Of(EEvent::HELD);
    ASSERT_EQ(held.size(), 1U);
    EXPECT_EQ(held.front().strType, "MeroRecord");
    EXPECT_THAT(held.front().strCause, HasSubstr("3 of 8"));
    EXPECT_EQ(NodeOf("of r1"), "r1");
    EXPECT_EQ(m_events.Count(EEvent::SHIFTED), 0U);
}

TEST_F(Silence, ExactlyAThirdHoldsNothing) {
    Build(9);
    Work();
    PassReporting(100, From(4));
    EXPECT_EQ(m_events.Count(EEvent::HELD), 0U);
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_ENDED), 3U);
}

TEST_F(Silence, TwoAreTooFewToHold) {
    Build(3);
    Work();
    PassReporting(100, From(3));
    EXPECT_EQ(m_events.Count(EEvent::HELD), 0U);
    EXPECT_EQ(NodeOf("of r1"), "r3");
    EXPECT_EQ(NodeOf("of r2"), "r3");
}

TEST_F(Silence, ThoseThatFallSilentOneByOneAreNotHeld) {
    Build(6);
    Work();
    for (const std::size_t uiFrom : {2, 3, 4}) {
        PassReporting(92, From(uiFrom));
    }
    EXPECT_EQ(m_events.Count(EEvent::HELD), 0U);
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_ENDED), 3U);
}

TEST_F(Silence, HoldEndsWhenEnoughAreBack) {
    Build(8);
    Work();
    PassReporting(100, From(4));
    EXPECT_EQ(m_events.Count(EEvent::HELD), 1U);
    Must(ReportOf(Recorder("r1")));
    PassReporting(2, From(4));
    ASSERT_EQ(m_events.Count(EEvent::RELEASED), 1U);
    EXPECT_EQ(m_events.Of(EEvent::RELEASED).front().strCause, "enough are back");
    EXPECT_EQ(NodeOf("of r1"), "r1");
    EXPECT_NE(NodeOf("of r2"), "r2");
    EXPECT_NE(NodeOf("of r3"), "r3");
}

TEST_F(Silence, HoldEndsByAnOperatorsWord) {
    Build(8);
    Work();
    EXPECT_EQ(Do(CShiftAnyway{"MeroRecord"}).eFault, EFault::REFUSED_BY_RULE);
    PassReporting(100, From(4));
    Must(CShiftAnyway{"MeroRecord"});
    PassReporting(5, From(4));
    EXPECT_EQ(m_events.Of(EEvent::RELEASED).front().strCause, "an operator's word");
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_ENDED), 3U);
    PassReporting(100, From(4));
    EXPECT_EQ(m_events.Count(EEvent::HELD), 1U);
}

TEST_F(Silence, HoldEndsAfterTenSilenceTimes) {
    Build(8);
    Work();
    PassReporting(91, From(4));
    const std::vector<CEvent> held = m_events.Of(EEvent::HELD);
    ASSERT_EQ(held.size(), 1U);
    PassReporting(898, From(4));
    EXPECT_EQ(m_events.Count(EEvent::RELEASED), 0U);
    PassReporting(2, From(4));
    ASSERT_EQ(m_events.Count(EEvent::RELEASED), 1U);
    EXPECT_EQ(m_events.Of(EEvent::RELEASED).front().iTime, held.front().iTime + 900);
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_ENDED), 3U);
}

TEST_F(Silence, ContainerThatFellSilentTwiceGetsNothingNew) {
    Build(2);
    Work();
    const CContainerAddr bad = Recorder("r1");
    const std::vector<CContainerAddr> others{Recorder("r2")};
    Falter(bad, others);
    EXPECT_EQ(m_events.Count(EEvent::UNSTEADY), 0U);
    EXPECT_FALSE(AllContainers().at(bad).IsFaultShift());
    Falter(bad, others);
    EXPECT_THAT(NodesOf(EEvent::UNSTEADY), ElementsAre("r1"));
    EXPECT_TRUE(AllContainers().at(bad).IsFaultShift());
    EXPECT_TRUE(AllContainers().at(bad).IsOnline());
    Record({{"new", 5}});
    EXPECT_EQ(NodeOf("new"), "r2");
    const CAnswer why = Must(CExplain{"MeroRecord", "new"});
    EXPECT_EQ(why.reasons[0].strReason, "fell silent twice, and has to stay for a while");

    PassReporting(899, m_all);
    EXPECT_EQ(m_events.Count(EEvent::STEADY), 0U);
    PassReporting(1, m_all);
    EXPECT_THAT(NodesOf(EEvent::STEADY), ElementsAre("r1"));
    EXPECT_FALSE(AllContainers().at(bad).IsFaultShift());
    Record({{"newer", 5}});
    EXPECT_EQ(NodeOf("newer"), "r1");
}

TEST_F(Silence, UnsteadyContainerKeepsWhatIsItsOwn) {
    Build(2);
    Record({{"a", 5, false}});
    const CContainerAddr bad = Recorder(NodeOf("a"));
    const std::vector<CContainerAddr> others{Recorder(NodeOf("a") == "r1" ? "r2" : "r1")};
    Falter(bad, others);
    Falter(bad, others);
    CContainerReport empty = ReportOf(bad);
    empty.tasks->clear();
    EXPECT_THAT(Must(empty).takeUp, SizeIs(1));
    EXPECT_THAT(TasksOf(bad), ElementsAre("a"));
}

TEST_F(Silence, AnotherSilenceBeginsTheTimeAnew) {
    Build(2);
    const CContainerAddr bad = Recorder("r1");
    const std::vector<CContainerAddr> others{Recorder("r2")};
    Falter(bad, others);
    Falter(bad, others);
    PassReporting(750, m_all);
    Falter(bad, others);
    EXPECT_EQ(m_events.Count(EEvent::UNSTEADY), 2U);
    PassReporting(890, m_all);
    EXPECT_EQ(m_events.Count(EEvent::STEADY), 0U);
    EXPECT_TRUE(AllContainers().at(bad).IsFaultShift());
    PassReporting(10, m_all);
    EXPECT_EQ(m_events.Count(EEvent::STEADY), 1U);
}

TEST_F(Silence, SilencesFarApartAreForgotten) {
    Build(2);
    const std::vector<CContainerAddr> others{Recorder("r2")};
    Falter(Recorder("r1"), others);
    PassReporting(900, m_all);
    Falter(Recorder("r1"), others);
    EXPECT_EQ(m_events.Count(EEvent::UNSTEADY), 0U);
}

TEST_F(Silence, ImageDevicesReportDoesNotEndTheMarkOfAnUnsteadyOne) {
    const CContainerAddr device("r1", "MeroImgDev");
    Store({{"r1", {"MeroImgDev"}}, {"r2", {"MeroRecord"}}});
    Load();
    Settle();
    const std::vector<CContainerAddr> others{Recorder("r2")};
    Falter(device, others);
    Falter(device, others);
    CContainerReport report = ReportOf(device);
    report.tasks->emplace_back().strTaskId = "own";
    Must(report);
    EXPECT_TRUE(AllContainers().at(device).IsFaultShift());
}

}  // namespace
