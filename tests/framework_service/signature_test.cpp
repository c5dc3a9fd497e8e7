#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/schedule_mgr.h"

// The compiler is the test. A host may take the address of an operation without saying which of
// several it means: a second function of that name, private ones too, would not let it.

namespace {

/// The operations of that class, one of each name.
template <auto... pOperations>
constexpr bool ARE_OPERATIONS = (std::is_member_function_pointer_v<decltype(pOperations)> && ...);

template <typename Signature, typename Class>
using MemberOf = Signature Class::*;

static_assert(std::is_same_v<
              decltype(&CSystemResource::GetAvgSystemResource),
              MemberOf<void(std::vector<CSystemResource>&, CSystemResource&), CSystemResource>>);
static_assert(ARE_OPERATIONS<&CSystemResource::GetResourceByType>);

static_assert(
    ARE_OPERATIONS<&CResourceTask::InsertSingleKeyValue, &CResourceTask::GetValueByKey,
                   &CResourceTask::GetIntValueByKey, &CResourceTask::ParsePrivateInfoFromXml,
                   &CResourceTask::GetAllPrivateInfo, &CResourceTask::SetAllocInfoList,
                   &CResourceTask::GetAllocInfoList, &CResourceTask::SetSupportShift>);

static_assert(
    ARE_OPERATIONS<&CContainer::SetTotalResource, &CContainer::SetCurResource,
                   &CContainer::GetCurResourceByType, &CContainer::CalcDiskRatio,
                   &CContainer::SetStatusReportTime, &CContainer::IsReportStatusOutTime,
                   &CContainer::SetMemberStatus, &CContainer::SetProcessState,
                   &CContainer::GetProcessState, &CContainer::IsProcessRunning,
                   &CContainer::InsertSingleKeyValue, &CContainer::InsertSingleKeyIntValue,
                   &CContainer::InsertSingleKeyFloatValue, &CContainer::SetValueByKey,
                   &CContainer::SetIntValueByKey, &CContainer::GetValueByKey,
                   &CContainer::GetIntValueByKey, &CContainer::GetFloatValueByKey,
                   &CContainer::GetAllPrivateInfo, &CContainer::SetExtParam>);
static_assert(ARE_OPERATIONS<
              &CContainer::SetResourceTask, &CContainer::GetResoureTask,
              &CContainer::AddResourceTask, &CContainer::RemoveResourceTask, &CContainer::AddTask,
              &CContainer::DelTask, &CContainer::AddTaskDisk, &CContainer::AddTaskNet,
              &CContainer::DelTaskDisk, &CContainer::DelTaskNet, &CContainer::CalcTaskTotalNet,
              &CContainer::AddDiskToLastestResource, &CContainer::DelDiskToLastestResource,
              &CContainer::SortTaskTableByDisk, &CContainer::SortTaskTableByNet,
              &CContainer::SortTaskTableByPrivateFunc, &CContainer::GetFirstTask,
              &CContainer::GetSingleTaskById, &CContainer::GetFirstScheduleableTask,
              &CContainer::CalcCloudStorageInfo, &CContainer::SaveDataToZK,
              &CContainer::SaveCloudStorageReportInfoToZK, &CContainer::GetAllocInfoList>);

static_assert(ARE_OPERATIONS<&CNode::SetNodeIp, &CNode::GetCurResource, &CNode::SetCurResource,
                             &CNode::SetStatusReportTime, &CNode::IsReportStatusOutTime,
                             &CNode::GetContainerList, &CNode::SetContainerList>);

static_assert(
    ARE_OPERATIONS<&CNodeMgr::Init, &CNodeMgr::AddNode, &CNodeMgr::GetAllNode, &CNodeMgr::GetNode,
                   &CNodeMgr::IsNodeExist, &CNodeMgr::GetSize, &CNodeMgr::SetNodeOnline,
                   &CNodeMgr::IsNodeOnline, &CNodeMgr::SetSystemResource,
                   &CNodeMgr::SetMemberStatus, &CNodeMgr::RemoveNode,
                   &CNodeMgr::RemoveNodeContainer, &CNodeMgr::GetNearbyNodeListByIP,
                   &CNodeMgr::SetContainerShiftFaultTimes, &CNodeMgr::GetContainerShiftFaultTimes>);

static_assert(
    ARE_OPERATIONS<&CContainerMgr::Init, &CContainerMgr::GetAllContainer,
                   &CContainerMgr::AddContainer, &CContainerMgr::RemoveContainer,
                   &CContainerMgr::SetContainerOnline, &CContainerMgr::IsContainerOnline,
                   &CContainerMgr::SetSystemResource, &CContainerMgr::UpdateContainerReportTime,
                   &CContainerMgr::SetProcessState, &CContainerMgr::IsProcessRunning,
                   &CContainerMgr::SetResourceTask, &CContainerMgr::GetResTaskList,
                   &CContainerMgr::RemoveResourceTask, &CContainerMgr::AddResourceTask,
                   &CContainerMgr::SetContainerResTaskNeedUpdate, &CContainerMgr::SaveDataToZK>);
static_assert(ARE_OPERATIONS<
              &CContainerMgr::SetContainerFaultShift, &CContainerMgr::IsContainerSupportFaultShift,
              &CContainerMgr::SetContainerDoingFaultShift,
              &CContainerMgr::IsContainerDoingFaultShift, &CContainerMgr::SetContainerMemberStatus,
              &CContainerMgr::SetExtParam, &CContainerMgr::SetExtParamValueByKey,
              &CContainerMgr::GetExtParamValueByKey, &CContainerMgr::UpdateHighSpeedNvrInfo,
              &CContainerMgr::UpdateHighSpeedInfoList, &CContainerMgr::GetHighSpeedNvrCode,
              &CContainerMgr::GetPicHighSpeedNvrCode, &CContainerMgr::SetUptadeFlag>);

static_assert(
    ARE_OPERATIONS<&CScheduleMgr::Reload, &CScheduleMgr::GetDecisionVerNum,
                   &CScheduleMgr::GetMasterVerNum, &CScheduleMgr::IncreaseDecisionVerNum,
                   &CScheduleMgr::IncreaseMasterVerNum, &CScheduleMgr::SetDecisionVerNum,
                   &CScheduleMgr::IsScheduling, &CScheduleMgr::AddShiftContainer,
                   &CScheduleMgr::RemoveShiftContainer, &CScheduleMgr::GetAllShiftContainer>);

static_assert(
    ARE_OPERATIONS<
        &CFrameworkCommon::InitClusterConfigFromZK, &CFrameworkCommon::InitNodeAndContainerFromZK,
        &CFrameworkCommon::InitNodeAndContainer, &CFrameworkCommon::InitNodeMgr,
        &CFrameworkCommon::InitContainerMgr, &CFrameworkCommon::GenContainerTable,
        &CFrameworkCommon::LoadContainerInfo, &CFrameworkCommon::AddNodeAndContainer,
        &CFrameworkCommon::RemoveNodeContainerAndFlush, &CFrameworkCommon::SetNodeClusterStatus,
        &CFrameworkCommon::GetAvailableContainer, &CFrameworkCommon::UpdateClusterCDB,
        &CFrameworkCommon::IncreaseCDBVersion, &CFrameworkCommon::GetCDBVersion,
        &CFrameworkCommon::ParseCDBFromZK, &CFrameworkCommon::ParseMGRFromZK>);
static_assert(
    std::is_same_v<decltype(&CFrameworkCommon::GenContainerTable),
                   MemberOf<int(const std::list<CNode>&, ContainerMap&), CFrameworkCommon>>);
static_assert(
    std::is_same_v<decltype(&CContainerMgr::SetResourceTask),
                   MemberOf<void(const CContainerAddr&, const std::list<CResourceTask>&, int),
                            CContainerMgr>>);

}  // namespace
