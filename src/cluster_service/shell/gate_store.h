#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "cluster_engine/host.h"
#include "reference_host/store.h"

/// The store as the engine's host has it, with a gate in front. Callable from any thread; what is
/// written while the gate is shut, or may wait, stays here and is read back by everyone.
class CGateStore : public IStore, public IStoreGate {
public:
    explicit CGateStore(std::shared_ptr<IStore> pStore);

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override;
    int Write(const std::string& strPath, const std::string& strText) override;
    int List(const std::string& strPath, std::vector<std::string>& children) override;

    /// While the gate is shut the conditions count as kept.
    int Commit(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts) override;

    void Shut() override;
    void Open() override;
    void LetWait(const std::string& strPath) override;
    bool IsAnyWaiting() override;
    int WriteWaiting() override;
    int WriteTogether(std::map<std::string, std::string> texts) override;
    bool IsAway() override;
    uint64_t GetFailures() override;

private:
    using Texts = std::map<std::string, std::string>;  ///< by path

    /// Counts what a call came to, and hands its code on.
    int Done(int iCode);

    /// Keeps the text for later if it may wait; false when it is to be written now.
    bool Wait(const std::string& strPath, const std::string& strText);

    /// Keeps the texts if the gate is shut; false when it is open.
    bool Keep(const std::vector<CStoreText>& texts);

    /// Keeps the texts, or writes them, whatever the store holds.
    int Put(std::vector<CStoreText> texts);

    /// Writes the texts, and with them what waits.
    int Send(const std::vector<CStoreCondition>& conditions, std::vector<CStoreText> texts);
    Texts GetWaiting();
    void ForgetWritten(const Texts& texts);

    const std::shared_ptr<IStore> m_pStore;
    std::mutex m_mutex;  ///< guards everything below
    bool m_bShut = false;
    bool m_bAway = false;
    uint64_t m_ullFailures = 0;
    std::string m_strMayWait;
    bool m_bNextWaits = false;  ///< the store has taken one of them
    Texts m_waiting;
    Texts m_kept;  ///< written since the gate was shut
};
