#include <stdexcept>

#include "cluster_engine/scripted_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class PluginGate : public CScriptedTest {
protected:
    /// Lets the plug-in put every task there.
    void PlaceInto(const CContainerAddr& addr) {
        Script().schedule = [addr](const std::list<CResourceTask>& tasks, CTaskContainerMap& bound,
                                   unsigned long long& ullDecision) {
            for (const CResourceTask& task : tasks) {
                bound.emplace(task.GetTaskId(), addr);
            }
            return CScheduleMgr::Instance().IncreaseDecisionVerNum(ullDecision);
        };
    }

    void Throw() {
        Script().schedule = [](const auto&, auto&, auto&) -> int {
            throw std::runtime_error("broken");
        };
    }

    std::string CauseOf(EEvent eEvent) {
        const std::vector<CEvent> events = m_events.Of(eEvent);
        return events.size() == 1 ? events.front().strCause
                                  : std::to_string(events.size()) + " events";
    }

    CReadmit m_readmit{"scripted"};
};

TEST_F(PluginGate, WhatIsThrownIsANamedError) {
    Throw();
    const CAnswer answer = Place({{"a"}});
    EXPECT_EQ(answer.eFault, EFault::PLUGIN_FAILED);
    EXPECT_EQ(answer.strAbout, "TaskSchedule: it threw: broken");
    EXPECT_EQ(CauseOf(EEvent::PLUGIN_FAILED), "scripted: TaskSchedule: it threw: broken");
    EXPECT_EQ(NodeOf("a"), "");
    Script().schedule = nullptr;
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::NONE);
}

TEST_F(PluginGate, WhatIsThrownNeedNotBeAnException) {
    Script().schedule = [](const auto&, auto&, auto&) -> int { throw 17; };
    EXPECT_EQ(Place({{"a"}}).strAbout,
              "TaskSchedule: it threw: something that is no std::exception");
}

TEST_F(PluginGate, ContainerThatIsNotThereIsAFailure) {
    PlaceInto(Scripted("n9"));
    const CAnswer answer = Place({{"a"}});
    EXPECT_EQ(answer.eFault, EFault::PLUGIN_FAILED);
    EXPECT_THAT(answer.strAbout, HasSubstr("the container n9 Scripted, which is not there"));
}

TEST_F(PluginGate, ContainerOfAForeignTypeIsAFailure) {
    CContainer foreign;
    foreign.SetNodeId("n1");
    foreign.SetContainerType("Foreign");
    CContainerMgr::Instance().AddContainer({{{"n1", "Foreign"}, foreign}});
    PlaceInto({"n1", "Foreign"});
    EXPECT_THAT(Place({{"a"}}).strAbout, HasSubstr("n1 Foreign, which is not of its types"));
}

TEST_F(PluginGate, ContainerThatMayNotGetWorkIsNoPlacement) {
    PassReporting(100, {Scripted("n1"), Scripted("n2")});
    PlaceInto(Scripted("n3"));
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::NO_ROOM);
    CContainerReport stopped = ReportOf(Scripted("n2"));
    stopped.processes = {{"worker", 1 + PROCESS_STATE_RUNNING}};
    Must(stopped);
    PlaceInto(Scripted("n2"));
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::NO_ROOM);
    EXPECT_EQ(m_events.Count(EEvent::PLUGIN_FAILED), 0U);
}

TEST_F(PluginGate, TaskThatNobodyAskedAboutIsIgnored) {
    Place({{"mine"}});
    Script().schedule = [](const auto&, CTaskContainerMap& bound, unsigned long long& ullDecision) {
        bound = {{"a", Scripted("n2")}, {"mine", Scripted("n2")}, {"invented", Scripted("n2")}};
        return CScheduleMgr::Instance().IncreaseDecisionVerNum(ullDecision);
    };
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::NONE);
    EXPECT_THAT(TasksOf(Scripted("n2")), ElementsAre("a"));
    EXPECT_THAT(TasksOf(Scripted("n1")), ElementsAre("mine"));
}

TEST_F(PluginGate, CodeIsAnAnswerAndWhatItBoundCounts) {
    Script().schedule = [](const auto&, CTaskContainerMap& bound, unsigned long long& ullDecision) {
        bound = {{"a", Scripted("n2")}};
        CScheduleMgr::Instance().IncreaseDecisionVerNum(ullDecision);
        return static_cast<int>(ORVA_SYS_NO_SUPPORT);
    };
    for (int i = 0; i < 4; ++i) {
        const CAnswer answer = Place({{"a"}, {"b"}});
        EXPECT_EQ(answer.eFault, EFault::NONE);
        EXPECT_TRUE(answer.bInPart);
    }
    EXPECT_EQ(NodeOf("a"), "n2");
    EXPECT_EQ(m_events.Count(EEvent::PLUGIN_OUT), 0U);
}

