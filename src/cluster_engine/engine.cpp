#include "cluster_engine/engine.h"

#include <algorithm>
#include <set>

#include "cluster_engine/cloud_storage.h"
#include "cluster_engine/cluster.h"
#include "cluster_engine/document.h"
#include "cluster_engine/explain.h"
#include "cluster_engine/fault_shift.h"
#include "cluster_engine/load.h"
#include "cluster_engine/load_balance.h"
#include "cluster_engine/membership.h"
#include "cluster_engine/nvr.h"
#include "cluster_engine/operator.h"
#include "cluster_engine/placement.h"
#include "cluster_engine/report.h"
#include "cluster_engine/settling.h"
#include "cluster_engine/silence.h"
#include "cluster_engine/state_form.h"
#include "common_service/tarn_def.h"
#include "framework_service/schedule_mgr.h"

namespace {

template <typename... Rules>
struct COverloaded : Rules... {
    using Rules::operator()...;
};
template <typename... Rules>
COverloaded(Rules...) -> COverloaded<Rules...>;

CPluginView ViewOf(const CPluginRecord& plugin) {
    CPluginView view;
    view.strName = plugin.strName;
    view.jobTypes.assign(plugin.claims.jobs.begin(), plugin.claims.jobs.end());
    view.types.assign(plugin.claims.containers.begin(), plugin.claims.containers.end());
    view.bOutOfService = plugin.bOut;
    view.failures = plugin.failures;
    return view;
}

CShiftView ViewOf(const CPlaceForm& place, const CShift& shift) {
    CShiftView view;
    view.strNodeId = place.strNodeId;
    view.strType = place.strType;
    view.strCause = shift.strCause;
    view.iStarted = shift.iStarted;
    view.uiWaiting = static_cast<uint32_t>(shift.waiting.size());
    view.iNextTry = shift.iNextTry;
    view.bGivenUp = shift.bGivenUp;
    view.bDraining = shift.bReschedule;
    return view;
}

CEngineView ViewOf(const CCluster& cluster) {
    const CClusterState& state = cluster.state;
    CEngineView view;
    view.bSettling = !state.bSettled;
    view.bStoreAway = state.bStoreAway;
    for (const CPluginRecord& plugin : cluster.plugins.GetAll()) {
        view.plugins.push_back(ViewOf(plugin));
    }
    for (const auto& [addr, shift] : state.shifts) {
        view.shifts.push_back(ViewOf(CPlaceForm(addr), shift));
    }
    for (const auto& [strType, shift] : state.homelessShifts) {
        CPlaceForm place;
        place.strType = strType;
        view.shifts.push_back(ViewOf(place, shift));
    }
    for (const auto& [strType, hold] : state.holds) {
        if (!hold.bReleased) {
            view.heldTypes.push_back(strType);
        }
    }
    for (const auto& [strNodeId, member] : state.members) {
        if (member.bDraining) {
            view.draining.push_back(strNodeId);
        }
    }
    return view;
}

}  // namespace

CClusterEngine::CClusterEngine(const CEngineHost& host, const CEngineSettings& settings)
    : m_pCluster(std::make_unique<CCluster>(host, settings)) {}

CClusterEngine::~CClusterEngine() = default;

int CClusterEngine::Load(int64_t iSecond, std::string& strWhy, const OnLoadStep& onStep) {
    Step(iSecond);
    const int iCode = LoadCluster(*m_pCluster, strWhy, onStep);
    if (iCode == ORVA_SUCCEED) {
        m_pCluster->TellSink();
    }
    return iCode;
}

int CClusterEngine::Load(const Json::Value& state, std::string& strWhy) {
    return RestoreState(*m_pCluster, state, strWhy);
}

Json::Value CClusterEngine::GetState() const {
    return StateToJson(*m_pCluster);
}

CEngineView CClusterEngine::GetView() const {
    return ViewOf(*m_pCluster);
}

const std::map<std::string, CResourceTask>& CClusterEngine::GetStandardTasks() const {
    return m_pCluster->state.standardTasks;
}

CAnswer CClusterEngine::Apply(const CInput& input) {
    CCluster& cluster = *m_pCluster;
    if (!cluster.state.bLoaded) {
        return CAnswer::Refuse(EFault::NOT_LOADED, "");
    }
    if (std::holds_alternative<CTick>(input.body)) {
        ReadClock(cluster, input.iTime);
    }
    Step(input.iTime);
    NoticeForeignDecision(cluster);
    CAnswer answer = Dispatch(input);
    cluster.state.ullDecision = CScheduleMgr::Instance().GetDecisionVerNum();
    answer.bDurable = NeedsCommit(input, answer);
    return answer;
}

