#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "common_service/xml.h"
#include "framework_service/base_data.h"
#include "framework_service/container.h"
#include "framework_service/resource_task.h"
#include "orva_plugin_service/tarn_orva_data.h"

class IPlugin;

/// The entry point of a plug-in library, exported as "CreatePlugin": stores the plug-in's object
/// through the reference and returns 0. The object belongs to the plug-in and is never deleted.
typedef int (*CREATE_SDK_FUNC)(IPlugin*&);

/// A scheduling plug-in. The service that loaded it calls every operation unless another caller is
/// named; operations run on the caller's thread, several at once. UnInit may come twice: when the
/// plug-in is unloaded, and again when its record goes.
///
/// What holds for all work operations, those below the claims:
/// - Arguments belong to the caller and to this call: nothing of them may be kept.
/// - A table, and what else a schedule decides, is replaced: it may hold anything before, and holds
///   what this call decided afterwards, which is nothing when nothing was decided. A list is
///   appended to.
/// - A container takes tasks only if CFrameworkCommon::GetAvailableContainer has it; a plug-in may
///   ask for more.
/// - A decision that names a container takes the next number of
///   CScheduleMgr::IncreaseDecisionVerNum and hands it out; without such a decision the number
///   stays as it was. Where no number can be had nothing is decided, and its code is the answer.
/// - A non-zero answer says that not all went well, and what the tables hold counts all the same.
///   Lists keep what they held; an XML document may be left half written and is dropped.
/// - A default that refuses logs an error, touches no argument and returns ORVA_SYS_NO_SUPPORT.
class IPlugin {
public:
    IPlugin() = default;
    virtual ~IPlugin();

    virtual int Init();
    virtual int UnInit();
    virtual std::string GetVersion();

    /// The name that the plug-in is found by.
    virtual std::string GetName() = 0;

    /// @name Claims
    /// What the plug-in takes. The library asks once, after Init, and hands in an empty argument; a
    /// non-zero answer keeps the plug-in from loading. Of two plug-ins that claim the same job
    /// type, container type or real type, the first loaded has it.
    /// @{
    virtual int GetSupportFaultShiftContainers(std::list<std::string>& containerList);
    virtual int GetSupportLoadBalanceContainers(std::list<std::string>& containerList);
    virtual int GetSupportedJobs(std::list<unsigned int>& jobList) = 0;
    virtual int GetSupportedContainers(std::list<std::string>& containerList) = 0;

    /// Real container type to its logic container types.
    virtual int GetContainerBindTable(ContainerTypeBindMap& containerBindList) = 0;
    /// @}

    /// @name Jobs and placements
    /// @{

    /// Where a request of that job type must go when this service is not to answer it: appends the
    /// containers.
    virtual int GetRedirectNodeByJobType(uint32_t uiJobType,
                                         std::list<CContainerAddr>& containerAddrList);

    /// For each request of a job type that the plug-in has: appends the tasks that it asks for. The
    /// node is the one that asks; the cursor stands where the plug-in's own format begins. All or
    /// nothing: a non-zero answer leaves the list as it was.
    virtual int PrivateTaskToResourceTask(const std::string& strNodeId, uint32_t uiJobType,
                                          PELU::CXml& xml,
                                          std::list<CResourceTask>& resTaskList) = 0;

    /// For tasks that need a container: after PrivateTaskToResourceTask, or when they must leave
    /// theirs. Task id to container, for each task that finds one. With bReschedule the tasks are
    /// to leave the containers that they are in; without, they may stay there. Non-zero when a task
    /// found none: it is missing in the table, and the others hold.
    virtual int TaskSchedule(const std::string& strNodeId,
                             const std::list<CResourceTask>& resTaskList,
                             CTaskContainerMap& taskBindTable,
                             unsigned long long& ullDecisionVerNum, bool bReschedule) = 0;

    /// For each task that was shifted: adds to the document what the node is told, which has the
    /// task now (bShiftIn) or had it before.
    virtual int AssembleShiftResult(const std::string& strNodeId, const CResourceTask& resTask,
                                    unsigned long long ullDecisionVerNum, bool bShiftIn,
                                    PELU::CXml& xml);

    /// For each task of a request: adds its result to the answer. The container counts only for a
    /// result of 0.
    virtual int AssembleScheduleResult(const CResourceTask& resTask, int iResult,
                                       const CContainerAddr& containerAddr, PELU::CXml& xml);
    /// @}

    /// @name Shifts
    /// @{

