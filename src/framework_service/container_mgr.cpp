#include "framework_service/container_mgr.h"

#include <algorithm>
#include <utility>

#include "common_service/tarn_def.h"
#include "internal/framework_internal.h"
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

/// Writes that there is no such container.
auto ReportUnknown(const CPlacedText& operation, int iCode, const char* pszMessage,
                   const CContainerAddr& containerAddr) {
    return [=, &containerAddr] {
        LogFailure(operation, iCode, pszMessage, containerAddr.GetNodeId().c_str(),
                   containerAddr.GetContainerType().c_str());
    };
}

/// What a container calls itself, for a line: the logger may take the container itself away.
CContainerAddr NamesOf(const CContainer& container) {
    return {container.GetNodeId(), container.GetContainerType()};
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

constexpr auto NONE_IS_GONE = [](const auto&) { return false; };

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

/// A container that is changed with calls to the host in between, which may come back on this
/// thread and change the table. Lives with m_mutex held.
class CContainerMgr::CChange {
public:
    CChange(CContainerMgr& mgr, const CContainerAddr& containerAddr, CContainer& container)
        : m_mgr(mgr),
          m_containerAddr(containerAddr),
          m_pOuter(std::exchange(mgr.m_pChanges, this)),
          m_pFound(&container) {}
    CChange(const CChange&) = delete;
    CChange& operator=(const CChange&) = delete;
    ~CChange() { m_mgr.m_pChanges = m_pOuter; }

    /// The container as it stands now, until the next call. Null once it was taken out of the
    /// table, whatever stands under its address since.
    CContainer* Find() {
        if (m_pFound == nullptr && !m_bEnded) {
            m_pFound = m_mgr.m_containerTable.Edit(m_containerAddr);
        }
        return m_pFound;
    }

    /// The entries of the table may stand elsewhere from now on, and this one may have left it.
    void Refresh(bool bGone) {
        m_pFound = nullptr;
        m_bEnded = m_bEnded || bGone;
    }

    bool IsOf(const CContainerAddr& containerAddr) const {
        return !(m_containerAddr < containerAddr) && !(containerAddr < m_containerAddr);
    }

    CChange* Outer() const { return m_pOuter; }

private:
    CContainerMgr& m_mgr;
    const CContainerAddr& m_containerAddr;
    CChange* const m_pOuter;
    CContainer* m_pFound;
    bool m_bEnded = false;
};

// Long tables that callers hand in are copied before a lock is taken, and what is dropped goes
// after the lock: a report waits for neither.

int32_t CContainerMgr::Init(const ContainerMap& containerMap) {
    CContainerTable containerTable;
    for (const auto& [containerAddr, container] : containerMap) {
        containerTable.Insert(containerAddr, container);
    }
    return ReplaceTable(std::move(containerTable)) ? ORVA_SUCCEED : ORVA_FAIL;
}

template <typename Predicate>
void CContainerMgr::RefreshChangesLocked(const Predicate& isGone) {
    for (CChange* pChange = m_pChanges; pChange != nullptr; pChange = pChange->Outer()) {
        pChange->Refresh(isGone(*pChange));
    }
}

bool CContainerMgr::ReplaceTable(CContainerTable containerTable) {
    const MutexGuard guard(m_mutex);
    if (guard.locked()) {
        containerTable.Succeed(m_containerTable);
        std::swap(m_containerTable, containerTable);
        RefreshChangesLocked([](const CChange&) { return true; });
    }
    return guard.locked();
}

std::optional<CContainerMgr::CContainerTable> CContainerMgr::Snapshot() {
    const MutexGuard guard(m_mutex);
    if (!guard.locked()) {
        return std::nullopt;
    }
    RefreshChangesLocked(NONE_IS_GONE);
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
    RefreshChangesLocked(NONE_IS_GONE);
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
    RefreshChangesLocked([&](const CChange& change) { return change.IsOf(containerAddr); });
    return ORVA_SUCCEED;
}

void CContainerMgr::SetContainerOnline(const CContainerAddr& containerAddr, bool bOnline) {
    const CPlace place = CPlace::Here();
    ChangeEntry(
        m_mutex, m_containerTable, containerAddr,
        [&](CContainer& container) {
            container.SetOnline(bOnline);
            if (bOnline) {
                container.SetFaultShift(false);
            } else {
                const CContainerAddr names = NamesOf(container);
                LogInfo({"", place}, "containerType=%s nodeId=%s set container offline",
                        names.GetContainerType().c_str(), names.GetNodeId().c_str());
            }
        },
        ReportUnknown("set container online", ORVA_FAIL, MESSAGE_CODE, containerAddr));
}

bool CContainerMgr::IsContainerOnline(const CContainerAddr& containerAddr) {
    return Ask(m_mutex, m_containerTable, containerAddr, &CContainer::IsOnline);
}

void CContainerMgr::SetSystemResource(const CContainerAddr& containerAddr,
                                      const CSystemResource& totalSysRes,
                                      const CSystemResource& curSysRes) {
    ChangeEntry(
        m_mutex, m_containerTable, containerAddr,
        [&](CContainer& container) {
            container.SetStatusReportTime();
            container.SetTotalResource(totalSysRes);
            container.SetCurResource(curSysRes);
        },
        ReportUnknown("Container mgr set system resource", ORVA_PARA_INVALID, MESSAGE_CONTAINER_ID,
                      containerAddr));
}

void CContainerMgr::UpdateContainerReportTime(const CContainerAddr& containerAddr) {
    ChangeEntry(m_mutex, m_containerTable, containerAddr,
                [](CContainer& container) { container.SetStatusReportTime(); });
}

void CContainerMgr::SetProcessState(const CContainerAddr& containerAddr,
                                    const std::map<std::string, int>& processTable) {
    CCopyOnWrite<std::map<std::string, int>> table(processTable);
    ChangeEntry(
        m_mutex, m_containerTable, containerAddr,
        [&](CContainer& container) {
            std::swap(CFrameworkInternal::ProcessTable(container), table);
        },
        ReportUnknown("Container mgr set process list", ORVA_PARA_INVALID, MESSAGE_CONTAINER_ID,
                      containerAddr));
}

bool CContainerMgr::IsProcessRunning(const CContainerAddr& containerAddr) {
    return Ask(m_mutex, m_containerTable, containerAddr, &CContainer::IsProcessRunning);
}

void CContainerMgr::SetResourceTask(const CContainerAddr& containerAddr,
                                    const std::list<CResourceTask>& taskTable, int iMsgType) {
    TakeResourceTask(containerAddr, taskTable, iMsgType);
}

void CContainerMgr::TakeResourceTask(const CContainerAddr& containerAddr,
                                     std::list<CResourceTask> taskTable, int iMsgType) {
    CFrameworkInternal::CTaskReport report(std::move(taskTable));
    const auto takeReport = [&](CContainer& container) {
        if (container.GetContainerType() == CONTAINER_TYPE_IMG_DEV && !report.taskTable->empty()) {
            container.SetFaultShift(false);
        }
        CChange change(*this, containerAddr, container);
        CFrameworkInternal::TakeReport(container, report, iMsgType,
                                       [&change] { return change.Find(); });
    };
    ChangeEntry(m_mutex, m_containerTable, containerAddr, takeReport,
                ReportUnknown({"Container mgr set resource task", CPlace::Of("SetResourceTask")},
                              ORVA_PARA_INVALID, MESSAGE_CONTAINER_TYPE, containerAddr));
}

void CContainerMgr::GetResTaskList(const CContainerAddr& containerAddr,
                                   std::list<CResourceTask>& resTaskList) {
    ReadEntry(
        m_mutex, m_containerTable, containerAddr,
        [&](const CContainer& container) { container.GetResoureTask(resTaskList); },
        ReportUnknown("Container mgr get resource task", ORVA_PARA_INVALID, MESSAGE_CONTAINER_ID,
                      containerAddr));
}

void CContainerMgr::RemoveResourceTask(const CContainerAddr& containerAddr,
                                       const std::list<std::string>& taskIdList) {
    std::list<CResourceTask> removed;
    ChangeEntry(
        m_mutex, m_containerTable, containerAddr,
        [&](CContainer& container) {
            CFrameworkInternal::TakeOutTasks(container, taskIdList, removed);
        },
        ReportUnknown("Container mgr remove resource task", ORVA_PARA_INVALID, MESSAGE_CONTAINER_ID,
                      containerAddr));
}

void CContainerMgr::AddResourceTask(const CContainerAddr& containerAddr,
                                    const std::list<CResourceTask>& resTaskList) {
    std::list<CResourceTask> tasks(resTaskList);
    ChangeEntry(
        m_mutex, m_containerTable, containerAddr,
        [&](CContainer& container) {
            CFrameworkInternal::TakeTasks(container, tasks);
            container.SetOnline(true);
        },
        ReportUnknown("Container mgr add resource task", ORVA_PARA_INVALID, MESSAGE_CONTAINER_ID,
                      containerAddr));
}

void CContainerMgr::SetContainerResTaskNeedUpdate(const CContainerAddr& containerAddr,
                                                  bool bNeedUpdate) {
    ChangeEntry(m_mutex, m_containerTable, containerAddr,
                [&](CContainer& container) { container.SetResTaskNeedUpdate(bNeedUpdate); });
}

void CContainerMgr::SaveDataToZK(const CContainerAddr& containerAddr) {
    const auto save = [&](const CContainer& container) {
        if (container.GetContainerType() == CONTAINER_TYPE_CLOUD_STORAGE) {
            CFrameworkInternal::SaveCloudStorage(
                [&] { return std::as_const(m_containerTable).Find(containerAddr); });
        }
    };
    ReadEntry(m_mutex, m_containerTable, containerAddr, save,
              ReportUnknown("Container mgr set data to zk", ORVA_PARA_INVALID,
                            MESSAGE_CONTAINER_TYPE, containerAddr));
}

void CContainerMgr::SetContainerFaultShift(const CContainerAddr& containerAddr, bool bFaultShift) {
    ChangeEntry(
        m_mutex, m_containerTable, containerAddr,
        [&](CContainer& container) { container.SetFaultShift(bFaultShift); },
        ReportUnknown("Container mgr set container fault shift", ORVA_PARA_INVALID,
                      MESSAGE_CONTAINER_ID, containerAddr));
}

bool CContainerMgr::IsContainerSupportFaultShift(const CContainerAddr& containerAddr) {
    return Ask(m_mutex, m_containerTable, containerAddr, &CContainer::IsSupportFaultShift);
}

void CContainerMgr::SetContainerDoingFaultShift(const CContainerAddr& containerAddr,
                                                bool isDoingFaultShift) {
    const CPlace place = CPlace::Here();
    constexpr char OPERATION[] = "set container Doing Fault Shift";
    ChangeEntry(
        m_mutex, m_containerTable, containerAddr,
        [&](CContainer& container) {
            container.SetFaultStatus(isDoingFaultShift);
            const CContainerAddr names = NamesOf(container);
            LogInfo({OPERATION, place}, "container code[%s:%s], Doing Fault Shit[%d].",
                    names.GetNodeId().c_str(), names.GetContainerType().c_str(), isDoingFaultShift);
        },
        ReportUnknown(OPERATION, ORVA_FAIL, MESSAGE_CODE, containerAddr));
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
    ChangeEntry(m_mutex, m_containerTable, containerAddr, [&](CContainer& container) {
        std::swap(CFrameworkInternal::PrivateInfo(container), table);
    });
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
    RefreshChangesLocked(NONE_IS_GONE);
    former = m_containerTable;
    for (const auto& [containerAddr, container] : former) {
        if (CFrameworkInternal::ServiceType(container) == strServiceType) {
            m_containerTable.Edit(containerAddr)->SetUptadeFlag(bFalg);
        }
    }
}
