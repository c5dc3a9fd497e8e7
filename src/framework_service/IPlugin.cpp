#include "framework_service/IPlugin.h"

#include <algorithm>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "operation_log/operation_log.h"

using namespace operation_log;

namespace {

int Refuse(const CPlacedText& operation) {
    return LogFailure(operation, ORVA_SYS_NO_SUPPORT, "do not support this function.");
}

}  // namespace

IPlugin::~IPlugin() = default;

int IPlugin::Init() {
    return ORVA_SUCCEED;
}

int IPlugin::UnInit() {
    return ORVA_SUCCEED;
}

std::string IPlugin::GetVersion() {
    return {};
}

int IPlugin::GetSupportFaultShiftContainers(std::list<std::string>& containerList) {
    containerList.clear();
    return ORVA_SUCCEED;
}

int IPlugin::GetSupportLoadBalanceContainers(std::list<std::string>& containerList) {
    containerList.clear();
    return ORVA_SUCCEED;
}

int IPlugin::GetRedirectNodeByJobType(uint32_t, std::list<CContainerAddr>&) {
    return Refuse("IPlugin get redirect node by job type");
}

int IPlugin::AssembleShiftResult(const std::string&, const CResourceTask&, unsigned long long, bool,
                                 PELU::CXml&) {
    return Refuse("IPlugin assemble shift result");
}

int IPlugin::AssembleScheduleResult(const CResourceTask&, int, const CContainerAddr&, PELU::CXml&) {
    return Refuse("IPlugin assemble schedule result");
}

int IPlugin::GetResTaskListInContainer(const CContainerAddr&, std::list<CResourceTask>&, bool,
                                       bool) {
    return Refuse("IPlugin get res task list in container");
}

void IPlugin::GetResTaskInfoByTaskId(const CContainerAddr&, const std::string&,
                                     std::list<CResourceTask>&) {
    Refuse("IPlugin get res task info by task id");
}

int IPlugin::LoadBalanceSchedule(std::list<CResourceTask>&, CTaskContainerMap&, CTaskContainerMap&,
                                 unsigned long long&) {
    return Refuse("IPlugin load balance by disk ratio");
}

int IPlugin::ManualTaskSchedule(const std::list<CResourceTask>&, const CTaskShiftMap&,
                                CTaskContainerMap&, std::map<std::string, int>&,
                                unsigned long long&) {
    return Refuse("IPlugin ManualTaskSchedule");
}

int IPlugin::GenCloudStorageReportXml(PELU::CXml&, bool) {
    return Refuse("IPlugin CloudStorageReport");
}

int IPlugin::CloudStorageAlloc(PELU::CXml&, std::list<ORVA_CLOUD_STORAGE_SEND_INFO>&) {
    return Refuse("IPlugin CloudStorageAlloc");
}

int IPlugin::CloudStorageReduce(PELU::CXml&, std::string&, int, int,
                                std::list<ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST>&) {
    return Refuse("IPlugin CloudStorageReduce");
}

int IPlugin::GetCloudContainerList(std::list<CContainer>&) {
    return Refuse("IPlugin GetCloudContainerList");
}

int IPlugin::BuildAllocReqXml(const ORVA_CLOUD_STORAGE_SEND_INFO&, PELU::CXml&) {
    return Refuse("IPlugin BuildAllocReqXml");
}

int IPlugin::BuildReduceReqXML(const ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST&, PELU::CXml&) {
    return Refuse("IPlugin BuildReduceReqXML");
}

void IPlugin::ReportStatusAlarm(CContainer&, const std::string&) {}

bool IPlugin::IsContainerEmpty(CContainerAddr&) {
    return true;
}

bool IPlugin::NotifyShiftIn(const CContainerAddr& containerAddr,
                            const std::list<CResourceTask>& taskList,
                            const CTaskContainerMap& taskUnbindMap, unsigned long long) {
    CContainerMgr& containerMgr = CContainerMgr::Instance();
    for (const CResourceTask& task : taskList) {
        const auto it = taskUnbindMap.find(task.GetTaskId());
        if (it != taskUnbindMap.end()) {
            containerMgr.RemoveResourceTask(it->second, {task.GetTaskId()});
        }
    }
    containerMgr.AddResourceTask(containerAddr, taskList);
    containerMgr.SetContainerResTaskNeedUpdate(containerAddr, true);
    return true;
}

void IPlugin::GetHighPriorityContainer(const std::list<CContainerAddr>& listContainerAddr,
                                       std::list<CContainerAddr>& listHighPriContainer) {
    listHighPriContainer.insert(listHighPriContainer.end(), listContainerAddr.begin(),
                                listContainerAddr.end());
}

bool IPlugin::IsHighPriorityContainer(const CContainerAddr& containerAddr,
                                      const std::list<CContainerAddr>& listCContainerAddr) {
    std::list<CContainerAddr> listCandidate(listCContainerAddr);
    listCandidate.push_back(containerAddr);
    std::list<CContainerAddr> listHighPriContainer;
    GetHighPriorityContainer(listCandidate, listHighPriContainer);
    return std::find(listHighPriContainer.begin(), listHighPriContainer.end(), containerAddr) !=
           listHighPriContainer.end();
}

void IPlugin::Routing() {}

void IPlugin::SetContainerMaxTaskNum(const std::string&, unsigned int) {
    Refuse("IPlugin set container max task num");
}

bool IPlugin::CheckSysResourceByContainerType(const std::string&) {
    Refuse("IPlugin CheckSysResourceByContainerType");
    return true;
}
