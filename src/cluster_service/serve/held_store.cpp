#include "serve/held_store.h"

int CHeldStore::Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) {
    return m_pStore->Read(strPath, pWatcher, answer);
}

int CHeldStore::Write(const std::string& strPath, const std::string& strText) {
    return Commit({}, {{strPath, strText}});
}

int CHeldStore::List(const std::string& strPath, std::vector<std::string>& children) {
    return m_pStore->List(strPath, children);
}

int CHeldStore::Commit(const std::vector<CStoreCondition>& conditions,
                       const std::vector<CStoreText>& texts) {
    std::vector<CStoreCondition> all = conditions;
    all.push_back(m_hold);
    const int iCode = m_pStore->Commit(all, texts);
    if (iCode == STORE_CONDITION_FAILED && conditions.empty()) {
        m_onLost();
    }
    return iCode;
}
