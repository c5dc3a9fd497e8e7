#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "cluster_engine/host.h"

/// While it lives, the calling thread is in the store: if a plug-in's call runs on the thread, its
/// limit stands still.
class CStoreStay {
public:
    CStoreStay();
    ~CStoreStay();
    CStoreStay(const CStoreStay&) = delete;
    CStoreStay& operator=(const CStoreStay&) = delete;
};

/// Runs the calls of plug-ins one after the other on a thread of its own, whose clock shows what
/// the caller's shows. A call that outlives the limit is left alone on its thread, and another
/// thread takes the calls that follow. All calls come from one thread.
class CWorkerRunner : public IPluginRunner {
public:
    using Duration = std::chrono::steady_clock::duration;

    /// Told after each call: whose, how long it took, and whether it came back in time.
    using OnCall = std::function<void(const std::string& strPlugin, const std::string& strOperation,
                                      Duration took, bool bBack)>;

    /// The clock outlives all calls.
    CWorkerRunner(IStepClock& clock, Duration limit, OnCall onCall);

    /// Waits for no call that is late.
    ~CWorkerRunner() override;

    CWorkerRunner(const CWorkerRunner&) = delete;
    CWorkerRunner& operator=(const CWorkerRunner&) = delete;

    bool Run(const std::string& strPlugin, const std::string& strOperation,
             std::shared_ptr<std::function<void()>> pCall) override;
    bool IsBusy(const std::string& strPlugin) override;

    /// Is any plug-in's late call still running? Then no plug-in can be unloaded.
    bool IsAnyBusy();

    class CCall;
    class CWorker;

private:
    IStepClock& m_clock;
    const Duration m_limit;
    const OnCall m_onCall;
    std::shared_ptr<CWorker> m_pWorker;                    ///< null until there is a call
    std::map<std::string, std::shared_ptr<CCall>> m_late;  ///< by plug-in
};
