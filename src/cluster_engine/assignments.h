#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cluster_engine/engine_store.h"
#include "cluster_engine/state.h"

/// The most that one task may take of a document.
inline constexpr uint32_t NUMERIC_MAX_TASK_BYTES = 16384;

/// Where work is whose container left and that waits for another: below no node.
inline CContainerAddr HomelessOf(const std::string& strType) {
    return {std::string(), strType};
}
inline bool IsHomeless(const CContainerAddr& addr) {
    return addr.GetNodeId().empty();
}

struct CAssignmentDocument;

/// What each container is to do, in memory and in the store. A container has numbered documents,
/// each below the store's limit, and a task keeps its document while it stays. Work without a
/// container has documents of its type.
///
/// A change counts when Write went well. A task that moves is written where it enters before it
/// is taken out where it leaves, so that a stop in between leaves it in both: of two documents that
/// name a task the higher decision counts, and at a tie the one that says it came from the other.
class CAssignments {
    struct CDocumentKey {
        CContainerAddr addr;
        uint32_t uiNumber;
        bool operator<(const CDocumentKey& other) const;
    };

    /// What of a document is not in the store yet.
    struct CChange {
        bool bEntered = false;
        bool bWritten = false;                         ///< since the last change
        std::map<std::string, CAssignedTask> leaving;  ///< moved away, by id
    };

public:
    CAssignments(CClusterState& state, CEngineStore& store) : m_state(state), m_store(store) {}

    /// @name Look-ups; null when there is none
    /// @{

    /// A homeless address finds what is homeless of its type.
    CContainerRecord* Find(const CContainerAddr& addr);
    CAssignedTask* Find(const CContainerAddr& addr, const std::string& strTaskId);

    /// Who has the task; valid until the next change.
    const CContainerAddr* Holder(const std::string& strType, const std::string& strTaskId) const;

    /// Who has documents in the store, members and such as have left and whose documents are not
    /// emptied yet.
    const std::set<CContainerAddr>& GetWithDocuments() const { return m_indexed; }

    /// Does a container that has not fallen silent run the task though another has it?
    bool RunsElsewhere(const std::string& strType, const std::string& strTaskId) const;
    /// @}

    /// @name Changes
    /// @{

    /// The task belongs there from now on, and nowhere else. The container is known, or homeless.
    void Give(const CContainerAddr& addr, CAssignedTask task);

    /// The task is over, wherever it is. Who has it, and who runs it, is told to drop it.
    void End(const std::string& strType, const std::string& strTaskId);

    /// The container runs on with these, which others have.
    void SetForeign(const CContainerAddr& addr, std::set<std::string> taskIds);

    /// The container is told to drop it, until it reports without it.
    void Drop(const CContainerAddr& addr, const std::string& strTaskId);

    /// The container has reported without what it was to drop.
    void ForgetGone(const CContainerAddr& addr, const std::string& strTaskId);

    /// The container, which has no tasks, is no member any more: its documents are emptied.
    void Remove(const CContainerAddr& addr);
    /// @}

    /// Fills the records of the state's containers, and the homeless, from the store: whoever has
    /// documents and is no member any more has left, and its work is homeless. Documents
    /// that cannot be read are named by their suffixes, their containers marked, and they are never
    /// written. Returns 0, or the code of a store that failed, with the state half filled.
    int Load(std::vector<std::string>& unreadable);

    /// Who has documents in the store.
    struct COwners {
        std::set<CContainerAddr> all;         ///< GetWithDocuments
        std::set<CContainerAddr> unreadLeft;  ///< who left, with documents that cannot be read
    };
    COwners GetOwners() const { return {m_indexed, m_unreadLeft}; }

    /// The state's records came from elsewhere than the store, and are as the store has them.
    void Restore(COwners owners);

    /// Empties what documents a container that joins has from an earlier life. Returns 0, the code
    /// of a store that failed, or ORVA_DATA_INVALID for one that cannot be read, which stays.
    int Renew(const CContainerAddr& addr);

    bool IsDirty() const { return m_bIndexDirty || !m_dirty.empty(); }

    /// Has what the container is to do changed since it was written last?
    bool IsDirty(const CContainerAddr& addr) const;

    /// Writes what changed since it was written last. Returns 0 or the first code; what is not
    /// written is tried again by the next call.
    int Write();

    /// The bytes that a task takes of a document.
    static uint32_t BytesOf(const CAssignedTask& task);

    /// @name An input that is refused in the end
    /// @{

    /// What there is beside the state.
    struct CMark {
        std::unordered_map<std::string, CContainerAddr> holders;
        std::map<CDocumentKey, CChange> dirty;
        bool bIndexDirty = false;
    };
    CMark Remember() const { return {m_holders, m_dirty, m_bIndexDirty}; }

    /// Writes the index and what entered somewhere: from then on a start finds each task where it
    /// belongs, since what it left is emptied by Write alone. Returns 0 or the first code.
    int WriteEntered();

    /// Goes back to the mark, when nothing but WriteEntered has written since and the state has
    /// gone back already. Documents that may have been written are written again.
    void GoBack(CMark mark);
    /// @}

private:
    CChange& Change(const CContainerAddr& addr, uint32_t uiNumber);
    void Insert(const CContainerAddr& addr, CAssignedTask task);
    CAssignedTask TakeOut(const CContainerAddr& addr, const std::string& strTaskId);
    void SettleTwice(const CContainerAddr& addr, CAssignedTask task);

    void NoteGone(const CContainerAddr& addr, const std::string& strTaskId, const CGoneTask& gone);
    void TakeDocument(const CContainerAddr& addr, uint32_t uiNumber,
                      const CAssignmentDocument& document);
    void ForgetReturned(const CContainerAddr& addr);

    /// A document with its change.
    using Dirty = std::map<CDocumentKey, CChange>::value_type;

    std::string TextOf(const Dirty& dirty, bool bWithLeaving);

    /// Writes the documents that are wanted, several at once, and tells of each when it is written.
    /// Returns 0 or the first code.
    template <typename Predicate, typename OnWritten>
    int WriteDocuments(const Predicate& isWanted, bool bWithLeaving, const OnWritten& onWritten);
    void ReleaseLeaving(Dirty& dirty);
    int ForgetLeft();
    int WriteIndex();
    int ReadIndex(std::vector<std::string>& unreadable);
    int ReadDocuments(const CContainerAddr& addr, CContainerRecord& record,
                      std::vector<std::string>& unreadable);
    int ReadOf(const CContainerAddr& addr, std::vector<std::string>& unreadable);

    CClusterState& m_state;
    CEngineStore& m_store;
    std::unordered_map<std::string, CContainerAddr> m_holders;  ///< by type and id; never walked
    std::map<CDocumentKey, CChange> m_dirty;
    bool m_bIndexDirty = false;
    std::set<CContainerAddr> m_indexed;     ///< GetWithDocuments
    std::set<CContainerAddr> m_unreadLeft;  ///< who left, with documents that cannot be read
};
