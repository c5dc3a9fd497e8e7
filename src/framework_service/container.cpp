#include "framework_service/container.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <set>
#include <string_view>
#include <utility>

#include "common_service/tarn_def.h"
#include "common_service/tool_help.h"
#include "internal/framework_internal.h"
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
constexpr char CALC_CLOUD_STORAGE_INFO[] = "CalcCloudStorageInfo";
constexpr char SAVE_CLOUD_STORAGE_REPORT_INFO[] = "SaveCloudStorageReportInfoToZK";

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

/// Brings the tasks of the table into the order of their ids in the other, ahead of the rest.
void ArrangeAs(const std::list<CResourceTask>& order, std::list<CResourceTask>& taskTable) {
    std::list<CResourceTask> arranged;
    for (const CResourceTask& task : order) {
        const auto it = FindTask(taskTable, HasId(task.GetTaskId()));
        if (it != taskTable.end()) {
            arranged.splice(arranged.end(), taskTable, it);
        }
    }
    taskTable.splice(taskTable.begin(), arranged);
}

}  // namespace

std::uint64_t CTaskTable::NextNumber() {
    static std::atomic<std::uint64_t> ullLast{0};
    return ullLast.fetch_add(1, std::memory_order_relaxed) + 1;
}

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
    m_iCurStatusPos = NextSlot(m_iCurStatusPos);
}

int32_t CContainer::NewestDisk() const {
    return (*m_statusVector)[NewestSlot(m_iCurStatusPos)].GetDisk();
}

