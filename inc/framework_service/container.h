#pragma once

#include <cstdint>
#include <ctime>
#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "framework_service/base_data.h"
#include "framework_service/container_status.h"
#include "framework_service/detail/copy_on_write.h"
#include "framework_service/detail/task_table.h"
#include "framework_service/resource_task.h"
#include "orva_plugin_service/tarn_orva_data.h"

/// Orders by disk cost, ascending.
bool CompareTaskByDisk(const CResourceTask& t1, const CResourceTask& t2);

/// Orders by net cost, ascending.
bool CompareTaskByNet(const CResourceTask& t1, const CResourceTask& t2);

/// One service instance of a named type on one node, with its tasks. A plain value without a lock:
/// CContainerMgr guards the registered ones, a copy is a full snapshot and belongs to its taker. A
/// move is a copy.
class CContainer {
public:
    CContainer();
    CContainer(const CContainer&) = default;
    CContainer& operator=(const CContainer&) = default;
    virtual ~CContainer() = default;

    /// Declared, never defined: containers are not compared.
    bool operator==(const CContainer& other) const;

    const std::string& GetNodeId() const { return m_strNodeId; }
    void SetNodeId(const std::string& strNodeId) { m_strNodeId = strNodeId; }
    const std::string& GetContainerType() const { return m_strContainerType; }
    void SetContainerType(const std::string& strType) { m_strContainerType = strType; }
    void SetOnline(bool bOnline) { m_bOnline = bOnline; }
    bool IsOnline() const { return m_bOnline; }
    void SetFaultShift(bool bFaultShift) { m_bFaultShift = bFaultShift; }
    bool IsFaultShift() const { return m_bFaultShift; }
    void SetSupportFaultShift(bool bSupport) { m_bSupportFaultShift = bSupport; }
    bool IsSupportFaultShift() const { return m_bSupportFaultShift; }
    void SetFaultStatus(bool bDoingFaultShift) { m_isDoingFaultShift = bDoingFaultShift; }
    bool GetFaultStatus() const { return m_isDoingFaultShift; }
    void SetMsgType(int32_t iMsgType) { m_iMsgType = iMsgType; }
    int32_t GetMsgType() const { return m_iMsgType; }
    void SetLowPriStoreDay(int32_t iDays) { m_iLowPriStoreDay = iDays; }
    int32_t GetLowPriStoreDay() const { return m_iLowPriStoreDay; }

    /// @name Resources
    /// @{
    const CSystemResource& GetTotalResource() const { return m_totalResource; }
    const CContainerStatus& GetStatus() const { return m_status; }
    int32_t GetTotalDisk() const { return m_totalResource.GetDisk(); }

    /// Sets the total figures; with a sample at hand the disk ratio follows.
    void SetTotalResource(const CSystemResource& systemResource);

    /// Takes a sample into the ring of the last three. The disk ratio follows the sample, the
    /// status the average of the ring.
    void SetCurResource(const CSystemResource& systemResource);

    /// The averaged figure of that kind. An unknown kind is logged and answers 1.
    int32_t GetCurResourceByType(RESOURCE_TYPE eType) const;

    /// Sets the disk ratio to used over total; far above any real ratio when the total is not
    /// positive.
    void CalcDiskRatio(int32_t iTotalDisk, int32_t iCurDisk);
    /// @}

    /// @name Report time
    /// @{
    void SetStatusReportTime();

    /// True, and logged, when the last report is more than iTimeOut seconds old. After the clock
    /// went back: true once, in silence, and the report counts as of now.
    bool IsReportStatusOutTime(int iTimeOut);
    /// @}

    /// @name Membership
    /// @{
    int GetMemberStatus() const { return m_iMemberStatus; }

    /// CLUSTER_MEMBER_REMOVED also forgets that the container has reported.
    void SetMemberStatus(int val);

    /// Has it reported its tasks since it joined?
    bool GetHasReportedFlag() const { return m_uiCount != 0; }
    /// @}

    /// @name Processes
    /// @{
    /// Replaces the process table by a copy: process name to PROCESS_STATE_*.
    void SetProcessState(const std::map<std::string, int>& processTable);

    /// Replaces the argument by a copy.
    void GetProcessState(std::map<std::string, int>& processTable) const;

    /// The table itself, until the container is changed or gone.
    const std::map<std::string, int>& GetProcessTable() const { return *m_processTable; }

    /// False, and logged, when a process is in any state but running. An empty table is true.
    bool IsProcessRunning() const;
    /// @}

