#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/store.h"

/// A store that refuses what a test wants refused, and notes what was written. Callable from any
/// thread.
class CBrokenStore : public IStore {
public:
    explicit CBrokenStore(std::shared_ptr<IStore> pStore) : m_pStore(std::move(pStore)) {}

    /// From now on calls on paths that hold the text answer the code; 0 mends it.
    void Break(const std::string& strPart, int iCode) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_strPart = strPart;
        m_iCode = iCode;
    }

    /// The paths that were written since it was asked last, in their order.
    std::vector<std::string> TakeWrites() {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return std::exchange(m_writes, {});
    }

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override {
        const int iCode = CodeFor(strPath);
        return iCode != 0 ? iCode : m_pStore->Read(strPath, pWatcher, answer);
    }

    int Write(const std::string& strPath, const std::string& strText) override {
        return Write({{strPath, strText}}, [&] { return m_pStore->Write(strPath, strText); });
    }

    int Commit(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts) override {
        return Write(texts, [&] { return m_pStore->Commit(conditions, texts); });
    }

private:
    template <typename Operation>
    int Write(const std::vector<CStoreText>& texts, const Operation& operation) {
        for (const CStoreText& text : texts) {
            if (const int iCode = CodeFor(text.strPath); iCode != 0) {
                return iCode;
            }
        }
        const int iCode = operation();
        const std::lock_guard<std::mutex> guard(m_mutex);
        for (auto it = texts.begin(); it != texts.end() && iCode == 0; ++it) {
            m_writes.push_back(it->strPath);
        }
        return iCode;
    }

    int CodeFor(const std::string& strPath) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return strPath.find(m_strPart) != std::string::npos ? m_iCode : 0;
    }

    const std::shared_ptr<IStore> m_pStore;
    std::mutex m_mutex;  ///< guards everything below
    std::string m_strPart;
    int m_iCode = 0;
    std::vector<std::string> m_writes;
};
