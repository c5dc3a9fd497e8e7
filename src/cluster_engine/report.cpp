#include "cluster_engine/report.h"

#include <algorithm>
#include <limits>
#include <set>
#include <unordered_set>
#include <utility>

#include "cluster_engine/cloud_storage.h"
#include "cluster_engine/fault_shift.h"
#include "cluster_engine/placement.h"
#include "cluster_engine/silence.h"
#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/node_mgr.h"

namespace {

constexpr std::size_t NUMERIC_SAMPLES = 3;

/// The library adds up that many samples, and to the newest what new tasks cost, in 32 bits.
constexpr int32_t NUMERIC_MOST_FIGURE = std::numeric_limits<int32_t>::max() / 4;

/// A container's report on its way into the registry.
struct CIntake {
    CCluster& cluster;
    const CContainerAddr addr;
    CContainerRecord& record;
    const CContainerReport& report;
    const uint64_t ullSeen;             ///< of the answers of this life
    std::list<CResourceTask> merged{};  ///< what goes into the library's table
    std::list<std::string> adopted{};
    std::list<std::string> missed{};  ///< from now on
    std::set<std::string> foreign{};
    CAnswer answer{};
};

CResourceTask ToTask(const CReportedTask& reported) {
    CTaskForm form;
    form.strTaskId = reported.strTaskId;
    form.strName = reported.name.value_or("");
    form.bMovable = reported.movable.value_or(true);
    form.costs = reported.costs.value_or(CFigures());
    form.privateInfo = reported.privateInfo.value_or(std::map<std::string, std::string>());
    return form.ToTask();
}

/// A task that nobody has been given yet, with what the standard task that it names adds.
CAssignedTask ToAdopted(const CCluster& cluster, const CReportedTask& reported) {
    CAssignedTask task;
    task.task = ToTask(reported);
    const bool bStandard = CompleteTask(cluster, task.task);
    task.bBalanced = bStandard || reported.movable.has_value();
    task.ullDecision = cluster.state.ullHighestDecision;
    task.bReported = true;
    return task;
}

bool IsTooLong(const CCluster& cluster, std::size_t uiLength) {
    return uiLength > cluster.settings.uiListLength;
}

CAnswer CheckFigures(const std::optional<CFigures>& total, const std::optional<CFigures>& used) {
    if (total.has_value() != used.has_value()) {
        return CAnswer::Refuse(EFault::BAD_INPUT, "total and used come together");
    }
    if (total && (total->IsBelowZero() || used->IsBelowZero())) {
        return CAnswer::Refuse(EFault::BAD_INPUT, "total and used: must not be below 0");
    }
    if (total && (total->IsAbove(NUMERIC_MOST_FIGURE) || used->IsAbove(NUMERIC_MOST_FIGURE))) {
        return CAnswer::Refuse(EFault::BAD_INPUT, "total and used: must not be above " +
                                                      std::to_string(NUMERIC_MOST_FIGURE));
    }
    return {};
}

/// The report as it may be taken in: none of it is, or all.
CAnswer CheckTasks(const CCluster& cluster, const CContainerRecord& record,
                   const std::vector<CReportedTask>& tasks) {
    std::unordered_set<std::string> ids;
    for (const CReportedTask& task : tasks) {
        if (!ids.insert(task.strTaskId).second) {
            return CAnswer::Refuse(EFault::BAD_INPUT, "tasks: one stands twice: " + task.strTaskId);
        }
        const bool bKnown = record.tasks.count(task.strTaskId) != 0;
        if (!bKnown && !IsId(task.strTaskId)) {
            return CAnswer::Refuse(EFault::BAD_INPUT, "tasks: one has an id that is none");
        }
        if (!bKnown && CAssignments::BytesOf(ToAdopted(cluster, task)) > NUMERIC_MAX_TASK_BYTES) {
            return CAnswer::Refuse(EFault::TOO_MUCH, "tasks: one is too large: " + task.strTaskId);
        }
    }
    return {};
}

CAnswer CheckCosts(const std::vector<CReportedTask>& tasks) {
    for (const CReportedTask& task : tasks) {
        if (task.costs && task.costs->IsBelowZero()) {
            return CAnswer::Refuse(EFault::BAD_INPUT,
                                   "tasks: costs must not be below 0: " + task.strTaskId);
        }
    }
    return {};
}

CAnswer CheckReport(const CCluster& cluster, const CContainerRecord& record,
                    const CContainerReport& report) {
    if (CAnswer refused = CheckFigures(report.total, report.used); refused.eFault != EFault::NONE) {
        return refused;
    }
    const auto& processes = report.processes.value_or(std::map<std::string, int32_t>());
    for (const auto& [strName, iState] : processes) {
        if (iState < PROCESS_STATE_RUNNING || iState > PROCESS_STATE_FREQUENCY_RESTART) {
            return CAnswer::Refuse(EFault::BAD_INPUT,
                                   "processes." + strName + ": must be from 0 to 2");
        }
    }
    const bool bTooLong = IsTooLong(cluster, processes.size()) ||
                          IsTooLong(cluster, report.allocations.size()) ||
                          (report.parameters && IsTooLong(cluster, report.parameters->size())) ||
                          (report.tasks && IsTooLong(cluster, report.tasks->size()));
    if (bTooLong) {
        return CAnswer::Refuse(EFault::TOO_MUCH, "a list");
    }
    if (!report.tasks) {
        return {};
    }
    if (CAnswer refused = CheckCosts(*report.tasks); refused.eFault != EFault::NONE) {
        return refused;
    }
    // A cloud storage container's tasks are its figures, which go in as they came.
    const bool bWork = report.container.strType != CONTAINER_TYPE_CLOUD_STORAGE;
    return bWork ? CheckTasks(cluster, record, *report.tasks) : CAnswer();
}

/// As assigned, at the reported costs.
void TakeCosts(CResourceTask& task, const CReportedTask& reported) {
    if (reported.costs) {
        task.SetCpu(reported.costs->iCpu);
        task.SetMem(reported.costs->iMem);
        task.SetIO(reported.costs->iIo);
        task.SetNet(reported.costs->iNet);
        task.SetDisk(reported.costs->iDisk);
    }
}

/// The container has it, and so it is its own from now on.
void Adopt(CIntake& intake, const CReportedTask& reported) {
    CAssignedTask task = ToAdopted(intake.cluster, reported);
    intake.merged.push_back(task.task);
    intake.adopted.push_back(reported.strTaskId);
    intake.cluster.Note(intake.addr.GetContainerType(), reported.strTaskId,
                        {0, "report", intake.addr.GetNodeId(), task.ullDecision, "adopted"});
    intake.cluster.assignments.Give(intake.addr, std::move(task));
}

/// The task is assigned to somebody who does not run it: to this container from now on.
bool TakeOver(CIntake& intake, const CContainerAddr& holder, const CReportedTask& reported) {
    CAssignments& assignments = intake.cluster.assignments;
    CAssignedTask task = *assignments.Find(holder, reported.strTaskId);
    unsigned long long ullDecision = 0;
    if (intake.cluster.store.IsAway() ||
        intake.cluster.RaiseDecision(ullDecision) != ORVA_SUCCEED) {
        return false;  // the next report tries again
    }
    if (!IsHomeless(holder)) {
        CContainerMgr::Instance().RemoveResourceTask(holder, {reported.strTaskId});
    }
    task.ullDecision = ullDecision;
    task.strCameFrom = holder.GetNodeId();
    task.bReported = true;
    task.iMissed = 0;
    task.ullHanded = 0;
    task.ullHandedLast = 0;
    TakeCosts(task.task, reported);
    intake.merged.push_back(task.task);
    CEvent event = TasksEvent(EEvent::ADOPTED, intake.addr, {reported.strTaskId},
                              "runs here, and not where it was given");
    event.strFrom = holder.GetNodeId();
    event.ullDecision = ullDecision;
    intake.cluster.Tell(std::move(event));
    intake.cluster.Note(intake.addr.GetContainerType(), reported.strTaskId,
                        {0, "report", intake.addr.GetNodeId(), ullDecision, "runs here"});
    assignments.Give(intake.addr, std::move(task));
    return true;
}

/// It ended, or moved away, and the container has not heard of it.
void TakeGone(CIntake& intake, const CReportedTask& reported, const CGoneTask& gone) {
    if (!gone.bFormerLife || intake.record.unreadableDocuments.empty()) {
        intake.answer.drop.push_back(reported.strTaskId);
    }
}

/// The task is another's. It runs on here until the other has it.
void TakeForeign(CIntake& intake, const CContainerAddr& holder, const CReportedTask& reported) {
    CCluster& cluster = intake.cluster;
    const CContainerRecord& other = *cluster.assignments.Find(holder);
    const CAssignedTask& held = other.tasks.at(reported.strTaskId);
    const bool bLate =
        held.iMissed != 0 && cluster.state.iNow - held.iMissed >= cluster.settings.iTakeUp;
    const bool bLeft = IsHomeless(holder) || other.bSilent || bLate;
    if (bLeft && TakeOver(intake, holder, reported)) {
        return;
    }
    if (!bLeft && held.bReported && intake.record.unreadableDocuments.empty()) {
        cluster.assignments.Drop(intake.addr, reported.strTaskId);
        intake.answer.drop.push_back(reported.strTaskId);
    }
    intake.foreign.insert(reported.strTaskId);
}

/// A task that the container reports and was not given.
void TakeUnassigned(CIntake& intake, const CReportedTask& reported) {
    const CContainerAddr* const pHolder =
        intake.cluster.assignments.Holder(intake.addr.GetContainerType(), reported.strTaskId);
    if (pHolder != nullptr) {
        return TakeForeign(intake, *pHolder, reported);
    }
    if (const auto it = intake.record.gone.find(reported.strTaskId);
        it != intake.record.gone.end()) {
        return TakeGone(intake, reported, it->second);
    }
    Adopt(intake, reported);
}

void TakeReported(CIntake& intake) {
    for (const CReportedTask& reported : *intake.report.tasks) {
        const auto it = intake.record.tasks.find(reported.strTaskId);
        if (it == intake.record.tasks.end()) {
            TakeUnassigned(intake, reported);
            continue;
        }
        it->second.bReported = true;
        it->second.iMissed = 0;
        TakeCosts(it->second.task, reported);
        intake.merged.push_back(it->second.task);
    }
}

/// Hands what was given and is not reported, again and again.
void HandOver(CIntake& intake, const std::set<std::string>& reported) {
    intake.record.bAnyMissed = false;
    for (auto& [strTaskId, task] : intake.record.tasks) {
        if (reported.count(strTaskId) != 0) {
            continue;
        }
        const bool bKnew =
            task.bReported || (task.ullHanded != 0 && task.ullHanded <= intake.ullSeen);
        if (bKnew && task.iMissed == 0) {
            task.iMissed = intake.cluster.state.iNow;
            intake.missed.push_back(strTaskId);
        }
        intake.record.bAnyMissed = intake.record.bAnyMissed || task.iMissed != 0;
        task.bReported = false;
        task.ullHanded = task.ullHanded != 0 ? task.ullHanded : intake.answer.ullNumber;
        task.ullHandedLast = intake.answer.ullNumber;
        intake.merged.push_back(task.task);
        intake.answer.takeUp.emplace_back(task.task);
    }
}

/// What the container was to drop and reports without it is dropped, unless it may still take it up
/// from an answer that it has not seen.
void ForgetDropped(CIntake& intake, const std::set<std::string>& reported) {
    std::vector<std::string> dropped;
    for (const auto& [strTaskId, gone] : intake.record.gone) {
        if (reported.count(strTaskId) == 0 && gone.ullHanded <= intake.ullSeen) {
            dropped.push_back(strTaskId);
        }
    }
    for (const std::string& strTaskId : dropped) {
        intake.cluster.assignments.ForgetGone(intake.addr, strTaskId);
    }
}

void TellTasks(CIntake& intake, EEvent eEvent, const std::list<std::string>& taskIds,
               const char* pszCause) {
    if (!taskIds.empty()) {
        intake.cluster.Tell(TasksEvent(eEvent, intake.addr, taskIds, pszCause));
    }
}

void TakeTasks(CIntake& intake) {
    std::set<std::string> reported;
    for (const CReportedTask& task : *intake.report.tasks) {
        reported.insert(task.strTaskId);
    }
    ForgetDropped(intake, reported);
    TakeReported(intake);
    HandOver(intake, reported);
    intake.cluster.assignments.SetForeign(intake.addr, std::move(intake.foreign));
    TellTasks(intake, EEvent::ADOPTED, intake.adopted, "reported, and nobody else has it");
    TellTasks(intake, EEvent::HANDED_AGAIN, intake.missed, "its container reports without it");
    CContainerMgr& containers = CContainerMgr::Instance();
    containers.SetResourceTask(intake.addr, intake.merged, CONTAINER_STATUS_REPORT_REQ);
    intake.record.bReportedTasks = true;
    if (intake.record.bFaultMark && intake.addr.GetContainerType() == CONTAINER_TYPE_IMG_DEV) {
        // A report with tasks ends the mark, but not that of an unsteady one; what was only filled
        // in does not.
        intake.record.bFaultMark = reported.empty() || intake.record.iUnsteadyUntil != 0;
        containers.SetContainerFaultShift(intake.addr, intake.record.bFaultMark);
    }
}

/// The library keeps a container's last three.
void NoteSample(std::vector<CFigures>& samples, const CFigures& sample) {
    if (samples.size() == NUMERIC_SAMPLES) {
        samples.erase(samples.begin());
    }
    samples.push_back(sample);
}

/// Of a node it keeps the newest, and those that came second and third for good.
void NoteNodeSample(std::vector<CFigures>& samples, const CFigures& sample) {
    if (samples.size() < NUMERIC_SAMPLES) {
        samples.push_back(sample);
    } else {
        samples.front() = sample;
    }
}

void TakeFigures(CIntake& intake) {
    CContainerMgr& containers = CContainerMgr::Instance();
    const CContainerReport& report = intake.report;
    if (report.total) {
        NoticeRoom(intake.cluster, intake.addr, *report.total, *report.used);
        containers.SetSystemResource(intake.addr, report.total->ToResource(),
                                     report.used->ToResource());
        intake.record.total = *report.total;
        intake.record.used = *report.used;
        NoteSample(intake.record.samples, *report.used);
    } else {
        containers.UpdateContainerReportTime(intake.addr);
    }
    if (report.parameters) {
        containers.SetExtParam(intake.addr, *report.parameters);
    }
    if (report.processes) {
        const bool bRan = containers.IsProcessRunning(intake.addr);
        containers.SetProcessState(intake.addr, *report.processes);
        if (!bRan && containers.IsProcessRunning(intake.addr)) {
            intake.cluster.state.roomAppeared.insert(intake.addr.GetContainerType());
        }
    }
    intake.record.iLastReport = intake.cluster.state.iNow;
    intake.record.bReported = true;
}

/// Hands the messages, until one is heard.
void HandMessages(CIntake& intake) {
    std::deque<CMessage>& messages = intake.record.messages;
    while (!messages.empty() && messages.front().ullHanded != 0 &&
           messages.front().ullHanded <= intake.ullSeen) {
        messages.pop_front();
    }
    for (CMessage& message : messages) {
        message.ullHanded = message.ullHanded != 0 ? message.ullHanded : intake.answer.ullNumber;
        intake.answer.messages.push_back(message.strXml);
    }
    if (intake.addr.GetContainerType() == CONTAINER_TYPE_CLOUD_STORAGE) {
        HandStorageRequests(intake.cluster, intake.report, intake.answer);
    }
}

}  // namespace