TEST_F(PluginGate, ThreeFailuresInARowTakeAPlugInOut) {
    Throw();
    Place({{"a"}});
    Place({{"a"}});
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::PLUGIN_FAILED);
    EXPECT_EQ(CauseOf(EEvent::PLUGIN_OUT), "scripted: TaskSchedule: it threw: broken");
    const int iCalls = Calls("PrivateTaskToResourceTask");
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::PLUGIN_OUT_OF_SERVICE);
    EXPECT_EQ(Calls("PrivateTaskToResourceTask"), iCalls);
}

TEST_F(PluginGate, LiesAreFailuresToo) {
    PlaceInto(Scripted("n9"));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Place({{"a"}}).eFault, EFault::PLUGIN_FAILED);
    }
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::PLUGIN_OUT_OF_SERVICE);
}

TEST_F(PluginGate, CallThatGoesWellBeginsTheRowAnew) {
    for (int i = 0; i < 3; ++i) {
        Throw();
        Place({{"a"}});
        Place({{"a"}});
        Script().schedule = nullptr;
        EXPECT_EQ(Place({{"b" + std::to_string(i)}}).eFault, EFault::NONE);
    }
}

TEST_F(PluginGate, TasksOfAPlugInThatIsOutStay) {
    Place({{"a"}});
    Throw();
    for (int i = 0; i < 3; ++i) {
        Place({{"b"}});
    }
    EXPECT_EQ(NodeOf("a"), "n1");
    EXPECT_THAT(Must(ReportOf(Scripted("n1"))).drop, IsEmpty());
}

TEST_F(PluginGate, ReadmittedPlugInServesAgain) {
    Throw();
    for (int i = 0; i < 3; ++i) {
        Place({{"a"}});
    }
    Script().schedule = nullptr;
    Must(m_readmit);
    EXPECT_EQ(CauseOf(EEvent::PLUGIN_READMITTED), "scripted");
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::NONE);
    EXPECT_EQ(Do(CReadmit{"nobody"}).eFault, EFault::UNKNOWN_PLUGIN);
}

TEST_F(PluginGate, LateCallTakesAPlugInOutUntilItIsBack) {
    m_runner.MakeLate(2);
    const CAnswer answer = Place({{"a"}});
    EXPECT_EQ(answer.eFault, EFault::PLUGIN_FAILED);
    EXPECT_EQ(answer.strAbout, "TaskSchedule: it has not come back");
    EXPECT_EQ(m_events.Count(EEvent::PLUGIN_OUT), 1U);
    EXPECT_EQ(Do(m_readmit).eFault, EFault::PLUGIN_BUSY);
    m_runner.FinishLate();
    EXPECT_EQ(NodeOf("a"), "");
    Must(m_readmit);
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::NONE);
}

TEST_F(PluginGate, WhatALateCallChangesIsSetBackWhenItIsReadmitted) {
    Place({{"a"}});
    Script().schedule = [](const auto&, auto&, auto&) {
        CContainerMgr::Instance().RemoveResourceTask(Scripted("n1"), {"a"});
        return static_cast<int>(ORVA_FAIL);
    };
    m_runner.MakeLate(2);
    Place({{"b"}});
    m_runner.FinishLate();
    EXPECT_EQ(NodeOf("a"), "");
    Must(m_readmit);
    EXPECT_EQ(NodeOf("a"), "n1");
}

TEST_F(PluginGate, TablesAreSetBackAfterAFailure) {
    Place({{"a", 5}});
    Must(ReportOf(Scripted("n1")));
    const int iDisk = AllContainers().at(Scripted("n1")).GetTaskTotalDisk();
    Script().schedule = [](const std::list<CResourceTask>& tasks, auto&, auto&) -> int {
        CContainerMgr& containers = CContainerMgr::Instance();
        containers.RemoveResourceTask(Scripted("n1"), {"a"});
        containers.AddResourceTask(Scripted("n1"), tasks);
        containers.SetContainerOnline(Scripted("n1"), false);
        containers.SetContainerFaultShift(Scripted("n1"), true);
        containers.SetContainerDoingFaultShift(Scripted("n1"), true);
        containers.RemoveContainer(Scripted("n2"));
        throw std::runtime_error("after the tables");
    };
    Place({{"b", 7}});
    const ContainerMap containers = AllContainers();
    const CContainer& container = containers.at(Scripted("n1"));
    EXPECT_THAT(TasksOf(Scripted("n1")), ElementsAre("a"));
    EXPECT_TRUE(container.IsOnline());
    EXPECT_FALSE(container.IsFaultShift());
    EXPECT_FALSE(container.GetFaultStatus());
    EXPECT_EQ(container.GetTaskTotalDisk(), iDisk);
    EXPECT_EQ(containers.count(Scripted("n2")), 1U);
}

