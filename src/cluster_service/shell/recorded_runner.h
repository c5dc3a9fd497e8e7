#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "cluster_engine/host.h"
#include "framework_service/schedule_mgr.h"
#include "shell/recorded_store.h"

/// A runner of which is told what a journal needs: which calls came late.
class CRecordedRunner : public IPluginRunner {
public:
    /// Both outlive the runner.
    CRecordedRunner(IPluginRunner& runner, const CRecordedStore& store)
        : m_runner(runner), m_store(store) {}

    bool Run(const std::string& strPlugin, const std::string& strOperation,
             std::shared_ptr<std::function<void()>> pCall) override {
        ++m_ullCalls;
        const uint64_t ullBefore = m_store.GetCalls();
        const bool bBack = m_runner.Run(strPlugin, strOperation, std::move(pCall));
        if (!bBack && m_onChance) {
            m_onChance(CLateCall{m_ullCalls, m_store.GetCalls() - ullBefore,
                                 CScheduleMgr::Instance().GetDecisionVerNum()});
        }
        return bBack;
    }

    bool IsBusy(const std::string& strPlugin) override {
        const bool bBusy = m_runner.IsBusy(strPlugin);
        if (bBusy && m_onChance) {
            m_onChance(CStillBusy{strPlugin});
        }
        return bBusy;
    }

    void Listen(CRecordedStore::OnChance onChance) { m_onChance = std::move(onChance); }

    /// Calls count from 1 again.
    void BeginInput() { m_ullCalls = 0; }

private:
    IPluginRunner& m_runner;
    const CRecordedStore& m_store;
    CRecordedStore::OnChance m_onChance;
    uint64_t m_ullCalls = 0;
};
