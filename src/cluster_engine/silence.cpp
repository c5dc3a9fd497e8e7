#include "cluster_engine/silence.h"

#include <algorithm>
#include <utility>

#include "cluster_engine/fault_shift.h"
#include "framework_service/container_mgr.h"
#include "framework_service/node_mgr.h"

namespace {

/// How long a hold lasts, and how long a silence is remembered.
int64_t LongTime(const CCluster& cluster) {
    return cluster.settings.iHoldSilences * cluster.settings.iSilence;
}

bool IsOver(const CCluster& cluster, int64_t iLastReport) {
    return cluster.state.iNow - iLastReport > cluster.settings.iSilence;
}

CEvent NodeEvent(EEvent eEvent, const std::string& strNodeId) {
    CEvent event;
    event.eEvent = eEvent;
    event.strNodeId = strNodeId;
    return event;
}

void ForgetOldSilences(const CCluster& cluster, CContainerRecord& record) {
    std::vector<int64_t>& times = record.fellSilent;
    times.erase(std::remove_if(
                    times.begin(), times.end(),
                    [&](int64_t iTime) { return cluster.state.iNow - iTime > LongTime(cluster); }),
                times.end());
}

void SetFaultMark(const CContainerAddr& addr, CContainerRecord& record, bool bMark) {
    record.bFaultMark = bMark;
    CContainerMgr::Instance().SetContainerFaultShift(addr, bMark);
}

void FallSilent(CCluster& cluster, const CContainerAddr& addr, CContainerRecord& record) {
    record.bSilent = true;
    record.fellSilent.push_back(cluster.state.iNow);
    CContainerMgr::Instance().SetContainerOnline(addr, false);
    cluster.Tell(ContainerEvent(EEvent::OFFLINE, addr, "has not reported"));
}

/// Ten silence times without another silence: it gets new work again.
void BecomeSteady(CCluster& cluster, const CContainerAddr& addr, CContainerRecord& record) {
    record.iUnsteadyUntil = 0;
    SetFaultMark(addr, record, false);
    cluster.state.roomAppeared.insert(addr.GetContainerType());
    cluster.Tell(ContainerEvent(EEvent::STEADY, addr));
}

/// How many of a type there are, and are silent.
struct CCount {
    uint32_t uiAll = 0;
    uint32_t uiSilent = 0;
    uint32_t uiTogether = 0;  ///< fell silent within the last silence time
};

std::map<std::string, CCount> CountTypes(const CCluster& cluster) {
    std::map<std::string, CCount> counts;
    for (const auto& [addr, record] : cluster.state.containers) {
        CCount& count = counts[addr.GetContainerType()];
        ++count.uiAll;
        if (record.bSilent) {
            ++count.uiSilent;
            count.uiTogether += IsOver(cluster, record.fellSilent.back()) ? 0 : 1;
        }
    }
    return counts;
}

bool IsTooMany(const CEngineSettings& settings, uint32_t uiSilent, uint32_t uiAll) {
    return uint64_t{uiSilent} * settings.uiHoldOneIn > uiAll;
}

void Release(CCluster& cluster, const std::string& strType, std::string strCause) {
    cluster.state.roomAppeared.insert(strType);  // what waited when the hold began
    CEvent event;
    event.eEvent = EEvent::RELEASED;
    event.strType = strType;
    event.strCause = std::move(strCause);
    cluster.Tell(std::move(event));
}

void BeginHold(CCluster& cluster, const std::string& strType, const CCount& count) {
    cluster.state.holds[strType] = {cluster.state.iNow, false};
    CEvent event;
    event.eEvent = EEvent::HELD;
    event.strType = strType;
    event.strCause = std::to_string(count.uiSilent) + " of " + std::to_string(count.uiAll) +
                     " fell silent together: nothing of the type is shifted";
    cluster.Tell(std::move(event));
}

void JudgeHold(CCluster& cluster, const std::string& strType, const CCount& count) {
    std::map<std::string, CHold>& holds = cluster.state.holds;
    const auto it = holds.find(strType);
    if (it == holds.end()) {
        if (count.uiTogether >= cluster.settings.uiHoldContainers &&
            IsTooMany(cluster.settings, count.uiTogether, count.uiAll)) {
            BeginHold(cluster, strType, count);
        }
        return;
    }
    if (!IsTooMany(cluster.settings, count.uiSilent, count.uiAll)) {
        if (!it->second.bReleased) {
            Release(cluster, strType, "enough are back");
        }
        holds.erase(it);
        return;
    }
    if (!it->second.bReleased && cluster.state.iNow - it->second.iSince >= LongTime(cluster)) {
        it->second.bReleased = true;
        Release(cluster, strType, "held for long enough");
    }
}

}  // namespace

