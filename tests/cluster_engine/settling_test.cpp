#include "cluster_engine/engine_fixture.h"

namespace {

using ::testing::HasSubstr;

class Settling : public CEngineTest {
protected:
    Settling() {
        Store({{"r1", {"MeroRecord"}}, {"r2", {"MeroRecord"}}, {"r3", {"MeroRecord"}}});
        Load();
    }

    const std::vector<CContainerAddr> m_all{Recorder("r1"), Recorder("r2"), Recorder("r3")};
};

TEST_F(Settling, EndsWhenEveryContainerHasReported) {
    Must(ReportOf(Recorder("r1")));
    Must(ReportOf(Recorder("r2")));
    Pass(5);
    EXPECT_EQ(m_events.Count(EEvent::SETTLED), 0U);
    EXPECT_EQ(Do(CBalanceNow()).eFault, EFault::REFUSED_BY_RULE);
    Must(ReportOf(Recorder("r3")));
    Pass(1);
    EXPECT_EQ(m_events.Count(EEvent::SETTLED), 1U);
    Must(CBalanceNow());
}

TEST_F(Settling, NodesNeedNotReport) {
    for (const CContainerAddr& addr : m_all) {
        Must(ReportOf(addr));
    }
    Pass(1);
    EXPECT_EQ(m_events.Count(EEvent::SETTLED), 1U);
}

TEST_F(Settling, WhoDoesNotReportIsSilentThenAndShifted) {
    Settle();
    Record({{"a", 5}});
    const CContainerAddr holder = Recorder(NodeOf("a"));
    Restart();
    std::vector<CContainerAddr> others(m_all);
    others.erase(std::find(others.begin(), others.end(), holder));
    PassReporting(90, others);
    EXPECT_EQ(m_events.Count(EEvent::SETTLED), 0U);
    EXPECT_EQ(NodeOf("a"), holder.GetNodeId());
    PassReporting(1, others);
    EXPECT_EQ(m_events.Count(EEvent::SETTLED), 1U);
    EXPECT_NE(NodeOf("a"), holder.GetNodeId());
}

TEST_F(Settling, TicksFarApartBeginItAnew) {
    Settle();
    Record({{"a", 5}, {"b", 5}, {"c", 5}});
    m_events.Clear();
    m_iNow += 299;
    Pass(1);
    ASSERT_EQ(m_events.Count(EEvent::SETTLING), 1U);
    EXPECT_THAT(m_events.Of(EEvent::SETTLING).front().strCause, HasSubstr("300 seconds"));
    EXPECT_EQ(m_events.Count(EEvent::OFFLINE), 0U);
    EXPECT_EQ(Do(CBalanceNow()).eFault, EFault::REFUSED_BY_RULE);
    PassReporting(11, m_all);
    EXPECT_EQ(m_events.Count(EEvent::SETTLED), 1U);
    EXPECT_EQ(NodeOf("a"), "r1");
}

TEST_F(Settling, RefusedReportsBeginItAnew) {
    Settle();
    m_events.Clear();
    PassReporting(85, {Recorder("r1")});
    Do(CTick{true});
    ASSERT_EQ(m_events.Count(EEvent::SETTLING), 1U);
    EXPECT_EQ(m_events.Of(EEvent::SETTLING).front().strCause, "reports were refused");
    PassReporting(80, {Recorder("r1")});
    EXPECT_EQ(m_events.Count(EEvent::OFFLINE), 0U) << "they may have spoken, and count as heard";
}

TEST_F(Settling, TenSecondsBetweenTicksAreNoGap) {
    Settle();
    m_iNow += 9;
    Pass(1);
    EXPECT_EQ(m_events.Count(EEvent::SETTLING), 0U);
    m_iNow += 10;
    Pass(1);
    EXPECT_EQ(m_events.Count(EEvent::SETTLING), 1U);
}

TEST_F(Settling, TicksMinutesApartNeverMoveAnything) {
    Settle();
    Record({{"a", 5}});
    for (int i = 0; i < 20; ++i) {
        m_iNow += 180;
        Pass(1);
    }
    EXPECT_EQ(NodeOf("a"), "r1");
    EXPECT_EQ(m_events.Count(EEvent::OFFLINE), 0U);
}

TEST_F(Settling, JumpForwardShowsAlsoWhenReportsComeBeforeTheTick) {
    Settle();
    m_iNow += 3600;
    Must(ReportOf(Recorder("r1")));
    Pass(1);
    EXPECT_EQ(m_events.Count(EEvent::SETTLING), 1U);
    EXPECT_EQ(m_events.Count(EEvent::OFFLINE), 0U);
}

}  // namespace
