#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "serve/engine_shell.h"
#include "serve/load_retry.h"
#include "serve/service_context.h"
#include "serve/view_maker.h"

/// What an attempt to load the cluster came to.
struct CLoadReport {
    struct CStep {
        std::string strWhat;
        std::string strFound;
        std::chrono::steady_clock::duration took{};
    };

    std::vector<CStep> steps;  ///< those that went well
    std::string strFailure;    ///< of the one that did not; empty when the cluster is loaded
};

/// The thread that owns the engine: it takes what waits, applies it, commits once for all of it,
/// publishes the view, tells the events, and answers, in this order. While the cluster cannot be
/// loaded it says so, answers that, and tries again when a document changes and after pauses.
class CEngineThread {
public:
    /// Told on the engine's thread of the first load, and of each that went otherwise than the one
    /// before.
    using OnLoad = std::function<void(const CLoadReport& report)>;

    /// All of it outlives the thread's end, or the process leaves by _exit.
    CEngineThread(const CServiceContext& context, CDocumentTexts& texts,
                  std::shared_ptr<IStore> pStore, IStepClock& clock, OnLoad onLoad);
    ~CEngineThread() { Stop(); }
    CEngineThread(const CEngineThread&) = delete;
    CEngineThread& operator=(const CEngineThread&) = delete;

    /// Loads the cluster and goes on.
    void Start();

    /// Ends the queue, works off what waits in it, and takes plug-ins and store down. Returns
    /// when the thread has ended.
    void Stop();

    /// After Stop: is a plug-in's call still running? Then the process has to leave by _exit.
    bool HasLateCall() const { return m_bLateCall; }

private:
    using Clock = std::chrono::steady_clock;

    void Run();
    void TryLoad(CEngineShell& shell);
    void Work(CEngineShell& shell, std::vector<CInputBatch> batches);
    std::vector<CAnswer> Apply(CEngineShell& shell, const CInputBatch& batch);
    void Commit(CEngineShell& shell);

    /// bMore: than reports was applied.
    void PublishView(CEngineShell& shell, bool bMore);
    void Answer(CInputBatch& batch, std::vector<CAnswer> answers, Clock::time_point taken);
    Clock::time_point GetDeadline() const;

    const CServiceContext m_context;
    CDocumentTexts& m_texts;
    std::shared_ptr<IStore> m_pStore;  ///< until the thread has it
    IStepClock& m_clock;
    const OnLoad m_onLoad;
    CWatchdog m_watchdog;
    std::thread m_thread;
    bool m_bLateCall = false;  ///< when the thread has ended

    /// @name On the engine's thread alone
    /// @{
    std::unique_ptr<CViewMaker> m_pViews;
    bool m_bLoaded = false;
    bool m_bTriedToLoad = false;
    std::string m_strFailure;  ///< of the last load
    CLoadRetry m_retry;
    EFault m_eCommitFault = EFault::NONE;  ///< of the last commit
    bool m_bViewIsOld = false;             ///< reports came since
    Clock::time_point m_viewMade;
    /// @}
};
