#include "framework_service/container_mgr.h"

#include <algorithm>
#include <utility>

#include "common_service/tarn_def.h"
#include "internal/registry.h"
#include "internal/wrap.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

CContainerMgr CContainerMgr::m_Instance;

namespace {

constexpr char MESSAGE_CODE[] = "find container failed, code[%s:%s]";
constexpr char MESSAGE_CONTAINER_ID[] = "find container failed, node id=%s container id=%s";
constexpr char MESSAGE_CONTAINER_TYPE[] = "find container failed, node id=%s container type=%s";

void ReportUnknown(ELookup eLookup, const CPlacedText& operation, int iCode, const char* pszMessage,
                   const CContainerAddr& containerAddr) {
    if (eLookup == ELookup::UNKNOWN) {
        LogFailure(operation, iCode, pszMessage, containerAddr.GetNodeId().c_str(),
                   containerAddr.GetContainerType().c_str());
    }
}

/// The container's answer to a question; false for an unknown container.
bool Ask(HALD_Recursive_Thread_Mutex& mutex,
         const CSnapshotTable<CContainerAddr, CContainer>& table,
         const CContainerAddr& containerAddr, bool (CContainer::*pQuestion)() const) {
    bool bAnswer = false;
    ReadEntry(mutex, table, containerAddr, [&bAnswer, pQuestion](const CContainer& container) {
        bAnswer = (container.*pQuestion)();
    });
    return bAnswer;
}

constexpr time_t NUMERIC_HIGH_SPEED_EXPIRY = 30;
constexpr char OPERATION_UPDATE_HIGH_SPEED[] = "UpdateHighSpeedNvrInfo";

/// What a selection says.
struct CSelectionTexts {
    const char* pszOperation;
    const char* pszEmptyOnEntry;
    const char* pszEmptyAfterCleaning;
    const char* pszFound;
};

constexpr CSelectionTexts HIGH_SPEED{"get high speed nvr code", "", "m_HighSpeedInfoList is empty",
                                     "find most free mpu_t"};
constexpr CSelectionTexts PIC_HIGH_SPEED{
    "get pic high speed nvr code", "m_PicHighSpeedInfoList is empty",
    "m_PicHighSpeedInfoList is empty", "find most free pic mpu_t"};

/// One of the two lists, with what a selection from it needs.
struct CHighSpeedList {
    const CSelectionTexts& texts;
    HALD_Recursive_Thread_Mutex& mutex;
    std::atomic<bool>& bFilled;  ///< follows infoList; asked before the mutex is taken
    std::list<HighSpeedDownLoadInfo>& infoList;
};

/// Drops the entries that are out of date, and in silence those without any or with impossible
/// bandwidth. The lines come last: a logger may select and report on its own.
void CleanLocked(const CHighSpeedList& list, const CPlacedText& operation) {
    const time_t tNow = time(nullptr);
    const auto isExpired = [tNow](const HighSpeedDownLoadInfo& info) {
        return tNow - info.tUpdateTime > NUMERIC_HIGH_SPEED_EXPIRY;
    };
    std::list<HighSpeedDownLoadInfo> dropped;
    for (auto it = list.infoList.begin(); it != list.infoList.end();) {
        const auto itInfo = it++;
        if (isExpired(*itInfo) || itInfo->uiFreeBrandwidth == 0 ||
            itInfo->uiFreeBrandwidth > itInfo->uiTotalBrandwidth) {
            dropped.splice(dropped.end(), list.infoList, itInfo);
        }
    }
    for (const HighSpeedDownLoadInfo& info : dropped) {
        if (isExpired(info)) {
            LogFailure(operation, ORVA_FAIL,
                       "nvrCode:%s expire,expire time:%d,currentTime:%ld,updateTime:%ld",
                       info.strNvrCode.c_str(), static_cast<int>(NUMERIC_HIGH_SPEED_EXPIRY), tNow,
                       info.tUpdateTime);
        }
    }
    list.bFilled = !list.infoList.empty();
}

int SelectHighSpeedNvr(const CHighSpeedList& list, std::string& strNvrCode, int32_t iBitRate,
                       CPlace place = CPlace::Here()) {
    const CPlacedText operation(list.texts.pszOperation, place);
    if (!list.bFilled) {
        return LogFailure(operation, ORVA_FAIL, list.texts.pszEmptyOnEntry);
    }
    const MutexGuard guard(list.mutex);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    CleanLocked(list, operation);
    if (list.infoList.empty()) {
        return LogFailure(operation, ORVA_FAIL, list.texts.pszEmptyAfterCleaning);
    }
    list.infoList.sort(SortHighSpeedInfo);
    HighSpeedDownLoadInfo& head = list.infoList.front();
    const auto iNeed = static_cast<int32_t>(static_cast<uint32_t>(iBitRate) << 4);
    if (iNeed >= head.uiFreeBrandwidth) {
        return LogFailure(operation, ORVA_FAIL, "fail");
    }
    head.uiFreeBrandwidth = WrapSub(head.uiFreeBrandwidth, iNeed);
    strNvrCode = head.strNvrCode;
    LogInfo({list.texts.pszFound, place},
            "strNvrCode:%s,TotalBrandwidth:%u,UsedBrandwidth:%u,FreeBrandwidth:%u",
            strNvrCode.c_str(), head.uiTotalBrandwidth, head.uiUsedBrandwidth,
            head.uiFreeBrandwidth);
    return ORVA_SUCCEED;
}

}  // namespace

