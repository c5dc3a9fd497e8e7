#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "framework_service/base_data.h"
#include "framework_service/container.h"
#include "framework_service/detail/snapshot_table.h"
#include "framework_service/tarn_node.h"

/// The cluster at one moment: every container with its tasks and every node, as CContainerMgr and
/// CNodeMgr held them when it was taken, and what has changed since an earlier moment. For whoever
/// decides again and again, and wants to pay for what has changed instead of for what there is.
///
/// It behaves as a deep copy of both tables and costs two pointers: nothing that happens to the
/// cluster later shows in it, and it lives as long as its taker wants. But as long as it lives,
/// what it holds and the tables do not hold any more is kept in memory for it, and each change of
/// the tables copies a little. So take one, decide, let it go, and keep of it what the next
/// decision needs, with the two numbers that tell how far that goes:
///
///     class CMine {
///         std::map<CContainerAddr, CFigures> m_figures;
///         uint64_t m_ullNumber = 0;  // 0: nothing is known yet
///
///         void Follow(const CClusterMoment& moment) {
///             const auto learn = [this](const auto& addr, const CContainer* pContainer) {
///                 m_figures.erase(addr);
///                 if (pContainer != nullptr) {  // null: it is gone
///                     m_figures.emplace(addr, CFigures(*pContainer));
///                 }
///             };
///             if (!moment.VisitContainers(m_ullNumber, learn)) {
///                 m_figures.clear();  // too far behind: all is read anew
///                 moment.VisitContainers(0, learn);
///             }
///             m_ullNumber = moment.GetContainerNumber();
///         }
///     };
///
/// A report of figures changes a container without its tasks: whoever keeps something of these
/// keeps CContainer::GetTaskTableNumber with it, and reads CContainer::GetTaskTable again only when
/// that number is another, and by CContainer::GetTaskTableGrownSince perhaps only its end.
///
/// May be taken on any thread, also within a log line or a store call of the library. Of two that
/// are taken side by side on two threads each may be the later one in one table: a follower that
/// several threads share compares the numbers under its own lock. One object is for one thread at a
/// time; copies share what they hold and may go to other threads.
class CClusterMoment {
public:
    /// The tables as they are now: first the containers, then the nodes. Nothing when a lock cannot
    /// be had.
    static std::optional<CClusterMoment> Take();

    /// @name What stood there. References and pointers live as long as the moment.
    /// @{

    /// Null when there is no such container, by CContainerAddr's order.
    const CContainer* FindContainer(const CContainerAddr& containerAddr) const {
        return m_containers.Find(containerAddr);
    }

    /// Null when there is no such node.
    const CNode* FindNode(const std::string& strNodeId) const { return m_nodes.Find(strNodeId); }
    /// @}

    /// @name What has changed
    /// A later moment has the same number when its table is the same, else a higher one.
    /// @{
    uint64_t GetContainerNumber() const { return m_containers.LastChange(); }
    uint64_t GetNodeNumber() const { return m_nodes.LastChange(); }

    /// Tells what has changed since the moment with that number, or since 0: everything that is
    /// there. First visit(addr, nullptr) for each container that was removed, in the order of the
    /// removals, then visit(addr, &container) for each that is new or was changed in any way, in
    /// the order of the addresses. One that was removed and came back is told twice. Costs what has
    /// changed, and a glance at every 16th container.
    ///
    /// False, with nothing told, when it is not known: the table was loaded anew in between, more
    /// containers were removed than are left, or the number is that of a later moment.
    template <typename Visitor>
    bool VisitContainers(uint64_t ullSince, const Visitor& visit) const {
        return m_containers.VisitChanges(ullSince, visit);
    }

    /// The same for the nodes, with visit(strNodeId, pNode).
    template <typename Visitor>
    bool VisitNodes(uint64_t ullSince, const Visitor& visit) const {
        return m_nodes.VisitChanges(ullSince, visit);
    }
    /// @}

private:
    using CContainerTable = CSnapshotTable<CContainerAddr, CContainer>;
    using CNodeTable = CSnapshotTable<std::string, CNode>;

    CClusterMoment(CContainerTable containers, CNodeTable nodes)
        : m_containers(std::move(containers)), m_nodes(std::move(nodes)) {}

    CContainerTable m_containers;
    CNodeTable m_nodes;
};