    /// @name Private information
    /// Every Insert and Set overwrites and answers 0. Every Get answers 0 and the value, or,
    /// logged, ORVA_FAIL with the argument untouched. Texts and floats are kept apart.
    /// @{
    int InsertSingleKeyValue(const std::string& strKey, const std::string& strValue);
    int InsertSingleKeyIntValue(const std::string& strKey, int iValue);
    int InsertSingleKeyFloatValue(const std::string& strKey, float fValue);
    int SetValueByKey(const std::string& strKey, const std::string& strValue);
    int SetIntValueByKey(const std::string& strKey, int iValue);
    int GetValueByKey(const std::string& strKey, std::string& strValue) const;
    int GetIntValueByKey(const std::string& strKey, int& iValue) const;
    int GetFloatValueByKey(const std::string& strKey, float& fValue) const;

    /// Replaces the argument by a copy.
    void GetAllPrivateInfo(KeyValueMap& privateInfo) const;

    /// Replaces all texts.
    void SetExtParam(const KeyValueMap& privateInfo);
    /// @}

    /// @name Task table
    /// @{
    uint32_t GetTotalTask() const { return static_cast<uint32_t>(m_taskTable->size()); }

    /// The tasks themselves, in table order, until the container is changed or gone.
    const std::list<CResourceTask>& GetTaskTable() const { return *m_taskTable; }

    /// A number for what the table holds: of a container and its copies, at whatever times they
    /// were taken, those that show the same number hold the same tasks. 0 before the first task.
    uint64_t GetTaskTableNumber() const { return m_taskTable.GetNumber(); }

    /// Of a container of CContainerMgr: since its table had this number, tasks have only been put
    /// behind those that were there. Who read it at this number or a later one has to read no more
    /// than what is behind that.
    uint64_t GetTaskTableGrownSince() const { return m_taskTable.GetGrownSince(); }

    int GetTaskTotalDisk() const { return m_iTaskTotalDisk; }
    void SetTaskTotalDisk(int iTotalDisk) { m_iTaskTotalDisk = iTotalDisk; }
    float GetDiskRatio() const { return m_fDiskRatio; }
    void SetDiskRatio(float fRatio) { m_fDiskRatio = fRatio; }
    int GetTaskTotalNet() const { return m_iTaskTotalNet; }
    void SetTaskTotalNet(int iTotalNet) { m_iTaskTotalNet = iTotalNet; }
    float GetNetRatio() const { return m_fNetRatio; }
    void SetNetRatio(float fRatio) { m_fNetRatio = fRatio; }
    bool IsNeedUpdateResTask() const { return m_bNeedUpdate; }
    void SetResTaskNeedUpdate(bool bNeedUpdate) { m_bNeedUpdate = bNeedUpdate; }

    /// A report of the whole table, which replaces the tasks. The disk total does not follow; the
    /// net total does. The first report after joining only marks the container as reported, later
    /// ones clear the need for an update. A cloud storage container takes its figures over.
    void SetResourceTask(const std::list<CResourceTask>& resTaskTable, int iMsgType);

    /// Appends copies of all tasks, in table order, behind what the argument holds.
    void GetResoureTask(std::list<CResourceTask>& resTaskList) const;

    /// AddTask for each entry.
    void AddResourceTask(const std::list<CResourceTask>& resTaskList);

    /// Drops every task whose id is listed. The disk total does not follow; the net total does.
    void RemoveResourceTask(const std::list<std::string>& taskIdList);

    /// Appends a copy and counts its costs, as far as they are positive. Always 0.
    int AddTask(const CResourceTask& resTask);

    /// Drops the first task with that id and takes the argument's costs, as far as they are
    /// positive, off the totals. An unknown id is logged and answers ORVA_FAIL.
    int DelTask(const CResourceTask& resTask);

    /// Adds a positive value to the total.
    void AddTaskDisk(int32_t iDisk);
    void AddTaskNet(int32_t iNet);

    /// Subtracts the value, stopping at 0; a negative value raises the total.
    void DelTaskDisk(int32_t iDisk);
    void DelTaskNet(int32_t iNet);

    /// Sums the net costs of the table, negative ones included.
    void CalcTaskTotalNet();

    /// Changes the disk figure of the newest sample, and the disk ratio with it; the average
    /// follows with the next sample. Without a sample nothing happens. The second stops at 0, and
    /// logs when it had to.
    void AddDiskToLastestResource(int32_t iDisk);
    void DelDiskToLastestResource(int32_t iDisk);

    /// Stable sorts. The caller's comparison finds the table as it was; what it adds stands behind
    /// what was sorted, and what it takes out is gone.
    void SortTaskTableByDisk();
    void SortTaskTableByNet();
    void SortTaskTableByPrivateFunc(TaskCompareFunc pFunc);

    /// The picks copy a task into the argument and return 0; or, logged, return ORVA_FAIL with the
    /// argument untouched.
    int GetFirstTask(CResourceTask& resTask) const;
    int GetSingleTaskById(const std::string& taskId, CResourceTask& resTask) const;

