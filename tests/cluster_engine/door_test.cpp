#include "cluster_engine/engine_fixture.h"

namespace {

/// What is refused has a name and leaves the cluster and the store as they were.
class Door : public CEngineTest {
protected:
    Door() {
        m_settings.uiTasksPerJob = 100;
        m_settings.uiListLength = 100;
        m_pEngine = std::make_unique<CClusterEngine>(
            CEngineHost{m_events, m_runner, m_clock, *m_pGate}, m_settings);
        Store({{"n1", {"MeroRecord"}}, {"n2", {"MeroRecord"}}});
        Load();
        Settle();
        Record({{"a", 5}, {"b", 5}, {"stays", 5, false}});
    }

    void Refuse(const InputBody& body, EFault eFault, const std::string& strAbout) {
        const auto texts = Texts();
        const std::vector<std::string> first = TasksOf(Recorder("n1"));
        const std::vector<std::string> second = TasksOf(Recorder("n2"));
        const unsigned long long ullDecision = CScheduleMgr::Instance().GetDecisionVerNum();
        const CAnswer answer = Do(body);
        EXPECT_EQ(TextOf(answer.eFault).pszName, std::string(TextOf(eFault).pszName)) << strAbout;
        EXPECT_EQ(answer.strAbout, strAbout);
        EXPECT_EQ(Texts(), texts) << strAbout;
        EXPECT_EQ(TasksOf(Recorder("n1")), first) << strAbout;
        EXPECT_EQ(TasksOf(Recorder("n2")), second) << strAbout;
        EXPECT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(), ullDecision) << strAbout;
    }

    void RefuseJob(const std::string& strXml, EFault eFault, const std::string& strAbout) {
        Refuse(CJob{{"n1", 1001, strXml}}, eFault, strAbout);
        Refuse(CDryRun{{"n1", 1001, strXml}}, eFault, strAbout);
    }

    /// The fault of the only task of a move.
    std::string FaultOfMove(const CManualMove& move) {
        const CAnswer answer = Do(CManualShift{"MeroRecord", {move}});
        EXPECT_EQ(answer.eFault, EFault::REFUSED_BY_RULE);
        EXPECT_EQ(answer.strAbout, move.strTaskId + ": " + answer.tasks.at(0).strFault);
        return answer.tasks.at(0).strFault;
    }
};

TEST_F(Door, JobsThatAreNoneAreNamed) {
    RefuseJob("", EFault::BAD_INPUT, "xml: is no well-formed XML");
    RefuseJob("<TaskList><Task>", EFault::BAD_INPUT, "xml: is no well-formed XML");
    RefuseJob(JobXml({{"c", 5}}) + std::string(1, '\0'), EFault::BAD_INPUT, "xml: has a zero byte");
    RefuseJob("<Other/>", EFault::BAD_INPUT, "xml: the plug-in cannot read it");
    RefuseJob(JobXml({{"c", 5}, {"c", 5}}), EFault::BAD_INPUT, "xml: the plug-in cannot read it");
    RefuseJob(JobXml({{std::string(129, 'c'), 5}}), EFault::BAD_INPUT,
              "xml: a task id is none: 1 to 128 printable bytes");
    RefuseJob(JobXml({{"a&#9;b", 5}}), EFault::BAD_INPUT,
              "xml: a task id is none: 1 to 128 printable bytes");
    RefuseJob(JobXml({{"c", 5, true, std::string(20000, 'n')}}), EFault::BAD_INPUT,
              "xml: a task is too large: c");
}

TEST_F(Door, JobsOfNobodyAreNamed) {
    Refuse(CJob{{"n9", 1001, JobXml({{"c", 5}})}}, EFault::UNKNOWN_NODE, "n9");
    Refuse(CJob{{"n1", 77, JobXml({{"c", 5}})}}, EFault::NO_PLUGIN, "job type 77");
}

TEST_F(Door, AMillionTasksAreTooMany) {
    std::vector<CTestTask> tasks;
    for (int i = 0; i < 1000000; ++i) {
        tasks.push_back({std::to_string(i), 1});
    }
    const std::string strXml = JobXml(tasks);
    Refuse(CJob{{"n1", 1001, strXml}}, EFault::TOO_MUCH, "xml");
    tasks.resize(101);
    RefuseJob(JobXml(tasks), EFault::TOO_MUCH, "101 tasks");
}

