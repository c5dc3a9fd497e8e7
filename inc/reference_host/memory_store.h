#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "reference_host/store.h"

/// A store that lives in memory. Watchers run on the writing thread, after the store's own mutex is
/// released. For tests it fails a chosen call, counts its calls, shows what it holds and takes a
/// held name away.
class [[gnu::visibility("default")]] CMemoryStore : public IStore {
public:
    CMemoryStore();
    ~CMemoryStore() override;

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override;
    int Write(const std::string& strPath, const std::string& strText) override;
    int List(const std::string& strPath, std::vector<std::string>& children) override;
    int Commit(const std::vector<CStoreCondition>& conditions, const std::vector<CStoreText>& texts)
        override;
    int Hold(const std::string& strPath, const std::string& strText, const HoldLost& onLost,
             CStoreAnswer& holder) override;
    int Release(const std::string& strPath) override;
    int FindHolder(const std::string& strPath, CStoreAnswer& holder) override;

    /// Makes the uiNth call from now, 1 being the next, fail with iCode: once, the calls of IStore
    /// counted together. A call that fails so leaves the store, the watches and the answer alone.
    void FailCall(unsigned int uiNth, int iCode);

    /// How many calls of IStore there were, failed ones included.
    unsigned int GetCallCount() const;

    /// The text of a node; nothing when it is absent or without data.
    std::optional<std::string> Get(const std::string& strPath) const;

    /// As Get, but tells an absent node from one without data.
    CStoreAnswer GetNode(const std::string& strPath) const;

    /// Puts a node there, without data for std::nullopt, or takes it away: no call is counted or
    /// failed, and no watcher fires.
    void Put(const std::string& strPath, const std::optional<std::string>& text);
    void Erase(const std::string& strPath);

    /// Ends the hold of a name as the loss of a session does, and tells so on this thread.
    void LoseHold(const std::string& strPath);

private:
    struct CState;

    const std::unique_ptr<CState> m_pState;
};
