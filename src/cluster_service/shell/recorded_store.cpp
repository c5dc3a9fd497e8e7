#include "shell/recorded_store.h"

#include <utility>

CRecordedStore::CRecordedStore(std::shared_ptr<IStore> pStore, const CJournalHeader& header)
    : m_pStore(std::move(pStore)), m_known(header.texts.begin(), header.texts.end()) {
    for (const std::string& strPath : header.bare) {
        m_known[strPath] = std::nullopt;
    }
}

int CRecordedStore::Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) {
    const int iCode = Done(m_pStore->Read(strPath, pWatcher, answer));
    if (iCode != 0) {
        return iCode;
    }
    const std::lock_guard<std::recursive_mutex> guard(m_mutex);
    const auto it = m_known.find(strPath);
    const bool bKnown = it != m_known.end();
    if (bKnown == answer.bExists && (!bKnown || it->second == answer.text)) {
        return iCode;
    }
    if (answer.bExists) {
        m_known[strPath] = answer.text;
    } else {
        m_known.erase(strPath);
    }
    if (m_onChance) {
        m_onChance(CForeignText{m_ullCalls, strPath, answer.bExists, answer.text});
    }
    return iCode;
}

int CRecordedStore::Write(const std::string& strPath, const std::string& strText) {
    const int iCode = Done(m_pStore->Write(strPath, strText));
    if (iCode == 0) {
        Wrote({strPath, strText});
    }
    return iCode;
}

int CRecordedStore::List(const std::string& strPath, std::vector<std::string>& children) {
    return Done(m_pStore->List(strPath, children));
}

int CRecordedStore::Commit(const std::vector<CStoreCondition>& conditions,
                           const std::vector<CStoreText>& texts) {
    const int iCode = Done(m_pStore->Commit(conditions, texts));
    for (std::size_t ui = 0; ui < texts.size() && iCode == 0; ++ui) {
        Wrote(texts[ui]);
    }
    return iCode;
}

void CRecordedStore::Listen(OnChance onChance, OnWrite onWrite) {
    const std::lock_guard<std::recursive_mutex> guard(m_mutex);
    m_onChance = std::move(onChance);
    m_onWrite = std::move(onWrite);
}

void CRecordedStore::BeginInput() {
    const std::lock_guard<std::recursive_mutex> guard(m_mutex);
    m_ullCalls = 0;
}

uint64_t CRecordedStore::GetCalls() const {
    const std::lock_guard<std::recursive_mutex> guard(m_mutex);
    return m_ullCalls;
}

void CRecordedStore::FillHeader(CJournalHeader& header) const {
    const std::lock_guard<std::recursive_mutex> guard(m_mutex);
    for (const auto& [strPath, text] : m_known) {
        if (text) {
            header.texts[strPath] = *text;
        } else {
            header.bare.push_back(strPath);
        }
    }
}

int CRecordedStore::Done(int iCode) {
    const std::lock_guard<std::recursive_mutex> guard(m_mutex);
    ++m_ullCalls;
    if (iCode != 0 && m_onChance) {
        m_onChance(CStoreFailed{m_ullCalls, iCode});
    }
    return iCode;
}

void CRecordedStore::Wrote(const CStoreText& text) {
    const std::lock_guard<std::recursive_mutex> guard(m_mutex);
    m_known[text.strPath] = text.strText;
    if (m_onWrite) {
        m_onWrite(text.strPath, text.strText);
    }
}