bool SortHighSpeedInfo(const HighSpeedDownLoadInfo& cHighSpeedDownLoadInfoA,
                       const HighSpeedDownLoadInfo& cHighSpeedDownLoadInfoB) {
    return cHighSpeedDownLoadInfoA.uiFreeBrandwidth > cHighSpeedDownLoadInfoB.uiFreeBrandwidth;
}

// Long tables that callers hand in are copied before a lock is taken, and what is dropped goes after
// the lock: a report waits for neither.

int32_t CContainerMgr::Init(const ContainerMap& containerMap) {
    CContainerTable containerTable;
    for (const auto& [containerAddr, container] : containerMap) {
        containerTable.Insert(containerAddr, container);
    }
    return ReplaceTable(std::move(containerTable)) ? ORVA_SUCCEED : ORVA_FAIL;
}

bool CContainerMgr::ReplaceTable(CContainerTable containerTable) {
    const MutexGuard guard(m_mutex);
    if (guard.locked()) {
        std::swap(m_containerTable, containerTable);
    }
    return guard.locked();
}

std::optional<CContainerMgr::CContainerTable> CContainerMgr::Snapshot() {
    const MutexGuard guard(m_mutex);
    if (!guard.locked()) {
        return std::nullopt;
    }
    return m_containerTable;
}

void CContainerMgr::GetAllContainer(ContainerMap& containerTable) {
    const std::optional<CContainerTable> snapshot = Snapshot();
    if (!snapshot) {
        return;
    }
    containerTable.clear();
    for (const auto& [containerAddr, container] : *snapshot) {
        containerTable.emplace_hint(containerTable.end(), containerAddr, container);
    }
}

int32_t CContainerMgr::AddContainer(const ContainerMap& containerMap) {
    const MutexGuard guard(m_mutex);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    for (const auto& [containerAddr, container] : containerMap) {
        if (m_containerTable.Insert(containerAddr, container) != nullptr) {
            continue;
        }
        CContainer* const pKnown = m_containerTable.Edit(containerAddr);
        pKnown->SetMemberStatus(CLUSTER_MEMBER_NORMAL);
        pKnown->SetOnline(true);
        pKnown->SetResTaskNeedUpdate(true);
    }
    return ORVA_SUCCEED;
}

int32_t CContainerMgr::RemoveContainer(const CContainerAddr& containerAddr) {
    std::optional<CContainer> removed;
    const MutexGuard guard(m_mutex);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    removed = m_containerTable.Remove(containerAddr);
    return ORVA_SUCCEED;
}

void CContainerMgr::SetContainerOnline(const CContainerAddr& containerAddr, bool bOnline) {
    const CPlace place = CPlace::Here();
    const ELookup eLookup =
        ChangeEntry(m_mutex, m_containerTable, containerAddr, [&](CContainer& container) {
            container.SetOnline(bOnline);
            if (bOnline) {
                container.SetFaultShift(false);
            } else {
                LogInfo({"", place}, "containerType=%s nodeId=%s set container offline",
                        container.GetContainerType().c_str(), container.GetNodeId().c_str());
            }
        });
    ReportUnknown(eLookup, "set container online", ORVA_FAIL, MESSAGE_CODE, containerAddr);
}