CAnswer CClusterEngine::Dispatch(const CInput& input) {
    CCluster& cluster = *m_pCluster;
    return std::visit(
        COverloaded{
            [&](const CNodeReport& in) { return TakeNodeReport(cluster, in); },
            [&](const CContainerReport& in) { return TakeContainerReport(cluster, in); },
            [&](const CNvrReport& in) { return TakeNvrReport(cluster, in); },
            [&](const CJob& in) { return PlaceJob(cluster, in); },
            [&](const CDryRun& in) { return TryJob(cluster, in); },
            [&](const CEndTasks& in) { return EndTasks(cluster, in); },
            [&](const CManualShift& in) { return ShiftByHand(cluster, in); },
            [&](const CHighSpeed& in) { return SelectNvr(cluster, in); },
            [&](const CExplain& in) { return Explain(cluster, in); },
            [&](const CJoin& in) { return Join(cluster, in); },
            [&](const CLeave& in) { return Leave(cluster, in); },
            [&](const CDrain& in) { return Drain(cluster, in); },
            [&](const CMemberStatus& in) { return SetMemberStatus(cluster, in); },
            [&](const CCgAdd& in) { return AddCg(cluster, in); },
            [&](const CCgUpdate& in) { return UpdateCg(cluster, in); },
            [&](const CCgRemove& in) { return RemoveCg(cluster, in); },
            [&](const CPromote& in) { return Promote(cluster, in); },
            [&](const CDocumentChanged& in) { return ReloadDocument(cluster, in); },
            [&](const CStorageAllocate& in) { return AllocateStorage(cluster, in); },
            [&](const CStorageReduce& in) { return ReduceStorage(cluster, in); },
            [&](const CStorageSave& in) { return SaveStorage(cluster, in); },
            [&](const CReadmit& in) { return Readmit(cluster, in); },
            [&](const CShiftAnyway& in) { return ShiftAnyway(cluster, in); },
            [&](const CBalanceNow&) { return BalanceNow(cluster); },
            [&](const CReadStandardTasks&) { return ReadStandardTasks(cluster); },
            [&](const CNextMasterVersion&) { return RaiseMasterVersion(cluster); },
            [&](const CTick& in) { return Tick(in); },
        },
        input.body);
}

/// Reports are answered while the store is away: only one that tells its container to do something
/// that is not written yet has to wait.
bool CClusterEngine::NeedsCommit(const CInput& input, const CAnswer& answer) const {
    const CAssignments& assignments = m_pCluster->assignments;
    if (std::holds_alternative<CNodeReport>(input.body) ||
        std::holds_alternative<CNvrReport>(input.body)) {
        return false;
    }
    if (const auto* const pReport = std::get_if<CContainerReport>(&input.body);
        pReport != nullptr) {
        const bool bTold =
            !answer.takeUp.empty() || !answer.drop.empty() || !answer.messages.empty();
        return bTold && assignments.IsDirty(pReport->container.ToAddr());
    }
    return IsDirty();
}

/// Is there anything that a commit writes?
bool CClusterEngine::IsDirty() const {
    return m_pCluster->assignments.IsDirty() || IsMembershipDirty(*m_pCluster) ||
           m_pCluster->store.IsAnyWaiting();
}

/// A second has passed. The order: who is still there, whether that can be known yet, what has to
/// move, and last what might.
CAnswer CClusterEngine::Tick(const CTick& tick) {
    CCluster& cluster = *m_pCluster;
    NoticeStore(cluster);
    NoticeClock(cluster);
    if (tick.bReportsRefused) {
        BeginSettling(cluster, "reports were refused");
    }
    JudgeSilence(cluster);
    Settle(cluster);
    ContinueDrains(cluster);
    ForgetPendingStorage(cluster);
    SaveReportedStorage(cluster);
    MoveNotTakenUp(cluster);
    ShiftFaults(cluster);
    Balance(cluster);
    return {};
}

int CClusterEngine::Commit() {
    CCluster& cluster = *m_pCluster;
    int iCode = ORVA_SUCCEED;
    if (IsDirty()) {
        iCode = !cluster.store.IsAway() ? cluster.assignments.Write() : ORVA_FAIL;
        iCode = iCode != ORVA_SUCCEED ? iCode : CommitMembership(cluster);
    }
    iCode = iCode != ORVA_SUCCEED ? iCode : cluster.store.WriteWaiting();
    if (iCode == ORVA_SUCCEED) {
        cluster.TellSink();
    }
    return iCode;
}

/// Time never goes back: an earlier second counts as the last one.
void CClusterEngine::Step(int64_t iSecond) {
    CCluster& cluster = *m_pCluster;
    CClusterState& state = cluster.state;
    state.iNow = std::max(state.iNow, iSecond + state.iClockBehind);
    cluster.host.clock.Set(state.iNow);
}
