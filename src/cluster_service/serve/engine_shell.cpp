#include "serve/engine_shell.h"

#include <chrono>
#include <ctime>
#include <utility>

#include "framework_service/plugin_mgr.h"
#include "operation_log/operation_log.h"

using namespace operation_log;

namespace {

constexpr char PSZ_WRITE_JOURNAL[] = "write the journal";

int64_t Now() {
    using Clock = std::chrono::system_clock;
    return Clock::to_time_t(Clock::now());
}

}  // namespace

CEngineShell::CJournal::CJournal(std::shared_ptr<IStore> pBehind, IPluginRunner& worker,
                                 const CJournalSettings& settings)
    : pStore(std::make_shared<CRecordedStore>(std::move(pBehind))),
      runner(worker, *pStore),
      record(*pStore, runner, settings) {}

CEngineShell::CEngineShell(const CParts& parts)
    : m_parts(parts),
      m_worker(
          parts.clock, std::chrono::milliseconds(parts.settings.iPluginMilliseconds),
          [&metrics = parts.metrics](const std::string& strPlugin, const std::string& strOperation,
                                     CWorkerRunner::Duration took, bool bBack) {
              metrics.CountPluginCall(strPlugin, strOperation, took, bBack);
          }),
      m_pMetered(std::make_shared<CMeteredStore>(parts.pStore, parts.metrics, parts.texts,
                                                 parts.watchdog)),
      m_pJournal(parts.settings.journal.strFile.empty()
                     ? nullptr
                     : std::make_unique<CJournal>(m_pMetered, m_worker, parts.settings.journal)),
      m_pGate(
          std::make_shared<CGateStore>(m_pJournal != nullptr ? m_pJournal->pStore : m_pMetered)),
      m_engine({*this,
                m_pJournal != nullptr ? static_cast<IPluginRunner&>(m_pJournal->runner) : m_worker,
                parts.clock, *m_pGate},
               parts.settings.engine) {
    SetStore(m_pGate);
}

CEngineShell::~CEngineShell() {
    if (!HasLateCall()) {
        CPluginMgr::Instance().UnLoadAllPlugin();
    }
    SetStore(nullptr);
}

int CEngineShell::Load(std::string& strWhy, const OnLoadStep& onStep) {
    const int iCode = m_engine.Load(Now(), strWhy, onStep);
    if (iCode == 0 && m_pJournal != nullptr) {
        m_pJournal->record.Begin(m_engine, m_parts.settings.engine);
        SayFaultOfJournal();
    }
    return iCode;
}

CAnswer CEngineShell::Apply(const CInput& input) {
    if (m_pJournal == nullptr) {
        return m_engine.Apply(input);
    }
    m_pJournal->record.Take(input);
    CAnswer answer = m_engine.Apply(input);
    m_pJournal->record.Take(answer);
    return answer;
}

int CEngineShell::Commit() {
    const int iCode = m_engine.Commit();
    if (m_pJournal != nullptr) {
        m_pJournal->record.Committed(m_engine, iCode, !m_pGate->IsAway());
        SayFaultOfJournal();
    }
    return iCode;
}

void CEngineShell::Take(const CEvent& event) {
    m_bHappened = true;
    m_parts.events.Take(event);
    m_parts.metrics.CountEvent(event);
    if (m_pJournal != nullptr) {
        m_pJournal->record.Take(event);
    }
}

/// The cluster goes on without it.
void CEngineShell::SayFaultOfJournal() {
    const std::string& strFault = m_pJournal->record.GetFault();
    if (strFault != m_pJournal->strFaultSaid) {
        LogWarning(PSZ_WRITE_JOURNAL, "%s", strFault.c_str());
        m_pJournal->strFaultSaid = strFault;
    }
}
