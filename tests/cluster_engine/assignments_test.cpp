#include "cluster_engine/assignments.h"

#include <set>

#include "cluster_engine/engine_fixture.h"
#include "cluster_engine/test_agent.h"

namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

const std::vector<CStoredNode> NODES = {
    {"n1", {"MeroRecord"}}, {"n2", {"MeroRecord"}}, {"n3", {"MeroRecord"}}};

class Assignments : public CEngineTest {
protected:
    Assignments() {
        Store(NODES);
        Load();
        Settle();
    }

    /// The texts of the engine's assignments by what stands behind the folder.
    std::map<std::string, std::string> Documents() {
        const std::string strFolder = Path("/Engine/Assignment");
        std::map<std::string, std::string> documents;
        for (const auto& [strPath, strText] : Texts(strFolder)) {
            documents[strPath.substr(strFolder.size())] = strText;
        }
        return documents;
    }

    /// How many tables have each task.
    static std::map<std::string, int> Counts() {
        std::map<std::string, int> counts;
        for (const auto& [addr, container] : AllContainers()) {
            for (const std::string& strTaskId : TasksOf(addr)) {
                ++counts[strTaskId];
            }
        }
        return counts;
    }
};

TEST_F(Assignments, DocumentTellsAllThatIsNeededToPlaceATaskAgain) {
    Record({{"a", 5, false, "camera"}});
    EXPECT_THAT(Documents(),
                ElementsAre(Pair("/n1/MeroRecord/0",
                                 R"({"version":1,"highest":1,"tasks":[{"id":"a",)"
                                 R"("name":"camera","movable":false,"costs":{"disk":5},)"
                                 R"("decision":1,"asker":"n1"}]})")));
}

TEST_F(Assignments, IdsWithSlashesAndPercentsKeepTheirPlace) {
    StartOver({{"n/1%2f", {"MeroRecord"}}, {"..", {"MeroRecord"}}});
    Record({{"a/b%2f", 5}, {"../../x", 5}});
    EXPECT_THAT(Documents(), ElementsAre(Pair("/%2E./MeroRecord/0", testing::_),
                                         Pair("/n%2F1%252f/MeroRecord/0", testing::_)));
    const auto counts = Counts();
    Restart();
    EXPECT_EQ(Counts(), counts);
    EXPECT_THAT(counts, ElementsAre(Pair("../../x", 1), Pair("a/b%2f", 1)));
}

TEST_F(Assignments, TwoThousandTasksOfLargeIdsStandInSmallDocumentsWithoutGaps) {
    std::vector<CTestTask> tasks;
    for (int i = 0; i < 2000; ++i) {
        const std::string strNumber = std::to_string(i);
        tasks.push_back({strNumber + std::string(128 - strNumber.size(), '\\'), 0});
    }
    StartOver({{"n1", {"MeroRecord"}}});
    CTestAgent agent(Recorder("n1"));
    ASSERT_EQ(Record(tasks).eFault, EFault::NONE);
    agent.Take(Must(agent.Report()));
    CContainerReport report = agent.Report();
    for (CReportedTask& task : *report.tasks) {
        const int32_t iCost = std::numeric_limits<int32_t>::max();
        task.costs = CFigures{iCost, iCost, iCost, iCost, iCost};
    }
    report.used = CFigures();
    Must(report);
    // Every document is written again, with the longest costs and the notes of what ended.
    CEndTasks end{"MeroRecord", {}};
    for (std::size_t ui = 0; ui < tasks.size(); ui += 2) {
        end.tasks.push_back(tasks[ui].strId);
    }
    Must(end);
    const auto documents = Documents();
    EXPECT_GT(documents.size(), 5U);
    for (std::size_t ui = 0; ui < documents.size(); ++ui) {
        const auto it = documents.find("/n1/MeroRecord/" + std::to_string(ui));
        ASSERT_NE(it, documents.end()) << ui;
        EXPECT_LT(it->second.size(), 65536U);
    }
    Restart();
    EXPECT_EQ(TasksOf(Recorder("n1")).size(), 1000U);
}

TEST_F(Assignments, EmptiedDocumentStays) {
    Record({{"a", 5}});
    Must(CEndTasks{"MeroRecord", {"a"}});
    CTestAgent agent(Recorder("n1"));
    agent.Take(Must(agent.Report()));
    EXPECT_THAT(Documents(), ElementsAre(Pair("/n1/MeroRecord/0", R"({"version":1,"highest":1})")));
}

TEST_F(Assignments, WorkOfAContainerThatVanishedMeanwhileFindsAnother) {
    Record({{"a", 5}, {"b", 5}});
    Store({{"n2", {"MeroRecord"}}});
    Restart();
    EXPECT_EQ(NodeOf("a"), "");
    Settle();
    Pass(m_settings.iFirstPause);
    EXPECT_EQ(NodeOf("a"), "n2");
    EXPECT_EQ(NodeOf("b"), "n2");
}