bool CContainerMgr::IsContainerOnline(const CContainerAddr& containerAddr) {
    return Ask(m_mutex, m_containerTable, containerAddr, &CContainer::IsOnline);
}

void CContainerMgr::SetSystemResource(const CContainerAddr& containerAddr,
                                      const CSystemResource& totalSysRes,
                                      const CSystemResource& curSysRes) {
    const ELookup eLookup =
        ChangeEntry(m_mutex, m_containerTable, containerAddr, [&](CContainer& container) {
            container.SetStatusReportTime();
            container.SetTotalResource(totalSysRes);
            container.SetCurResource(curSysRes);
        });
    ReportUnknown(eLookup, "Container mgr set system resource", ORVA_PARA_INVALID,
                  MESSAGE_CONTAINER_ID, containerAddr);
}

void CContainerMgr::UpdateContainerReportTime(const CContainerAddr& containerAddr) {
    ChangeEntry(m_mutex, m_containerTable, containerAddr,
                [](CContainer& container) { container.SetStatusReportTime(); });
}

void CContainerMgr::SetProcessState(const CContainerAddr& containerAddr,
                                    const std::map<std::string, int>& processTable) {
    CCopyOnWrite<std::map<std::string, int>> table(processTable);
    const ELookup eLookup =
        ChangeEntry(m_mutex, m_containerTable, containerAddr,
                    [&](CContainer& container) { std::swap(container.m_processTable, table); });
    ReportUnknown(eLookup, "Container mgr set process list", ORVA_PARA_INVALID,
                  MESSAGE_CONTAINER_ID, containerAddr);
}

bool CContainerMgr::IsProcessRunning(const CContainerAddr& containerAddr) {
    return Ask(m_mutex, m_containerTable, containerAddr, &CContainer::IsProcessRunning);
}

void CContainerMgr::SetResourceTask(const CContainerAddr& containerAddr,
                                    const std::list<CResourceTask>& taskTable, int iMsgType) {
    SetResourceTask(containerAddr, iMsgType, std::list<CResourceTask>(taskTable));
}

void CContainerMgr::SetResourceTask(const CContainerAddr& containerAddr, int iMsgType,
                                    std::list<CResourceTask>&& taskTable) {
    CContainer::CTaskReport report(std::move(taskTable));
    const ELookup eLookup =
        ChangeEntry(m_mutex, m_containerTable, containerAddr, [&](CContainer& container) {
            if (container.GetContainerType() == CONTAINER_TYPE_IMG_DEV &&
                !report.taskTable->empty()) {
                container.SetFaultShift(false);
            }
            container.TakeReport(report, iMsgType);
        });
    ReportUnknown(eLookup, "Container mgr set resource task", ORVA_PARA_INVALID,
                  MESSAGE_CONTAINER_TYPE, containerAddr);
}

void CContainerMgr::GetResTaskList(const CContainerAddr& containerAddr,
                                   std::list<CResourceTask>& resTaskList) {
    const ELookup eLookup =
        ReadEntry(m_mutex, m_containerTable, containerAddr,
                  [&](const CContainer& container) { container.GetResoureTask(resTaskList); });
    ReportUnknown(eLookup, "Container mgr get resource task", ORVA_PARA_INVALID,
                  MESSAGE_CONTAINER_ID, containerAddr);
}

void CContainerMgr::RemoveResourceTask(const CContainerAddr& containerAddr,
                                       const std::list<std::string>& taskIdList) {
    std::list<CResourceTask> removed;
    const ELookup eLookup =
        ChangeEntry(m_mutex, m_containerTable, containerAddr,
                    [&](CContainer& container) { container.TakeOutTasks(taskIdList, removed); });
    ReportUnknown(eLookup, "Container mgr remove resource task", ORVA_PARA_INVALID,
                  MESSAGE_CONTAINER_ID, containerAddr);
}

