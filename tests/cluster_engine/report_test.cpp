#include <limits>

#include "cluster_engine/assignments.h"
#include "cluster_engine/engine_fixture.h"
#include "cluster_engine/test_agent.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> IdsOf(const std::vector<CTaskForm>& tasks) {
    std::vector<std::string> ids;
    for (const CTaskForm& task : tasks) {
        ids.push_back(task.strTaskId);
    }
    return ids;
}

class Report : public CEngineTest {
protected:
    Report() {
        Store({{"n1", {"MeroRecord", "MeroImgDev"}}, {"n2", {"MeroRecord"}}});
        Load();
        Settle();
    }

    /// The agent reports, and hears the answer.
    CAnswer Exchange(CTestAgent& agent) {
        CAnswer answer = Must(agent.Report());
        agent.Take(answer);
        return answer;
    }

    /// All seconds with reports of both recorders.
    void PassExchanging(int64_t iSeconds) {
        for (int64_t i = 0; i < iSeconds; ++i) {
            if (i % 10 == 0) {
                Exchange(m_first);
                Exchange(m_second);
                Must(ReportOf(m_image));
            }
            Pass(1);
        }
    }

    /// Names a store's text of the engine's assignments.
    std::string DocumentOf(const CContainerAddr& addr) {
        return Path("/Engine/Assignment/" + addr.GetNodeId() + '/' + addr.GetContainerType() +
                    "/0");
    }

    const CContainerAddr m_image{"n1", "MeroImgDev"};
    CTestAgent m_first{Recorder("n1")};
    CTestAgent m_second{Recorder("n2")};
};

TEST_F(Report, GivenTaskIsHandedAndMergedUntilItIsReported) {
    Record({{"a", 5}});
    CContainerReport report = m_first.Report();
    const CAnswer answer = Must(report);
    EXPECT_THAT(IdsOf(answer.takeUp), ElementsAre("a"));
    EXPECT_THAT(TasksOf(Recorder("n1")), ElementsAre("a"));
    m_first.Take(answer);
    EXPECT_THAT(Exchange(m_first).takeUp, IsEmpty());
    EXPECT_THAT(TasksOf(Recorder("n1")), ElementsAre("a"));
}

TEST_F(Report, MergedTaskHasTheReportedCostsAndKeepsWhatWasAssigned) {
    Record({{"a", 5, false, "camera"}});
    Exchange(m_first);
    CContainerReport report = m_first.Report();
    report.tasks->front().costs = CFigures{1, 2, 3, 4, 50};
    report.tasks->front().movable = true;
    report.tasks->front().name = "else";
    Must(report);
    std::list<CResourceTask> table;
    CContainerMgr::Instance().GetResTaskList(Recorder("n1"), table);
    ASSERT_EQ(table.size(), 1U);
    EXPECT_EQ(CTaskForm(table.front()).costs, (CFigures{1, 2, 3, 4, 50}));
    EXPECT_EQ(table.front().GetTaskName(), "camera");
    EXPECT_FALSE(table.front().IsSupportShift());
}

TEST_F(Report, TaskThatCrossesAReportIsNotMissed) {
    Exchange(m_first);
    Record({{"a", 5}});
    CContainerReport crossing = m_first.Report();
    Must(crossing);  // its answer hands the task, and is lost
    Must(crossing);
    EXPECT_EQ(m_events.Count(EEvent::HANDED_AGAIN), 0U);
    m_first.Take(Must(crossing));
    m_first.Run("b");  // it saw the answer, but has another task only
    CContainerReport without = m_first.Report();
    without.tasks->erase(without.tasks->begin());
    Must(without);
    EXPECT_EQ(m_events.Of(EEvent::HANDED_AGAIN).at(0).strTaskId, "a");
}

TEST_F(Report, AnswerNumberOfAFormerLifeCountsAsNone) {
    Record({{"a", 5}});
    CContainerReport report = m_first.Report();
    report.ullSeen = std::numeric_limits<uint64_t>::max();
    Must(report);
    Must(report);
    EXPECT_EQ(m_events.Count(EEvent::HANDED_AGAIN), 0U);
}

TEST_F(Report, AgentThatRestartsEmptyHandedIsHandedAllAgain) {
    Record({{"a", 5}, {"b", 5}, {"c", 5}});
    Exchange(m_first);
    Exchange(m_first);
    m_first.Forget();
    const CAnswer answer = Exchange(m_first);
    EXPECT_THAT(IdsOf(answer.takeUp), ElementsAre("a", "c"));
    const std::vector<CEvent> again = m_events.Of(EEvent::HANDED_AGAIN);
    ASSERT_EQ(again.size(), 1U);
    EXPECT_EQ(again[0].uiTasks, 2U);
    EXPECT_THAT(Exchange(m_first).takeUp, IsEmpty());
}

