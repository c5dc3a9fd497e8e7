#include "framework_service/container.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <set>
#include <string_view>
#include <utility>

#include "common_service/tarn_def.h"
#include "common_service/tool_help.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "internal/key_values.h"
#include "internal/sample_buffer.h"
#include "internal/store.h"
#include "internal/wrap.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

bool CompareTaskByDisk(const CResourceTask& t1, const CResourceTask& t2) {
    return t1.GetDisk() < t2.GetDisk();
}

bool CompareTaskByNet(const CResourceTask& t1, const CResourceTask& t2) {
    return t1.GetNet() < t2.GetNet();
}

namespace {

constexpr char SERVICE_TYPE_MPU_R[] = "MPU-R";

int32_t AddPositive(int32_t iTotal, int32_t iValue) {
    return iValue >= 1 ? WrapAdd(iTotal, iValue) : iTotal;
}

int32_t SubtractToZero(int32_t iTotal, int32_t iValue) {
    return iTotal > iValue ? WrapSub(iTotal, iValue) : 0;
}

int32_t SumNet(const std::list<CResourceTask>& taskTable) {
    int32_t iTotal = 0;
    for (const CResourceTask& task : taskTable) {
        iTotal = WrapAdd(iTotal, task.GetNet());
    }
    return iTotal;
}

template <typename Predicate>
auto FindTask(const std::list<CResourceTask>& taskTable, const Predicate& isWanted) {
    return std::find_if(taskTable.begin(), taskTable.end(), isWanted);
}

auto HasId(const std::string& strTaskId) {
    return [&strTaskId](const CResourceTask& task) { return task.GetTaskId() == strTaskId; };
}

}  // namespace

CContainer::CContainer() : m_tLastReportTime(time(nullptr)) {}

void CContainer::SetTotalResource(const CSystemResource& systemResource) {
    m_totalResource = systemResource;
    if (!m_statusVector->empty()) {
        CalcDiskRatio(GetTotalDisk(), NewestDisk());
    }
}

void CContainer::SetCurResource(const CSystemResource& systemResource) {
    CalcDiskRatio(GetTotalDisk(), systemResource.GetDisk());
    m_status.SetCurSysResource(TakeSample(m_statusVector.Edit(), m_iCurStatusPos, systemResource));
    m_iCurStatusPos = (m_iCurStatusPos + 1) % NUMERIC_SAMPLES;
}

std::size_t CContainer::NewestSample() const {
    return static_cast<std::size_t>((m_iCurStatusPos + NUMERIC_SAMPLES - 1) % NUMERIC_SAMPLES);
}

int32_t CContainer::NewestDisk() const {
    return (*m_statusVector)[NewestSample()].GetDisk();
}

void CContainer::SetNewestDisk(int32_t iDisk) {
    m_statusVector.Edit()[NewestSample()].SetDisk(iDisk);
    CalcDiskRatio(GetTotalDisk(), iDisk);
}

int32_t CContainer::GetCurResourceByType(RESOURCE_TYPE eType) const {
    return m_status.GetCurSysResource().GetResourceByType(eType);
}

void CContainer::CalcDiskRatio(int32_t iTotalDisk, int32_t iCurDisk) {
    m_fDiskRatio = iTotalDisk > 0 ? static_cast<float>(iCurDisk) / static_cast<float>(iTotalDisk)
                                  : static_cast<float>(std::numeric_limits<int32_t>::max());
}

void CContainer::SetStatusReportTime() {
    m_tLastReportTime = time(nullptr);
}

bool CContainer::IsReportStatusOutTime(int iTimeOut) {
    const time_t tNow = time(nullptr);
    if (m_tLastReportTime > tNow) {
        m_tLastReportTime = tNow;
        return true;
    }
    const time_t tDifference = tNow - m_tLastReportTime;
    if (tDifference <= iTimeOut) {
        return false;
    }
    LogInfo("", "containerType=%s nodeId=%s report timeout,diff time=%ld",
            m_strContainerType.c_str(), m_strNodeId.c_str(), tDifference);
    return true;
}

void CContainer::SetMemberStatus(int val) {
    m_iMemberStatus = val;
    if (val == CLUSTER_MEMBER_REMOVED) {
        m_uiCount = 0;
    }
}

void CContainer::SetProcessState(const std::map<std::string, int>& processTable) {
    m_processTable = processTable;
}

void CContainer::GetProcessState(std::map<std::string, int>& processTable) const {
    processTable = *m_processTable;
}