CAnswer TakeNodeReport(CCluster& cluster, const CNodeReport& report) {
    const auto it = cluster.state.nodes.find(report.strNodeId);
    if (it == cluster.state.nodes.end()) {
        return CAnswer::Refuse(EFault::UNKNOWN_NODE, report.strNodeId);
    }
    if (CAnswer refused = CheckFigures(report.total, report.used); refused.eFault != EFault::NONE) {
        return refused;
    }
    if (report.total) {
        CNodeMgr::Instance().SetSystemResource(report.strNodeId, report.total->ToResource(),
                                               report.used->ToResource());
        NoteNodeSample(it->second.samples, *report.used);
    }
    it->second.iLastReport = cluster.state.iNow;
    if (it->second.bSilent) {
        ReturnNode(cluster, report.strNodeId, it->second);
    }
    return {};
}

CAnswer TakeContainerReport(CCluster& cluster, const CContainerReport& report) {
    const CContainerAddr addr = report.container.ToAddr();
    CContainerRecord* const pRecord = cluster.assignments.Find(addr);
    if (pRecord == nullptr) {
        return CAnswer::Refuse(EFault::UNKNOWN_CONTAINER,
                               addr.GetNodeId() + ' ' + addr.GetContainerType());
    }
    if (CAnswer refused = CheckReport(cluster, *pRecord, report); refused.eFault != EFault::NONE) {
        return refused;
    }
    // A number that this life has not given yet is one of a former life's.
    const uint64_t ullSeen = report.ullSeen <= cluster.state.ullAnswers ? report.ullSeen : 0;
    CIntake intake{cluster, addr, *pRecord, report, ullSeen};
    intake.answer.ullNumber = ++cluster.state.ullAnswers;
    TakeFigures(intake);
    if (addr.GetContainerType() == CONTAINER_TYPE_CLOUD_STORAGE) {
        TakeStorageReport(cluster, addr, report);
    } else if (report.tasks) {
        TakeTasks(intake);
    }
    if (pRecord->bSilent) {
        ReturnContainer(cluster, addr, *pRecord);
    }
    HandMessages(intake);
    return std::move(intake.answer);
}