TEST_F(Report, TaskThatIsNeverTakenUpGoesElsewhereAfterItsTime) {
    Record({{"a", 5}});
    for (int64_t i = 0; i < 31; ++i) {
        CAnswer answer = Must(m_first.Report());
        answer.takeUp.clear();
        m_first.Take(answer);
        Exchange(m_second);
        Must(ReportOf(m_image));
        Pass(10);
    }
    EXPECT_EQ(NodeOf("a"), "n2");
    EXPECT_THAT(Must(m_first.Report()).takeUp, IsEmpty());
}

TEST_F(Report, TaskThatMustStayIsHandedOnAndItIsSaid) {
    Record({{"a", 5, false}});
    for (int64_t i = 0; i < 31; ++i) {
        CAnswer answer = Must(m_first.Report());
        answer.takeUp.clear();
        m_first.Take(answer);
        Exchange(m_second);
        Must(ReportOf(m_image));
        Pass(10);
    }
    EXPECT_EQ(NodeOf("a"), "n1");
    EXPECT_EQ(m_events.Of(EEvent::HANDED_AGAIN).back().strCause,
              "not taken up, and it cannot go elsewhere");
    EXPECT_THAT(IdsOf(Must(m_first.Report()).takeUp), ElementsAre("a"));
}

TEST_F(Report, UnknownTaskIsAdoptedAndSurvives) {
    m_first.Run("x");
    EXPECT_THAT(Exchange(m_first).drop, IsEmpty());
    EXPECT_EQ(m_events.Of(EEvent::ADOPTED).at(0).strTaskId, "x");
    Restart();
    EXPECT_THAT(TasksOf(Recorder("n1")), ElementsAre("x"));
}

TEST_F(Report, FirstStartOnARunningClusterDropsNothing) {
    for (int i = 0; i < 20; ++i) {
        m_first.Run("a" + std::to_string(i));
        m_second.Run("b" + std::to_string(i));
    }
    EXPECT_THAT(Exchange(m_first).drop, IsEmpty());
    EXPECT_THAT(Exchange(m_second).drop, IsEmpty());
    EXPECT_EQ(TasksOf(Recorder("n1")).size(), 20U);
    EXPECT_EQ(TasksOf(Recorder("n2")).size(), 20U);
    EXPECT_EQ(m_events.Count(EEvent::ADOPTED), 2U) << "one a container";
}

TEST_F(Report, TaskInTwoContainersIsDroppedWhereItWasNotGiven) {
    m_first.Run("x");
    m_second.Run("x");
    Exchange(m_first);
    EXPECT_THAT(Exchange(m_second).drop, ElementsAre("x"));
    EXPECT_THAT(TasksOf(Recorder("n1")), ElementsAre("x"));
    EXPECT_THAT(TasksOf(Recorder("n2")), IsEmpty());
}

TEST_F(Report, ForeignTaskRunsOnUntilWhoWasGivenItHasIt) {
    Record({{"a", 5}});  // to n1, which has not reported it
    m_second.Run("a");
    EXPECT_THAT(Exchange(m_second).drop, IsEmpty());
    EXPECT_THAT(TasksOf(Recorder("n2")), IsEmpty());
    Exchange(m_first);
    Exchange(m_first);
    EXPECT_THAT(Exchange(m_second).drop, ElementsAre("a"));
}

TEST_F(Report, ForeignTaskIsAssignedWhereItRunsWhenItIsNotTakenUpInTime) {
    Record({{"a", 5}});
    m_second.Run("a");
    for (int64_t i = 0; i < 31; ++i) {
        CAnswer answer = Must(m_first.Report());
        answer.takeUp.clear();
        m_first.Take(answer);
        Exchange(m_second);
        Must(ReportOf(m_image));
        Pass(10);
    }
    EXPECT_THAT(Exchange(m_second).drop, IsEmpty());
    EXPECT_EQ(NodeOf("a"), "n2");
    EXPECT_EQ(m_events.Of(EEvent::ADOPTED).back().strFrom, "n1");
    EXPECT_GT(m_events.Of(EEvent::ADOPTED).back().ullDecision, 1U);
    EXPECT_THAT(Exchange(m_first).takeUp, IsEmpty());
}