void CContainerMgr::AddResourceTask(const CContainerAddr& containerAddr,
                                    const std::list<CResourceTask>& resTaskList) {
    std::list<CResourceTask> tasks(resTaskList);
    const ELookup eLookup =
        ChangeEntry(m_mutex, m_containerTable, containerAddr, [&](CContainer& container) {
            container.TakeTasks(tasks);
            container.SetOnline(true);
        });
    ReportUnknown(eLookup, "Container mgr add resource task", ORVA_PARA_INVALID,
                  MESSAGE_CONTAINER_ID, containerAddr);
}

void CContainerMgr::SetContainerResTaskNeedUpdate(const CContainerAddr& containerAddr,
                                                  bool bNeedUpdate) {
    ChangeEntry(m_mutex, m_containerTable, containerAddr,
                [&](CContainer& container) { container.SetResTaskNeedUpdate(bNeedUpdate); });
}

void CContainerMgr::SaveDataToZK(const CContainerAddr& containerAddr) {
    // A copy is saved: what the store calls back on this thread may change the table.
    const ELookup eLookup = ReadEntry(m_mutex, m_containerTable, containerAddr,
                                      [](CContainer container) { container.SaveDataToZK(); });
    ReportUnknown(eLookup, "Container mgr set data to zk", ORVA_PARA_INVALID,
                  MESSAGE_CONTAINER_TYPE, containerAddr);
}

void CContainerMgr::SetContainerFaultShift(const CContainerAddr& containerAddr, bool bFaultShift) {
    const ELookup eLookup =
        ChangeEntry(m_mutex, m_containerTable, containerAddr,
                    [&](CContainer& container) { container.SetFaultShift(bFaultShift); });
    ReportUnknown(eLookup, "Container mgr set container fault shift", ORVA_PARA_INVALID,
                  MESSAGE_CONTAINER_ID, containerAddr);
}

bool CContainerMgr::IsContainerSupportFaultShift(const CContainerAddr& containerAddr) {
    return Ask(m_mutex, m_containerTable, containerAddr, &CContainer::IsSupportFaultShift);
}

void CContainerMgr::SetContainerDoingFaultShift(const CContainerAddr& containerAddr,
                                                bool isDoingFaultShift) {
    const CPlace place = CPlace::Here();
    constexpr char OPERATION[] = "set container Doing Fault Shift";
    const ELookup eLookup =
        ChangeEntry(m_mutex, m_containerTable, containerAddr, [&](CContainer& container) {
            container.SetFaultStatus(isDoingFaultShift);
            LogInfo({OPERATION, place}, "container code[%s:%s], Doing Fault Shit[%d].",
                    container.GetNodeId().c_str(), container.GetContainerType().c_str(),
                    isDoingFaultShift);
        });
    ReportUnknown(eLookup, OPERATION, ORVA_FAIL, MESSAGE_CODE, containerAddr);
}

bool CContainerMgr::IsContainerDoingFaultShift(const CContainerAddr& containerAddr) {
    return Ask(m_mutex, m_containerTable, containerAddr, &CContainer::GetFaultStatus);
}

void CContainerMgr::SetContainerMemberStatus(const CContainerAddr& containerAddr,
                                             int bMemberStatus) {
    ChangeEntry(m_mutex, m_containerTable, containerAddr,
                [&](CContainer& container) { container.SetMemberStatus(bMemberStatus); });
}

void CContainerMgr::SetExtParam(const CContainerAddr& containerAddr,
                                const KeyValueMap& privateInfo) {
    CCopyOnWrite<KeyValueMap> table(privateInfo);
    ChangeEntry(m_mutex, m_containerTable, containerAddr,
                [&](CContainer& container) { std::swap(container.m_privateInfo, table); });
}

void CContainerMgr::SetExtParamValueByKey(const CContainerAddr& containerAddr,
                                          const std::string& strKey, const std::string& strValue) {
    ChangeEntry(m_mutex, m_containerTable, containerAddr,
                [&](CContainer& container) { container.SetValueByKey(strKey, strValue); });
}

void CContainerMgr::GetExtParamValueByKey(const CContainerAddr& containerAddr,
                                          const std::string& strKey, std::string& strValue) {
    ReadEntry(m_mutex, m_containerTable, containerAddr,
              [&](const CContainer& container) { container.GetValueByKey(strKey, strValue); });
}

