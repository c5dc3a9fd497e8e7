#include "cluster_engine/scripted_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class Explained : public CScriptedTest {
protected:
    CAnswer Ask(const std::string& strTaskId) { return Do(CExplain{PSZ_SCRIPTED_TYPE, strTaskId}); }

    /// What is said of each container, in the order of the nodes.
    std::vector<std::string> Reasons(const std::string& strTaskId) {
        std::vector<std::string> reasons;
        for (const CReason& reason : Ask(strTaskId).reasons) {
            reasons.push_back(reason.bPossible ? "possible" : reason.strReason);
        }
        return reasons;
    }

    std::vector<std::string> History(const std::string& strTaskId) {
        std::vector<std::string> history;
        for (const CDecision& decision : Ask(strTaskId).decisions) {
            history.push_back(decision.strBy + " " + decision.strNodeId + " " +
                              std::to_string(decision.ullDecision) + ": " + decision.strWhy);
        }
        return history;
    }
};

TEST_F(Explained, EachContainerOfTheTypeAndWhyNot) {
    Place({{"a"}});
    EXPECT_THAT(Reasons("a"), ElementsAre("possible", "possible", "possible"));
    CContainerReport stopped = ReportOf(Scripted("n1"));
    stopped.processes = {{"worker", 1 + PROCESS_STATE_RUNNING}};
    Must(stopped);
    Must(CMemberStatus{{"n2"}, EMemberStatus::REMOVED});
    PassReporting(91, {Scripted("n1"), Scripted("n2")});
    EXPECT_THAT(Reasons("a"),
                ElementsAre("a process does not run", "not a normal member", "silent"));
}

TEST_F(Explained, PlugInsReasonsStandBehindTheEnginesOwn) {
    Place({{"a"}});
    Must(CMemberStatus{{"n2"}, EMemberStatus::REMOVED});
    Script().explain = [](std::list<CPlacementReason>& reasons) {
        reasons = {{Scripted("n1"), false, "no licence"},
                   {Scripted("n2"), false, "no licence"},
                   {Scripted("n3"), true, ""}};
    };
    EXPECT_THAT(Reasons("a"), ElementsAre("no licence", "not a normal member", "possible"));
}

TEST_F(Explained, PlugInThatFailsLeavesTheEnginesReasons) {
    Place({{"a"}});
    Script().explain = [](auto&) { throw 17; };
    EXPECT_THAT(Reasons("a"), SizeIs(3));
    EXPECT_EQ(m_events.Count(EEvent::PLUGIN_FAILED), 1U);
}

TEST_F(Explained, DecisionsAreToldTheNewestFirst) {
    Place({{"a"}});
    PassReporting(91, {Scripted("n2"), Scripted("n3")});
    EXPECT_THAT(History("a"),
                ElementsAre("fault shift n2 2: its container is silent", "job n1 1: asked by n1"));
    EXPECT_EQ(Ask("a").decisions[1].iTime, NUMERIC_START + 1);
    Must(CEndTasks{PSZ_SCRIPTED_TYPE, {"a"}});
    EXPECT_EQ(History("a")[0], "end of tasks  0: asked for");
    EXPECT_THAT(Ask("a").reasons, IsEmpty());
}

TEST_F(Explained, RefusalIsADecisionToo) {
    Script().schedule = [](const auto&, auto&, auto&) { return static_cast<int>(ORVA_FAIL); };
    Place({{"a"}});
    EXPECT_THAT(History("a"), ElementsAre("job  0: no room"));
}

TEST_F(Explained, LastTenDecisionsAreKept) {
    Script().schedule = [](const auto&, auto&, auto&) { return static_cast<int>(ORVA_FAIL); };
    for (int i = 0; i < 12; ++i) {
        Place({{"a"}});
        Pass(1);
    }
    const std::vector<CDecision> decisions = Ask("a").decisions;
    ASSERT_THAT(decisions, SizeIs(10));
    EXPECT_EQ(decisions.front().iTime, m_iNow - 1);
    EXPECT_EQ(decisions.back().iTime, m_iNow - 10);
}

TEST_F(Explained, TasksThatAreGoneAreForgottenInTheEnd) {
    m_settings.uiEndedKept = 2;
    Restart();
    Settle();
    Place({{"lives"}, {"a"}, {"b"}, {"c"}});
    Must(CEndTasks{PSZ_SCRIPTED_TYPE, {"a", "b", "c"}});
    EXPECT_EQ(Ask("a").eFault, EFault::UNKNOWN_TASK);
    EXPECT_THAT(History("b"), SizeIs(2));
    EXPECT_THAT(History("c"), SizeIs(2));
    EXPECT_THAT(History("lives"), SizeIs(1));
}

TEST_F(Explained, TaskThatNobodyKnowsIsRefused) {
    EXPECT_EQ(Ask("a").eFault, EFault::UNKNOWN_TASK);
}

TEST_F(Explained, NothingChanges) {
    Place({{"a"}});
    const auto before = Texts();
    Ask("a");
    EXPECT_EQ(Texts(), before);
    EXPECT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(), 1U);
}

}  // namespace