TEST_F(Report, EndedTaskIsDroppedUntilItIsReportedWithout) {
    Record({{"a", 5}});
    Exchange(m_first);
    CContainerReport before = m_first.Report();
    Must(CEndTasks{"MeroRecord", {"a"}});
    EXPECT_THAT(Must(before).drop, ElementsAre("a"));
    Restart();
    EXPECT_THAT(Must(before).drop, ElementsAre("a")) << "noted over a restart";
    EXPECT_THAT(TasksOf(Recorder("n1")), IsEmpty());
    m_first.Forget();
    Exchange(m_first);
    EXPECT_EQ(m_pStore->Get(DocumentOf(Recorder("n1"))), R"({"version":1,"highest":1})");
    Must(before);
    EXPECT_THAT(TasksOf(Recorder("n1")), ElementsAre("a")) << "somebody else's now: adopted";
}

TEST_F(Report, EndedTaskMayStillBeTakenUpFromAnAnswerOnItsWay) {
    Record({{"a", 5}});
    const CAnswer onItsWay = Must(m_first.Report());
    Must(CEndTasks{"MeroRecord", {"a"}});
    Must(m_first.Report());  // without the task, but the answer has not been seen either
    m_first.Take(onItsWay);
    EXPECT_THAT(Exchange(m_first).drop, ElementsAre("a"));
    EXPECT_THAT(TasksOf(Recorder("n1")), IsEmpty());
}

TEST_F(Report, TaskThatEndedElsewhereIsDroppedWhereItRunsToo) {
    Record({{"a", 5}});
    m_second.Run("a");
    Exchange(m_second);
    Must(CEndTasks{"MeroRecord", {"a"}});
    Restart();
    EXPECT_THAT(Exchange(m_second).drop, ElementsAre("a"));
    EXPECT_EQ(NodeOf("a"), "");
}

TEST_F(Report, UnreadableAssignmentsDropNothingAndAreNeverWritten) {
    Record({{"a", 5}, {"b", 5}});
    Exchange(m_first);
    Exchange(m_second);
    const std::string strPath = DocumentOf(Recorder("n1"));
    for (const char* pszText : {"{", "", R"({"version":2})"}) {
        m_pStore->Put(strPath, pszText);
        m_events.Clear();
        Restart();
        ASSERT_EQ(m_events.Count(EEvent::DOCUMENT_UNREADABLE), 1U) << pszText;
        EXPECT_EQ(m_events.Of(EEvent::DOCUMENT_UNREADABLE)[0].strCause,
                  "/Engine/Assignment/n1/MeroRecord/0");
        m_first.Run("b");
        Exchange(m_second);
        Exchange(m_second);
        EXPECT_THAT(Exchange(m_first).drop, IsEmpty()) << pszText;
        EXPECT_EQ(NodeOf("a"), "n1") << "adopted";
        Record({{"c" + std::string(pszText), 5}});
        EXPECT_EQ(m_pStore->Get(strPath).value_or(""), pszText);
    }
}

TEST_F(Report, TextLongerThanAnyDocumentIsUnreadable) {
    m_pStore->Put(DocumentOf(Recorder("n1")), std::string(70000, ' '));
    Restart();
    EXPECT_EQ(m_events.Count(EEvent::DOCUMENT_UNREADABLE), 1U);
}

TEST_F(Report, FaultMarkOfAnUnsteadyImageContainerOutlivesItsTasks) {
    ASSERT_EQ(Do(CJob{{"n1", 2001, JobXml({{"i", 5}})}}).eFault, EFault::NONE);
    CTestAgent agent(m_image);
    for (int i = 0; i < 2; ++i) {
        Exchange(agent);
        PassReporting(100, {Recorder("n1"), Recorder("n2")});
    }
    agent.Forget();
    Exchange(agent);
    EXPECT_TRUE(AllContainers().at(m_image).IsFaultShift()) << "its table was filled alone";
    Exchange(agent);
    EXPECT_THAT(TasksOf(m_image), ElementsAre("i"));
    EXPECT_TRUE(AllContainers().at(m_image).IsFaultShift());
}