TEST_F(Assignments, DecisionsRiseAlsoWhenTheNumberOfTheLibraryIsLost) {
    Record({{"a", 5}, {"b", 5}});
    Record({{"c", 5}});
    Must(CEndTasks{"MeroRecord", {"c"}});  // the task of the highest number
    m_pStore->Erase(Path("/Version"));
    m_events.Clear();
    Restart();
    Settle();
    EXPECT_EQ(Record({{"d", 5}}).tasks[0].ullDecision, 3U);
    EXPECT_EQ(Record({{"e", 5}}).tasks[0].ullDecision, 4U);
}

TEST_F(Assignments, MoveWritesTheEnteredContainerFirst) {
    Record({{"a", 5}});
    m_pFailing->FailAfter(3, 1);  // the decision number, the index and one document
    Do(CManualShift{"MeroRecord", {{"a", "n1", "n2"}}});
    ASSERT_TRUE(m_pFailing->HasFailed());
    EXPECT_THAT(Documents().at("/n2/MeroRecord/0"), testing::HasSubstr(R"("id":"a")"));
    EXPECT_THAT(Documents().at("/n1/MeroRecord/0"), testing::HasSubstr(R"("id":"a")"));
    Restart();
    EXPECT_THAT(TasksOf(Recorder("n2")), ElementsAre("a"));
    EXPECT_EQ(Documents().at("/n1/MeroRecord/0"), R"({"version":1,"highest":2,"gone":["a"]})");
}

TEST_F(Assignments, EventsAreToldWhenTheyAreWritten) {
    m_pFailing->FailAfter(1, 1);  // the decision number
    const CAnswer answer = m_pEngine->Apply({m_iNow, CJob{{"n1", 1001, JobXml({{"a", 5}})}}});
    EXPECT_TRUE(answer.bDurable);
    EXPECT_NE(m_pEngine->Commit(), 0);
    EXPECT_EQ(m_events.Count(EEvent::PLACED), 0U);
    m_pFailing->Heal();
    EXPECT_EQ(m_pEngine->Commit(), 0);
    EXPECT_EQ(m_events.Count(EEvent::PLACED), 1U);
    Restart();
    EXPECT_EQ(Counts(), (std::map<std::string, int>{{"a", 1}}));
}

/// A server far away takes as long for one job as for many.
TEST_F(Assignments, JobsThatShareACommitAreOneWrite) {
    Record({{"a", 5}, {"b", 5}, {"c", 5}});  // the index names all three
    for (const char* pszTask : {"d", "e", "f"}) {
        m_pEngine->Apply({m_iNow, CJob{{"n1", 1001, JobXml({{pszTask, 5}})}}});
    }
    EXPECT_THAT(m_pStore->Get(Path("/Version")).value_or(""), testing::HasSubstr(":2,"));
    m_pFailing->FailAfter(1, 1);
    EXPECT_EQ(m_pEngine->Commit(), 0);
    EXPECT_THAT(m_pStore->Get(Path("/Version")).value_or(""), testing::HasSubstr(":4,"));
    Restart();
    EXPECT_EQ(Counts().size(), 6U);
}

TEST_F(Assignments, DecisionThatPlacesNothingIsWrittenAllTheSame) {
    const CAnswer answer =
        m_pEngine->Apply({m_iNow, CJob{{"n1", 1001, JobXml({{"big", 100000}})}}});
    EXPECT_EQ(answer.eFault, EFault::NO_ROOM);
    const unsigned long long ullDecision = CScheduleMgr::Instance().GetDecisionVerNum();
    EXPECT_EQ(m_pEngine->Commit(), 0);
    Restart();
    EXPECT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(), ullDecision);
}

TEST_F(Assignments, LoadThatFailsMayBeTriedAgain) {
    Record({{"a", 5}, {"b", 5}, {"c", 5}});
    const auto counts = Counts();
    const auto texts = Texts();
    unsigned int uiCalls = 0;
    for (bool bFailed = true; bFailed; ++uiCalls) {
        m_pEngine.reset();
        EmptyRegistries();
        m_pEngine = std::make_unique<CClusterEngine>(
            CEngineHost{m_events, m_runner, m_clock, *m_pGate}, m_settings);
        SetStore(m_pGate);
        m_pStore->FailCall(uiCalls + 1, 1);
        std::string strWhy;
        bFailed = m_pEngine->Load(m_iNow, strWhy) != 0;
        EXPECT_EQ(bFailed, !strWhy.empty());
        if (bFailed) {
            EXPECT_EQ(m_pEngine->Apply({m_iNow, CTick()}).eFault, EFault::NOT_LOADED);
            EXPECT_EQ(m_pEngine->Load(m_iNow, strWhy), 0) << uiCalls;
            EXPECT_EQ(Texts(), texts) << uiCalls;
        }
        EXPECT_EQ(Counts(), counts) << uiCalls;
    }
    EXPECT_GT(uiCalls, 10U);
}

