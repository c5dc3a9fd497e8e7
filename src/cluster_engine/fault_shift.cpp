#include "cluster_engine/fault_shift.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "cluster_engine/moving.h"
#include "cluster_engine/silence.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/schedule_mgr.h"

namespace {

using Figures = std::array<int64_t, 5>;

Figures FiguresOf(const CFigures& figures) {
    return {figures.iCpu, figures.iMem, figures.iIo, figures.iNet, figures.iDisk};
}

Figures FreeOf(const CFigures& total, const CFigures& used) {
    Figures free = FiguresOf(total);
    const Figures taken = FiguresOf(used);
    for (std::size_t ui = 0; ui < free.size(); ++ui) {
        free[ui] -= taken[ui];
    }
    return free;
}

bool IsAtLeast(const Figures& free, const Figures& wanted) {
    for (std::size_t ui = 0; ui < free.size(); ++ui) {
        if (wanted[ui] > 0 && free[ui] < wanted[ui]) {
            return false;
        }
    }
    return true;
}

bool IsAnyHigher(const CFigures& left, const CFigures& right) {
    const Figures first = FiguresOf(left);
    const Figures second = FiguresOf(right);
    return !std::equal(first.begin(), first.end(), second.begin(),
                       [](int64_t iFirst, int64_t iSecond) { return iFirst <= iSecond; });
}

/// The least that any task that waits for the type costs, figure by figure; false when none waits.
bool SmallestWaiting(CCluster& cluster, const std::string& strType, Figures& smallest) {
    bool bAny = false;
    const auto take = [&](const CContainerAddr& addr, const CShift& shift) {
        for (const std::string& strTaskId : shift.waiting) {
            const CAssignedTask* const pTask = cluster.assignments.Find(addr, strTaskId);
            if (pTask == nullptr) {
                continue;
            }
            const Figures costs = FiguresOf(CTaskForm(pTask->task).costs);
            for (std::size_t ui = 0; ui < costs.size(); ++ui) {
                smallest[ui] = bAny ? std::min(smallest[ui], costs[ui]) : costs[ui];
            }
            bAny = true;
        }
    };
    for (const auto& [addr, shift] : cluster.state.shifts) {
        if (addr.GetContainerType() == strType) {
            take(addr, shift);
        }
    }
    if (const auto it = cluster.state.homelessShifts.find(strType);
        it != cluster.state.homelessShifts.end()) {
        take(HomelessOf(strType), it->second);
    }
    return bAny;
}

CEvent ShiftEvent(EEvent eEvent, const CContainerAddr& addr, const CShift& shift) {
    CEvent event = ContainerEvent(eEvent, addr, shift.strCause);
    event.uiTasks = static_cast<uint32_t>(shift.waiting.size());
    return event;
}

/// The container is out of the shift list; its fault mark is another matter.
void Unmark(CCluster& cluster, const CContainerAddr& addr) {
    CScheduleMgr::Instance().RemoveShiftContainer(addr);
    CContainerMgr::Instance().SetContainerDoingFaultShift(addr, false);
    CNodeMgr::Instance().SetContainerShiftFaultTimes(addr, 0);
    cluster.state.shifts.erase(addr);
}

void PutOff(CCluster& cluster, const CContainerAddr& addr, CShift& shift) {
    shift.iNextTry = cluster.state.iNow + shift.iPause;
    shift.iPause = std::min(2 * shift.iPause, cluster.settings.iLongestPause);
    if (!IsHomeless(addr)) {
        CNodeMgr& nodes = CNodeMgr::Instance();
        nodes.SetContainerShiftFaultTimes(addr, nodes.GetContainerShiftFaultTimes(addr) + 1);
    }
}

/// Tries to move what waits. True when nothing waits any more.
bool TryShift(CCluster& cluster, const CContainerAddr& addr, CShift& shift, bool bFirst) {
    CPluginRecord* const pPlugin = cluster.plugins.OfType(addr.GetContainerType());
    if (pPlugin == nullptr || pPlugin->bOut) {
        return false;
    }
    CMoveReason reason;
    reason.strBy = shift.bReschedule ? "drain" : "fault shift";
    reason.strCause = shift.strCause;
    std::set<std::string> stuck;
    const std::size_t uiBefore = shift.waiting.size();
    MoveAway(cluster, *pPlugin, addr, shift.waiting, shift.bReschedule, reason, stuck);
    shift.waiting = std::move(stuck);
    if (shift.waiting.empty()) {
        return true;
    }
    PutOff(cluster, addr, shift);
    if (bFirst || shift.waiting.size() != uiBefore) {
        cluster.Tell(ShiftEvent(EEvent::WAITS_FOR_ROOM, addr, shift));
    }
    return false;
}

/// What ended or found another place does not wait any more. True when nothing does.
bool ForgetPlaced(CCluster& cluster, const CContainerAddr& addr, CShift& shift) {
    for (auto it = shift.waiting.begin(); it != shift.waiting.end();) {
        const bool bThere = cluster.assignments.Find(addr, *it) != nullptr;
        it = bThere ? std::next(it) : shift.waiting.erase(it);
    }
    return shift.waiting.empty();
}

/// Is it time for another try?
bool IsDue(CCluster& cluster, const CContainerAddr& addr, CShift& shift, bool bRoom) {
    if (!shift.bGivenUp && cluster.state.iNow - shift.iStarted >= cluster.settings.iTriesEnd) {
        shift.bGivenUp = true;
        cluster.Tell(ShiftEvent(EEvent::SHIFT_GIVEN_UP, addr, shift));
    }
    return bRoom || (!shift.bGivenUp && cluster.state.iNow >= shift.iNextTry);
}

/// May the work move now? Only what a fault moves can be held or forbidden.
bool IsAllowed(const CCluster& cluster, const CContainerAddr& addr, const CShift& shift) {
    return shift.bReschedule || IsHomeless(addr) ||
           (CFrameworkCommon::Instance().GetClusterConfig().IsFaultShift() &&
            !IsHeld(cluster, addr.GetContainerType()));
}

/// True when nothing waits any more.
bool Continue(CCluster& cluster, const CContainerAddr& addr, CShift& shift,
              const std::set<std::string>& room) {
    if (ForgetPlaced(cluster, addr, shift)) {
        return true;
    }
    return IsAllowed(cluster, addr, shift) &&
           IsDue(cluster, addr, shift, room.count(addr.GetContainerType()) != 0) &&
           TryShift(cluster, addr, shift, false);
}

void TryWaiting(CCluster& cluster) {
    const std::set<std::string> room = std::exchange(cluster.state.roomAppeared, {});
    std::vector<CContainerAddr> waiting;
    for (const auto& [addr, shift] : cluster.state.shifts) {
        waiting.push_back(addr);
    }
    for (const CContainerAddr& addr : waiting) {
        if (Continue(cluster, addr, cluster.state.shifts[addr], room)) {
            EndShift(cluster, addr, "all has moved");
        }
    }
    std::map<std::string, CShift>& homeless = cluster.state.homelessShifts;
    for (auto it = homeless.begin(); it != homeless.end();) {
        const bool bDone = Continue(cluster, HomelessOf(it->first), it->second, room);
        it = bDone ? homeless.erase(it) : std::next(it);
    }
}

/// Room that reports speak of is tried no more often than the settings say.
void TakeReportedRoom(CCluster& cluster) {
    CClusterState& state = cluster.state;
    for (auto it = state.roomReported.begin(); it != state.roomReported.end();) {
        int64_t& iLastTry = state.roomTries[*it];
        if (state.iNow - iLastTry < cluster.settings.iRoomPause) {
            ++it;
            continue;
        }
        iLastTry = state.iNow;
        state.roomAppeared.insert(*it);
        it = state.roomReported.erase(it);
    }
}

/// Those whose work is to be shifted since they fell silent.
std::vector<CContainerAddr> FindFaults(const CCluster& cluster) {
    std::vector<CContainerAddr> faults;
    for (const auto& [addr, record] : cluster.state.containers) {
        if (record.bSilent && !record.bShifted && !record.tasks.empty() &&
            cluster.state.shifts.count(addr) == 0 && !IsHeld(cluster, addr.GetContainerType()) &&
            CContainerMgr::Instance().IsContainerSupportFaultShift(addr)) {
            faults.push_back(addr);
        }
    }
    return faults;
}

/// The tasks that the container has known of for too long without having them. Their time begins
/// anew: the next try is as far away. One that runs elsewhere is left to the next report from
/// there.
std::set<std::string> TakeLate(const CCluster& cluster, const std::string& strType,
                               CContainerRecord& record) {
    std::set<std::string> late;
    for (auto& [strTaskId, task] : record.tasks) {
        const int64_t iMissing = cluster.state.iNow - task.iMissed;
        if (task.iMissed != 0 && iMissing >= cluster.settings.iTakeUp &&
            !cluster.assignments.RunsElsewhere(strType, strTaskId)) {
            late.insert(strTaskId);
            task.iMissed = cluster.state.iNow;
        }
    }
    return late;
}

void TellHandedOn(CCluster& cluster, const CContainerAddr& addr, const CContainerRecord& record,
                  const std::set<std::string>& late) {
    for (const std::string& strTaskId : late) {
        if (record.tasks.count(strTaskId) != 0) {
            CEvent event = ContainerEvent(EEvent::HANDED_AGAIN, addr,
                                          "not taken up, and it cannot go elsewhere");
            event.strTaskId = strTaskId;
            cluster.Tell(std::move(event));
        }
    }
}

}  // namespace

