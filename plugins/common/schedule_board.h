#pragma once

#include <cstdint>
#include <list>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "common/cluster_view.h"
#include "framework_service/base_data.h"
#include "framework_service/cluster_moment.h"
#include "framework_service/placement_reason.h"
#include "framework_service/resource_task.h"

/// One task on its way.
struct CTaskMove {
    CResourceTask task;
    CContainerAddr from;
    CContainerAddr to;
};

/// One decision: what is tried out on a view that stands at the present moment, so that each step
/// sees those before it, and undone at the end. The view is this thread's alone as long as the
/// board lives: nothing is logged or stored meanwhile. Without the registries' locks there are no
/// containers.
class CScheduleBoard {
public:
    explicit CScheduleBoard(CClusterView& view);
    ~CScheduleBoard();
    CScheduleBoard(const CScheduleBoard&) = delete;
    CScheduleBoard& operator=(const CScheduleBoard&) = delete;

    /// Names the container for the task: the first usable one, in the view's order, that has room;
    /// nothing when none has. A task that a usable container holds stays there, unless bReschedule:
    /// then it goes to any other. To be asked once for each task.
    std::optional<CContainerAddr> Place(const CResourceTask& task, bool bReschedule);

    /// Appends an entry for each container, in the order of the addresses: may it take the task
    /// now? As Place sees it: the usable container that holds the task may keep it, and any other
    /// needs room.
    void Explain(const CResourceTask& task, std::list<CPlacementReason>& reasons) const;

    /// Moves the task between the two containers, once for each task. Returns 0; ORVA_PARA_INVALID
    /// when the first does not hold it or both are the same; ORVA_SYS_NO_SUPPORT when it must not
    /// move; ORVA_FAIL when the second is not usable or has no room.
    int Shift(const CResourceTask& task, const CContainerAddr& from, const CContainerAddr& to);

    /// Moves tasks from the fullest to the emptiest container, the one first that brings them
    /// closest and each at most once, until they are within the threshold or no move helps.
    std::vector<CTaskMove> Balance(double fThreshold);

private:
    /// The container that holds the task, usable or not; NUMERIC_NONE when none does.
    uint32_t HolderOf(uint32_t uiHeldTask) const;

    /// The task that brings the two closest; NUMERIC_NONE when no move helps.
    uint32_t FindBestMove(uint32_t uiFullest, uint32_t uiEmptiest) const;

    /// Reads the tasks themselves, of which the view knows little, into the moves.
    void ReadTasks(const std::vector<uint32_t>& movedTasks, std::vector<CTaskMove>& moves) const;

    /// Counts the costs where the task goes, and takes them off where it is held.
    void Move(uint32_t uiHeldTask, const TaskCosts& costs, uint32_t uiTo);

    template <typename Change>
    void ChangeLoad(uint32_t uiContainer, const Change& change);

    CClusterView& m_view;
    std::optional<CClusterMoment> m_moment;
    std::unique_lock<std::mutex> m_lock;  ///< behind the moment, whose end may take its time
    std::unordered_map<uint32_t, CContainerLoad> m_formerLoads;
    std::unordered_set<uint32_t> m_movedTasks;
};
