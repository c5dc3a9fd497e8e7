#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "common/compact_text.h"
#include "common/container_load.h"
#include "common/numbered.h"
#include "common/sorted_runs.h"
#include "common/task_index.h"
#include "framework_service/cluster_moment.h"

/// A task in a container, as far as a schedule wants to know it.
struct CHeldTask {
    CCompactText id;
    TaskCosts costs{};
    uint32_t uiContainer = NUMERIC_NONE;
    uint32_t uiNext = NUMERIC_NONE;  ///< the container's next
    bool bSupportShift = false;
    bool bHeld = false;  ///< of the tasks of this id, that of the first container by address
    // While the tasks of a container are read:
    bool bTold = false;     ///< it is there again
    bool bSkipped = false;  ///< tasks behind it were told first
};

/// All containers of one type with their tasks, kept from one decision to the next and brought up
/// to date by what has changed: the containers that may take tasks in the order in which they get
/// them, and each task under its id. Containers and tasks go by numbers of the view's own, which
/// stay theirs until it follows the next moment.
///
/// A container is usable when it takes work (work_state.h). Usable containers are ordered by load,
/// then by net ratio, then by the number of their tasks, then by address. Of a task that stands in
/// several containers the first by address holds it; within one container its first entry counts,
/// but all add to the load.
///
/// Shared by all threads of a plug-in: everything but the constructor, GetMutex and Forget is for
/// whoever holds the mutex. The host is never called.
class CClusterView {
public:
    CClusterView(const std::string& strContainerType, LoadFunc pLoad);
    CClusterView(const CClusterView&) = delete;
    CClusterView& operator=(const CClusterView&) = delete;

    std::mutex& GetMutex() { return m_mutex; }

    /// Gives all memory back: the next moment is read whole.
    void Forget();

    /// Brings the view to that moment. False, with nothing changed, when it is beyond it already.
    bool Follow(const CClusterMoment& moment);

    /// @name Look-ups. NUMERIC_NONE when there is none.
    /// @{
    uint32_t FindContainer(const CContainerAddr& addr) const;

    /// The task of that id where it is held.
    uint32_t FindTask(std::string_view taskId) const;

    /// The first usable container, in their order, that is wanted(number).
    template <typename Predicate>
    uint32_t FindUsable(const Predicate& isWanted) const {
        return m_byLoad.FindFirst(isWanted);
    }

    /// The last usable container with a finite load.
    uint32_t FindFullest() const;
    /// @}

    /// Calls visit(number) for each container, usable or not, in the order of the addresses.
    template <typename Visitor>
    void VisitContainers(const Visitor& visit) const {
        m_byAddress.FindFirst([&visit](uint32_t uiContainer) {
            visit(uiContainer);
            return false;
        });
    }

    CContainerAddr GetAddr(uint32_t uiContainer) const {
        return {m_containers[uiContainer].strNodeId, m_strContainerType};
    }
    bool IsUsable(uint32_t uiContainer) const { return m_containers[uiContainer].IsUsable(); }

    /// Why a container is not usable; null for a usable one.
    const char* WhyNotUsable(uint32_t uiContainer) const {
        return m_containers[uiContainer].WhyNotUsable();
    }
    const CContainerLoad& GetLoad(uint32_t uiContainer) const {
        return m_containers[uiContainer].load;
    }
    double Measure(const CContainerLoad& load) const { return m_pLoad(load); }
    const CHeldTask& GetTask(uint32_t uiTask) const { return m_tasks[uiTask]; }

    /// Calls visit(number) for each task of the container that it holds.
    template <typename Visitor>
    void VisitHeldTasks(uint32_t uiContainer, const Visitor& visit) const {
        for (uint32_t uiTask = m_containers[uiContainer].uiFirstTask; uiTask != NUMERIC_NONE;
             uiTask = m_tasks[uiTask].uiNext) {
            if (m_tasks[uiTask].bHeld) {
                visit(uiTask);
            }
        }
    }

