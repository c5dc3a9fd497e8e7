#include "serve/metered_store.h"

#include <chrono>

#include "serve/worker_runner.h"

int CMeteredStore::Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) {
    return Measure("read", strPath, [&] { return m_pStore->Read(strPath, pWatcher, answer); });
}

int CMeteredStore::Write(const std::string& strPath, const std::string& strText) {
    const int iCode = Measure("write", strPath, [&] { return m_pStore->Write(strPath, strText); });
    if (iCode == 0) {
        m_texts.Wrote(strPath, strText);
    }
    return iCode;
}

int CMeteredStore::List(const std::string& strPath, std::vector<std::string>& children) {
    return Measure("list", strPath, [&] { return m_pStore->List(strPath, children); });
}

int CMeteredStore::Commit(const std::vector<CStoreCondition>& conditions,
                          const std::vector<CStoreText>& texts) {
    const int iCode = Measure("commit", texts.size() == 1 ? texts.front().strPath : "",
                              [&] { return m_pStore->Commit(conditions, texts); });
    for (auto it = texts.begin(); it != texts.end() && iCode == 0; ++it) {
        m_texts.Wrote(it->strPath, it->strText);
    }
    return iCode;
}

template <typename Call>
int CMeteredStore::Measure(const char* pszOperation, const std::string& strPath, const Call& call) {
    m_watchdog.Feed();
    const auto begun = std::chrono::steady_clock::now();
    int iCode = 0;
    {
        const CStoreStay stay;
        iCode = call();
    }
    m_metrics.CountStoreCall(pszOperation, strPath, std::chrono::steady_clock::now() - begun,
                             iCode);
    return iCode;
}
