#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "reference_host/store.h"

/// A document that a change gives another text.
struct CStagedChange {
    std::string strPath;
    std::optional<std::string> before;  ///< nothing: it was absent or without data
    std::string strAfter;
};

/// The store as a command that changes something sees it: each node is read once, with its version,
/// and what is written stays here, so that the library's own operations work out the change and
/// nothing has happened yet. CommitChanges then writes the changed texts, all or none, if what the
/// change was computed from is still so. Callable from any thread, as a store is. Watchers are
/// never called.
class CStage : public IStore, public std::enable_shared_from_this<CStage> {
public:
    explicit CStage(std::shared_ptr<IStore> pStore);

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override;
    int Write(const std::string& strPath, const std::string& strText) override;
    int List(const std::string& strPath, std::vector<std::string>& children) override;

    /// Conditions count as kept: CommitChanges has its own.
    int Commit(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts) override;

    /// The store behind it, for who writes at once.
    const std::shared_ptr<IStore>& GetStore() const { return m_pStore; }

    /// Forgets all that was read and written: the next read is of the store as it is then.
    void Restart();

    /// Drops what was written until now, such as by a plug-in that was loaded. What is read or
    /// written from here on is what the change is computed from.
    void BeginChange();

    /// The documents that would change, in the order of their paths.
    std::vector<CStagedChange> GetChanges() const;

    /// Writes the changes. Returns 0 or what IStore::Commit answers.
    int CommitChanges();

    /// Those documents of the change's ground that another has changed since they were read, as
    /// they were (before) and are now (strAfter; empty where there is no text any more). Returns 0,
    /// or the store's code.
    int FindForeignChanges(std::vector<CStagedChange>& changes);

private:
    struct CNode {
        CStoreAnswer found;
        std::optional<std::string> written;
        bool bGround = false;  ///< the change is computed from it
    };

    /// The node, read from the store where that has not been done. Null, with the code, on failure.
    CNode* GetNodeLocked(const std::string& strPath, int& iCode);

    const std::shared_ptr<IStore> m_pStore;
    mutable std::mutex m_mutex;  ///< guards everything below
    std::map<std::string, CNode> m_nodes;
    bool m_bChanging = false;
};