    /// Gives the container another load, and its place in the order. What it reports next replaces
    /// that: whoever tries something out sets the former load again.
    void SetLoad(uint32_t uiContainer, const CContainerLoad& load);

private:
    static constexpr char PSZ_NOT_THERE[] = "the container is not there";

    struct CContainerEntry {
        std::string strNodeId;
        CContainerLoad load;
        ResourceFigures taskSum{};
        uint64_t ullTaskTable = 0;  ///< CContainer::GetTaskTableNumber when the tasks were read
        uint32_t uiFirstTask = NUMERIC_NONE;
        uint32_t uiLastTask = NUMERIC_NONE;
        const char* pszNotReady = PSZ_NOT_THERE;  ///< of WhyNotReady
        const char* pszNoHost = nullptr;          ///< of WhyNoHost

        const char* WhyNotUsable() const {
            return pszNotReady != nullptr ? pszNotReady : pszNoHost;
        }
        bool IsUsable() const { return WhyNotUsable() == nullptr; }
    };

    struct CByAddress {
        bool operator()(uint32_t uiLeft, uint32_t uiRight) const {
            return view.IsAhead(view.m_containers[uiLeft].strNodeId,
                                view.m_containers[uiRight].strNodeId);
        }
        const CClusterView& view;
    };

    struct CByLoad {
        bool operator()(uint32_t uiLeft, uint32_t uiRight) const;
        const CClusterView& view;
    };

    void Clear();

    /// Does the address on the one node come before that on the other?
    bool IsAhead(const std::string& strLeftNodeId, const std::string& strRightNodeId) const;

    uint32_t FindOnNode(const std::string& strNodeId) const;

    /// @name Following the containers
    /// @{
    void Read(const CContainerAddr& addr, const CContainer& container,
              const CClusterMoment& moment);
    void Drop(const CContainerAddr& addr);
    uint32_t AddContainer(const std::string& strNodeId);

    /// Changes what the order goes by.
    template <typename Change>
    void Rearrange(uint32_t uiContainer, const Change& change);
    /// @}

    /// @name Following the nodes
    /// @{
    void FollowNodes(const CClusterMoment& moment);
    void SetHost(uint32_t uiContainer, const CNode* pNode);
    /// @}

    /// @name Following the tasks
    /// @{
    void FollowTasks(uint32_t uiContainer, const CContainer& container);
    void ReadTasks(uint32_t uiContainer, const std::list<CResourceTask>& taskTable);

    /// Reads what stands behind the entries that were read: so many as the load counts.
    void ReadMoreTasks(uint32_t uiContainer, const std::list<CResourceTask>& taskTable);

    /// Puts the task behind those of the container.
    void Append(CContainerEntry& entry, uint32_t uiTask);

    /// Skips the former tasks from the one on until the other.
    void SkipUntil(uint32_t uiTask, uint32_t uiFormer);

    void DropSkippedTasks();
    uint32_t FindTaskIn(uint32_t uiContainer, std::string_view taskId) const;
    uint32_t AddTask(uint32_t uiContainer, std::string_view taskId);
    void DropTask(uint32_t uiTask);

    /// The first container by address that has a task of that id; its task.
    uint32_t FindFirstTask(std::string_view taskId) const;
    /// @}

    const std::string m_strContainerType;
    const LoadFunc m_pLoad;
    std::mutex m_mutex;

    // Guarded by m_mutex.
    uint64_t m_ullContainerNumber = 0;  ///< of the moments that were followed; 0: none
    uint64_t m_ullNodeNumber = 0;
    CNumbered<CContainerEntry> m_containers;
    CSortedRuns<CByAddress> m_byAddress{CByAddress{*this}};
    CSortedRuns<CByLoad> m_byLoad{CByLoad{*this}};  ///< the usable ones

    /// The containers that name another node than that of their address; it is that one's state
    /// that counts.
    std::map<uint32_t, std::string> m_strangers;

    CNumbered<CHeldTask> m_tasks;
    CTaskIndex m_taskIndex;           ///< by the hash of their ids
    std::vector<uint32_t> m_skipped;  ///< while tasks are read; its memory is kept
};
