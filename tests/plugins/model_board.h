#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "framework_service/base_data.h"
#include "framework_service/container.h"
#include "framework_service/resource_task.h"

/// The rules of the plug-ins' decisions, written down in the straightest way: everything is copied
/// and looked through for each decision. What the plug-ins answer is compared with it.
namespace model {

/// The figures of every RESOURCE_TYPE, wide enough for sums.
using ResourceFigures = std::array<int64_t, 5>;

/// A container as a schedule sees it. What it reports as used and what its tasks cost are two views
/// of the same thing, of which the larger counts: a task that was just placed is not reported yet,
/// and not all that is used belongs to a task.
class CContainerLoad {
public:
    /// taskList is what the container holds.
    CContainerLoad(const CContainerAddr& addr, const CContainer& container,
                   const std::list<CResourceTask>& taskList, bool bUsable);

    const CContainerAddr& GetAddr() const { return m_addr; }
    std::size_t GetTaskCount() const { return m_uiTasks; }

    /// May it take tasks? The library calls it available, and it is a normal member and not in
    /// fault shift.
    bool IsUsable() const { return m_bUsable; }

    /// Does every cost of the task still fit? A cost of nothing always fits.
    bool HasRoomFor(const CResourceTask& task) const;

    /// Used over total; infinite where the container has not reported a total.
    double GetRatio(RESOURCE_TYPE eType) const;

    void Take(const CResourceTask& task);
    void Give(const CResourceTask& task);

private:
    CContainerAddr m_addr;
    bool m_bUsable;
    ResourceFigures m_total;
    ResourceFigures m_used;
    std::size_t m_uiTasks;
};

/// What a plug-in spreads its tasks by: the lower, the sooner a container gets a task.
using LoadFunc = double (*)(const CContainerLoad&);

/// One task on its way.
struct CTaskMove {
    CResourceTask task;
    CContainerAddr from;
    CContainerAddr to;
};

/// All containers of a type with their tasks, copied once from the registry; a schedule is tried
/// out here, so that each of its steps sees those before it. Of equally loaded containers the one
/// with the lower net ratio comes first, then the one with fewer tasks, then the order of the
/// addresses.
class CScheduleBoard {
public:
    CScheduleBoard(const std::string& strContainerType, LoadFunc pLoad);
    CScheduleBoard(const CScheduleBoard&) = delete;
    CScheduleBoard& operator=(const CScheduleBoard&) = delete;

    /// Names the container for the task; null when none has room. A task that a usable container
    /// holds stays there, unless bReschedule: then it goes to any other.
    const CContainerLoad* Place(const CResourceTask& task, bool bReschedule);

    /// Moves the task between the two containers. Returns 0; ORVA_PARA_INVALID when the first does
    /// not hold it or both are the same; ORVA_SYS_NO_SUPPORT when it must not move; ORVA_FAIL when
    /// the second is not usable or has no room.
    int Shift(const CResourceTask& task, const CContainerAddr& from, const CContainerAddr& to);

    /// Moves tasks from the fullest to the emptiest container, the one first that brings them
    /// closest and each at most once, until they are within the threshold or no move helps.
    std::vector<CTaskMove> Balance(double fThreshold);

private:
    struct CPlacedTask {
        CResourceTask task;
        CContainerLoad* pHolder;
    };

    CContainerLoad* FindContainer(const CContainerAddr& addr);
    CContainerLoad* FindHolder(const std::string& strTaskId);
    CContainerLoad* FindLeastLoaded(const CResourceTask& task, const CContainerLoad* pExcept);
    const CPlacedTask* FindBestMove(const CContainerLoad& fullest, const CContainerLoad& emptiest,
                                    const std::set<std::string>& movedIds) const;
    bool IsLessLoaded(const CContainerLoad& left, const CContainerLoad& right) const;
    void Move(const CResourceTask& task, CContainerLoad& to);

    const LoadFunc m_pLoad;
    std::map<CContainerAddr, CContainerLoad> m_containers;
    std::map<std::string, CPlacedTask> m_tasks;  ///< by id; the holders lie in m_containers
};

}  // namespace model
