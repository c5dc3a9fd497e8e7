#include "support/model_values.h"

#include <gmock/gmock.h>

namespace {

using testing::PrintToString;

std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> AllocsOf(const CResourceTask& task) {
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfoList;
    task.GetAllocInfoList(allocInfoList);
    return allocInfoList;
}

std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> AllocsOf(const CContainer& container) {
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfoList;
    container.GetAllocInfoList(allocInfoList);
    return allocInfoList;
}

template <typename Owner>
KeyValueMap PrivateInfoOf(const Owner& owner) {
    KeyValueMap privateInfo;
    owner.GetAllPrivateInfo(privateInfo);
    return privateInfo;
}

std::list<CResourceTask> TasksOf(const CContainer& container) {
    std::list<CResourceTask> tasks;
    container.GetResoureTask(tasks);
    return tasks;
}

std::map<std::string, int> ProcessesOf(const CContainer& container) {
    std::map<std::string, int> processTable;
    container.GetProcessState(processTable);
    return processTable;
}

}  // namespace

Shown Show(const CSystemResource& resource) {
    return {{"Cpu", PrintToString(resource.GetCpu())},
            {"Mem", PrintToString(resource.GetMem())},
            {"IO", PrintToString(resource.GetIO())},
            {"Net", PrintToString(resource.GetNet())},
            {"Disk", PrintToString(resource.GetDisk())}};
}

Shown Show(const ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo) {
    return {{"Code", allocInfo.cloudStorageCode},
            {"Alloc", PrintToString(allocInfo.allocStorage)},
            {"Used", PrintToString(allocInfo.usedStorage)},
            {"Free", PrintToString(allocInfo.freeStorage)},
            {"Dns", allocInfo.dns},
            {"Path", allocInfo.path}};
}

Shown Show(const CResourceTask& task) {
    return {{"TaskId", task.GetTaskId()},
            {"TaskName", task.GetTaskName()},
            {"SupportShift", PrintToString(task.IsSupportShift())},
            {"Cpu", PrintToString(task.GetCpu())},
            {"Mem", PrintToString(task.GetMem())},
            {"IO", PrintToString(task.GetIO())},
            {"Net", PrintToString(task.GetNet())},
            {"Disk", PrintToString(task.GetDisk())},
            {"AllocInfo", PrintToString(ShowAll(AllocsOf(task)))},
            {"PrivateInfo", PrintToString(PrivateInfoOf(task))}};
}

Shown Show(const CContainer& container) {
    return {{"NodeId", container.GetNodeId()},
            {"ContainerType", container.GetContainerType()},
            {"Online", PrintToString(container.IsOnline())},
            {"FaultShift", PrintToString(container.IsFaultShift())},
            {"SupportFaultShift", PrintToString(container.IsSupportFaultShift())},
            {"FaultStatus", PrintToString(container.GetFaultStatus())},
            {"MsgType", PrintToString(container.GetMsgType())},
            {"LowPriStoreDay", PrintToString(container.GetLowPriStoreDay())},
            {"TotalResource", PrintToString(Show(container.GetTotalResource()))},
            {"Status", PrintToString(Show(container.GetStatus().GetCurSysResource()))},
            {"DiskRatio", PrintToString(container.GetDiskRatio())},
            {"NetRatio", PrintToString(container.GetNetRatio())},
            {"MemberStatus", PrintToString(container.GetMemberStatus())},
            {"HasReported", PrintToString(container.GetHasReportedFlag())},
            {"ProcessState", PrintToString(ProcessesOf(container))},
            {"PrivateInfo", PrintToString(PrivateInfoOf(container))},
            {"Tasks", PrintToString(ShowAll(TasksOf(container)))},
            {"TaskTotalDisk", PrintToString(container.GetTaskTotalDisk())},
            {"TaskTotalNet", PrintToString(container.GetTaskTotalNet())},
            {"NeedUpdate", PrintToString(container.IsNeedUpdateResTask())},
            {"ProductType", container.GetProductType()},
            {"ServiceType", container.GetServiceType()},
            {"ReqStorage", PrintToString(container.GetReqStorage())},
            {"ReqPicStorage", PrintToString(container.GetReqPicStorage())},
            {"BitRate", PrintToString(container.GetBitRate())},
            {"TranBandWidth", PrintToString(container.GetTranBandWidth())},
            {"UpdateFlag", PrintToString(container.GetUptadeFlag())},
            {"AllocInfo", PrintToString(ShowAll(AllocsOf(container)))}};
}

std::vector<std::string> TaskIds(const std::list<CResourceTask>& tasks) {
    std::vector<std::string> ids;
    for (const CResourceTask& task : tasks) {
        ids.push_back(task.GetTaskId());
    }
    return ids;
}

std::vector<std::string> TaskIds(const CContainer& container) {
    return TaskIds(TasksOf(container));
}

CSystemResource MakeCpu(int32_t iCpu) {
    return MakeResource(iCpu, 0, 0, 0, 0);
}

CSystemResource MakeDisk(int32_t iDisk) {
    return MakeResource(0, 0, 0, 0, iDisk);
}

CSystemResource MakeResource(int32_t iCpu, int32_t iMem, int32_t iIO, int32_t iNet, int32_t iDisk) {
    CSystemResource resource;
    resource.SetCpu(iCpu);
    resource.SetMem(iMem);
    resource.SetIO(iIO);
    resource.SetNet(iNet);
    resource.SetDisk(iDisk);
    return resource;
}

CResourceTask MakeTask(const std::string& strId, int32_t iDisk, int32_t iNet,
                       const KeyValueMap& privateInfo) {
    CResourceTask task;
    task.SetTaskId(strId);
    task.SetDisk(iDisk);
    task.SetNet(iNet);
    for (const auto& [strKey, strValue] : privateInfo) {
        task.InsertSingleKeyValue(strKey, strValue);
    }
    return task;
}

CContainer MakeContainer(const std::string& strNodeId, const std::string& strType) {
    CContainer container;
    container.SetNodeId(strNodeId);
    container.SetContainerType(strType);
    return container;
}