    /// Before the tasks of a container are shifted, because it failed or to balance: appends those
    /// that may be; with neither flag, all that it has.
    virtual int GetResTaskListInContainer(const CContainerAddr& containerAddr,
                                          std::list<CResourceTask>& resTaskList, bool bFaultShift,
                                          bool bLoadBalance);

    /// Appends the tasks of that id that the container has.
    virtual void GetResTaskInfoByTaskId(const CContainerAddr& containerAddr,
                                        const std::string& strTaskId,
                                        std::list<CResourceTask>& resTaskList);

    /// Once a balancing period, of a plug-in that claims load balance. Replaces all three: the
    /// tasks that move, the container that each leaves, and the one that it enters.
    virtual int LoadBalanceSchedule(std::list<CResourceTask>& resTaskList,
                                    CTaskContainerMap& taskUnbindTable,
                                    CTaskContainerMap& taskBindTable,
                                    unsigned long long& ullDecisionVerNum);

    /// When an operator moves tasks: resTaskList has them, manualTaskShiftMap says from where to
    /// where. Replaces both tables: a code for every entry of the shift map, and the new container
    /// of each task whose code is 0. Non-zero when a task cannot move.
    virtual int ManualTaskSchedule(const std::list<CResourceTask>& resTaskList,
                                   const CTaskShiftMap& manualTaskShiftMap,
                                   CTaskContainerMap& taskBindTable,
                                   std::map<std::string, int>& taskRspResultMap,
                                   unsigned long long& ullDecisionVerNum);
    /// @}

    /// @name Cloud storage
    /// @{

    /// Writes what the service reports of its cloud storage, after an allocation or a reduction.
    virtual int GenCloudStorageReportXml(PELU::CXml& reportXml, bool bAlloc);

    /// For a request of storage, at the cursor: appends each node's share.
    virtual int CloudStorageAlloc(PELU::CXml& xml,
                                  std::list<ORVA_CLOUD_STORAGE_SEND_INFO>& sendInfoList);

    /// For a request of less storage, at the cursor: sets the storage that is reduced, and appends
    /// each node's reductions.
    virtual int CloudStorageReduce(PELU::CXml& xml, std::string& strReduceCloudStoreCode,
                                   int nChangeSize, int nTotalSize,
                                   std::list<ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST>& reduceList);

    /// Appends copies of the containers that offer cloud storage.
    virtual int GetCloudContainerList(std::list<CContainer>& containerList);

    /// Write the request that one node is sent, for each entry of the two lists above.
    virtual int BuildAllocReqXml(const ORVA_CLOUD_STORAGE_SEND_INFO& sendInfo, PELU::CXml& xml);
    virtual int BuildReduceReqXML(const ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST& reduceList,
                                  PELU::CXml& xml);
    /// @}

    /// @name Containers
    /// @{

    /// An alarm of a container, of which the service hands in a copy. Does nothing.
    virtual void ReportStatusAlarm(CContainer& container, const std::string& strAlarm);

    /// Has the container no tasks? True, without a line.
    virtual bool IsContainerEmpty(CContainerAddr& containerAddr);

    /// When a shift is carried out. Takes the tasks out of the containers that they leave, one call
    /// each, then adds them to the container and marks its task table for an update. Always true.
    virtual bool NotifyShiftIn(const CContainerAddr& containerAddr,
                               const std::list<CResourceTask>& taskList,
                               const CTaskContainerMap& taskUnbindMap,
                               unsigned long long ullDecisionVerNum);

    /// Appends every address of the list: by default all have high priority.
    virtual void GetHighPriorityContainer(const std::list<CContainerAddr>& listContainerAddr,
                                          std::list<CContainerAddr>& listHighPriContainer);

    /// Asks GetHighPriorityContainer about the list and the address behind it.
    virtual bool IsHighPriorityContainer(const CContainerAddr& containerAddr,
                                         const std::list<CContainerAddr>& listCContainerAddr);

    /// CPluginMgr::RoutingAll, whenever the service calls it. Does nothing.
    virtual void Routing();

    /// How many tasks a container of that product may have. Refuses, without a result.
    virtual void SetContainerMaxTaskNum(const std::string& strProduct, unsigned int uiMaxTaskNum);

    /// Do placements into containers of that type look at what the system has left? Logs the
    /// refusal and answers true.
    virtual bool CheckSysResourceByContainerType(const std::string& SrcContainerType);
    /// @}

protected:
    std::string m_strName;  ///< for the derived class
};