TEST_F(Door, EndsOfTasksThatAreNoneAreNamed) {
    Refuse(CEndTasks{"MeroRecord", {"x"}}, EFault::UNKNOWN_TASK, "");
    Refuse(CEndTasks{"Else", {"a"}}, EFault::UNKNOWN_TASK, "");
    EXPECT_FALSE(Do(CEndTasks{"MeroRecord", {"x", "y"}}).bInPart) << "nothing holds";
    Refuse(CEndTasks{"MeroRecord", {"a", "a"}}, EFault::BAD_INPUT, "tasks: one stands twice");
    Refuse(CEndTasks{"MeroRecord", std::vector<std::string>(101, "a")}, EFault::TOO_MUCH, "tasks");
    const CAnswer answer = Must(CEndTasks{"MeroRecord", {"a", "x"}});
    EXPECT_TRUE(answer.bInPart);
    EXPECT_EQ(answer.tasks[0].eResult, ETaskResult::ENDED);
    EXPECT_EQ(answer.tasks[1].strFault, "unknown_task");
}

TEST_F(Door, MovesThatMustNotBeAreNamed) {
    Refuse(CManualShift{"Else", {{"a", "n1", "n2"}}}, EFault::NO_PLUGIN, "Else");
    Refuse(CManualShift{"MeroRecord", {{"a", "n1", "n2"}, {"a", "n1", "n2"}}}, EFault::BAD_INPUT,
           "moves: a task stands twice");
    Refuse(CManualShift{"MeroRecord", std::vector<CManualMove>(101)}, EFault::TOO_MUCH, "moves");
    EXPECT_EQ(FaultOfMove({"a", "n2", "n1"}), "not_placed_there");
    EXPECT_EQ(FaultOfMove({"x", "n1", "n2"}), "not_placed_there");
    EXPECT_EQ(FaultOfMove({"a", "n1", "n9"}), "unknown_container");
    EXPECT_EQ(FaultOfMove({"a", "n1", "n1"}), "refused_by_rule");
    EXPECT_EQ(FaultOfMove({"stays", NodeOf("stays"), "n2"}), "cannot_move");
    const CAnswer answer = Must(CManualShift{"MeroRecord", {{"a", "n1", "n2"}, {"x", "n1", "n2"}}});
    EXPECT_TRUE(answer.bInPart);
    EXPECT_EQ(answer.tasks[0].eResult, ETaskResult::MOVED);
    EXPECT_EQ(answer.tasks[0].strNodeId, "n2");
    EXPECT_EQ(NodeOf("a"), "n2");
}

TEST_F(Door, WhatNeedsTheStoreIsRefusedWhileItIsAway) {
    m_pFailing->FailAfter(0, -4);
    Do(CJob{{"n1", 1001, JobXml({{"c", 5}})}});  // finds out
    EXPECT_EQ(Do(CJob{{"n1", 1001, JobXml({{"c", 5}})}}).eFault, EFault::STORE_AWAY);
    EXPECT_EQ(Do(CEndTasks{"MeroRecord", {"a"}}).eFault, EFault::STORE_AWAY);
    EXPECT_EQ(Do(CManualShift{"MeroRecord", {{"a", "n1", "n2"}}}).eFault, EFault::STORE_AWAY);
    EXPECT_EQ(Do(CJob{{"n1", 1001, JobXml({{"a", 5}})}}).tasks.at(0).eResult, ETaskResult::STAYS);
    m_pFailing->Heal();
    Pass(1);
    EXPECT_EQ(Record({{"c", 5}}).eFault, EFault::NONE);
    EXPECT_NE(NodeOf("c"), "");
    EXPECT_NE(NodeOf("a"), "");
}

TEST_F(Door, TaskOfASilentContainerWaitsWhenNobodyHasRoomForIt) {
    Record({{"big", 600}});
    const std::string strNode = NodeOf("big");
    Record({{"other", 600}});
    ASSERT_NE(NodeOf("other"), strNode);
    PassReporting(100, {Recorder(NodeOf("other"))});
    const CAnswer answer = Record({{"big", 600}});
    EXPECT_EQ(answer.eFault, EFault::NONE);
    EXPECT_EQ(answer.tasks.at(0).eResult, ETaskResult::WAITS);
    EXPECT_EQ(answer.tasks.at(0).strNodeId, strNode);
    EXPECT_EQ(NodeOf("big"), strNode);
}

TEST_F(Door, NothingIsAcceptedBeforeALoad) {
    CClusterEngine engine(CEngineHost{m_events, m_runner, m_clock, *m_pGate}, m_settings);
    EXPECT_EQ(engine.Apply({m_iNow, CTick()}).eFault, EFault::NOT_LOADED);
}

}  // namespace
