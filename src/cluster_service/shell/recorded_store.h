#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "cluster_engine/journal.h"
#include "reference_host/store.h"

/// A store of which is told what a journal needs: what was written, and by whom but us. Stands
/// behind the gate. Callable from any thread.
class CRecordedStore : public IStore {
public:
    using OnChance = std::function<void(const CChance&)>;
    using OnWrite = std::function<void(const std::string& strPath, const std::string& strText)>;

    explicit CRecordedStore(std::shared_ptr<IStore> pStore) : m_pStore(std::move(pStore)) {}

    /// The store has what the journal began with.
    CRecordedStore(std::shared_ptr<IStore> pStore, const CJournalHeader& header);

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override;
    int Write(const std::string& strPath, const std::string& strText) override;
    int List(const std::string& strPath, std::vector<std::string>& children) override;
    int Commit(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts) override;

    /// From now on chances and writes are told, on the thread of the call.
    void Listen(OnChance onChance, OnWrite onWrite);

    /// Calls count from 1 again.
    void BeginInput();
    uint64_t GetCalls() const;

    /// All that was read or written so far.
    void FillHeader(CJournalHeader& header) const;

private:
    /// Counts a call, and tells of a failure.
    int Done(int iCode);
    void Wrote(const CStoreText& text);

    const std::shared_ptr<IStore> m_pStore;
    mutable std::recursive_mutex m_mutex;  ///< guards everything below
    OnChance m_onChance;
    OnWrite m_onWrite;
    uint64_t m_ullCalls = 0;
    std::map<std::string, std::optional<std::string>> m_known;  ///< by path: what is there
};