bool CContainer::IsProcessRunning() const {
    for (const auto& [strProcess, iState] : *m_processTable) {
        if (iState != PROCESS_STATE_RUNNING) {
            LogInfo("", "containerType=%s nodeId=%s process=%s stopped.",
                    m_strContainerType.c_str(), m_strNodeId.c_str(), strProcess.c_str());
            return false;
        }
    }
    return true;
}

int CContainer::InsertSingleKeyValue(const std::string& strKey, const std::string& strValue) {
    return SetValueByKey(strKey, strValue);
}

int CContainer::InsertSingleKeyIntValue(const std::string& strKey, int iValue) {
    return SetIntValueByKey(strKey, iValue);
}

int CContainer::InsertSingleKeyFloatValue(const std::string& strKey, float fValue) {
    m_floatPrivateInfo.Edit().insert_or_assign(strKey, fValue);
    return ORVA_SUCCEED;
}

int CContainer::SetValueByKey(const std::string& strKey, const std::string& strValue) {
    m_privateInfo.Edit().insert_or_assign(strKey, strValue);
    return ORVA_SUCCEED;
}

int CContainer::SetIntValueByKey(const std::string& strKey, int iValue) {
    return SetValueByKey(strKey, HALD::CToolHelp::IntToStr(iValue, false));
}

int CContainer::GetValueByKey(const std::string& strKey, std::string& strValue) const {
    return ReadKey("Container, get value by key", "can not find, key[%s], value[%s]",
                   *m_privateInfo, strKey, strValue);
}

int CContainer::GetIntValueByKey(const std::string& strKey, int& iValue) const {
    std::string strValue;
    const int iRet = GetValueByKey(strKey, strValue);
    if (iRet == ORVA_SUCCEED) {
        iValue = HALD::CToolHelp::StrToInt(strValue, false);
    }
    return iRet;
}

int CContainer::GetFloatValueByKey(const std::string& strKey, float& fValue) const {
    return ReadKey("Container, get float value by key", "can not find, key[%s], value[%f]",
                   *m_floatPrivateInfo, strKey, fValue);
}

void CContainer::GetAllPrivateInfo(KeyValueMap& privateInfo) const {
    privateInfo = *m_privateInfo;
}

void CContainer::SetExtParam(const KeyValueMap& privateInfo) {
    m_privateInfo = privateInfo;
}

CContainer::CTaskReport::CTaskReport(std::list<CResourceTask> resTaskTable)
    : taskTable(std::move(resTaskTable)), iTotalNet(SumNet(*taskTable)) {}

void CContainer::SetResourceTask(const std::list<CResourceTask>& resTaskTable, int iMsgType) {
    CTaskReport report(resTaskTable);
    TakeReport(report, iMsgType);
}

void CContainer::TakeReport(CTaskReport& report, int iMsgType) {
    std::swap(m_taskTable, report.taskTable);
    m_iTaskTotalNet = report.iTotalNet;
    if (m_strContainerType == CONTAINER_TYPE_CLOUD_STORAGE) {
        CalcCloudStorageInfo(iMsgType);
    }
    if (m_uiCount != 0) {
        m_bNeedUpdate = false;
    } else {
        m_uiCount = 1;
    }
}

void CContainer::GetResoureTask(std::list<CResourceTask>& resTaskList) const {
    resTaskList.insert(resTaskList.end(), m_taskTable->begin(), m_taskTable->end());
}

void CContainer::AddResourceTask(const std::list<CResourceTask>& resTaskList) {
    std::list<CResourceTask> tasks(resTaskList);
    TakeTasks(tasks);
}

void CContainer::TakeTasks(std::list<CResourceTask>& tasks) {
    for (const CResourceTask& task : tasks) {
        AddTaskDisk(task.GetDisk());
        AddTaskNet(task.GetNet());
    }
    std::list<CResourceTask>& taskTable = m_taskTable.Edit();
    taskTable.splice(taskTable.end(), tasks);
}

void CContainer::RemoveResourceTask(const std::list<std::string>& taskIdList) {
    std::list<CResourceTask> removed;
    TakeOutTasks(taskIdList, removed);
}

void CContainer::TakeOutTasks(const std::list<std::string>& taskIdList,
                              std::list<CResourceTask>& removed) {
    const std::set<std::string_view> ids(taskIdList.begin(), taskIdList.end());
    const auto isListed = [&ids](const CResourceTask& task) {
        return ids.count(task.GetTaskId()) != 0;
    };
    if (FindTask(*m_taskTable, isListed) != m_taskTable->end()) {
        std::list<CResourceTask>& taskTable = m_taskTable.Edit();
        for (auto it = taskTable.begin(); it != taskTable.end();) {
            const auto itTask = it++;
            if (isListed(*itTask)) {
                removed.splice(removed.end(), taskTable, itTask);
            }
        }
    }
    CalcTaskTotalNet();
}