void ShiftFaults(CCluster& cluster) {
    TakeReportedRoom(cluster);
    if (!cluster.state.bSettled || cluster.store.IsAway()) {
        return;
    }
    if (CFrameworkCommon::Instance().GetClusterConfig().IsFaultShift()) {
        for (const CContainerAddr& addr : FindFaults(cluster)) {
            BeginShift(cluster, addr, false, "its container is silent");
        }
    }
    TryWaiting(cluster);
}

void BeginShift(CCluster& cluster, const CContainerAddr& addr, bool bReschedule,
                const std::string& strCause) {
    CPluginRecord* const pPlugin = cluster.plugins.OfType(addr.GetContainerType());
    CContainerRecord& record = *cluster.assignments.Find(addr);
    if (pPlugin == nullptr || pPlugin->bOut) {
        return;
    }
    std::list<CResourceTask> movable;
    if (cluster.plugins.Movable(*pPlugin, addr, true, false, movable).IsFailure()) {
        return;
    }
    record.bShifted = true;
    CShift shift;
    for (const CResourceTask& task : movable) {
        const CAssignedTask* const pTask = cluster.assignments.Find(addr, task.GetTaskId());
        if (pTask != nullptr && pTask->task.IsSupportShift()) {
            shift.waiting.insert(task.GetTaskId());
        }
    }
    if (shift.waiting.empty()) {
        return;
    }
    shift.strCause = strCause;
    shift.iStarted = cluster.state.iNow;
    shift.iPause = cluster.settings.iFirstPause;
    shift.bReschedule = bReschedule;
    CContainerMgr& containers = CContainerMgr::Instance();
    CScheduleMgr::Instance().AddShiftContainer(addr);
    containers.SetContainerDoingFaultShift(addr, true);
    record.bFaultMark = record.bFaultMark || !bReschedule;
    containers.SetContainerFaultShift(addr, record.bFaultMark);
    cluster.Tell(ShiftEvent(EEvent::SHIFT_STARTED, addr, shift));
    CShift& running = cluster.state.shifts[addr] = std::move(shift);
    if (TryShift(cluster, addr, running, true)) {
        EndShift(cluster, addr, "all has moved");
    }
}

