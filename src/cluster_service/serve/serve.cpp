#include "serve/serve.h"

#include <unistd.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

#include "command/exit_code.h"
#include "reference_host/shown_text.h"
#include "serve/begin_anew.h"
#include "serve/end_in_time.h"
#include "serve/engine_thread.h"
#include "serve/http_server.h"
#include "serve/routes.h"
#include "serve/service_hold.h"
#include "serve/service_manager.h"
#include "serve/store_watch.h"
#include "serve/ticker.h"
#include "serve/wakeups.h"

namespace {

using Clock = std::chrono::steady_clock;

std::string Took(Clock::duration took) {
    std::ostringstream text;
    text.setf(std::ios::fixed);
    text.precision(1);
    text << " (" << std::chrono::duration<double, std::milli>(took).count() << " ms)";
    return text.str();
}

/// Each document with its size, or what is said of it instead.
std::string Found(const CDocumentTexts::Texts& texts) {
    std::string strFound;
    for (const auto& [strName, document] : texts) {
        strFound += (strFound.empty() ? "" : ", ") + strName + ' ';
        strFound += !document.bReadable ? "cannot be read"
                    : document.text     ? std::to_string(document.text->size()) + " bytes"
                                        : "absent";
    }
    return strFound;
}

/// A service, from its start to its end.
class CService {
public:
    CService(const CServiceSettings& settings, const CClusterPlace& place,
             std::shared_ptr<IStore> pStore, IStepClock& clock, const CWakeups& wakeups,
             std::ostream& output, std::ostream& errors)
        : m_settings(settings),
          m_clock(clock),
          m_wakeups(wakeups),
          m_output(output),
          m_errors(errors),
          m_hold(pStore, place, wakeups),
          m_queue(settings.uiQueueInputs),
          m_watch(std::move(pStore), m_texts, m_queue),
          m_server(MakeRoutes(m_context), {}, MakeNews()) {}

    /// The address, the hold, the documents, the cluster, and its time. Whoever asks before that is
    /// over is told so, and a cluster that cannot be loaded yet is waited for. Returns an exit
    /// code: other than EXIT_DONE, it cannot run.
    int Start() {
        std::string strWhy;
        if (!m_server.Start(m_settings.strListen, strWhy)) {
            m_errors << ShownText(strWhy) << std::endl;
            m_hold.SayHolder(m_errors);
            return EXIT_COULD_NOT;
        }
        const auto say = [this](const std::string& strLine) { Say(strLine); };
        if (const int iResult = m_hold.Take(m_server.GetUrl(), say, m_errors);
            iResult != EXIT_DONE) {
            return iResult;
        }
        const Clock::time_point begun = Clock::now();
        m_watch.Look();
        Say("documents: " + Found(*m_texts.Get()) + Took(Clock::now() - begun));
        m_pEngine =
            std::make_unique<CEngineThread>(m_context, m_texts, m_hold.GetStore(), m_clock,
                                            [this](const CLoadReport& report) { Say(report); });
        m_pEngine->Start();
        AwaitFirstLoad();
        m_watch.Start();
        m_ticker.Start();
        Say("listening on " + m_server.GetUrl());
        TellManager("READY=1");
        return EXIT_DONE;
    }

    bool Runs() const { return m_view.Get()->strNotReady.empty(); }

    /// Returns when the service is to end, or, true, to begin anew.
    bool AwaitEnd() {
        for (auto wakeup = m_wakeups.Await(); wakeup != EWakeup::STOP; wakeup = m_wakeups.Await()) {
            if (wakeup == EWakeup::HOLD_LOST) {
                return AwaitStore();
            }
        }
        return false;
    }

    std::string GetUrl() const { return m_server.GetUrl(); }

    /// What waits is worked off, plug-ins are taken down, and then connections end.
    void WorkOff() {
        TellManager("STOPPING=1");
        m_server.StopListening();
        m_ticker.Stop();
        if (m_pEngine != nullptr) {
            m_pEngine->Stop();
        }
        m_server.Stop();
    }