int CContainer::AddTask(const CResourceTask& resTask) {
    m_taskTable.Edit().push_back(resTask);
    AddTaskDisk(resTask.GetDisk());
    AddTaskNet(resTask.GetNet());
    return ORVA_SUCCEED;
}

int CContainer::DelTask(const CResourceTask& resTask) {
    const auto isWanted = HasId(resTask.GetTaskId());
    if (FindTask(*m_taskTable, isWanted) == m_taskTable->end()) {
        return LogFailure("container remove task by id", ORVA_FAIL, "connot find task[%s].",
                          resTask.GetTaskId().c_str());
    }
    std::list<CResourceTask>& taskTable = m_taskTable.Edit();
    taskTable.erase(FindTask(taskTable, isWanted));
    if (resTask.GetDisk() > 0) {
        DelTaskDisk(resTask.GetDisk());
    }
    if (resTask.GetNet() > 0) {
        DelTaskNet(resTask.GetNet());
    }
    return ORVA_SUCCEED;
}

void CContainer::AddTaskDisk(int32_t iDisk) {
    m_iTaskTotalDisk = AddPositive(m_iTaskTotalDisk, iDisk);
}

void CContainer::AddTaskNet(int32_t iNet) {
    m_iTaskTotalNet = AddPositive(m_iTaskTotalNet, iNet);
}

void CContainer::DelTaskDisk(int32_t iDisk) {
    m_iTaskTotalDisk = SubtractToZero(m_iTaskTotalDisk, iDisk);
}

void CContainer::DelTaskNet(int32_t iNet) {
    m_iTaskTotalNet = SubtractToZero(m_iTaskTotalNet, iNet);
}

void CContainer::CalcTaskTotalNet() {
    m_iTaskTotalNet = SumNet(*m_taskTable);
}

void CContainer::AddDiskToLastestResource(int32_t iDisk) {
    if (!m_statusVector->empty()) {
        SetNewestDisk(WrapAdd(NewestDisk(), iDisk));
    }
}

void CContainer::DelDiskToLastestResource(int32_t iDisk) {
    if (m_statusVector->empty()) {
        return;
    }
    const int32_t iNewest = NewestDisk();
    if (iDisk > iNewest) {
        LogFailure("container del disk", ORVA_FAIL,
                   "disk param[%d] larger than container disk[%d].", iDisk, iNewest);
    }
    SetNewestDisk(iDisk > iNewest ? 0 : WrapSub(iNewest, iDisk));
}

void CContainer::SortTaskTableByDisk() {
    m_taskTable.Edit().sort(CompareTaskByDisk);
}

void CContainer::SortTaskTableByNet() {
    m_taskTable.Edit().sort(CompareTaskByNet);
}

void CContainer::SortTaskTableByPrivateFunc(TaskCompareFunc pFunc) {
    m_taskTable.Edit().sort(pFunc);
}

int CContainer::GetFirstTask(CResourceTask& resTask) const {
    if (m_taskTable->empty()) {
        return LogFailure("container get first task", ORVA_FAIL, "container have no task.");
    }
    resTask = m_taskTable->front();
    return ORVA_SUCCEED;
}

int CContainer::GetSingleTaskById(const std::string& taskId, CResourceTask& resTask) const {
    const auto it = FindTask(*m_taskTable, HasId(taskId));
    if (it == m_taskTable->end()) {
        return LogFailure("container get single task by id", ORVA_FAIL,
                          "container don't have this task.");
    }
    resTask = *it;
    return ORVA_SUCCEED;
}

int CContainer::GetFirstScheduleableTask(CResourceTask& resTask, bool bCnt, bool bSmart, bool bDisk,
                                         const std::string& strKey) const {
    // The number outlives the task it was read from: a task without the key is judged by it.
    int iValue = 0;
    const auto isMarked = [&iValue, &strKey](const CResourceTask& task) {
        task.GetIntValueByKey(strKey, iValue);
        return iValue > 0;
    };
    const auto isScheduleable = [&](const CResourceTask& task) {
        if (!task.IsSupportShift()) {
            return false;
        }
        if (bCnt) {
            return task.GetDisk() <= 0 && isMarked(task) == bSmart;
        }
        if (bDisk) {
            return task.GetDisk() > 0;
        }
        return !strKey.empty() && isMarked(task);
    };
    const auto it = FindTask(*m_taskTable, isScheduleable);
    if (it == m_taskTable->end()) {
        return LogFailure("container get first scheduleable task", ORVA_FAIL,
                          "container have no scheduleable task.");
    }
    resTask = *it;
    return ORVA_SUCCEED;
}