void EndShift(CCluster& cluster, const CContainerAddr& addr, const std::string& strCause) {
    const auto it = cluster.state.shifts.find(addr);
    if (it == cluster.state.shifts.end()) {
        return;
    }
    CEvent event = ShiftEvent(EEvent::SHIFT_ENDED, addr, it->second);
    event.strCause = strCause;
    cluster.Tell(std::move(event));
    Unmark(cluster, addr);
}

void WaitHomeless(CCluster& cluster, const std::string& strType) {
    const CContainerAddr addr = HomelessOf(strType);
    const CContainerRecord* const pRecord = cluster.assignments.Find(addr);
    if (pRecord == nullptr || pRecord->tasks.empty()) {
        return;
    }
    CShift& shift = cluster.state.homelessShifts[strType];
    const bool bNew = shift.iStarted == 0;
    for (const auto& [strTaskId, task] : pRecord->tasks) {
        shift.waiting.insert(strTaskId);
    }
    if (bNew) {
        shift.strCause = "its container left";
        shift.iStarted = cluster.state.iNow;
        shift.iPause = cluster.settings.iFirstPause;
    }
    PutOff(cluster, addr, shift);
    cluster.Tell(ShiftEvent(EEvent::WAITS_FOR_ROOM, addr, shift));
}

void NoticeRoom(CCluster& cluster, const CContainerAddr& addr, const CFigures& total,
                const CFigures& used) {
    const CContainerRecord& record = *cluster.assignments.Find(addr);
    Figures smallest{};
    if (!SmallestWaiting(cluster, addr.GetContainerType(), smallest)) {
        return;
    }
    const bool bFitted = IsAtLeast(FreeOf(record.total, record.used), smallest);
    if (IsAnyHigher(total, record.total) ||
        (!bFitted && IsAtLeast(FreeOf(total, used), smallest))) {
        cluster.state.roomReported.insert(addr.GetContainerType());
    }
}

void MoveNotTakenUp(CCluster& cluster) {
    if (!cluster.state.bSettled || cluster.store.IsAway()) {
        return;
    }
    for (auto& [addr, record] : cluster.state.containers) {
        CPluginRecord* const pPlugin = cluster.plugins.OfType(addr.GetContainerType());
        if (!record.bAnyMissed || record.bSilent || pPlugin == nullptr || pPlugin->bOut) {
            continue;
        }
        const std::set<std::string> late = TakeLate(cluster, addr.GetContainerType(), record);
        std::set<std::string> movable;
        std::copy_if(late.begin(), late.end(), std::inserter(movable, movable.end()),
                     [&tasks = record.tasks](const std::string& strTaskId) {
                         return tasks.at(strTaskId).task.IsSupportShift();
                     });
        std::set<std::string> stuck;
        MoveAway(cluster, *pPlugin, addr, movable, true,
                 {"take-up", "its container did not take it up", EEvent::SHIFTED}, stuck);
        TellHandedOn(cluster, addr, record, late);
    }
}