TEST_F(Report, BadReportsAreNamedAndChangeNothing) {
    Record({{"a", 5}});
    Exchange(m_first);
    const auto texts = Texts();
    const std::vector<std::string> table = TasksOf(Recorder("n1"));
    const auto refuse = [&](const CContainerReport& report, EFault eFault,
                            const std::string& strAbout) {
        const CAnswer answer = Do(report);
        EXPECT_EQ(answer.eFault, eFault) << answer.strAbout;
        EXPECT_EQ(answer.strAbout, strAbout);
        EXPECT_EQ(Texts(), texts) << strAbout;
        EXPECT_EQ(TasksOf(Recorder("n1")), table) << strAbout;
    };
    CContainerReport unknown = m_first.Report();
    unknown.container.strNodeId = "n9";
    refuse(unknown, EFault::UNKNOWN_CONTAINER, "n9 MeroRecord");
    CContainerReport twice = m_first.Report();
    twice.tasks->push_back(twice.tasks->front());
    refuse(twice, EFault::BAD_INPUT, "tasks: one stands twice: a");
    CContainerReport half = m_first.Report();
    half.used.reset();
    refuse(half, EFault::BAD_INPUT, "total and used come together");
    CContainerReport below = m_first.Report();
    below.used->iDisk = -1;
    refuse(below, EFault::BAD_INPUT, "total and used: must not be below 0");
    CContainerReport huge = m_first.Report();
    huge.used->iDisk = 536870912;
    refuse(huge, EFault::BAD_INPUT, "total and used: must not be above 536870911");
    CContainerReport gift = m_first.Report();
    gift.tasks->front().costs = CFigures{0, 0, 0, -1, 0};
    refuse(gift, EFault::BAD_INPUT, "tasks: costs must not be below 0: a");
    CContainerReport process = m_first.Report();
    process.processes = std::map<std::string, int32_t>{{"p", 3}};
    refuse(process, EFault::BAD_INPUT, "processes.p: must be from 0 to 2");
    CContainerReport large = m_first.Report();
    large.tasks->push_back({"l", std::string(NUMERIC_MAX_TASK_BYTES, 'x'), {}, {}, {}});
    refuse(large, EFault::TOO_MUCH, "tasks: one is too large: l");
    CContainerReport bad = m_first.Report();
    bad.tasks->push_back({"\n", {}, {}, {}, {}});
    refuse(bad, EFault::BAD_INPUT, "tasks: one has an id that is none");
    CContainerReport many = m_first.Report();
    for (uint32_t ui = 0; ui < m_settings.uiListLength; ++ui) {
        many.tasks->push_back({std::to_string(ui), {}, {}, {}, {}});
    }
    refuse(many, EFault::TOO_MUCH, "a list");
}

TEST_F(Report, BadFiguresOfANodeAreNamedAndChangeNothing) {
    CNodeReport report{"n1", CFigures{100, 0, 0, 0, 0}, CFigures{5, 0, 0, 0, 0}};
    Must(report);
    report.used->iCpu = -1;
    EXPECT_EQ(Do(report).strAbout, "total and used: must not be below 0");
    report.used->iCpu = std::numeric_limits<int32_t>::max();
    EXPECT_EQ(Do(report).strAbout, "total and used: must not be above 536870911");
    report.used.reset();
    EXPECT_EQ(Do(report).strAbout, "total and used come together");
    CNode node;
    ASSERT_TRUE(CNodeMgr::Instance().GetNode("n1", node));
    EXPECT_EQ(FiguresOf(node.GetCurResource()), (CFigures{5, 0, 0, 0, 0}));
}

TEST_F(Report, ReportsGoOnWhileTheStoreIsAway) {
    Record({{"a", 5}});
    Exchange(m_first);
    m_pFailing->FailAfter(0, -4);
    Pass(1);
    CContainerReport report = m_first.Report();
    report.tasks->front().costs = CFigures{0, 0, 0, 0, 77};
    const CAnswer answer = m_pEngine->Apply({m_iNow, report});
    EXPECT_EQ(answer.eFault, EFault::NONE);
    EXPECT_FALSE(answer.bDurable);
    std::list<CResourceTask> table;
    CContainerMgr::Instance().GetResTaskList(Recorder("n1"), table);
    EXPECT_EQ(table.front().GetDisk(), 77);
}

TEST_F(Report, AnswerThatTellsWhatIsNotWrittenWaitsForTheCommit) {
    m_pFailing->FailAfter(1, 1);  // the decision number, but no assignment
    Record({{"a", 5}});
    EXPECT_TRUE(m_pEngine->Apply({m_iNow, m_first.Report()}).bDurable);
    EXPECT_FALSE(m_pEngine->Apply({m_iNow, m_second.Report()}).bDurable);
    m_pFailing->Heal();
    EXPECT_EQ(m_pEngine->Commit(), 0);
    EXPECT_FALSE(m_pEngine->Apply({m_iNow, m_first.Report()}).bDurable);
}

}  // namespace