    /// False when a plug-in's call does not come back: then the process cannot go by itself.
    bool CloseStore() {
        m_watch.Stop();
        m_hold.LetGo();
        return m_pEngine == nullptr || !m_pEngine->HasLateCall();
    }

    void Say(const std::string& strLine) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_output << ShownText(strLine) << std::endl;
    }

private:
    /// A signal is left for AwaitEnd.
    void AwaitFirstLoad() {
        const auto wakeup = m_wakeups.Await();
        if (wakeup != EWakeup::TRIED_TO_LOAD) {
            m_wakeups.Send(*wakeup);
        }
    }

    /// The hold is lost: nothing is taken or shown before the store can be asked who has the
    /// cluster. Then all is read anew, which takes a new beginning: what the library is made of
    /// lives as long as its process. False when the service is to end instead.
    bool AwaitStore() {
        m_queue.Close();
        m_view.Close("the hold of the cluster is lost");
        m_ticker.Stop();
        Say("the hold of the cluster is lost: no input is taken");
        TellManager("STATUS=the hold of the cluster is lost");
        while (!m_hold.CanBeAsked()) {
            if (m_wakeups.Await(Clock::now() + std::chrono::seconds(1)) == EWakeup::STOP) {
                return false;
            }
        }
        Say("beginning anew");
        m_pEngine->Stop();
        m_server.Stop();
        return true;
    }

    CHttpNews MakeNews() {
        CHttpNews news;
        news.onAsked = [this] { m_queue.HandOver(); };
        news.onRefused = [this](const char* pszName) { m_metrics.CountRefused(pszName); };
        return news;
    }

    void Say(const CLoadReport& report) {
        for (const CLoadReport::CStep& step : report.steps) {
            Say(step.strWhat + ": " + step.strFound + Took(step.took));
        }
        if (report.strFailure.empty()) {
            TellManager("STATUS=the cluster is loaded");
        } else {
            Say("not ready: " + report.strFailure);
            TellManager("STATUS=not ready: " + ShownText(report.strFailure));
        }
        m_wakeups.Send(EWakeup::TRIED_TO_LOAD);
    }

    const CServiceSettings& m_settings;
    IStepClock& m_clock;
    const CWakeups& m_wakeups;
    std::mutex m_mutex;  ///< one line after the other
    std::ostream& m_output;
    std::ostream& m_errors;
    CServiceHold m_hold;
    CInputQueue m_queue;
    CPublishedView m_view;
    CEventLog m_events{FirstEventNumber()};
    CServiceMetrics m_metrics;
    const CServiceContext m_context{m_queue, m_view, m_events, m_metrics, m_settings};
    CDocumentTexts m_texts;
    CStoreWatch m_watch;
    CTicker m_ticker{m_queue};
    std::unique_ptr<CEngineThread> m_pEngine;  ///< none before the cluster is held
    CHttpServer m_server;
};

}  // namespace

int Serve(const CServiceSettings& settings, const CClusterPlace& place,
          std::shared_ptr<IStore> pStore, IStepClock& clock,
          const std::function<void(bool bRuns)>& onStarted, std::ostream& output,
          std::ostream& errors) {
    const CWakeups wakeups;
    CEndInTime end(wakeups);
    CService service(settings, place, std::move(pStore), clock, wakeups, output, errors);
    const int iExitCode = service.Start();
    onStarted(service.Runs());
    if (iExitCode == EXIT_DONE) {
        if (service.AwaitEnd() && end.LeaveSignals()) {
            BeginAnew(service.GetUrl(), errors);
        }
        service.Say("stopping");
    }
    end.Begin();
    service.WorkOff();
    end.WorkedOff(iExitCode);
    const bool bWhole = service.CloseStore();
    if (iExitCode == EXIT_DONE) {
        service.Say("stopped");
    }
    if (!bWhole) {
        _exit(iExitCode);
    }
    return iExitCode;
}
