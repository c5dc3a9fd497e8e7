#include "cluster_engine/members.h"

#include <algorithm>
#include <utility>

#include "cluster_engine/fault_shift.h"
#include "common_service/global_config.h"
#include "common_service/net_factory.h"
#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"

namespace {

constexpr char PSZ_LEAVE[] = "leave";

/// Takes new containers into the engine's records, which the registries have already.
void TakeRecords(CCluster& cluster, const std::string& strNodeId,
                 const std::list<std::string>& types) {
    for (const std::string& strType : types) {
        const CContainerAddr addr(strNodeId, strType);
        cluster.state.containers[addr].iLastReport = cluster.state.iNow;
        CContainerMgr::Instance().UpdateContainerReportTime(addr);
        cluster.state.roomAppeared.insert(strType);
    }
}

void TellJoined(CCluster& cluster, const std::string& strNodeId,
                const std::list<std::string>& types) {
    CEvent event;
    event.eEvent = EEvent::JOINED;
    event.strNodeId = strNodeId;
    for (const std::string& strType : types) {
        event.strCause += (event.strCause.empty() ? "with " : ", ") + strType;
    }
    cluster.Tell(std::move(event));
}

/// Nothing new gets into what leaves.
void CloseDoors(CCluster& cluster, const CLeaving& leaving, int iNodeStatus) {
    for (const CContainerAddr& addr : leaving.containers) {
        cluster.assignments.Find(addr)->bRemoved = true;
    }
    CFrameworkCommon::Instance().SetNodeClusterStatus({leaving.nodes.begin(), leaving.nodes.end()},
                                                      iNodeStatus);
}

std::vector<std::string> IdsOf(const CContainerRecord& record) {
    std::vector<std::string> ids;
    for (const auto& [strTaskId, task] : record.tasks) {
        ids.push_back(strTaskId);
    }
    return ids;
}

/// The tasks that are still there and may go elsewhere: as the plug-in said, or, when it could not
/// be asked, as they say themselves.
std::set<std::string> MovableOf(const CCluster& cluster, const CContainerAddr& addr,
                                const CContainerRecord& record) {
    std::set<std::string> movable;
    if (const auto it = cluster.state.shifts.find(addr); it != cluster.state.shifts.end()) {
        return it->second.waiting;
    }
    for (const auto& [strTaskId, task] : record.tasks) {
        if (!record.bShifted && task.task.IsSupportShift()) {
            movable.insert(strTaskId);
        }
    }
    return movable;
}

void NoteLeft(CCluster& cluster, const std::string& strType, const CTaskResult& result) {
    CDecision decision;
    decision.strBy = PSZ_LEAVE;
    decision.ullDecision = result.ullDecision;
    decision.strWhy = result.eResult == ETaskResult::ENDED
                          ? "its container left, and it must not move"
                          : "its container left, and no other has room";
    cluster.Note(strType, result.strTaskId, std::move(decision));
}

/// What a task that no other container took has come to.
CTaskResult Release(CCluster& cluster, const CContainerAddr& addr, const std::string& strTaskId,
                    bool bMovable) {
    const std::string& strType = addr.GetContainerType();
    CAssignedTask task = *cluster.assignments.Find(addr, strTaskId);
    CTaskResult result;
    result.strTaskId = strTaskId;
    result.strType = strType;
    result.ullDecision = task.ullDecision;
    if (bMovable) {
        result.eResult = ETaskResult::WAITS;
        task.strCameFrom = addr.GetNodeId();
        task.ullHanded = 0;
        task.ullHandedLast = 0;
        task.iMissed = 0;
        task.bReported = false;
        cluster.assignments.Give(HomelessOf(strType), std::move(task));
    } else {
        result.eResult = ETaskResult::ENDED;
        result.strFault = TextOf(EFault::CANNOT_MOVE).pszName;
        CEvent event =
            ContainerEvent(EEvent::ENDED, addr, "its container left, and it must not move");
        event.strTaskId = strTaskId;
        cluster.Tell(std::move(event));
        cluster.assignments.End(strType, strTaskId);
    }
    NoteLeft(cluster, strType, result);
    return result;
}

CTaskResult MovedResult(const CCluster& cluster, const std::string& strType,
                        const std::string& strTaskId) {
    CTaskResult result;
    result.strTaskId = strTaskId;
    result.strType = strType;
    const CContainerAddr* const pHolder = cluster.assignments.Holder(strType, strTaskId);
    if (pHolder == nullptr) {
        result.eResult = ETaskResult::ENDED;
        return result;
    }
    result.eResult = ETaskResult::MOVED;
    result.strNodeId = pHolder->GetNodeId();
    return result;
}

void TakeWorkOutOf(CCluster& cluster, const CContainerAddr& addr, CAnswer& answer) {
    CContainerRecord& record = *cluster.assignments.Find(addr);
    const std::string& strType = addr.GetContainerType();
    const std::vector<std::string> ids = IdsOf(record);
    if (cluster.state.shifts.count(addr) == 0) {
        record.bShifted = false;
        BeginShift(cluster, addr, !record.bSilent, "its container leaves");
    }
    const std::set<std::string> movable = MovableOf(cluster, addr, record);
    bool bWaits = false;
    for (const std::string& strTaskId : ids) {
        if (cluster.assignments.Find(addr, strTaskId) == nullptr) {
            answer.tasks.push_back(MovedResult(cluster, strType, strTaskId));
            continue;
        }
        const bool bMovable = movable.count(strTaskId) != 0;
        answer.tasks.push_back(Release(cluster, addr, strTaskId, bMovable));
        bWaits = bWaits || bMovable;
    }
    if (bWaits) {
        WaitHomeless(cluster, strType);
    }
}

/// A shift that was begun for a leave that is refused has not been.
void TakeShiftBack(CCluster& cluster, const CClusterState& before, const CContainerAddr& addr) {
    if (before.shifts.count(addr) == 0) {
        EndShift(cluster, addr, "");
        CContainerMgr::Instance().SetContainerFaultShift(addr,
                                                         before.containers.at(addr).bFaultMark);
    }
}

void ForgetStorage(CClusterState& state, const CContainerAddr& addr) {
    std::vector<CStoragePending>& pending = state.storagePending;
    if (addr.GetContainerType() == CONTAINER_TYPE_CLOUD_STORAGE) {
        pending.erase(std::remove_if(pending.begin(), pending.end(),
                                     [&](const CStoragePending& one) {
                                         return one.strNodeId == addr.GetNodeId();
                                     }),
                      pending.end());
    }
}

void RemoveContainer(CCluster& cluster, const CContainerAddr& addr, bool bFlush) {
    EndShift(cluster, addr, "its container left");
    if (bFlush) {
        CFrameworkCommon::Instance().RemoveNodeContainerAndFlush(addr.GetNodeId(),
                                                                 addr.GetContainerType());
        cluster.state.unflushed[addr.GetNodeId()].insert(addr.GetContainerType());
    } else {
        unsigned int uiLeft = 0;
        CContainerMgr::Instance().RemoveContainer(addr);
        CNodeMgr::Instance().RemoveNodeContainer(addr.GetNodeId(), addr.GetContainerType(), uiLeft);
    }
    cluster.assignments.Remove(addr);
    ForgetStorage(cluster.state, addr);
    cluster.Tell(ContainerEvent(EEvent::LEFT, addr));
}

void RemoveNode(CCluster& cluster, const std::string& strNodeId, bool bFlush) {
    CNodeMgr::Instance().RemoveNode(strNodeId);
    CNodeMgr::Instance().ClearContainerShiftStatus(strNodeId);
    if (bFlush) {
        cluster.state.unflushed[strNodeId];
    }
    cluster.state.nodes.erase(strNodeId);
    cluster.state.bMembersDirty =
        cluster.state.members.erase(strNodeId) != 0 || cluster.state.bMembersDirty;
    CEvent event;
    event.eEvent = EEvent::LEFT;
    event.strNodeId = strNodeId;
    cluster.Tell(std::move(event));
}

}  // namespace

