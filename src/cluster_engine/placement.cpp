#include "cluster_engine/placement.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "cluster_engine/moving.h"
#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/node_mgr.h"
#include "framework_service/schedule_mgr.h"

namespace {

/// A request that has been read.
struct CWork {
    CPluginRecord* pPlugin = nullptr;
    std::vector<CResourceTask> tasks;
    std::vector<CTaskResult> results;   ///< in the order of the tasks
    std::list<CResourceTask> unplaced;  ///< those that need a decision
};

CAnswer RefuseCall(const CCallResult& result) {
    return CAnswer::Refuse(result.eFault, result.strWhy);
}

bool IsUtf8Task(const CResourceTask& task) {
    KeyValueMap privateInfo;
    task.GetAllPrivateInfo(privateInfo);
    return IsUtf8(task.GetTaskName()) &&
           std::all_of(privateInfo.begin(), privateInfo.end(),
                       [](const auto& pair) { return IsUtf8(pair.first) && IsUtf8(pair.second); });
}

/// What is wrong with the tasks of a request; empty when nothing is.
std::string FaultOfTasks(const std::list<CResourceTask>& tasks) {
    std::set<std::string> ids;
    for (const CResourceTask& task : tasks) {
        const std::string& strTaskId = task.GetTaskId();
        if (!IsId(strTaskId)) {
            return "xml: a task id is none: 1 to 128 printable bytes";
        }
        if (!ids.insert(strTaskId).second) {
            return "xml: a task stands twice: " + strTaskId;
        }
        if (!IsUtf8Task(task)) {
            return "xml: a task has a text that is no UTF-8: " + strTaskId;
        }
        CAssignedTask kept;
        kept.task = task;
        if (CAssignments::BytesOf(kept) > NUMERIC_MAX_TASK_BYTES) {
            return "xml: a task is too large: " + strTaskId;
        }
    }
    return "";
}

/// The place of a task that has one among the plug-in's containers; null without.
const CContainerAddr* PlaceOf(const CCluster& cluster, const CPluginRecord& plugin,
                              const std::string& strTaskId) {
    for (const std::string& strType : plugin.claims.containers) {
        if (const CContainerAddr* const pHolder = cluster.assignments.Holder(strType, strTaskId);
            pHolder != nullptr) {
            return pHolder;
        }
    }
    return nullptr;
}

void SetPlace(CTaskResult& result, ETaskResult eResult, const CContainerAddr& addr,
              uint64_t ullDecision) {
    result.eResult = eResult;
    result.strNodeId = addr.GetNodeId();
    result.strType = addr.GetContainerType();
    result.ullDecision = ullDecision;
    result.strFault.clear();
}

/// What a task's result is if nothing is decided for it: it stays, waits in the container that is
/// silent or left, or has no room.
CTaskResult ResultSoFar(CCluster& cluster, const CPluginRecord& plugin,
                        const std::string& strTaskId) {
    CTaskResult result;
    result.strTaskId = strTaskId;
    result.eResult = ETaskResult::REFUSED;
    result.strFault = TextOf(EFault::NO_ROOM).pszName;
    if (const CContainerAddr* const pHolder = PlaceOf(cluster, plugin, strTaskId);
        pHolder != nullptr) {
        const bool bWaits = IsHomeless(*pHolder) || cluster.assignments.Find(*pHolder)->bSilent;
        SetPlace(result, bWaits ? ETaskResult::WAITS : ETaskResult::STAYS, *pHolder,
                 cluster.assignments.Find(*pHolder, strTaskId)->ullDecision);
    }
    return result;
}

/// Reads the request's tasks and answers those that have their place.
CAnswer ReadWork(CCluster& cluster, const CRequest& request, CWork& work) {
    if (!CNodeMgr::Instance().IsNodeExist(request.strNodeId)) {
        return CAnswer::Refuse(EFault::UNKNOWN_NODE, request.strNodeId);
    }
    work.pPlugin = cluster.plugins.OfJob(request.uiJobType);
    if (work.pPlugin == nullptr) {
        return CAnswer::Refuse(EFault::NO_PLUGIN, "job type " + std::to_string(request.uiJobType));
    }
    if (request.strXml.size() > cluster.settings.uiXmlBytes) {
        return CAnswer::Refuse(EFault::TOO_MUCH, "xml");
    }
    if (request.strXml.find('\0') != std::string::npos) {
        return CAnswer::Refuse(EFault::BAD_INPUT, "xml: has a zero byte");
    }
    std::list<CResourceTask> tasks;
    const CCallResult read = cluster.plugins.ReadJob(*work.pPlugin, request.strNodeId,
                                                     request.uiJobType, request.strXml, tasks);
    if (read.IsFailure()) {
        return RefuseCall(read);
    }
    if (tasks.size() > cluster.settings.uiTasksPerJob) {
        return CAnswer::Refuse(EFault::TOO_MUCH, std::to_string(tasks.size()) + " tasks");
    }
    for (CResourceTask& task : tasks) {
        CompleteTask(cluster, task);
    }
    if (const std::string strFault = FaultOfTasks(tasks); !strFault.empty()) {
        return CAnswer::Refuse(EFault::BAD_INPUT, strFault);
    }
    for (CResourceTask& task : tasks) {
        work.results.push_back(ResultSoFar(cluster, *work.pPlugin, task.GetTaskId()));
        if (work.results.back().eResult != ETaskResult::STAYS) {
            work.unplaced.push_back(task);
        }
        work.tasks.push_back(std::move(task));
    }
    return {};
}

/// What is refused is refused for that.
void NameFault(CWork& work, EFault eFault) {
    for (CTaskResult& result : work.results) {
        if (result.eResult == ETaskResult::REFUSED) {
            result.strFault = TextOf(eFault).pszName;
        }
    }
}

/// Enters what was decided into the results, and counts what was refused.
CAnswer AnswerWork(CWork& work, const CPlacement& placement) {
    CAnswer answer;
    std::size_t uiRefused = 0;
    for (CTaskResult& result : work.results) {
        if (const auto it = placement.bound.find(result.strTaskId); it != placement.bound.end()) {
            SetPlace(result, ETaskResult::PLACED, it->second, placement.ullDecision);
        }
        uiRefused += result.eResult == ETaskResult::REFUSED ? 1 : 0;
    }
    if (uiRefused == work.results.size() && uiRefused != 0) {
        answer.eFault = EFault::NO_ROOM;
    }
    answer.bInPart = uiRefused != 0 && uiRefused != work.results.size();
    answer.tasks = work.results;
    return answer;
}

void TellRefused(CCluster& cluster, const CRequest& job, const CPluginRecord& plugin,
                 const CAnswer& answer) {
    CEvent event;
    event.eEvent = EEvent::REFUSED;
    event.strNodeId = job.strNodeId;
    event.strCause = "no room";
    for (const CTaskResult& result : answer.tasks) {
        if (result.eResult != ETaskResult::REFUSED) {
            continue;
        }
        event.strTaskId = event.uiTasks == 0 ? result.strTaskId : "";
        ++event.uiTasks;
        for (const std::string& strType : plugin.claims.containers) {
            cluster.Note(strType, result.strTaskId, {0, "job", "", 0, "no room"});
        }
    }
    if (event.uiTasks != 0) {
        cluster.Tell(std::move(event));
    }
}

/// Decides for what has no place yet. Nothing is carried out.
CCallResult DecideWork(CCluster& cluster, const CRequest& request, CWork& work,
                       CPlacement& placement) {
    if (work.unplaced.empty()) {
        return {};
    }
    if (cluster.store.IsAway()) {
        return {EFault::STORE_AWAY, ORVA_FAIL, ""};
    }
    return Decide(cluster, *work.pPlugin, request.strNodeId, work.unplaced, false, placement);
}

/// Strikes what was not carried out after a failure. True when anything is left.
bool KeepCarriedOut(CCluster& cluster, CTaskContainerMap& bound, uint64_t ullDecision) {
    for (auto it = bound.begin(); it != bound.end();) {
        const CAssignedTask* const pTask = cluster.assignments.Find(it->second, it->first);
        const bool bDone = pTask != nullptr && pTask->ullDecision == ullDecision;
        it = bDone ? std::next(it) : bound.erase(it);
    }
    return !bound.empty();
}

CCallResult CarryOutWork(CCluster& cluster, const CJob& job, CWork& work, CPlacement& placement) {
    std::vector<CPlacedTask> placed;
    for (const CResourceTask& task : work.unplaced) {
        const auto it = placement.bound.find(task.GetTaskId());
        if (it != placement.bound.end()) {
            CAssignedTask assigned;
            assigned.task = task;
            assigned.strAsker = job.strNodeId;
            placed.push_back({std::move(assigned), it->second});
        }
    }
    CMoveReason reason;
    reason.strBy = "job";
    reason.strCause = "asked by " + job.strNodeId;
    reason.eEvent = EEvent::PLACED;
    return CarryOut(cluster, *work.pPlugin, std::move(placed), placement.ullDecision, reason);
}

CAnswer DecideOnly(CCluster& cluster, const CRequest& request) {
    CWork work;
    CAnswer answer = ReadWork(cluster, request, work);
    if (answer.eFault != EFault::NONE) {
        return answer;
    }
    CPlacement placement;
    CCallResult result = DecideWork(cluster, request, work, placement);
    placement.ullDecision = 0;
    return result.IsFailure() ? RefuseCall(result) : AnswerWork(work, placement);
}

/// The code of a plug-in for a task that an operator wants moved.
EFault FaultOfMove(int iCode) {
    switch (iCode) {
        case ORVA_PARA_INVALID:
            return EFault::NOT_PLACED_THERE;
        case ORVA_SYS_NO_SUPPORT:
            return EFault::CANNOT_MOVE;
        default:
            return EFault::NO_ROOM;
    }
}

/// What an operator wants moved, as the plug-in is asked.
struct CHandWork {
    std::list<CResourceTask> tasks;
    CTaskShiftMap moves;
    std::vector<CTaskResult> results;
};

/// What is against the move before the plug-in is asked.
EFault FaultOf(CCluster& cluster, const CContainerAddr& from, const CContainerAddr& to,
               const CAssignedTask* pTask) {
    if (pTask == nullptr) {
        return EFault::NOT_PLACED_THERE;
    }
    if (cluster.assignments.Find(to) == nullptr) {
        return EFault::UNKNOWN_CONTAINER;
    }
    if (to == from) {
        return EFault::REFUSED_BY_RULE;
    }
    return pTask->task.IsSupportShift() ? EFault::NONE : EFault::CANNOT_MOVE;
}

CHandWork ReadMoves(CCluster& cluster, const CManualShift& shift) {
    CHandWork work;
    for (const CManualMove& move : shift.moves) {
        const CContainerAddr from(move.strFrom, shift.strType);
        const CContainerAddr to(move.strTo, shift.strType);
        const CAssignedTask* const pTask = cluster.assignments.Find(from, move.strTaskId);
        const EFault eFault = FaultOf(cluster, from, to, pTask);
        CTaskResult result;
        result.strTaskId = move.strTaskId;
        result.eResult = ETaskResult::REFUSED;
        result.strFault = TextOf(eFault).pszName;
        work.results.push_back(std::move(result));
        if (eFault != EFault::NONE) {
            continue;
        }
        CTaskShiftInfo info;
        info.SetTaskId(move.strTaskId);
        info.SetOutContainer(from);
        info.SetInContainer(to);
        work.moves.emplace(move.strTaskId, info);
        work.tasks.push_back(pTask->task);
    }
    return work;
}

/// Those of the plan that count; the others are struck from it.
std::vector<CPlacedTask> ReadPlan(CCluster& cluster, const CHandWork& work, CManualPlan& plan) {
    std::vector<CPlacedTask> placed;
    CTaskContainerMap counting;
    for (const auto& [strTaskId, info] : work.moves) {
        const auto it = plan.bound.find(strTaskId);
        const auto code = plan.codes.find(strTaskId);
        const bool bRefused = code != plan.codes.end() && code->second != ORVA_SUCCEED;
        if (it == plan.bound.end() || bRefused || !(it->second == info.GetInContainer()) ||
            !WhyNotUsable(cluster, it->second).empty()) {
            continue;
        }
        counting.insert(*it);
        placed.push_back(
            {*cluster.assignments.Find(info.GetOutContainer(), strTaskId), it->second});
    }
    plan.bound = std::move(counting);
    return placed;
}

/// Enters what was carried out into the results.
CAnswer AnswerMoves(CHandWork& work, const CManualPlan& plan) {
    CAnswer answer;
    for (CTaskResult& one : work.results) {
        if (const auto it = plan.bound.find(one.strTaskId); it != plan.bound.end()) {
            SetPlace(one, ETaskResult::MOVED, it->second, plan.ullDecision);
        } else if (work.moves.count(one.strTaskId) != 0) {
            const auto code = plan.codes.find(one.strTaskId);
            const int iCode = code != plan.codes.end() ? code->second : ORVA_FAIL;
            one.strFault = TextOf(FaultOfMove(iCode)).pszName;
        }
    }
    answer.bInPart = !plan.bound.empty() && plan.bound.size() != work.results.size();
    if (plan.bound.empty() && !work.results.empty()) {
        answer.eFault = EFault::REFUSED_BY_RULE;
        const CTaskResult& first = work.results.front();
        answer.strAbout = first.strTaskId + ": " + first.strFault;
    }
    answer.tasks = std::move(work.results);
    return answer;
}

/// Does one task stand in two moves?
bool IsAnyTwice(const CManualShift& shift) {
    std::set<std::string> ids;
    return !std::all_of(shift.moves.begin(), shift.moves.end(),
                        [&](const CManualMove& move) { return ids.insert(move.strTaskId).second; });
}

}  // namespace