void CContainer::CalcCloudStorageInfo(int iMsgType) {
    for (const CResourceTask& task : *m_taskTable) {
        if (iMsgType != ALLOC_CLOUD_STORAGE_NOTIFY_RSP) {
            ReadCloudStorageFigures(task);
            LogTrace(
                "CContainer:m_iReqStorage:%d,m_iBitRate:%d,m_iReqPicStorage:%d,"
                "m_bUpdateFlag:%d.",
                m_cloudStorage->iReqStorage, m_cloudStorage->iBitRate,
                m_cloudStorage->iReqPicStorage, m_cloudStorage->bUpdateFlag);
        }
        m_cloudStorage.Edit().allocInfoList = task.m_allocInfoList;
        for (const ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo : *task.m_allocInfoList) {
            LogTrace("CContainer:CloudStorageCode:%s,AllocStorage:%d.",
                     allocInfo.cloudStorageCode.c_str(), allocInfo.allocStorage);
        }
    }
}

void CContainer::ReadCloudStorageFigures(const CResourceTask& task) {
    // One text for all keys: a key that the task lacks leaves that of the key before it.
    std::string strValue;
    const auto readText = [&task, &strValue](const char* pszKey) -> const std::string& {
        task.GetValueByKey(pszKey, strValue);
        return strValue;
    };
    const auto readNumber = [&readText](const char* pszKey) {
        return HALD::CToolHelp::StrToInt(readText(pszKey), false);
    };
    // Unshared for each figure anew: a missing key is logged, and a logger may copy the container.
    m_cloudStorage.Edit().strProductType = readText(PSZ_TASK_PRODUCT_TYPE);
    m_cloudStorage.Edit().strServiceType = readText(PSZ_TASK_SERVICE_TYPE);
    m_cloudStorage.Edit().iReqStorage = readNumber(PSZ_TASK_REQ_STORAGE);
    m_cloudStorage.Edit().iReqPicStorage = readNumber(PSZ_TASK_REQ_PIC_STORAGE);
    m_cloudStorage.Edit().iBitRate = readNumber(PSZ_TASK_LOW_PRI_BIT_RATE);
    m_cloudStorage.Edit().iTranBandWidth = readNumber(PSZ_TASK_TRAN_BAND_WIDTH);
    if (m_cloudStorage->strServiceType == SERVICE_TYPE_MPU_R) {
        m_cloudStorage.Edit().bUpdateFlag = true;
    }
}

void CContainer::SaveDataToZK() {
    if (m_strContainerType == CONTAINER_TYPE_CLOUD_STORAGE) {
        SaveCloudStorageReportInfoToZK();
    }
}

void CContainer::SaveCloudStorageReportInfoToZK() {
    CClusterCloudStorageZNodeInfo document;
    bool bDataEmpty = true;
    const int iRead = ReadStore(STORE_NODE_CLOUD_STORAGE, EWatch::NO, document, bDataEmpty);
    if (iRead != ORVA_SUCCEED && !bDataEmpty) {
        LogFailure("GetDataFromZK", iRead,
                   "get cloud storage info from zk fail. nodeId: %s  cType: %s",
                   m_strNodeId.c_str(), m_strContainerType.c_str());
    }
    CloudStorageInfo info;
    info.strProductType = m_cloudStorage->strProductType;
    info.strServiceType = m_cloudStorage->strServiceType;
    info.iReqStorage = m_cloudStorage->iReqStorage;
    info.iReqPicStorage = m_cloudStorage->iReqPicStorage;
    info.iLowPriorityBitRate = m_cloudStorage->iBitRate;
    info.allocInfo = *m_cloudStorage->allocInfoList;
    LogInfo("save cloud storage report info to zk", "alloc info list=%d",
            static_cast<int>(info.allocInfo.size()));
    document.SetCloudStorageInfo(m_strNodeId, info);
    const int iWritten = WriteStore(STORE_NODE_CLOUD_STORAGE, document);
    if (iWritten != ORVA_SUCCEED) {
        LogFailure("init cluster session, on successful response", iWritten,
                   "set cloud storage info to zk fail.");
    }
}

void CContainer::GetAllocInfoList(std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO>& allocInfoList) const {
    allocInfoList.insert(allocInfoList.end(), m_cloudStorage->allocInfoList->begin(),
                         m_cloudStorage->allocInfoList->end());
}
