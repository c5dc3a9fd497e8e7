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

/// A scheduling plug-in. Operations run on the caller's thread, several at once. A default that
/// refuses logs an error, touches no argument and returns ORVA_SYS_NO_SUPPORT. UnInit may come
/// twice: when the plug-in is unloaded, and again when its record goes.
class IPlugin {
public:
    IPlugin() = default;
    virtual ~IPlugin();

    virtual int Init();
    virtual int UnInit();
    virtual std::string GetVersion();

    /// The name that the plug-in is found by.
    virtual std::string GetName() = 0;

    /// What the plug-in takes. Asked once, after Init; a non-zero answer keeps it from loading. Of
    /// two plug-ins that claim the same job type, container type or real type, the first loaded
    /// has it.
    virtual int GetSupportFaultShiftContainers(std::list<std::string>& containerList);
    virtual int GetSupportLoadBalanceContainers(std::list<std::string>& containerList);
    virtual int GetSupportedJobs(std::list<unsigned int>& jobList) = 0;
    virtual int GetSupportedContainers(std::list<std::string>& containerList) = 0;

    /// Real container type to its logic container types.
    virtual int GetContainerBindTable(ContainerTypeBindMap& containerBindList) = 0;

    virtual int GetRedirectNodeByJobType(uint32_t uiJobType,
                                         std::list<CContainerAddr>& containerAddrList);

    /// Turns a request of that job type into tasks.
    virtual int PrivateTaskToResourceTask(const std::string& strNodeId, uint32_t uiJobType,
                                          PELU::CXml& xml,
                                          std::list<CResourceTask>& resTaskList) = 0;

    /// Names a container for each task that finds one.
    virtual int TaskSchedule(const std::string& strNodeId,
                             const std::list<CResourceTask>& resTaskList,
                             CTaskContainerMap& taskBindTable,
                             unsigned long long& ullDecisionVerNum, bool bReschedule) = 0;

    virtual int AssembleShiftResult(const std::string& strNodeId, const CResourceTask& resTask,
                                    unsigned long long ullDecisionVerNum, bool bShiftIn,
                                    PELU::CXml& xml);
    virtual int AssembleScheduleResult(const CResourceTask& resTask, int iResult,
                                       const CContainerAddr& containerAddr, PELU::CXml& xml);
    virtual int GetResTaskListInContainer(const CContainerAddr& containerAddr,
                                          std::list<CResourceTask>& resTaskList, bool bFaultShift,
                                          bool bLoadBalance);
    virtual void GetResTaskInfoByTaskId(const CContainerAddr& containerAddr,
                                        const std::string& strTaskId,
                                        std::list<CResourceTask>& resTaskList);
    virtual int LoadBalanceSchedule(std::list<CResourceTask>& resTaskList,
                                    CTaskContainerMap& taskUnbindTable,
                                    CTaskContainerMap& taskBindTable,
                                    unsigned long long& ullDecisionVerNum);
    virtual int ManualTaskSchedule(const std::list<CResourceTask>& resTaskList,
                                   const CTaskShiftMap& manualTaskShiftMap,
                                   CTaskContainerMap& taskBindTable,
                                   std::map<std::string, int>& taskRspResultMap,
                                   unsigned long long& ullDecisionVerNum);

    virtual int GenCloudStorageReportXml(PELU::CXml& reportXml, bool bAlloc);
    virtual int CloudStorageAlloc(PELU::CXml& xml,
                                  std::list<ORVA_CLOUD_STORAGE_SEND_INFO>& sendInfoList);
    virtual int CloudStorageReduce(PELU::CXml& xml, std::string& strReduceCloudStoreCode,
                                   int nChangeSize, int nTotalSize,
                                   std::list<ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST>& reduceList);
    virtual int GetCloudContainerList(std::list<CContainer>& containerList);
    virtual int BuildAllocReqXml(const ORVA_CLOUD_STORAGE_SEND_INFO& sendInfo, PELU::CXml& xml);
    virtual int BuildReduceReqXML(const ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST& reduceList,
                                  PELU::CXml& xml);

    /// Does nothing.
    virtual void ReportStatusAlarm(CContainer& container, const std::string& strAlarm);

    /// True, without a line.
    virtual bool IsContainerEmpty(CContainerAddr& containerAddr);

    /// Takes the tasks out of the containers that they leave, one call each, then adds them to the
    /// container and marks its task table for an update. Always true.
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

    /// Does nothing.
    virtual void Routing();

    /// Refuses, without a result.
    virtual void SetContainerMaxTaskNum(const std::string& strProduct, unsigned int uiMaxTaskNum);

    /// Logs the refusal and answers true.
    virtual bool CheckSysResourceByContainerType(const std::string& SrcContainerType);

protected:
    std::string m_strName;  ///< for the derived class
};
