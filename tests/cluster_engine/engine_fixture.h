#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cluster_engine/engine.h"
#include "cluster_engine/failing_store.h"
#include "cluster_engine/test_runner.h"
#include "shell/gate_store.h"
#include "support/registry_fixture.h"

/// The time at which the stories of the tests begin.
inline constexpr int64_t NUMERIC_START = 1'700'000'000;

/// Keeps what happened.
class CEventList : public IEventSink {
public:
    void Take(const CEvent& event) override { m_events.push_back(event); }

    const std::vector<CEvent>& Get() const { return m_events; }
    void Clear() { m_events.clear(); }

    /// The events of that kind.
    std::vector<CEvent> Of(EEvent eEvent) const;
    std::size_t Count(EEvent eEvent) const { return Of(eEvent).size(); }

private:
    std::vector<CEvent> m_events;
};

/// The library's and the plug-ins' clock is the fake one of the tests.
class CTestClock : public IStepClock {
public:
    void Set(int64_t iSecond) override { SetClock(static_cast<std::time_t>(iSecond)); }
};

/// A node of a test's cluster, and the costs that its containers have room for.
struct CTestTask {
    std::string strId;
    int32_t iDisk = 1;
    bool bMovable = true;
    std::string strName{};
};

/// The XML of a job, as the recording and the image plug-in read it.
std::string JobXml(const std::vector<CTestTask>& tasks);

/// The switches of the configuration document, as they are without one.
struct CTestConfiguration {
    bool bLoadBalance = true;
    bool bFaultShift = true;
    bool bOnePeriod = true;
};

std::string ConfigurationText(const CTestConfiguration& configuration);
/// A report with all that the container was given, with 1000 of everything free but for the costs
/// of its tasks.
CContainerReport ReportOf(const CContainerAddr& addr);

/// A test of the engine on a memory store, with the project's own plug-ins, without a thread. The
/// cluster is what Store writes before Load. Time moves with Pass alone.
class CEngineTest : public CRegistryTest {
protected:
    CEngineTest();
    ~CEngineTest() override;

    /// Writes the cluster document.
    void Store(const std::vector<CStoredNode>& nodes);

    /// Loads the engine; fails the test when that fails.
    void Load();

    /// A new process on what the store holds: registries, plug-ins and engine anew.
    void Restart();

    /// A new process on a new store, settled, with the time at its start.
    void StartOver(const std::vector<CStoredNode>& nodes);

    /// Applies now and commits.
    CAnswer Do(const InputBody& body);

    /// Applies now and commits, and fails the test when it is refused.
    CAnswer Must(const InputBody& body);

    /// Seconds go by, each with its tick and a commit.
    void Pass(int64_t iSeconds);

    /// As Pass, but the containers report every ten seconds as if they did what they are told.
    void PassReporting(int64_t iSeconds, const std::vector<CContainerAddr>& reporting);

    /// Every container of the cluster reports, and the cluster settles.
    void Settle();

    /// All texts of the store, by path.
    std::map<std::string, std::string> Texts(const std::string& strBelow = "/");

    /// A job of the recording plug-in.
    CAnswer Record(const std::vector<CTestTask>& tasks);

    /// The ids of the tasks in the library's table, in their order.
    static std::vector<std::string> TasksOf(const CContainerAddr& addr);

    /// The container that has the task in the library's table; empty when none has.
    static std::string NodeOf(const std::string& strTaskId);

    CEngineSettings m_settings;
    CEventList m_events;
    CTestClock m_clock;
    CTestRunner m_runner;
    std::shared_ptr<CFailingStore> m_pFailing;  ///< behind the gate
    std::shared_ptr<CGateStore> m_pGate;
    std::unique_ptr<CClusterEngine> m_pEngine;
    int64_t m_iNow = NUMERIC_START;

private:
    static void ResetConfiguration();
    void Begin();

    std::map<CContainerAddr, uint64_t> m_seen;
};

/// A recorder.
inline CContainerAddr Recorder(const std::string& strNodeId) {
    return {strNodeId, "MeroRecord"};
}