void CContainer::SetNewestDisk(int32_t iDisk) {
    if (!m_statusVector->empty()) {
        m_statusVector.Edit()[NewestSlot(m_iCurStatusPos)].SetDisk(iDisk);
        CalcDiskRatio(GetTotalDisk(), iDisk);
    }
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
    const auto isStopped = [](const auto& process) {
        return process.second != PROCESS_STATE_RUNNING;
    };
    const auto it = std::find_if(m_processTable->begin(), m_processTable->end(), isStopped);
    if (it == m_processTable->end()) {
        return true;
    }
    // The copy holds what the line says: the logger may change this container, or remove it.
    const CContainer stopped(*this);
    LogInfo("", "containerType=%s nodeId=%s process=%s stopped.",
            stopped.m_strContainerType.c_str(), stopped.m_strNodeId.c_str(), it->first.c_str());
    return false;
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

CFrameworkInternal::CTaskReport::CTaskReport(std::list<CResourceTask> resTaskTable)
    : taskTable(std::move(resTaskTable)), iTotalNet(SumNet(*taskTable)) {}

void CContainer::SetResourceTask(const std::list<CResourceTask>& resTaskTable, int iMsgType) {
    CFrameworkInternal::CTaskReport report(resTaskTable);
    CFrameworkInternal::TakeReport(*this, report, iMsgType, [this] { return this; });
}

void CFrameworkInternal::TakeReport(CContainer& container, CTaskReport& report, int iMsgType,
                                    const ContainerFinder& find) {
    std::swap(container.m_taskTable, report.taskTable);
    container.m_iTaskTotalNet = report.iTotalNet;
    CContainer* pContainer = &container;
    if (container.m_strContainerType == CONTAINER_TYPE_CLOUD_STORAGE) {
        CalcCloudStorage(CTaskTable(container.m_taskTable), iMsgType, find);
        pContainer = find();
    }
    if (pContainer == nullptr) {
        return;
    }
    if (pContainer->m_uiCount != 0) {
        pContainer->m_bNeedUpdate = false;
    } else {
        pContainer->m_uiCount = 1;
    }
}

void CContainer::GetResoureTask(std::list<CResourceTask>& resTaskList) const {
    resTaskList.insert(resTaskList.end(), m_taskTable->begin(), m_taskTable->end());
}

void CContainer::AddResourceTask(const std::list<CResourceTask>& resTaskList) {
    std::list<CResourceTask> tasks(resTaskList);
    CFrameworkInternal::TakeTasks(*this, tasks);
}

void CFrameworkInternal::TakeTasks(CContainer& container, std::list<CResourceTask>& tasks) {
    for (const CResourceTask& task : tasks) {
        container.AddTaskDisk(task.GetDisk());
        container.AddTaskNet(task.GetNet());
    }
    std::list<CResourceTask>& taskTable = container.m_taskTable.EditEnd();
    taskTable.splice(taskTable.end(), tasks);
}

void CContainer::RemoveResourceTask(const std::list<std::string>& taskIdList) {
    std::list<CResourceTask> removed;
    CFrameworkInternal::TakeOutTasks(*this, taskIdList, removed);
}

void CFrameworkInternal::TakeOutTasks(CContainer& container,
                                      const std::list<std::string>& taskIdList,
                                      std::list<CResourceTask>& removed) {
    const std::set<std::string_view> ids(taskIdList.begin(), taskIdList.end());
    const auto isListed = [&ids](const CResourceTask& task) {
        return ids.count(task.GetTaskId()) != 0;
    };
    if (FindTask(*container.m_taskTable, isListed) != container.m_taskTable->end()) {
        std::list<CResourceTask>& taskTable = container.m_taskTable.Edit();
        for (auto it = taskTable.begin(); it != taskTable.end();) {
            const auto itTask = it++;
            if (isListed(*itTask)) {
                removed.splice(removed.end(), taskTable, itTask);
            }
        }
    }
    container.CalcTaskTotalNet();
}

int CContainer::AddTask(const CResourceTask& resTask) {
    m_taskTable.EditEnd().push_back(resTask);
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
    const CTaskTable former(m_taskTable);
    std::list<CResourceTask> sorted(*former);
    sorted.sort(pFunc);
    const bool bChanged = &*m_taskTable != &*former;
    if (bChanged) {
        ArrangeAs(sorted, m_taskTable.Edit());
    } else {
        m_taskTable = std::move(sorted);
    }
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
    // Held: a key that a task lacks is logged, and the logger may change this container.
    const CTaskTable taskTable(m_taskTable);
    const auto it = FindTask(*taskTable, isScheduleable);
    if (it == taskTable->end()) {
        return LogFailure("container get first scheduleable task", ORVA_FAIL,
                          "container have no scheduleable task.");
    }
    resTask = *it;
    return ORVA_SUCCEED;
}

void CContainer::CalcCloudStorageInfo(int iMsgType) {
    const CTaskTable taskTable(m_taskTable);
    CFrameworkInternal::CalcCloudStorage(taskTable, iMsgType, [this] { return this; });
}

void CFrameworkInternal::CalcCloudStorage(const CTaskTable& taskTable, int iMsgType,
                                          const ContainerFinder& find) {
    for (const CResourceTask& task : *taskTable) {
        if (iMsgType != ALLOC_CLOUD_STORAGE_NOTIFY_RSP) {
            TakeFigures(task, find);
        }
        CContainer* const pContainer = find();
        if (pContainer == nullptr) {
            return;
        }
        pContainer->m_cloudStorage.Edit().allocInfoList = task.m_allocInfoList;
        for (const ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo : *task.m_allocInfoList) {
            LogTrace({"CContainer:CloudStorageCode:%s,AllocStorage:%d.",
                      CPlace::Of(CALC_CLOUD_STORAGE_INFO)},
                     allocInfo.cloudStorageCode.c_str(), allocInfo.allocStorage);
        }
    }
}

void CFrameworkInternal::TakeFigures(const CResourceTask& task, const ContainerFinder& find) {
    using CCloudStorage = CContainer::CCloudStorage;
    static constexpr std::pair<const char*, std::string CCloudStorage::*> TEXTS[] = {
        {PSZ_TASK_PRODUCT_TYPE, &CCloudStorage::strProductType},
        {PSZ_TASK_SERVICE_TYPE, &CCloudStorage::strServiceType}};
    static constexpr std::pair<const char*, int32_t CCloudStorage::*> NUMBERS[] = {
        {PSZ_TASK_REQ_STORAGE, &CCloudStorage::iReqStorage},
        {PSZ_TASK_REQ_PIC_STORAGE, &CCloudStorage::iReqPicStorage},
        {PSZ_TASK_LOW_PRI_BIT_RATE, &CCloudStorage::iBitRate},
        {PSZ_TASK_TRAN_BAND_WIDTH, &CCloudStorage::iTranBandWidth}};
    const auto put = [&find](auto pField, const auto& value) {
        if (CContainer* const pContainer = find(); pContainer != nullptr) {
            pContainer->m_cloudStorage.Edit().*pField = value;
        }
    };
    // One text for all keys: a key that the task lacks leaves that of the key before it.
    std::string strValue;
    for (const auto& [pszKey, pText] : TEXTS) {
        task.GetValueByKey(pszKey, strValue);
        put(pText, strValue);
    }
    for (const auto& [pszKey, pNumber] : NUMBERS) {
        task.GetValueByKey(pszKey, strValue);
        put(pNumber, HALD::CToolHelp::StrToInt(strValue, false));
    }
    CContainer* const pContainer = find();
    if (pContainer == nullptr) {
        return;
    }
    if (ServiceType(*pContainer) == SERVICE_TYPE_MPU_R) {
        pContainer->SetUptadeFlag(true);
    }
    const CCloudStorage& figures = *pContainer->m_cloudStorage;
    LogTrace({"CContainer:m_iReqStorage:%d,m_iBitRate:%d,m_iReqPicStorage:%d,m_bUpdateFlag:%d.",
              CPlace::Of(CALC_CLOUD_STORAGE_INFO)},
             figures.iReqStorage, figures.iBitRate, figures.iReqPicStorage, figures.bUpdateFlag);
}

void CContainer::SaveDataToZK() {
    if (m_strContainerType == CONTAINER_TYPE_CLOUD_STORAGE) {
        SaveCloudStorageReportInfoToZK();
    }
}

void CContainer::SaveCloudStorageReportInfoToZK() {
    CFrameworkInternal::SaveCloudStorage([this] { return this; });
}

void CFrameworkInternal::SaveCloudStorage(const ConstContainerFinder& find) {
    const CContainer before(*find());
    CClusterCloudStorageZNodeInfo document;
    bool bDataEmpty = true;
    const int iRead = ReadStore(STORE_NODE_CLOUD_STORAGE, EWatch::NO, document, bDataEmpty);
    if (iRead != ORVA_SUCCEED && !bDataEmpty) {
        LogFailure({"GetDataFromZK", CPlace::Of(SAVE_CLOUD_STORAGE_REPORT_INFO)}, iRead,
                   "get cloud storage info from zk fail. nodeId: %s  cType: %s",
                   before.m_strNodeId.c_str(), before.m_strContainerType.c_str());
    }
    const CContainer* const pContainer = find();
    const CContainer container(pContainer != nullptr ? *pContainer : before);
    const CContainer::CCloudStorage& figures = *container.m_cloudStorage;
    CloudStorageInfo info;
    info.strProductType = figures.strProductType;
    info.strServiceType = figures.strServiceType;
    info.iReqStorage = figures.iReqStorage;
    info.iReqPicStorage = figures.iReqPicStorage;
    info.iLowPriorityBitRate = figures.iBitRate;
    info.allocInfo = *figures.allocInfoList;
    LogInfo({"save cloud storage report info to zk", CPlace::Of(SAVE_CLOUD_STORAGE_REPORT_INFO)},
            "alloc info list=%d", static_cast<int>(info.allocInfo.size()));
    document.SetCloudStorageInfo(container.m_strNodeId, info);
    const int iWritten = WriteStore(STORE_NODE_CLOUD_STORAGE, document);
    if (iWritten != ORVA_SUCCEED) {
        LogFailure({"init cluster session, on successful response",
                    CPlace::Of(SAVE_CLOUD_STORAGE_REPORT_INFO)},
                   iWritten, "set cloud storage info to zk fail.");
    }
}

void CContainer::GetAllocInfoList(std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO>& allocInfoList) const {
    allocInfoList.insert(allocInfoList.end(), m_cloudStorage->allocInfoList->begin(),
                         m_cloudStorage->allocInfoList->end());
}