void CContainerMgr::UpdateHighSpeedNvrInfo(const std::string& strNvrCode, int32_t uiTotalBrandwidth,
                                           int32_t uiUsedBrandwidth, int32_t MUStatus,
                                           int32_t IMGUStatus, int32_t SCUStatus) {
    if (strNvrCode.empty() || uiUsedBrandwidth > uiTotalBrandwidth) {
        LogFailure(OPERATION_UPDATE_HIGH_SPEED, ORVA_PARA_INVALID,
                   "nvrCode:%s,TotalBrandwidth:%u,UsedBrandwidth:%u", strNvrCode.c_str(),
                   uiTotalBrandwidth, uiUsedBrandwidth);
        return;
    }
    if (MUStatus != ORVA_STATUS_RUN || SCUStatus != ORVA_STATUS_RUN) {
        return;
    }
    const MutexGuard guard(m_HighSpeedMutex);
    if (!guard.locked()) {
        return;
    }
    UpdateHighSpeedInfoList(strNvrCode, uiTotalBrandwidth, uiUsedBrandwidth, m_HighSpeedInfoList);
    m_bHighSpeed = true;
    LogInfo(OPERATION_UPDATE_HIGH_SPEED,
            "update MU nvrcode:%s,TotalBrandwidth:%u,UsedBrandwidth:%u", strNvrCode.c_str(),
            uiTotalBrandwidth, uiUsedBrandwidth);
    if (IMGUStatus != ORVA_STATUS_RUN) {
        return;
    }
    const MutexGuard picGuard(m_PicHighSpeedMutex);
    if (!picGuard.locked()) {
        return;
    }
    UpdateHighSpeedInfoList(strNvrCode, uiTotalBrandwidth, uiUsedBrandwidth,
                            m_PicHighSpeedInfoList);
    m_bPicHighSpeed = true;
    LogInfo(OPERATION_UPDATE_HIGH_SPEED,
            "update IMGU nvrcode:%s,TotalBrandwidth:%u,UsedBrandwidth:%u", strNvrCode.c_str(),
            uiTotalBrandwidth, uiUsedBrandwidth);
}

void CContainerMgr::UpdateHighSpeedInfoList(const std::string& strNvrCode,
                                            int32_t uiTotalBrandwidth, int32_t uiUsedBrandwidth,
                                            std::list<HighSpeedDownLoadInfo>& HighSpeedInfoList) {
    auto it = std::find_if(
        HighSpeedInfoList.begin(), HighSpeedInfoList.end(),
        [&](const HighSpeedDownLoadInfo& info) { return info.strNvrCode == strNvrCode; });
    if (it == HighSpeedInfoList.end()) {
        LogInfo("UpdateHighSpeedInfoList", "first update nvrcode:%s", strNvrCode.c_str());
        it = HighSpeedInfoList.emplace(HighSpeedInfoList.begin());
        it->strNvrCode = strNvrCode;
    }
    it->tUpdateTime = time(nullptr);
    it->uiTotalBrandwidth = uiTotalBrandwidth;
    it->uiUsedBrandwidth = uiUsedBrandwidth;
    it->uiFreeBrandwidth = WrapSub(uiTotalBrandwidth, uiUsedBrandwidth);
}

int CContainerMgr::GetHighSpeedNvrCode(std::string& strNvrCode, int32_t BitRate) {
    return SelectHighSpeedNvr({HIGH_SPEED, m_HighSpeedMutex, m_bHighSpeed, m_HighSpeedInfoList},
                              strNvrCode, BitRate);
}

int CContainerMgr::GetPicHighSpeedNvrCode(std::string& strNvrCode, int32_t BitRate) {
    return SelectHighSpeedNvr(
        {PIC_HIGH_SPEED, m_PicHighSpeedMutex, m_bPicHighSpeed, m_PicHighSpeedInfoList}, strNvrCode,
        BitRate);
}

void CContainerMgr::SetUptadeFlag(const std::string& strServiceType, bool bFalg) {
    CContainerTable former;
    const MutexGuard guard(m_mutex);
    if (!guard.locked()) {
        return;
    }
    former = m_containerTable;
    for (const auto& [containerAddr, container] : former) {
        if (container.m_cloudStorage->strServiceType == strServiceType) {
            m_containerTable.Edit(containerAddr)->SetUptadeFlag(bFalg);
        }
    }
}
