#include "common/schedule_plugin.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/schedule_board.h"
#include "common/task_xml.h"
#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/schedule_mgr.h"
#include "operation_log/operation_log.h"

using namespace operation_log;

namespace {

std::list<CResourceTask> TasksIn(const CContainerAddr& containerAddr) {
    std::list<CResourceTask> taskList;
    CContainerMgr::Instance().GetResTaskList(containerAddr, taskList);
    return taskList;
}

/// The tasks under their ids; of several with one id the first.
std::unordered_map<std::string_view, const CResourceTask*> ById(
    const std::list<CResourceTask>& taskList) {
    std::unordered_map<std::string_view, const CResourceTask*> tasks;
    for (const CResourceTask& task : taskList) {
        tasks.emplace(task.GetTaskId(), &task);
    }
    return tasks;
}

/// The code of one shift, tried out on the board.
int TryShift(CScheduleBoard& board, const CResourceTask* pTask, const CTaskShiftInfo& shift) {
    return pTask != nullptr ? board.Shift(*pTask, shift.GetOutContainer(), shift.GetInContainer())
                            : ORVA_PARA_INVALID;
}

}  // namespace

int CSchedulePlugin::UnInit() {
    m_view.Forget();
    return ORVA_SUCCEED;
}

std::string CSchedulePlugin::GetVersion() {
    return "1.0.0";
}

int CSchedulePlugin::GetSupportFaultShiftContainers(std::list<std::string>& containerList) {
    containerList = {m_profile.strContainerType};
    return ORVA_SUCCEED;
}

int CSchedulePlugin::GetSupportedJobs(std::list<unsigned int>& jobList) {
    jobList = m_profile.jobList;
    return ORVA_SUCCEED;
}

int CSchedulePlugin::GetSupportedContainers(std::list<std::string>& containerList) {
    containerList = {m_profile.strContainerType};
    return ORVA_SUCCEED;
}

int CSchedulePlugin::GetContainerBindTable(ContainerTypeBindMap& containerBindList) {
    containerBindList = {{m_profile.strContainerType, m_profile.logicTypeList}};
    return ORVA_SUCCEED;
}

int CSchedulePlugin::PrivateTaskToResourceTask(const std::string& strNodeId, uint32_t uiJobType,
                                               PELU::CXml& xml,
                                               std::list<CResourceTask>& resTaskList) {
    const auto& jobList = m_profile.jobList;
    if (std::find(jobList.begin(), jobList.end(), uiJobType) == jobList.end()) {
        return LogFailure("private task to resource task", ORVA_PARA_INVALID,
                          "unknown job type[%u], node[%s].", uiJobType, strNodeId.c_str());
    }
    return ReadTaskList(xml, resTaskList);
}

int CSchedulePlugin::TaskSchedule(const std::string& strNodeId,
                                  const std::list<CResourceTask>& resTaskList,
                                  CTaskContainerMap& taskBindTable,
                                  unsigned long long& ullDecisionVerNum, bool bReschedule) {
    taskBindTable.clear();
    std::vector<const CResourceTask*> homeless;
    {
        CScheduleBoard board(m_view);
        for (const CResourceTask& task : resTaskList) {
            const auto it = taskBindTable.lower_bound(task.GetTaskId());
            if (it != taskBindTable.end() && it->first == task.GetTaskId()) {
                continue;
            }
            if (const std::optional<CContainerAddr> addr = board.Place(task, bReschedule)) {
                taskBindTable.emplace_hint(it, task.GetTaskId(), *addr);
            } else {
                homeless.push_back(&task);
            }
        }
    }
    int iResult = ORVA_SUCCEED;
    for (const CResourceTask* const pTask : homeless) {
        iResult = LogFailure("task schedule", ORVA_FAIL, "no room for task[%s] of node[%s].",
                             pTask->GetTaskId().c_str(), strNodeId.c_str());
    }
    const int iDecided = Decide(taskBindTable, ullDecisionVerNum);
    return iDecided != ORVA_SUCCEED ? iDecided : iResult;
}

