#include "cluster_engine/scripted_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

/// The scripted plug-in moves every task of n1 to n2.
class LoadBalance : public CScriptedTest {
protected:
    LoadBalance() {
        Configuration({true, true, false});
        Script().balance = [](std::list<CResourceTask>& tasks, CTaskContainerMap& from,
                              CTaskContainerMap& to) {
            CContainerMgr::Instance().GetResTaskList(Scripted("n1"), tasks);
            for (const CResourceTask& task : tasks) {
                from.emplace(task.GetTaskId(), Scripted("n1"));
                to.emplace(task.GetTaskId(), Scripted("n2"));
            }
            return static_cast<int>(ORVA_SUCCEED);
        };
    }

    void Configuration(const CTestConfiguration& configuration) {
        m_pStore->Put(Path("/ClusterConfig"), ConfigurationText(configuration));
        Must(CDocumentChanged{EDocument::CONFIGURATION});
    }

    int Asked() { return Calls("LoadBalanceSchedule"); }
};

TEST_F(LoadBalance, PlugInIsAskedOnceAPeriod) {
    Place({{"a"}});
    PassReporting(299, AllScripted());
    EXPECT_EQ(Asked(), 0);
    PassReporting(1, AllScripted());
    EXPECT_EQ(Asked(), 1);
    EXPECT_EQ(NodeOf("a"), "n2");
    const std::vector<CEvent> balanced = m_events.Of(EEvent::BALANCED);
    ASSERT_THAT(balanced, SizeIs(1));
    EXPECT_EQ(balanced[0].strTaskId, "a");
    EXPECT_EQ(balanced[0].strFrom, "n1");
    PassReporting(600, AllScripted());
    EXPECT_EQ(Asked(), 3);
}

TEST_F(LoadBalance, FirstMovesAloneAreCarriedOut) {
    std::vector<CTestTask> tasks;
    for (int i = 10; i < 25; ++i) {
        tasks.push_back({"t" + std::to_string(i)});
    }
    Place(tasks);
    Must(CBalanceNow());
    EXPECT_THAT(TasksOf(Scripted("n1")), ElementsAre("t20", "t21", "t22", "t23", "t24"));
    EXPECT_THAT(TasksOf(Scripted("n2")), SizeIs(10));
}

TEST_F(LoadBalance, OnePeriodIsOneAfterEachStartAndEachChangeOfTheDocument) {
    Configuration({true, true, true});
    PassReporting(1000, AllScripted());
    EXPECT_EQ(Asked(), 1);
    EXPECT_EQ(m_events.Count(EEvent::BALANCED_ONCE), 1U);
    Configuration({true, true, true});
    PassReporting(1000, AllScripted());
    EXPECT_EQ(Asked(), 2);
    EXPECT_EQ(m_events.Count(EEvent::BALANCED_ONCE), 2U);
    Restart();
    Settle();
    PassReporting(1000, AllScripted());
    EXPECT_EQ(Asked(), 3);
    EXPECT_EQ(m_pStore->Get(Path("/ClusterConfig")), ConfigurationText({true, true, true}));
}

TEST_F(LoadBalance, ConfigurationForbidsIt) {
    Configuration({false, true, false});
    Place({{"a"}});
    PassReporting(700, AllScripted());
    EXPECT_EQ(Asked(), 0);
    Must(CBalanceNow());
    EXPECT_EQ(NodeOf("a"), "n2");
}

TEST_F(LoadBalance, TaskThatMayNotMoveStays) {
    Place({{"a", 1, false}, {"b"}});
    Must(CBalanceNow());
    EXPECT_EQ(NodeOf("a"), "n1");
    EXPECT_EQ(NodeOf("b"), "n2");
}

TEST_F(LoadBalance, AdoptedTaskWithoutAFlagStays) {
    CContainerReport report = ReportOf(Scripted("n1"));
    report.tasks->emplace_back().strTaskId = "found";
    report.tasks->emplace_back().strTaskId = "movable";
    report.tasks->back().movable = true;
    Must(report);
    ASSERT_THAT(TasksOf(Scripted("n1")), ElementsAre("found", "movable"));
    Must(CBalanceNow());
    EXPECT_EQ(NodeOf("found"), "n1");
    EXPECT_EQ(NodeOf("movable"), "n2");
}

TEST_F(LoadBalance, NothingIsMovedIntoAContainerThatMayNotGetWork) {
    Place({{"a"}});
    PassReporting(91, {Scripted("n1"), Scripted("n3")});
    Must(CBalanceNow());
    EXPECT_EQ(NodeOf("a"), "n1");
    EXPECT_EQ(m_events.Count(EEvent::PLUGIN_FAILED), 0U);
}

TEST_F(LoadBalance, TypeForWhichATaskWaitsIsNotBalanced) {
    Script().schedule = [](const auto&, CTaskContainerMap& bound, unsigned long long& ullDecision) {
        bound = {{"waits", Scripted("n3")}};
        return CScheduleMgr::Instance().IncreaseDecisionVerNum(ullDecision);
    };
    Place({{"waits"}});
    Script().schedule = nullptr;
    Place({{"a"}});
    Script().schedule = [](const auto&, auto&, auto&) { return static_cast<int>(ORVA_FAIL); };
    PassReporting(400, {Scripted("n1"), Scripted("n2")});
    ASSERT_EQ(m_events.Count(EEvent::WAITS_FOR_ROOM), 1U);
    EXPECT_EQ(Do(CBalanceNow()).eFault, EFault::REFUSED_BY_RULE);
    EXPECT_EQ(Asked(), 0);
    EXPECT_EQ(NodeOf("a"), "n1");
    Must(CEndTasks{PSZ_SCRIPTED_TYPE, {"waits"}});
    Pass(1);
    Must(CBalanceNow());
    EXPECT_EQ(NodeOf("a"), "n2");
}

TEST_F(LoadBalance, FailureIsTheAnswerOfBalanceNow) {
    Script().balance = [](auto&, auto&, auto&) -> int { throw 17; };
    EXPECT_EQ(Do(CBalanceNow()).eFault, EFault::PLUGIN_FAILED);
}

TEST_F(LoadBalance, ContainerThatIsNotThereIsAFailure) {
    Script().balance = [](std::list<CResourceTask>& tasks, CTaskContainerMap& from,
                          CTaskContainerMap& to) {
        tasks.emplace_back().SetTaskId("a");
        from = {{"a", Scripted("n1")}};
        to = {{"a", Scripted("n9")}};
        return static_cast<int>(ORVA_SUCCEED);
    };
    EXPECT_EQ(Do(CBalanceNow()).eFault, EFault::PLUGIN_FAILED);
}

}  // namespace
