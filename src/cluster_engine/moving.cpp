#include "cluster_engine/moving.h"

#include <algorithm>
#include <map>
#include <utility>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"

namespace {

/// All that goes into one container.
struct CEntry {
    std::list<CResourceTask> tasks;
    CTaskContainerMap from;
    std::vector<CAssignedTask> assigned;
};

std::map<CContainerAddr, CEntry> ByContainer(CCluster& cluster, std::vector<CPlacedTask> placed) {
    std::map<CContainerAddr, CEntry> entries;
    for (CPlacedTask& one : placed) {
        CEntry& entry = entries[one.to];
        const std::string& strTaskId = one.task.task.GetTaskId();
        const CContainerAddr* const pHolder =
            cluster.assignments.Holder(one.to.GetContainerType(), strTaskId);
        if (pHolder != nullptr && !IsHomeless(*pHolder)) {
            entry.from[strTaskId] = *pHolder;
        }
        one.task.strCameFrom = pHolder != nullptr ? pHolder->GetNodeId() : std::string();
        entry.tasks.push_back(one.task.task);
        entry.assigned.push_back(std::move(one.task));
    }
    return entries;
}

/// Tells a node about tasks that were shifted into or out of its container.
void TellNode(CCluster& cluster, CPluginRecord& plugin, const CContainerAddr& addr,
              const std::list<CResourceTask>& tasks, unsigned long long ullDecision,
              bool bShiftIn) {
    CContainerRecord* const pRecord = cluster.assignments.Find(addr);
    std::string strXml;
    CCallResult result =
        cluster.plugins.ShiftResult(plugin, addr.GetNodeId(), tasks, ullDecision, bShiftIn, strXml);
    if (!result.IsFailure() && !strXml.empty()) {
        pRecord->messages.push_back({strXml, 0});
    }
}

void TellNodes(CCluster& cluster, CPluginRecord& plugin, const CContainerAddr& to,
               const CEntry& entry, unsigned long long ullDecision) {
    std::map<CContainerAddr, std::list<CResourceTask>> left;
    std::list<CResourceTask> entered;
    for (const CResourceTask& task : entry.tasks) {
        if (const auto it = entry.from.find(task.GetTaskId()); it != entry.from.end()) {
            left[it->second].push_back(task);
            entered.push_back(task);
        }
    }
    for (const auto& [from, tasks] : left) {
        TellNode(cluster, plugin, from, tasks, ullDecision, false);
    }
    if (!entered.empty()) {
        TellNode(cluster, plugin, to, entered, ullDecision, true);
    }
}

CCallResult EnterTable(CCluster& cluster, CPluginRecord& plugin, const CContainerAddr& to,
                       const CEntry& entry, unsigned long long ullDecision) {
    if (!entry.from.empty()) {
        CCallResult result =
            cluster.plugins.ShiftIn(plugin, to, entry.tasks, entry.from, ullDecision);
        if (result.eFault == EFault::PLUGIN_REFUSED) {
            cluster.RestoreTables(plugin);
        }
        return result;
    }
    CContainerMgr::Instance().AddResourceTask(to, entry.tasks);
    CContainerMgr::Instance().SetContainerResTaskNeedUpdate(to, true);
    return {};
}

void WriteDown(CCluster& cluster, const CContainerAddr& to, CEntry& entry,
               unsigned long long ullDecision, const CMoveReason& reason) {
    CEvent event = ContainerEvent(reason.eEvent, to, reason.strCause);
    event.uiTasks = static_cast<uint32_t>(entry.assigned.size());
    event.ullDecision = ullDecision;
    if (event.uiTasks == 1) {
        event.strTaskId = entry.assigned.front().task.GetTaskId();
        event.strFrom = entry.assigned.front().strCameFrom;
    }
    for (CAssignedTask& task : entry.assigned) {
        CDecision decision;
        decision.strBy = reason.strBy;
        decision.strNodeId = to.GetNodeId();
        decision.ullDecision = ullDecision;
        decision.strWhy = reason.strCause;
        cluster.Note(to.GetContainerType(), task.task.GetTaskId(), std::move(decision));
        task.ullDecision = ullDecision;
        task.ullHanded = 0;
        task.ullHandedLast = 0;
        task.iMissed = 0;
        task.bReported = false;
        cluster.assignments.Give(to, std::move(task));
    }
    cluster.Tell(std::move(event));
}

/// What left a container that may get work has made room there.
void NoticeLeft(CCluster& cluster, const CTaskContainerMap& from) {
    for (const auto& [strTaskId, addr] : from) {
        const std::string& strType = addr.GetContainerType();
        if (cluster.state.roomAppeared.count(strType) == 0 && WhyNotUsable(cluster, addr).empty()) {
            cluster.state.roomAppeared.insert(strType);
        }
    }
}

/// How many tasks more the container may get.
std::size_t RoomFor(CCluster& cluster, const CContainerAddr& addr) {
    return WhyNotUsable(cluster, addr).empty()
               ? cluster.settings.uiTasksPerContainer - cluster.assignments.Find(addr)->tasks.size()
               : 0;
}

}  // namespace