bool CompleteTask(const CCluster& cluster, CResourceTask& task) {
    const auto it = cluster.state.standardTasks.find(task.GetTaskName());
    if (it == cluster.state.standardTasks.end()) {
        return false;
    }
    task.SetSupportShift(task.IsSupportShift() && it->second.IsSupportShift());
    KeyValueMap privateInfo;
    it->second.GetAllPrivateInfo(privateInfo);
    for (const auto& [strKey, strValue] : privateInfo) {
        task.InsertSingleKeyValue(strKey, strValue);
    }
    return true;
}

CAnswer PlaceJob(CCluster& cluster, const CJob& job) {
    CWork work;
    CAnswer answer = ReadWork(cluster, job, work);
    if (answer.eFault != EFault::NONE) {
        return answer;
    }
    CPlacement placement;
    CCallResult result = DecideWork(cluster, job, work, placement);
    if (!result.IsFailure()) {
        result = CarryOutWork(cluster, job, work, placement);
    }
    if (result.IsFailure() && !KeepCarriedOut(cluster, placement.bound, placement.ullDecision)) {
        return RefuseCall(result);
    }
    if (result.IsFailure()) {
        NameFault(work, result.eFault);
    }
    answer = AnswerWork(work, placement);
    cluster.plugins.JobResult(*work.pPlugin, job.strNodeId, work.tasks, answer.tasks,
                              answer.strXml);
    TellRefused(cluster, job, *work.pPlugin, answer);
    return answer;
}