    /// The first movable task that qualifies. bCnt: no disk cost, and marked by the key as bSmart
    /// says. Otherwise bDisk: a disk cost. Otherwise: marked by the key, if there is one. A task is
    /// marked when the number under its private key is positive; one without the key is judged by
    /// the last number that was read.
    int GetFirstScheduleableTask(CResourceTask& resTask, bool bCnt, bool bSmart, bool bDisk,
                                 const std::string& strKey) const;
    /// @}

    /// @name Cloud storage
    /// @{
    void SetProductType(std::string strProductType) {
        m_cloudStorage.Edit().strProductType = std::move(strProductType);
    }
    std::string GetProductType() const { return m_cloudStorage->strProductType; }
    void SetServiceType(std::string strServiceType) {
        m_cloudStorage.Edit().strServiceType = std::move(strServiceType);
    }
    std::string GetServiceType() const { return m_cloudStorage->strServiceType; }
    void SetReqStorage(int32_t iReqStorage) { m_cloudStorage.Edit().iReqStorage = iReqStorage; }
    int32_t GetReqStorage() const { return m_cloudStorage->iReqStorage; }
    void SetReqPicStorage(int32_t iReqPicStorage) {
        m_cloudStorage.Edit().iReqPicStorage = iReqPicStorage;
    }
    int32_t GetReqPicStorage() const { return m_cloudStorage->iReqPicStorage; }
    void SetBitRate(int32_t iBitRate) { m_cloudStorage.Edit().iBitRate = iBitRate; }
    int32_t GetBitRate() const { return m_cloudStorage->iBitRate; }
    void SetTranBandWidth(int32_t iTranBandWidth) {
        m_cloudStorage.Edit().iTranBandWidth = iTranBandWidth;
    }
    int32_t GetTranBandWidth() const { return m_cloudStorage->iTranBandWidth; }
    void SetUptadeFlag(bool bUpdateFlag) { m_cloudStorage.Edit().bUpdateFlag = bUpdateFlag; }
    bool GetUptadeFlag() const { return m_cloudStorage->bUpdateFlag; }

    /// Takes the figures and allocations of the task table over; the last task decides. After
    /// ALLOC_CLOUD_STORAGE_NOTIFY_RSP the allocations alone. A key that a task lacks is logged, and
    /// its figure becomes that of the key before it.
    void CalcCloudStorageInfo(int iMsgType);

    /// Writes a cloud storage container's figures to the store; nothing for any other type.
    void SaveDataToZK();

    /// Reads the shared document, replaces this node's entry and writes the whole back. Failures
    /// end in the log; a failed read does not stop the write.
    void SaveCloudStorageReportInfoToZK();

    /// Appends copies behind what the argument holds.
    void GetAllocInfoList(std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO>& allocInfoList) const;
    /// @}

private:
    friend class CFrameworkInternal;

    /// What only a cloud storage container has.
    struct CCloudStorage {
        std::string strProductType;
        std::string strServiceType;
        int32_t iReqStorage = 0;
        int32_t iReqPicStorage = 0;
        int32_t iBitRate = 0;
        int32_t iTranBandWidth = 0;
        bool bUpdateFlag = false;
        CCopyOnWrite<std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO>> allocInfoList;
    };

    /// The disk figure of the newest sample; there must be one.
    int32_t NewestDisk() const;

    /// Sets it, and the disk ratio; without a sample nothing happens.
    void SetNewestDisk(int32_t iDisk);

    // What a search asks of many containers comes first.
    std::string m_strContainerType;
    bool m_bOnline = true;
    bool m_bFaultShift = false;
    bool m_bSupportFaultShift = false;
    bool m_isDoingFaultShift = false;
    bool m_bNeedUpdate = true;
    int m_iMemberStatus = CLUSTER_MEMBER_NORMAL;
    CCopyOnWrite<std::map<std::string, int>> m_processTable;
    std::string m_strNodeId;
    CSystemResource m_totalResource;
    CContainerStatus m_status;
    CCopyOnWrite<std::vector<CSystemResource>> m_statusVector;
    time_t m_tLastReportTime;
    int32_t m_iCurStatusPos = 0;
    int m_iTaskTotalDisk = 0;
    float m_fDiskRatio = 0;
    int m_iTaskTotalNet = 0;
    float m_fNetRatio = 0;
    int32_t m_iMsgType = 0;
    int32_t m_iLowPriStoreDay = 0;
    uint32_t m_uiCount = 0;
    CTaskTable m_taskTable;
    CCopyOnWrite<KeyValueMap> m_privateInfo;
    CCopyOnWrite<KeyFloatValueMap> m_floatPrivateInfo;
    CCopyOnWrite<CCloudStorage> m_cloudStorage;
};