int CSchedulePlugin::AssembleShiftResult(const std::string& strNodeId, const CResourceTask& resTask,
                                         unsigned long long ullDecisionVerNum, bool bShiftIn,
                                         PELU::CXml& xml) {
    return WriteElement(xml, "ShiftTask",
                        {{"TaskID", resTask.GetTaskId()},
                         {"NodeID", strNodeId},
                         {"DecisionVerNum", std::to_string(ullDecisionVerNum)},
                         {"ShiftIn", bShiftIn ? "1" : "0"}});
}

int CSchedulePlugin::AssembleScheduleResult(const CResourceTask& resTask, int iResult,
                                            const CContainerAddr& containerAddr, PELU::CXml& xml) {
    std::list<CXmlText> children{{"TaskID", resTask.GetTaskId()},
                                 {"Result", std::to_string(iResult)}};
    if (iResult == ORVA_SUCCEED) {
        children.push_back({"NodeID", containerAddr.GetNodeId()});
        children.push_back({"ContainerType", containerAddr.GetContainerType()});
    }
    return WriteElement(xml, "TaskResult", children);
}

int CSchedulePlugin::GetResTaskListInContainer(const CContainerAddr& containerAddr,
                                               std::list<CResourceTask>& resTaskList,
                                               bool bFaultShift, bool bLoadBalance) {
    std::list<CResourceTask> taskList = TasksIn(containerAddr);
    if (bFaultShift || bLoadBalance) {
        taskList.remove_if([](const CResourceTask& task) { return !task.IsSupportShift(); });
    }
    resTaskList.splice(resTaskList.end(), taskList);
    return ORVA_SUCCEED;
}

void CSchedulePlugin::GetResTaskInfoByTaskId(const CContainerAddr& containerAddr,
                                             const std::string& strTaskId,
                                             std::list<CResourceTask>& resTaskList) {
    std::list<CResourceTask> taskList = TasksIn(containerAddr);
    taskList.remove_if(
        [&strTaskId](const CResourceTask& task) { return task.GetTaskId() != strTaskId; });
    resTaskList.splice(resTaskList.end(), taskList);
}

int CSchedulePlugin::ManualTaskSchedule(const std::list<CResourceTask>& resTaskList,
                                        const CTaskShiftMap& manualTaskShiftMap,
                                        CTaskContainerMap& taskBindTable,
                                        std::map<std::string, int>& taskRspResultMap,
                                        unsigned long long& ullDecisionVerNum) {
    taskBindTable.clear();
    taskRspResultMap.clear();
    const auto tasks = ById(resTaskList);
    {
        CScheduleBoard board(m_view);
        for (const auto& [strTaskId, shift] : manualTaskShiftMap) {
            const auto it = tasks.find(strTaskId);
            taskRspResultMap[strTaskId] =
                TryShift(board, it != tasks.end() ? it->second : nullptr, shift);
        }
    }
    int iResult = ORVA_SUCCEED;
    for (const auto& [strTaskId, shift] : manualTaskShiftMap) {
        const int iRet = taskRspResultMap[strTaskId];
        if (iRet == ORVA_SUCCEED) {
            taskBindTable.emplace(strTaskId, shift.GetInContainer());
        } else {
            iResult = ORVA_FAIL;
            LogFailure("manual task schedule", iRet, "cannot shift task[%s] to node[%s].",
                       strTaskId.c_str(), shift.GetInContainer().GetNodeId().c_str());
        }
    }
    const int iDecided = Decide(taskBindTable, ullDecisionVerNum);
    return iDecided != ORVA_SUCCEED ? iDecided : iResult;
}

bool CSchedulePlugin::IsContainerEmpty(CContainerAddr& containerAddr) {
    return TasksIn(containerAddr).empty();
}

void CSchedulePlugin::ExplainPlacement(const CResourceTask& task,
                                       std::list<CPlacementReason>& reasons) {
    CScheduleBoard(m_view).Explain(task, reasons);
}

int CSchedulePlugin::Decide(CTaskContainerMap& taskBindTable,
                            unsigned long long& ullDecisionVerNum) const {
    if (taskBindTable.empty()) {
        return ORVA_SUCCEED;
    }
    const int iRet = CScheduleMgr::Instance().IncreaseDecisionVerNum(ullDecisionVerNum);
    if (iRet != ORVA_SUCCEED) {
        taskBindTable.clear();
    }
    return iRet;
}