std::string WhyNotUsable(CCluster& cluster, const CContainerAddr& addr) {
    CContainerMgr& containers = CContainerMgr::Instance();
    const CContainerRecord* const pRecord = cluster.assignments.Find(addr);
    if (pRecord == nullptr || IsHomeless(addr)) {
        return "no such container";
    }
    if (pRecord->bSilent || !containers.IsContainerOnline(addr)) {
        return "silent";
    }
    if (pRecord->bRemoved) {
        return "not a normal member";
    }
    if (pRecord->iUnsteadyUntil > cluster.state.iNow) {
        return "fell silent twice, and has to stay for a while";
    }
    if (!containers.IsProcessRunning(addr)) {
        return "a process does not run";
    }
    if (cluster.state.shifts.count(addr) != 0) {
        return "its own work is being shifted";
    }
    return pRecord->tasks.size() >= cluster.settings.uiTasksPerContainer ? "full of tasks" : "";
}

CCallResult Decide(CCluster& cluster, CPluginRecord& plugin, const std::string& strAsker,
                   const std::list<CResourceTask>& tasks, bool bReschedule, CPlacement& placement) {
    CCallResult result = cluster.plugins.Schedule(plugin, strAsker, tasks, bReschedule, placement);
    if (result.IsFailure()) {
        return result;
    }
    std::set<std::string> asked;
    for (const CResourceTask& task : tasks) {
        asked.insert(task.GetTaskId());
    }
    std::map<CContainerAddr, std::size_t> room;
    for (auto it = placement.bound.begin(); it != placement.bound.end();) {
        const auto [left, bNew] = room.try_emplace(it->second, 0);
        left->second = bNew ? RoomFor(cluster, it->second) : left->second;
        const bool bCounts = asked.count(it->first) != 0 && left->second != 0;
        left->second -= bCounts ? 1 : 0;
        it = bCounts ? std::next(it) : placement.bound.erase(it);
    }
    return result;
}

CCallResult CarryOut(CCluster& cluster, CPluginRecord& plugin, std::vector<CPlacedTask> placed,
                     unsigned long long& ullDecision, const CMoveReason& reason) {
    if (placed.empty()) {
        return {};
    }
    if (const int iCode = cluster.RaiseDecision(ullDecision); iCode != ORVA_SUCCEED) {
        return {EFault::STORE_FAILED, iCode, "no decision number can be had"};
    }
    for (auto& [to, entry] : ByContainer(cluster, std::move(placed))) {
        CCallResult result = EnterTable(cluster, plugin, to, entry, ullDecision);
        if (result.IsFailure()) {
            return result;
        }
        WriteDown(cluster, to, entry, ullDecision, reason);
        NoticeLeft(cluster, entry.from);
        TellNodes(cluster, plugin, to, entry, ullDecision);
    }
    return {};
}

CCallResult MoveAway(CCluster& cluster, CPluginRecord& plugin, const CContainerAddr& from,
                     const std::set<std::string>& taskIds, bool bReschedule,
                     const CMoveReason& reason, std::set<std::string>& stuck) {
    stuck.clear();
    std::map<std::string, std::list<CResourceTask>> byAsker;
    for (const std::string& strTaskId : taskIds) {
        if (const CAssignedTask* const pTask = cluster.assignments.Find(from, strTaskId);
            pTask != nullptr) {
            byAsker[pTask->strAsker].push_back(pTask->task);
            stuck.insert(strTaskId);
        }
    }
    for (const auto& [strAsker, tasks] : byAsker) {
        CPlacement placement;
        CCallResult result = Decide(cluster, plugin, strAsker, tasks, bReschedule, placement);
        std::vector<CPlacedTask> placed;
        for (const auto& [strTaskId, to] : placement.bound) {
            if (!(to == from)) {
                placed.push_back({*cluster.assignments.Find(from, strTaskId), to});
            }
        }
        if (!result.IsFailure()) {
            result = CarryOut(cluster, plugin, std::move(placed), placement.ullDecision, reason);
        }
        if (result.IsFailure()) {
            return result;
        }
        for (const CResourceTask& task : tasks) {
            if (cluster.assignments.Find(from, task.GetTaskId()) == nullptr) {
                stuck.erase(task.GetTaskId());
            }
        }
    }
    return {};
}