CAnswer TryJob(CCluster& cluster, const CDryRun& job) {
    CScheduleMgr& versions = CScheduleMgr::Instance();
    const unsigned long long ullBefore = versions.GetDecisionVerNum();
    const std::optional<CClusterMoment> before = CClusterMoment::Take();
    cluster.host.gate.Shut();
    CAnswer answer = DecideOnly(cluster, job);
    if (before) {
        SetTableBack(*before);
    }
    if (versions.GetDecisionVerNum() != ullBefore) {
        versions.SetDecisionVerNum(ullBefore);
    }
    cluster.host.gate.Open();
    return answer;
}

CAnswer EndTasks(CCluster& cluster, const CEndTasks& end) {
    if (end.tasks.size() > cluster.settings.uiListLength) {
        return CAnswer::Refuse(EFault::TOO_MUCH, "tasks");
    }
    if (std::set<std::string>(end.tasks.begin(), end.tasks.end()).size() != end.tasks.size()) {
        return CAnswer::Refuse(EFault::BAD_INPUT, "tasks: one stands twice");
    }
    if (cluster.store.IsAway()) {
        return CAnswer::Refuse(EFault::STORE_AWAY, "");
    }
    CAnswer answer;
    bool bAnyUnknown = false;
    std::map<CContainerAddr, std::list<std::string>> ended;
    for (const std::string& strTaskId : end.tasks) {
        CTaskResult result;
        result.strTaskId = strTaskId;
        const CContainerAddr* const pHolder = cluster.assignments.Holder(end.strType, strTaskId);
        if (pHolder == nullptr) {
            result.strFault = TextOf(EFault::UNKNOWN_TASK).pszName;
            bAnyUnknown = true;
        } else {
            result.eResult = ETaskResult::ENDED;
            ended[*pHolder].push_back(strTaskId);
            cluster.assignments.End(end.strType, strTaskId);
            cluster.Note(end.strType, strTaskId, {0, "end of tasks", "", 0, "asked for"});
        }
        answer.tasks.push_back(std::move(result));
    }
    for (const auto& [addr, ids] : ended) {
        if (!IsHomeless(addr)) {
            CContainerMgr::Instance().RemoveResourceTask(addr, ids);
        }
        cluster.Tell(TasksEvent(EEvent::ENDED, addr, ids));
    }
    if (!ended.empty()) {
        cluster.state.roomAppeared.insert(end.strType);
    }
    answer.bInPart = bAnyUnknown && !ended.empty();
    answer.eFault = bAnyUnknown && ended.empty() ? EFault::UNKNOWN_TASK : EFault::NONE;
    return answer;
}

