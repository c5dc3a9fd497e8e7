#include "shell/replay.h"

#include <utility>

#include "framework_service/schedule_mgr.h"

CReplay::CReplay(const CJournalHeader& header) {
    for (const auto& [strPath, strText] : header.texts) {
        m_store.Put(strPath, strText);
    }
    for (const std::string& strPath : header.bare) {
        m_store.Put(strPath, std::nullopt);
    }
}

void CReplay::BeginInput(std::vector<CChance> chances) {
    m_chances = std::move(chances);
    m_ullStoreCalls = 0;
    m_ullPluginCalls = 0;
}

template <typename Kind, typename Predicate>
const Kind* CReplay::Find(const Predicate& isWanted) const {
    for (const CChance& chance : m_chances) {
        if (const Kind* const pKind = std::get_if<Kind>(&chance);
            pKind != nullptr && isWanted(*pKind)) {
            return pKind;
        }
    }
    return nullptr;
}

int CReplay::BeginCall() {
    ++m_ullStoreCalls;
    const auto* const pFailed = Find<CStoreFailed>(
        [this](const CStoreFailed& failed) { return failed.ullCall == m_ullStoreCalls; });
    return pFailed != nullptr ? pFailed->iCode : 0;
}

int CReplay::Read(const std::string& strPath, StoreWatcher /*pWatcher*/, CStoreAnswer& answer) {
    if (const int iCode = BeginCall(); iCode != 0) {
        return iCode;
    }
    const auto* const pText = Find<CForeignText>([&](const CForeignText& text) {
        return text.ullCall == m_ullStoreCalls && text.strPath == strPath;
    });
    if (pText != nullptr && pText->bExists) {
        m_store.Put(strPath, pText->text);
    } else if (pText != nullptr) {
        m_store.Erase(strPath);
    }
    return m_store.Read(strPath, nullptr, answer);
}

int CReplay::Write(const std::string& strPath, const std::string& strText) {
    const int iCode = BeginCall();
    return iCode != 0 ? iCode : m_store.Write(strPath, strText);
}

int CReplay::Commit(const std::vector<CStoreCondition>& /*conditions*/,
                    const std::vector<CStoreText>& texts) {
    const int iCode = BeginCall();
    return iCode != 0 ? iCode : m_store.Commit({}, texts);
}

bool CReplay::Run(const std::string& /*strPlugin*/, const std::string& /*strOperation*/,
                  std::shared_ptr<std::function<void()>> pCall) {
    ++m_ullPluginCalls;
    const auto* const pLate =
        Find<CLateCall>([this](const CLateCall& late) { return late.ullCall == m_ullPluginCalls; });
    if (pLate != nullptr) {
        Repeat(*pLate);
        return false;
    }
    (*pCall)();
    return true;
}

void CReplay::Repeat(const CLateCall& late) {
    CScheduleMgr& versions = CScheduleMgr::Instance();
    const uint64_t ullEnd = m_ullStoreCalls + late.ullStoreCalls;
    while (versions.GetDecisionVerNum() < late.ullDecision) {
        unsigned long long ullDecision = 0;
        versions.IncreaseDecisionVerNum(ullDecision);
    }
    m_ullStoreCalls = ullEnd;
}

bool CReplay::IsBusy(const std::string& strPlugin) {
    return Find<CStillBusy>([&](const CStillBusy& busy) { return busy.strPlugin == strPlugin; }) !=
           nullptr;
}