std::vector<CContainerAddr> ContainersOf(const CCluster& cluster, const std::string& strNodeId) {
    std::vector<CContainerAddr> found;
    for (const auto& [addr, record] : cluster.state.containers) {
        if (addr.GetNodeId() == strNodeId) {
            found.push_back(addr);
        }
    }
    return found;
}

std::string WhyRunsTogether(const CCluster& cluster, const CContainerAddr& addr) {
    const auto member = cluster.state.containers.find(addr);
    const std::set<CContainerAddr>& withDocuments = cluster.assignments.GetWithDocuments();
    const auto left = withDocuments.find(addr);
    const CContainerAddr* const pOther = member != cluster.state.containers.end() ? &member->first
                                         : left != withDocuments.end()            ? &*left
                                                                                  : nullptr;
    return pOther == nullptr || *pOther == addr
               ? ""
               : addr.GetNodeId() + ' ' + addr.GetContainerType() + " and " + pOther->GetNodeId() +
                     ' ' + pOther->GetContainerType();
}

void EnterNode(CCluster& cluster, const CNode& node) {
    const std::string& strNodeId = node.GetNodeId();
    std::list<std::string> types;
    node.GetContainerList(types);
    CFrameworkCommon::Instance().AddNodeAndContainer({{strNodeId, node}});
    CNodeRecord& record = cluster.state.nodes[strNodeId];
    record.iLastReport = cluster.state.iNow;
    record.iEntered = cluster.state.iNow;
    TakeRecords(cluster, strNodeId, types);
    TellJoined(cluster, strNodeId, types);
}

