#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>
#include <list>
#include <map>
#include <optional>
#include <string>

#include "common_service/thread_mutex.h"
#include "framework_service/base_data.h"
#include "framework_service/container.h"
#include "framework_service/detail/snapshot_table.h"

/// The status of a service that runs.
inline constexpr int32_t ORVA_STATUS_RUN = 1;

/// The bandwidth of one NVR as last reported. Free is total less used, and less what selections
/// have reserved since.
struct HighSpeedDownLoadInfo {
    std::string strNvrCode;
    time_t tUpdateTime = 0;
    int32_t uiTotalBrandwidth = 0;
    int32_t uiUsedBrandwidth = 0;
    int32_t uiFreeBrandwidth = 0;

    /// The code is the identity of an entry.
    bool operator==(const HighSpeedDownLoadInfo& other) const {
        return strNvrCode == other.strNvrCode;
    }
};

/// Orders by free bandwidth, descending.
bool SortHighSpeedInfo(const HighSpeedDownLoadInfo& cHighSpeedDownLoadInfoA,
                       const HighSpeedDownLoadInfo& cHighSpeedDownLoadInfoB);

/// The process-wide table of containers. Callable from any thread: every operation takes effect as
/// one under the lock. Containers are held by value and handed out as copies. A container that is
/// unknown by CContainerAddr's order is logged, or passed over in silence where it says so; a
/// lock that cannot be had is never logged.
///
/// What the host does on this thread while an operation calls it (a line, a conversion, the store)
/// happens in between: other containers stand as it leaves them, of the one at work each field
/// keeps what was written last, and what is left to do to one that it removes or replaces goes
/// nowhere.
class CContainerMgr {
public:
    static CContainerMgr& Instance() { return m_Instance; }

    CContainerMgr(const CContainerMgr&) = delete;
    CContainerMgr& operator=(const CContainerMgr&) = delete;
    virtual ~CContainerMgr() = default;

    /// @name The table. Returns 0, or ORVA_FAIL when the lock cannot be had.
    /// @{

    /// Replaces the table by a copy.
    int32_t Init(const ContainerMap& containerMap);

    /// Replaces the argument by a copy of the table.
    void GetAllContainer(ContainerMap& containerTable);

    /// Inserts new containers. One that is there rejoins: it keeps what it has and becomes a normal
    /// member, online and in need of its tasks; the argument's value is ignored.
    int32_t AddContainer(const ContainerMap& containerMap);

    /// An unknown container is a success.
    int32_t RemoveContainer(const CContainerAddr& containerAddr);
    /// @}

    /// @name Reports
    /// @{

    /// Coming online ends the fault shift mark; going offline is logged.
    void SetContainerOnline(const CContainerAddr& containerAddr, bool bOnline);

    /// False for an unknown container.
    bool IsContainerOnline(const CContainerAddr& containerAddr);

    /// Refreshes the report time, sets the total figures, takes a sample; in this order.
    void SetSystemResource(const CContainerAddr& containerAddr, const CSystemResource& totalSysRes,
                           const CSystemResource& curSysRes);

    /// Silent on an unknown container.
    void UpdateContainerReportTime(const CContainerAddr& containerAddr);

    void SetProcessState(const CContainerAddr& containerAddr,
                         const std::map<std::string, int>& processTable);

    /// False for an unknown container, true for one that never reported its processes.
    bool IsProcessRunning(const CContainerAddr& containerAddr);
    /// @}

    /// @name Tasks
    /// @{

    /// A report of the whole task table. A MeroImgDev container that reports a task is no longer
    /// in fault shift.
    void SetResourceTask(const CContainerAddr& containerAddr,
                         const std::list<CResourceTask>& taskTable, int iMsgType);

    /// Appends copies behind what the argument holds.
    void GetResTaskList(const CContainerAddr& containerAddr, std::list<CResourceTask>& resTaskList);

    void RemoveResourceTask(const CContainerAddr& containerAddr,
                            const std::list<std::string>& taskIdList);

    /// A container that receives tasks counts as online.
    void AddResourceTask(const CContainerAddr& containerAddr,
                         const std::list<CResourceTask>& resTaskList);

    /// Silent on an unknown container.
    void SetContainerResTaskNeedUpdate(const CContainerAddr& containerAddr, bool bNeedUpdate);

    /// Writes a cloud storage container's figures to the store, with the lock held.
    void SaveDataToZK(const CContainerAddr& containerAddr);
    /// @}

