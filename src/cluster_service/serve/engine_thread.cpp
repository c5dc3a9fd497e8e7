#include "serve/engine_thread.h"

#include <algorithm>
#include <utility>

#include "reference_host/code_text.h"
#include "serve/document_name.h"

namespace {

constexpr std::size_t NUMERIC_INPUTS_A_COMMIT = 256;
constexpr std::chrono::milliseconds NUMERIC_LONGEST_WAIT{250};  // the watchdog waits too
constexpr std::chrono::milliseconds NUMERIC_VIEW_OF_REPORTS{100};

/// Of what is done, could not be written, and is tried again with each commit.
constexpr char PSZ_LATER[] = "it is not stored, but may still take effect when the store is back";

template <typename... Kinds>
bool IsOneOf(const InputBody& input) {
    return (std::holds_alternative<Kinds>(input) || ...);
}

template <typename Predicate>
bool AnyInput(const std::vector<CInputBatch>& batches, const Predicate& isWanted) {
    return std::any_of(batches.begin(), batches.end(), [&](const CInputBatch& batch) {
        return std::any_of(batch.inputs.begin(), batch.inputs.end(), isWanted);
    });
}

/// Reports, and what changes nothing.
bool IsSlight(const InputBody& input) {
    return IsReport(input) || IsOneOf<CDryRun, CExplain>(input);
}

/// Work, which changes no document that has a view of its own.
bool IsWork(const InputBody& input) {
    return IsSlight(input) || IsOneOf<CJob, CEndTasks, CManualShift, CHighSpeed>(input);
}

/// What is wrong with the documents themselves.
std::string FaultsOf(const CDocumentTexts::Texts& texts) {
    std::string strFaults;
    for (const EDocument eDocument : AllDocuments()) {
        if (const auto fault = FindFault(eDocument, texts.at(NameOf(eDocument)))) {
            strFaults += "; " + StorePath(StoreDocumentOf(eDocument)) + ": " + TextOf(*fault);
        }
    }
    return strFaults;
}

}  // namespace

CEngineThread::CEngineThread(const CServiceContext& context, CDocumentTexts& texts,
                             std::shared_ptr<IStore> pStore, IStepClock& clock, OnLoad onLoad)
    : m_context(context),
      m_texts(texts),
      m_pStore(std::move(pStore)),
      m_clock(clock),
      m_onLoad(std::move(onLoad)) {}

void CEngineThread::Start() {
    m_thread = std::thread([this] { Run(); });
}