TEST_F(PluginGate, WhatAPlugInChangesDuringADryRunIsSetBack) {
    Script().schedule = [](const std::list<CResourceTask>& tasks, auto&, auto&) {
        CContainerMgr::Instance().AddResourceTask(Scripted("n1"), tasks);
        return static_cast<int>(ORVA_SUCCEED);
    };
    CDryRun dry;
    dry.strNodeId = "n1";
    dry.uiJobType = NUMERIC_SCRIPTED_JOB;
    dry.strXml = JobXml({{"a"}});
    Do(dry);
    EXPECT_THAT(TasksOf(Scripted("n1")), IsEmpty());
}

TEST_F(PluginGate, StoreThatFailsWithinACallIsNoFailureOfThePlugIn) {
    for (int i = 0; i < 4; ++i) {
        m_pStore->FailCall(1, 99);
        const CAnswer answer = Place({{"a"}});
        EXPECT_EQ(answer.eFault, EFault::STORE_FAILED);
        EXPECT_EQ(NodeOf("a"), "");
    }
    EXPECT_EQ(m_events.Count(EEvent::STORE_FAILED), 4U);
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::NONE);
}

TEST_F(PluginGate, PlugInThatThrowsSinceTheStoreFailsIsNotBlamed) {
    Script().schedule = [](const auto&, auto&, unsigned long long& ullDecision) -> int {
        if (CScheduleMgr::Instance().IncreaseDecisionVerNum(ullDecision) != ORVA_SUCCEED) {
            throw std::runtime_error("no number");
        }
        return ORVA_FAIL;
    };
    for (int i = 0; i < 4; ++i) {
        m_pStore->FailCall(1, 99);
        EXPECT_EQ(Place({{"a"}}).eFault, EFault::STORE_FAILED);
    }
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::NO_ROOM);
}

TEST_F(PluginGate, MovesAreNotCarriedOutWhenThePlugInDoesNotTakeThemIn) {
    Place({{"a"}});
    Script().shiftIn = [] {
        CContainerMgr::Instance().RemoveResourceTask(Scripted("n1"), {"a"});
        return false;
    };
    PassReporting(100, {Scripted("n2"), Scripted("n3")});
    EXPECT_EQ(NodeOf("a"), "n1");
    EXPECT_EQ(m_events.Count(EEvent::SHIFTED), 0U);
    Script().shiftIn = nullptr;
    PassReporting(20, {Scripted("n2"), Scripted("n3")});
    EXPECT_EQ(NodeOf("a"), "n2");
}

TEST_F(PluginGate, BalanceFromAContainerThatLacksTheTaskIsIgnored) {
    Place({{"a"}, {"b"}});
    Script().balance = [](std::list<CResourceTask>& tasks, CTaskContainerMap& from,
                          CTaskContainerMap& to) {
        for (const char* pszId : {"a", "b", "c"}) {
            tasks.emplace_back().SetTaskId(pszId);
        }
        from = {{"a", Scripted("n2")}, {"b", Scripted("n1")}, {"c", Scripted("n1")}};
        to = {{"a", Scripted("n3")}, {"b", Scripted("n3")}, {"c", Scripted("n3")}};
        return static_cast<int>(ORVA_SUCCEED);
    };
    Must(CBalanceNow());
    EXPECT_THAT(TasksOf(Scripted("n1")), ElementsAre("a"));
    EXPECT_THAT(TasksOf(Scripted("n3")), ElementsAre("b"));
}

TEST_F(PluginGate, DecisionNumberThatMovesWhileNoCallRunsIsNoticed) {
    unsigned long long ullDecision = 0;
    CScheduleMgr::Instance().IncreaseDecisionVerNum(ullDecision);
    Pass(2);
    const std::vector<CEvent> events = m_events.Of(EEvent::DECISION_MOVED);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events.front().ullDecision, 1U);
    Place({{"a"}});
    Pass(1);
    EXPECT_EQ(m_events.Count(EEvent::DECISION_MOVED), 1U);
}

TEST_F(PluginGate, PlacementBearsAHigherNumberThanAnyBefore) {
    EXPECT_EQ(Place({{"a"}}).tasks[0].ullDecision, 1U);
    Script().schedule = [](const auto&, CTaskContainerMap& bound, unsigned long long& ullDecision) {
        bound = {{"b", Scripted("n2")}};
        ullDecision = 1;
        return static_cast<int>(ORVA_SUCCEED);
    };
    EXPECT_EQ(Place({{"b"}}).tasks[0].ullDecision, 2U);
}

}  // namespace