void EnterContainers(CCluster& cluster, const CNode& node, const std::list<std::string>& types) {
    CNode entering(node);
    entering.SetContainerList(types);
    ContainerMap containers;
    CFrameworkCommon::Instance().GenContainerTable({entering}, containers);
    CContainerMgr::Instance().AddContainer(containers);
    TakeRecords(cluster, node.GetNodeId(), types);
    TellJoined(cluster, node.GetNodeId(), types);
}

void ApplyStatus(CCluster& cluster, const std::string& strNodeId, EMemberStatus eStatus) {
    const bool bRemoved = eStatus == EMemberStatus::REMOVED;
    const int iStatus = bRemoved ? CLUSTER_MEMBER_REMOVED : CLUSTER_MEMBER_NORMAL;
    CFrameworkCommon::Instance().SetNodeClusterStatus({strNodeId}, iStatus);
    for (const CContainerAddr& addr : ContainersOf(cluster, strNodeId)) {
        CContainerMgr::Instance().SetContainerMemberStatus(addr, iStatus);
        cluster.assignments.Find(addr)->bRemoved = bRemoved;
        if (!bRemoved) {
            cluster.state.roomAppeared.insert(addr.GetContainerType());
        }
    }
}

CAnswer TakeWorkOut(CCluster& cluster, const CLeaving& leaving) {
    CCluster::CMark mark = cluster.Remember();
    std::list<CNode> nodes;
    for (const std::string& strNodeId : leaving.nodes) {
        CNodeMgr::Instance().GetNode(strNodeId, nodes.emplace_back());
    }
    CloseDoors(cluster, leaving, CLUSTER_MEMBER_REMOVED);
    CAnswer answer;
    for (const CContainerAddr& addr : leaving.containers) {
        TakeWorkOutOf(cluster, addr, answer);
    }
    if (cluster.assignments.WriteEntered() == ORVA_SUCCEED) {
        return answer;
    }
    for (const CContainerAddr& addr : leaving.containers) {
        TakeShiftBack(cluster, mark.state, addr);
    }
    for (const CNode& node : nodes) {
        CNodeMgr::Instance().SetMemberStatus({node.GetNodeId()}, node.GetMemberStatus());
    }
    cluster.GoBack(std::move(mark));
    return CAnswer::Refuse(EFault::STORE_FAILED, "the assignments cannot be written");
}

void RemoveMembers(CCluster& cluster, const CLeaving& leaving, bool bFlush) {
    for (const CContainerAddr& addr : leaving.containers) {
        RemoveContainer(cluster, addr, bFlush);
    }
    for (const std::string& strNodeId : leaving.nodes) {
        RemoveNode(cluster, strNodeId, bFlush);
    }
}

void DropLinks(const std::list<CNode>& nodes, const std::set<std::string>& others) {
    for (const CNode& node : nodes) {
        const std::string& strIp = node.GetNodeIp();
        if (others.count(strIp) == 0 && strIp != CGlobalConfig::Instance().GetLocalIp()) {
            HALD::CNetFactory::Instance().DelValidatedLink(strIp, VALIDATED_LINK_TYPE);
        }
    }
}