    /// @name Fault shift and membership. Questions answer false for an unknown container.
    /// @{
    void SetContainerFaultShift(const CContainerAddr& containerAddr, bool bFaultShift);
    bool IsContainerSupportFaultShift(const CContainerAddr& containerAddr);

    /// Logs the change.
    void SetContainerDoingFaultShift(const CContainerAddr& containerAddr, bool isDoingFaultShift);
    bool IsContainerDoingFaultShift(const CContainerAddr& containerAddr);

    /// Silent on an unknown container.
    void SetContainerMemberStatus(const CContainerAddr& containerAddr, int bMemberStatus);
    /// @}

    /// @name Extended parameters. Silent on an unknown container.
    /// @{

    /// Replaces all.
    void SetExtParam(const CContainerAddr& containerAddr, const KeyValueMap& privateInfo);
    void SetExtParamValueByKey(const CContainerAddr& containerAddr, const std::string& strKey,
                               const std::string& strValue);

    /// A missing key is logged and leaves strValue as it was.
    void GetExtParamValueByKey(const CContainerAddr& containerAddr, const std::string& strKey,
                               std::string& strValue);
    /// @}

    /// @name High-speed downloads
    /// Two lists of reporting NVRs, each with a lock of its own: those whose MU and SCU run, and
    /// those whose IMGU runs too.
    /// @{

    /// Takes a report. An empty code or more used than total is logged and changes nothing; unless
    /// MU and SCU run, the report is dropped in silence.
    void UpdateHighSpeedNvrInfo(const std::string& strNvrCode, int32_t uiTotalBrandwidth,
                                int32_t uiUsedBrandwidth, int32_t MUStatus, int32_t IMGUStatus,
                                int32_t SCUStatus);

    /// Updates the NVR's entry, dropping what was reserved on it, or adds it at the front. The
    /// caller holds the list's lock.
    void UpdateHighSpeedInfoList(const std::string& strNvrCode, int32_t uiTotalBrandwidth,
                                 int32_t uiUsedBrandwidth,
                                 std::list<HighSpeedDownLoadInfo>& HighSpeedInfoList);

    /// Drops stale and impossible entries, names the NVR with the most free bandwidth and reserves
    /// 16 times the bit rate on it until its next report. Returns 0; or, logged, ORVA_FAIL with the
    /// code untouched when no NVR has more than that.
    int GetHighSpeedNvrCode(std::string& strNvrCode, int32_t BitRate);
    int GetPicHighSpeedNvrCode(std::string& strNvrCode, int32_t BitRate);
    /// @}

    /// Sets the update flag of every container of that service type.
    void SetUptadeFlag(const std::string& strServiceType, bool bFalg);

private:
    friend class CFrameworkInternal;

    using CContainerTable = CSnapshotTable<CContainerAddr, CContainer>;

    CContainerMgr() = default;

    class CChange;

    /// False without the lock.
    bool ReplaceTable(CContainerTable containerTable);

    /// SetResourceTask with tasks that are given away.
    void TakeResourceTask(const CContainerAddr& containerAddr, std::list<CResourceTask> taskTable,
                          int iMsgType);

    /// Lets the changes under way look for their containers anew, which a copy of the table, an
    /// addition or a removal asks for. Those whose container isGone says has left the table end.
    template <typename Predicate>
    void RefreshChangesLocked(const Predicate& isGone);

    /// The table as it is now; nothing without the lock.
    std::optional<CContainerTable> Snapshot();

    static CContainerMgr m_Instance;

    CContainerTable m_containerTable;  ///< guarded by m_mutex
    CChange* m_pChanges = nullptr;     ///< under way, innermost first; guarded by m_mutex
    HALD_Recursive_Thread_Mutex m_mutex{nullptr, nullptr};

    HALD_Recursive_Thread_Mutex m_HighSpeedMutex{nullptr, nullptr};  ///< before the other
    std::list<HighSpeedDownLoadInfo> m_HighSpeedInfoList;  ///< guarded by m_HighSpeedMutex
    HALD_Recursive_Thread_Mutex m_PicHighSpeedMutex{nullptr, nullptr};
    std::list<HighSpeedDownLoadInfo> m_PicHighSpeedInfoList;  ///< guarded by m_PicHighSpeedMutex

    // Are the lists not empty? Written under their locks; atomic for selections, which ask first.
    std::atomic<bool> m_bHighSpeed{false};
    std::atomic<bool> m_bPicHighSpeed{false};
};
