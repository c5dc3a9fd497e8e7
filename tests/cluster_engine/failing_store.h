#pragma once

#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/store.h"

/// Passes calls on until it is told to fail writes: from one on, until it is told otherwise.
class CFailingStore : public IStore {
public:
    explicit CFailingStore(std::shared_ptr<IStore> pStore) : m_pStore(std::move(pStore)) {}

    /// So many writes go well from now; those that follow, and all reads then, answer the code.
    void FailAfter(unsigned int uiWrites, int iCode) {
        m_uiWrites = uiWrites;
        m_iCode = iCode;
    }
    void Heal() { m_uiWrites = std::numeric_limits<unsigned int>::max(); }
    bool HasFailed() const { return m_bFailed; }

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override {
        return m_uiWrites == 0 ? Fail() : m_pStore->Read(strPath, pWatcher, answer);
    }
    int Write(const std::string& strPath, const std::string& strText) override {
        if (m_uiWrites == 0) {
            return Fail();
        }
        --m_uiWrites;
        return m_pStore->Write(strPath, strText);
    }
    int Commit(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts) override {
        if (m_uiWrites == 0) {
            return Fail();
        }
        --m_uiWrites;
        return m_pStore->Commit(conditions, texts);
    }
    int List(const std::string& strPath, std::vector<std::string>& children) override {
        return m_pStore->List(strPath, children);
    }

private:
    int Fail() {
        m_bFailed = true;
        return m_iCode;
    }

    const std::shared_ptr<IStore> m_pStore;
    unsigned int m_uiWrites = std::numeric_limits<unsigned int>::max();
    int m_iCode = 1;
    bool m_bFailed = false;
};
