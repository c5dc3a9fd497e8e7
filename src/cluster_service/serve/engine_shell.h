#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "cluster_engine/engine.h"
#include "serve/event_log.h"
#include "serve/metered_store.h"
#include "serve/metrics.h"
#include "serve/service_settings.h"
#include "serve/worker_runner.h"
#include "shell/gate_store.h"
#include "shell/recorded_runner.h"
#include "shell/recorded_store.h"
#include "shell/run_record.h"

/// The engine of a service and what stands around it: the store behind its gate, the worker for
/// plug-in calls, the sink of its events, and the journal, if one is wanted. While it lives its
/// store is the process's. All calls come from the engine's thread.
class CEngineShell : private IEventSink {
public:
    struct CParts {
        std::shared_ptr<IStore> pStore;
        IStepClock& clock;
        CEventLog& events;
        CServiceMetrics& metrics;
        CDocumentTexts& texts;
        CWatchdog& watchdog;
        const CServiceSettings& settings;
    };

    /// The parts outlive the shell.
    explicit CEngineShell(const CParts& parts);

    /// Takes down plug-ins and store. With a late call of a plug-in the plug-ins stay.
    ~CEngineShell() override;

    CEngineShell(const CEngineShell&) = delete;
    CEngineShell& operator=(const CEngineShell&) = delete;

    int Load(std::string& strWhy, const OnLoadStep& onStep);
    CAnswer Apply(const CInput& input);
    int Commit();

    const CClusterEngine& GetEngine() const { return m_engine; }
    bool IsStoreAway() { return m_pGate->IsAway(); }
    bool HasLateCall() { return m_worker.IsAnyBusy(); }

    /// Has anything happened since it was asked last?
    bool TakeHappened() { return std::exchange(m_bHappened, false); }

private:
    struct CJournal {
        std::shared_ptr<CRecordedStore> pStore;
        CRecordedRunner runner;
        CRunRecord record;
        std::string strFaultSaid;

        CJournal(std::shared_ptr<IStore> pBehind, IPluginRunner& worker,
                 const CJournalSettings& settings);
    };

    void Take(const CEvent& event) override;
    void SayFaultOfJournal();

    const CParts m_parts;
    CWorkerRunner m_worker;
    const std::shared_ptr<IStore> m_pMetered;
    const std::unique_ptr<CJournal> m_pJournal;  ///< null without one
    const std::shared_ptr<CGateStore> m_pGate;
    CClusterEngine m_engine;
    bool m_bHappened = false;
};