/// A run with many writes, and what it was acknowledged.
class StoppedRun : public Assignments {
protected:
    StoppedRun() {
        m_agents = {CTestAgent(Recorder("n1")), CTestAgent(Recorder("n2")),
                    CTestAgent(Recorder("n3"))};
    }

    /// Applies and commits: true when what was answered counts.
    bool Counts(const InputBody& body, CAnswer& answer) {
        answer = m_pEngine->Apply({m_iNow, body});
        const bool bCommitted = m_pEngine->Commit() == 0;
        return bCommitted && answer.eFault != EFault::STORE_FAILED &&
               answer.eFault != EFault::STORE_AWAY;
    }

    bool Place(const std::vector<CTestTask>& tasks) {
        CAnswer answer;
        if (!Counts(CJob{{"n1", 1001, JobXml(tasks)}}, answer)) {
            return false;
        }
        for (const CTestTask& task : tasks) {
            m_alive.insert(task.strId);
        }
        return true;
    }

    bool End(const std::string& strTaskId) {
        m_alive.erase(strTaskId);  // from now on it may have ended
        CAnswer answer;
        const bool bCounts = Counts(CEndTasks{"MeroRecord", {strTaskId}}, answer);
        if (bCounts) {
            m_ended.insert(strTaskId);
        }
        return bCounts;
    }

    bool Exchange() {
        for (CTestAgent& agent : m_agents) {
            CAnswer answer = m_pEngine->Apply({m_iNow, agent.Report()});
            const bool bCommitted = m_pEngine->Commit() == 0;
            if (bCommitted || !answer.bDurable) {
                agent.Take(answer);
            }
            if (!bCommitted) {
                return false;
            }
        }
        return true;
    }

    bool Move(const std::string& strTaskId, const std::string& strTo) {
        CAnswer answer;
        return Counts(CManualShift{"MeroRecord", {{strTaskId, NodeOf(strTaskId), strTo}}}, answer);
    }

    bool Silence() {
        for (int i = 0; i < 100; ++i) {
            ++m_iNow;
            CAnswer answer;
            const bool bWell = Counts(CTick(), answer) && Counts(m_agents[1].Report(), answer) &&
                               Counts(m_agents[2].Report(), answer);
            if (!bWell) {
                return false;
            }
        }
        return true;
    }

    /// Until the first write that fails. True when none did.
    bool Run() {
        m_agents[0].Run("adopted");
        return (Exchange() && Place({{"a", 5}, {"b", 5}, {"c", 5}, {"d", 5}}) && Exchange() &&
                Exchange() && End("b") && Exchange() && Place({{"e", 5}}) && Move("a", "n3") &&
                Exchange() && Exchange() && Silence() && End("d") && Exchange() &&
                Place({{"f", 5}, {"b", 5}}) && (m_ended.erase("b"), true) && Exchange());
    }

    std::vector<CTestAgent> m_agents;
    std::set<std::string> m_alive;
    std::set<std::string> m_ended;
};

TEST_F(StoppedRun, HasEachAcknowledgedTaskOnceWhereverItStops) {
    unsigned int uiWrites = 0;
    for (bool bFailed = true; bFailed; ++uiWrites) {
        StartOver(NODES);
        m_agents = {CTestAgent(Recorder("n1")), CTestAgent(Recorder("n2")),
                    CTestAgent(Recorder("n3"))};
        m_alive.clear();
        m_ended.clear();
        m_pFailing->FailAfter(uiWrites, 1);
        bFailed = !Run();
        ASSERT_EQ(bFailed, m_pFailing->HasFailed());
        EXPECT_TRUE(bFailed || m_events.Count(EEvent::SHIFT_STARTED) == 1);
        Restart();
        for (int i = 0; i < 4; ++i) {
            const std::map<std::string, int> counts = Assignments::Counts();
            for (const auto& [strTaskId, iCount] : counts) {
                EXPECT_EQ(iCount, 1) << strTaskId << ", write " << uiWrites;
                EXPECT_EQ(m_ended.count(strTaskId), 0U) << strTaskId << ", write " << uiWrites;
            }
            for (const std::string& strTaskId : m_alive) {
                EXPECT_EQ(counts.count(strTaskId), 1U) << strTaskId << ", write " << uiWrites;
            }
            ASSERT_TRUE(Exchange());
        }
        std::map<std::string, int> running;
        for (const CTestAgent& agent : m_agents) {
            for (const auto& [strTaskId, task] : agent.GetTasks()) {
                ++running[strTaskId];
            }
        }
        EXPECT_EQ(running, Assignments::Counts()) << "write " << uiWrites;
        ASSERT_LT(uiWrites, 200U);
    }
    EXPECT_GT(uiWrites, 15U);
}

}  // namespace
