#include "cluster_engine/scripted_fixture.h"

namespace {

constexpr int CODE_OUT_OF_TIME = -7;

/// A store that does not answer in time while it is away.
class CLostStore : public IStore {
public:
    explicit CLostStore(std::shared_ptr<IStore> pStore) : m_pStore(std::move(pStore)) {}

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override {
        return Call([&] { return m_pStore->Read(strPath, pWatcher, answer); });
    }
    int Write(const std::string& strPath, const std::string& strText) override {
        return Call([&] { return m_pStore->Write(strPath, strText); });
    }
    int List(const std::string& strPath, std::vector<std::string>& children) override {
        return Call([&] { return m_pStore->List(strPath, children); });
    }
    int Commit(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts) override {
        return Call([&] { return m_pStore->Commit(conditions, texts); });
    }

    bool m_bAway = false;
    int m_iCalls = 0;

private:
    template <typename Operation>
    int Call(const Operation& operation) {
        ++m_iCalls;
        return m_bAway ? CODE_OUT_OF_TIME : operation();
    }

    const std::shared_ptr<IStore> m_pStore;
};

class StoreAway : public CScriptedTest {
protected:
    StoreAway() {
        m_pGate = std::make_shared<CGateStore>(m_pLost);
        SetStore(m_pGate);
        m_pEngine = std::make_unique<CClusterEngine>(
            CEngineHost{m_events, m_runner, m_clock, *m_pGate}, m_settings);
        Load();
        Must(ReportOf(Scripted("n1")));
        Must(ReportOf(Scripted("n2")));
        Must(ReportOf(Scripted("n3")));
        Pass(1);
        m_events.Clear();
    }

    void LoseStore() {
        m_pLost->m_bAway = true;
        EXPECT_EQ(Place({{"lost"}}).eFault, EFault::STORE_FAILED);
        Pass(1);
        ASSERT_EQ(m_events.Count(EEvent::STORE_AWAY), 1U);
        Script().calls.clear();
    }

    const std::shared_ptr<CLostStore> m_pLost = std::make_shared<CLostStore>(m_pStore);
};

TEST_F(StoreAway, WhatNeedsItIsRefusedAtOnce) {
    LoseStore();
    const int iCalls = m_pLost->m_iCalls;
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::STORE_AWAY);
    EXPECT_EQ(Do(CBalanceNow()).eFault, EFault::STORE_AWAY);
    EXPECT_EQ(Do(CManualShift{PSZ_SCRIPTED_TYPE, {}}).eFault, EFault::STORE_AWAY);
    EXPECT_EQ(m_pLost->m_iCalls, iCalls);
    EXPECT_EQ(Calls("TaskSchedule"), 0);
    EXPECT_EQ(Calls("LoadBalanceSchedule"), 0);
}

TEST_F(StoreAway, ReportsGoOn) {
    LoseStore();
    EXPECT_EQ(Do(ReportOf(Scripted("n1"))).eFault, EFault::NONE);
    PassReporting(200, AllScripted());
    for (const CContainerAddr& addr : AllScripted()) {
        EXPECT_TRUE(CContainerMgr::Instance().IsContainerOnline(addr));
    }
}

TEST_F(StoreAway, OneCallASecondTriesIt) {
    LoseStore();
    const int iCalls = m_pLost->m_iCalls;
    Pass(10);
    EXPECT_EQ(m_pLost->m_iCalls, iCalls + 10);
}

TEST_F(StoreAway, NoRuleAsksAPlugInForADecision) {
    Place({{"a"}});
    LoseStore();
    PassReporting(400, {Scripted("n2"), Scripted("n3")});
    EXPECT_EQ(Calls("TaskSchedule"), 0);
    EXPECT_EQ(Calls("GetResTaskListInContainer"), 0);
    EXPECT_EQ(Calls("LoadBalanceSchedule"), 0);
    EXPECT_EQ(NodeOf("a"), "n1");
    m_pLost->m_bAway = false;
    PassReporting(1, {Scripted("n2"), Scripted("n3")});
    EXPECT_EQ(m_events.Count(EEvent::STORE_BACK), 1U);
    EXPECT_EQ(NodeOf("a"), "n2");
}

TEST_F(StoreAway, ItIsSaidAtOnceThoughSomethingIsNotWritten) {
    m_pLost->m_bAway = true;
    CContainerReport report = ReportOf(Scripted("n1"));
    report.tasks->emplace_back().strTaskId = "found";
    Do(report);
    Pass(1);
    EXPECT_EQ(m_events.Count(EEvent::STORE_AWAY), 1U);
    EXPECT_EQ(m_events.Count(EEvent::ADOPTED), 0U) << "it is not written";
    Pass(5);
    m_pLost->m_bAway = false;
    Pass(1);
    EXPECT_EQ(m_events.Count(EEvent::STORE_AWAY), 1U);
    EXPECT_EQ(m_events.Count(EEvent::STORE_BACK), 1U);
    EXPECT_EQ(m_events.Count(EEvent::ADOPTED), 1U);
}

TEST_F(StoreAway, PlugInIsNotBlamed) {
    for (int i = 0; i < 5; ++i) {
        m_pLost->m_bAway = true;
        Place({{"a"}});
        m_pLost->m_bAway = false;
        Pass(1);
    }
    EXPECT_EQ(m_events.Count(EEvent::PLUGIN_FAILED), 0U);
    EXPECT_EQ(m_events.Count(EEvent::PLUGIN_OUT), 0U);
    EXPECT_EQ(Place({{"a"}}).eFault, EFault::NONE);
}

}  // namespace