void JudgeSilence(CCluster& cluster) {
    for (auto& [strNodeId, node] : cluster.state.nodes) {
        if (!node.bSilent && IsOver(cluster, node.iLastReport)) {
            node.bSilent = true;
            CNodeMgr::Instance().SetNodeOnline(strNodeId, false);
            cluster.Tell(NodeEvent(EEvent::OFFLINE, strNodeId));
        }
    }
    bool bAnySilent = !cluster.state.holds.empty();
    for (auto& [addr, record] : cluster.state.containers) {
        if (!record.bSilent && IsOver(cluster, record.iLastReport)) {
            FallSilent(cluster, addr, record);
        }
        if (!record.bSilent && record.iUnsteadyUntil != 0 &&
            cluster.state.iNow >= record.iUnsteadyUntil) {
            BecomeSteady(cluster, addr, record);
        }
        bAnySilent = bAnySilent || record.bSilent;
    }
    if (bAnySilent) {
        for (const auto& [strType, count] : CountTypes(cluster)) {
            JudgeHold(cluster, strType, count);
        }
    }
}

void RenewReportTimes(CCluster& cluster) {
    for (auto& [strNodeId, node] : cluster.state.nodes) {
        node.iLastReport = cluster.state.iNow;
    }
    for (auto& [addr, record] : cluster.state.containers) {
        record.iLastReport = cluster.state.iNow;
        CContainerMgr::Instance().UpdateContainerReportTime(addr);
    }
}

void ReturnNode(CCluster& cluster, const std::string& strNodeId, CNodeRecord& node) {
    node.bSilent = false;
    CNodeMgr::Instance().SetNodeOnline(strNodeId, true);
    cluster.Tell(NodeEvent(EEvent::ONLINE, strNodeId));
}

void ReturnContainer(CCluster& cluster, const CContainerAddr& addr, CContainerRecord& record) {
    record.bSilent = false;
    record.bShifted = false;
    if (!CContainerMgr::Instance().IsContainerOnline(addr)) {
        CContainerMgr::Instance().SetContainerOnline(addr, true);
    }
    record.bFaultMark = false;
    cluster.Tell(ContainerEvent(EEvent::ONLINE, addr));
    EndShift(cluster, addr, "it is back and keeps what still waits");
    ForgetOldSilences(cluster, record);
    const bool bWasUnsteady = record.iUnsteadyUntil != 0;
    if (bWasUnsteady || record.fellSilent.size() >= 2) {
        record.iUnsteadyUntil = cluster.state.iNow + LongTime(cluster);
        SetFaultMark(addr, record, true);
        cluster.Tell(ContainerEvent(EEvent::UNSTEADY, addr, "fell silent twice: gets nothing new"));
    } else {
        cluster.state.roomAppeared.insert(addr.GetContainerType());
    }
}

bool IsHeld(const CCluster& cluster, const std::string& strType) {
    const auto it = cluster.state.holds.find(strType);
    return it != cluster.state.holds.end() && !it->second.bReleased;
}

CAnswer ShiftAnyway(CCluster& cluster, const CShiftAnyway& input) {
    if (!IsHeld(cluster, input.strType)) {
        return CAnswer::Refuse(EFault::REFUSED_BY_RULE, input.strType + ": nothing is held");
    }
    cluster.state.holds[input.strType].bReleased = true;
    Release(cluster, input.strType, "an operator's word");
    return {};
}
