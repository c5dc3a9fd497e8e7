#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cluster_engine/host.h"
#include "cluster_engine/journal.h"
#include "reference_host/memory_store.h"

/// A store and a runner that answer as those of a journal did: what was read and written is in
/// memory, what failed fails again, what came late is not made. On the engine's thread alone.
class CReplay : public IStore, public IPluginRunner {
public:
    /// The store begins with the header's texts.
    explicit CReplay(const CJournalHeader& header);

    /// What happens until the next input.
    void BeginInput(std::vector<CChance> chances);

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override;
    int Write(const std::string& strPath, const std::string& strText) override;
    int Commit(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts) override;

    bool Run(const std::string& strPlugin, const std::string& strOperation,
             std::shared_ptr<std::function<void()>> pCall) override;
    bool IsBusy(const std::string& strPlugin) override;

private:
    /// What a call that came late left behind: the decisions that it took.
    void Repeat(const CLateCall& late);

    /// Counts a call of the store: the code that it failed with, or 0.
    int BeginCall();

    /// The chance of that kind that is wanted; null when there is none.
    template <typename Kind, typename Predicate>
    const Kind* Find(const Predicate& isWanted) const;

    CMemoryStore m_store;
    std::vector<CChance> m_chances;
    uint64_t m_ullStoreCalls = 0;
    uint64_t m_ullPluginCalls = 0;
};
