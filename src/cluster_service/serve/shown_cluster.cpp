#include "serve/shown_cluster.h"

#include <algorithm>
#include <list>

#include "common_service/tarn_def.h"
#include "framework_service/base_data.h"
#include "shell/container_load.h"

namespace {

EMemberStatus MemberStatusOf(int iMemberStatus) {
    return iMemberStatus == CLUSTER_MEMBER_REMOVED ? EMemberStatus::REMOVED : EMemberStatus::NORMAL;
}

}  // namespace

CShownNode ShownNode(const CNode& node, const CClusterView& view) {
    CShownNode shown;
    std::list<std::string> types;
    node.GetContainerList(types);
    const std::vector<std::string>& draining = view.engine.draining;
    shown.strNodeId = node.GetNodeId();
    shown.strIp = node.GetNodeIp();
    shown.iIpType = node.GetNodeIpType();
    shown.iNodeRole = node.GetNodeRole();
    shown.iDomainRole = node.GetDomainRole();
    shown.iServiceType = node.GetNodeServiceType();
    shown.eMemberStatus = MemberStatusOf(node.GetMemberStatus());
    shown.bOnline = node.IsOnline();
    shown.bDraining =
        std::find(draining.begin(), draining.end(), node.GetNodeId()) != draining.end();
    shown.total = FiguresOf(node.GetTotalResource());
    shown.used = FiguresOf(node.GetCurResource());
    shown.types.assign(types.begin(), types.end());
    return shown;
}

CShownContainer ShownContainer(const CContainer& container, const CClusterView& view) {
    CShownContainer shown;
    shown.place = CContainerAddr(container.GetNodeId(), container.GetContainerType());
    shown.bOnline = container.IsOnline();
    shown.bAvailable = IsAvailable(container, view);
    shown.eMemberStatus = MemberStatusOf(container.GetMemberStatus());
    shown.bReported = container.GetHasReportedFlag();
    shown.bFaultShift = container.IsFaultShift();
    shown.bMayShift = container.IsSupportFaultShift();
    shown.bShifting = container.GetFaultStatus();
    shown.processes = container.GetProcessTable();
    shown.total = FiguresOf(container.GetTotalResource());
    shown.used = FiguresOf(container.GetStatus().GetCurSysResource());
    container.GetAllPrivateInfo(shown.parameters);
    shown.uiTasks = container.GetTotalTask();
    shown.iDiskPercent = DiskPercent(container);
    shown.iNetPercent = NetPercent(container);
    if (container.GetContainerType() == CONTAINER_TYPE_CLOUD_STORAGE) {
        shown.storage = StorageOf(container);
    }
    return shown;
}

bool IsAvailable(const CContainer& container, const CClusterView& view) {
    const CNode* const pNode = view.moment->FindNode(container.GetNodeId());
    const auto& processes = container.GetProcessTable();
    return container.IsOnline() && pNode != nullptr &&
           pNode->GetMemberStatus() == CLUSTER_MEMBER_NORMAL &&
           std::all_of(processes.begin(), processes.end(),
                       [](const auto& process) { return process.second == PROCESS_STATE_RUNNING; });
}