void CEngineThread::Stop() {
    m_context.queue.End();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void CEngineThread::Run() {
    CEngineShell shell({std::move(m_pStore), m_clock, m_context.events, m_context.metrics, m_texts,
                        m_watchdog, m_context.settings});
    m_pViews = std::make_unique<CViewMaker>(shell.GetEngine(), m_texts);
    TryLoad(shell);
    while (!m_context.queue.IsWorkedOff()) {
        std::vector<CInputBatch> batches =
            m_context.queue.Take(NUMERIC_INPUTS_A_COMMIT, GetDeadline());
        m_watchdog.Feed();
        if (!m_bLoaded && !m_context.queue.IsWorkedOff() &&
            m_retry.IsDue(m_texts.Get(), Clock::now())) {
            TryLoad(shell);
        }
        if (!batches.empty() || m_bViewIsOld) {
            Work(shell, std::move(batches));
        }
    }
    m_context.view.Publish(m_pViews->MakeNotReady("stopped"));
    m_bLateCall = shell.HasLateCall();
}

/// A view that is old does not wait until something comes.
CEngineThread::Clock::time_point CEngineThread::GetDeadline() const {
    return m_bViewIsOld ? m_viewMade + NUMERIC_VIEW_OF_REPORTS
                        : Clock::now() + NUMERIC_LONGEST_WAIT;
}

void CEngineThread::TryLoad(CEngineShell& shell) {
    CLoadReport report;
    std::string strWhy;
    const CLoadRetry::Texts pTexts = m_texts.Get();
    Clock::time_point last = Clock::now();
    const int iCode =
        shell.Load(strWhy, [&](const std::string& strWhat, const std::string& strFound) {
            const Clock::time_point now = Clock::now();
            report.steps.push_back({strWhat, strFound, now - last});
            last = now;
        });
    m_bLoaded = iCode == 0;
    if (m_bLoaded) {
        m_context.view.Publish(m_pViews->Make());
    } else {
        report.strFailure = strWhy + ": " + CodeText(iCode) + FaultsOf(*pTexts);
        m_context.view.Publish(m_pViews->MakeNotReady(report.strFailure));
        m_retry.Failed(pTexts, Clock::now());
    }
    m_context.events.Publish();
    if (!m_bTriedToLoad || report.strFailure != m_strFailure) {
        m_onLoad(report);
    }
    m_bTriedToLoad = true;
    m_strFailure = report.strFailure;
}

void CEngineThread::Work(CEngineShell& shell, std::vector<CInputBatch> batches) {
    const Clock::time_point taken = Clock::now();
    std::vector<std::vector<CAnswer>> answers;
    answers.reserve(batches.size());
    for (const CInputBatch& batch : batches) {
        answers.push_back(Apply(shell, batch));
    }
    if (!batches.empty() && m_bLoaded) {
        Commit(shell);
    }
    if (AnyInput(batches, &IsOneOf<CReadStandardTasks>)) {
        m_pViews->ForgetStandardTasks();
    }
    if (AnyInput(batches, [](const InputBody& input) { return !IsWork(input); })) {
        m_pViews->ForgetRecords();
    }
    PublishView(shell, AnyInput(batches, [](const InputBody& input) { return !IsSlight(input); }));
    m_context.events.Publish();
    for (std::size_t ui = 0; ui < batches.size(); ++ui) {
        Answer(batches[ui], std::move(answers[ui]), taken);
    }
}

std::vector<CAnswer> CEngineThread::Apply(CEngineShell& shell, const CInputBatch& batch) {
    if (!m_bLoaded) {
        return {batch.inputs.size(), CAnswer::Refuse(EFault::NOT_LOADED, m_strFailure)};
    }
    std::vector<CAnswer> answers;
    answers.reserve(batch.inputs.size());
    for (const InputBody& input : batch.inputs) {
        answers.push_back(shell.Apply({batch.iTime, input}));
        m_watchdog.Feed();
    }
    return answers;
}

void CEngineThread::Commit(CEngineShell& shell) {
    const Clock::time_point begun = Clock::now();
    const int iCode = shell.Commit();
    m_context.metrics.CountCommit(Clock::now() - begun, iCode);
    m_eCommitFault = iCode == 0            ? EFault::NONE
                     : shell.IsStoreAway() ? EFault::STORE_AWAY
                                           : EFault::STORE_FAILED;
}

/// After a failed commit it shows what was committed before.
void CEngineThread::PublishView(CEngineShell& shell, bool bMore) {
    const bool bHappened = shell.TakeHappened();
    if (!m_bLoaded) {
        return;
    }
    m_bViewIsOld = true;
    if (!bMore && !bHappened && Clock::now() < m_viewMade + NUMERIC_VIEW_OF_REPORTS) {
        return;
    }
    m_context.view.Publish(m_eCommitFault == EFault::NONE
                               ? m_pViews->Make()
                               : m_pViews->MakeUncommitted(m_eCommitFault == EFault::STORE_AWAY));
    m_bViewIsOld = false;
    m_viewMade = Clock::now();
}

void CEngineThread::Answer(CInputBatch& batch, std::vector<CAnswer> answers,
                           Clock::time_point taken) {
    for (std::size_t ui = 0; ui < answers.size(); ++ui) {
        if (answers[ui].bDurable && m_eCommitFault != EFault::NONE) {
            answers[ui] = CAnswer::Refuse(m_eCommitFault, PSZ_LATER);
        }
        m_context.metrics.CountInput(batch.inputs[ui], answers[ui], taken - batch.entered,
                                     Clock::now() - batch.entered);
    }
    if (batch.onAnswers) {
        batch.onAnswers(std::move(answers));
    }
}