CAnswer ShiftByHand(CCluster& cluster, const CManualShift& shift) {
    CPluginRecord* const pPlugin = cluster.plugins.OfType(shift.strType);
    if (pPlugin == nullptr) {
        return CAnswer::Refuse(EFault::NO_PLUGIN, shift.strType);
    }
    if (shift.moves.size() > cluster.settings.uiListLength) {
        return CAnswer::Refuse(EFault::TOO_MUCH, "moves");
    }
    if (IsAnyTwice(shift)) {
        return CAnswer::Refuse(EFault::BAD_INPUT, "moves: a task stands twice");
    }
    if (cluster.store.IsAway()) {
        return CAnswer::Refuse(EFault::STORE_AWAY, "");
    }
    CHandWork work = ReadMoves(cluster, shift);
    CManualPlan plan;
    CCallResult result = work.moves.empty()
                             ? CCallResult()
                             : cluster.plugins.Manual(*pPlugin, work.tasks, work.moves, plan);
    if (!result.IsFailure()) {
        result = CarryOut(cluster, *pPlugin, ReadPlan(cluster, work, plan), plan.ullDecision,
                          {"operator", "moved by hand", EEvent::SHIFTED});
    }
    if (result.IsFailure() && !KeepCarriedOut(cluster, plan.bound, plan.ullDecision)) {
        return RefuseCall(result);
    }
    return AnswerMoves(work, plan);
}
