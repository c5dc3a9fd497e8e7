#include <functional>
#include <set>

#include "cluster_engine/engine_fixture.h"
#include "cluster_engine/test_agent.h"

namespace {

constexpr int NUMERIC_INPUTS = 50000;

const std::vector<CStoredNode> NODES = {{"n1", {"MeroRecord"}},
                                        {"n2", {"MeroRecord"}},
                                        {"n3", {"MeroRecord"}},
                                        {"n4", {"MeroRecord"}},
                                        {"n5", {"MeroRecord"}}};

/// Random inputs, and beside the engine a plain model: which tasks there are, by what was answered.
class ClusterModel : public CEngineTest {
protected:
    void Begin(unsigned int uiSeed) {
        StartOver(NODES);
        m_pDice = std::make_unique<CDice>(uiSeed);
        m_agents.clear();
        m_mute.clear();
        for (const CStoredNode& node : NODES) {
            m_agents.emplace_back(Recorder(node.strId));
            m_mute.push_back(0);
        }
        m_alive.clear();
        m_trace.clear();
    }

    std::size_t Below(std::size_t count) { return m_pDice->Below(count); }
    std::string AnyTask() { return "t" + std::to_string(Below(300)); }
    std::string AnyNode() { return NODES[Below(NODES.size())].strId; }

    CAnswer Trace(const InputBody& body) {
        m_events.Clear();
        const CAnswer answer = Do(body);
        std::string strText = JsonLine(AnswerToJson(answer));
        for (const CEvent& event : m_events.Get()) {
            strText += JsonLine(ToJson(event));
        }
        m_trace.push_back(std::hash<std::string>()(strText));
        return answer;
    }

    void Place() {
        std::set<std::string> ids;
        std::vector<CTestTask> tasks;
        for (std::size_t ui = Below(3) + 1; ui != 0; --ui) {
            const std::string strTaskId = AnyTask();
            if (ids.insert(strTaskId).second) {
                const auto iDisk = static_cast<int32_t>(Below(20) == 0 ? 2000 : Below(9));
                tasks.push_back({strTaskId, iDisk, Below(5) != 0});
            }
        }
        const CAnswer answer = Trace(CJob{{AnyNode(), 1001, JobXml(tasks)}});
        for (const CTaskResult& result : answer.tasks) {
            const bool bThere = result.eResult != ETaskResult::REFUSED;
            EXPECT_TRUE(bThere || m_alive.count(result.strTaskId) == 0) << result.strTaskId;
            if (bThere) {
                m_alive.insert(result.strTaskId);
            }
        }
    }

    void End() {
        const std::string strTaskId = AnyTask();
        const CAnswer answer = Trace(CEndTasks{"MeroRecord", {strTaskId}});
        EXPECT_EQ(answer.eFault == EFault::NONE, m_alive.erase(strTaskId) == 1) << strTaskId;
    }

    void Exchange(std::size_t uiAgent, bool bLost) {
        const CAnswer answer = Trace(m_agents[uiAgent].Report());
        if (!bLost) {
            m_agents[uiAgent].Take(answer);
        }
    }

    void Tick() {
        ++m_iNow;
        Trace(CTick());
        for (std::size_t ui = 0; ui < m_agents.size(); ++ui) {
            m_mute[ui] -= m_mute[ui] > 0 ? 1 : 0;
            if (m_mute[ui] == 0 && Below(10) == 0) {
                Exchange(ui, Below(10) == 0);
            }
        }
    }

    void Step() {
        const std::size_t uiKind = Below(1000);
        const std::size_t uiAgent = Below(m_agents.size());
        if (uiKind < 700) {
            Tick();
        } else if (uiKind < 800) {
            Place();
        } else if (uiKind < 880) {
            End();
        } else if (uiKind < 930) {
            Trace(CManualShift{"MeroRecord", {{AnyTask(), AnyNode(), AnyNode()}}});
        } else if (uiKind < 960) {
            Trace(CDryRun{{AnyNode(), 1001, JobXml({{AnyTask(), 3}})}});
        } else if (uiKind < 980) {
            Trace(CExplain{"MeroRecord", AnyTask()});
        } else if (uiKind < 990) {
            Trace(CJob{{AnyNode(), 1001, "<TaskList><Task>"}});
        } else if (uiKind < 995) {
            m_agents[uiAgent].Forget();
        } else if (uiKind < 999) {
            m_mute[uiAgent] = static_cast<int>(Below(300));
        } else {
            Restart();
        }
    }

    /// The tables and the model have the same tasks, each once; work without a place is nowhere.
    void Compare(int iInput) {
        std::map<std::string, int> counts;
        for (const auto& [addr, container] : AllContainers()) {
            for (const std::string& strTaskId : TasksOf(addr)) {
                ++counts[strTaskId];
            }
        }
        std::map<std::string, int> wanted;
        for (const std::string& strTaskId : m_alive) {
            wanted[strTaskId] = 1;
        }
        ASSERT_EQ(counts, wanted) << "after input " << iInput;
    }

    /// Everyone reports until nothing changes: each task runs once, and where its table says.
    void ComeToRest() {
        std::fill(m_mute.begin(), m_mute.end(), 0);
        for (int i = 0; i < 40; ++i) {
            for (std::size_t ui = 0; ui < m_agents.size(); ++ui) {
                Exchange(ui, false);
            }
            m_iNow += 10;
            Trace(CTick());
        }
        for (const CTestAgent& agent : m_agents) {
            std::vector<std::string> ids;
            for (const auto& [strTaskId, task] : agent.GetTasks()) {
                ids.push_back(strTaskId);
            }
            EXPECT_THAT(TasksOf(agent.GetAddr()), testing::UnorderedElementsAreArray(ids));
        }
    }

    void Run(unsigned int uiSeed) {
        Begin(uiSeed);
        for (int i = 0; i < NUMERIC_INPUTS && !HasFatalFailure(); ++i) {
            Step();
            if (i % 100 == 0) {
                Compare(i);
            }
        }
        ComeToRest();
        Compare(NUMERIC_INPUTS);
    }

    std::unique_ptr<CDice> m_pDice;
    std::vector<CTestAgent> m_agents;
    std::vector<int> m_mute;  ///< for so many seconds
    std::set<std::string> m_alive;
    std::vector<std::size_t> m_trace;
};

TEST_F(ClusterModel, LosesNoTaskAndHasNoneTwice) {
    const unsigned int uiSeed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(uiSeed));
    Run(uiSeed);
}

TEST_F(ClusterModel, SameInputsGiveTheSameToTheByte) {
    const unsigned int uiSeed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(uiSeed));
    Run(uiSeed);
    const std::vector<std::size_t> trace = m_trace;
    const auto texts = Texts();
    Run(uiSeed);
    const auto differing =
        std::mismatch(trace.begin(), trace.end(), m_trace.begin(), m_trace.end());
    EXPECT_EQ(differing.first - trace.begin(), static_cast<std::ptrdiff_t>(trace.size()));
    EXPECT_EQ(Texts(), texts);
}

}  // namespace
