#include "cluster_engine/load_balance.h"

#include <algorithm>
#include <set>
#include <utility>

#include "cluster_engine/moving.h"
#include "framework_service/framework_common.h"

namespace {

/// The types for which a task waits for room: nothing of them is balanced.
std::set<std::string> WaitingTypes(const CCluster& cluster) {
    std::set<std::string> types;
    for (const auto& [addr, shift] : cluster.state.shifts) {
        if (!shift.waiting.empty() && !shift.bReschedule) {
            types.insert(addr.GetContainerType());
        }
    }
    for (const auto& [strType, shift] : cluster.state.homelessShifts) {
        types.insert(strType);
    }
    return types;
}

bool MayBeAsked(const CPluginRecord& plugin, const std::set<std::string>& waiting) {
    const std::list<std::string>& types = plugin.claims.loadBalanceContainers;
    return !plugin.bOut && std::any_of(types.begin(), types.end(), [&](const std::string& strType) {
        return waiting.count(strType) == 0;
    });
}

/// The first moves of the plan that may be made.
std::vector<CPlacedTask> ReadPlan(CCluster& cluster, const CBalancePlan& plan,
                                  const std::set<std::string>& waiting) {
    std::vector<CPlacedTask> moves;
    std::set<std::string> taken;
    for (const CResourceTask& task : plan.tasks) {
        const auto from = plan.from.find(task.GetTaskId());
        const auto to = plan.to.find(task.GetTaskId());
        if (moves.size() == cluster.settings.uiBalanceMoves || from == plan.from.end() ||
            to == plan.to.end() || !taken.insert(task.GetTaskId()).second) {
            continue;
        }
        const CAssignedTask* const pTask = cluster.assignments.Find(from->second, task.GetTaskId());
        const std::string& strType = to->second.GetContainerType();
        if (pTask != nullptr && pTask->bBalanced && pTask->task.IsSupportShift() &&
            strType == from->second.GetContainerType() && waiting.count(strType) == 0 &&
            WhyNotUsable(cluster, to->second).empty()) {
            moves.push_back({*pTask, to->second});
        }
    }
    return moves;
}

CCallResult BalanceBy(CCluster& cluster, CPluginRecord& plugin,
                      const std::set<std::string>& waiting) {
    CBalancePlan plan;
    CCallResult result = cluster.plugins.Balance(plugin, plan);
    if (result.IsFailure()) {
        return result;
    }
    CMoveReason reason;
    reason.strBy = "load balance";
    reason.strCause = "to even out the load";
    reason.eEvent = EEvent::BALANCED;
    return CarryOut(cluster, plugin, ReadPlan(cluster, plan, waiting), plan.ullDecision, reason);
}

/// Of each plug-in that may be asked, what its balance came to.
std::vector<CCallResult> BalanceAll(CCluster& cluster) {
    const std::set<std::string> waiting = WaitingTypes(cluster);
    std::vector<CCallResult> results;
    for (CPluginRecord& plugin : cluster.plugins.GetAll()) {
        if (MayBeAsked(plugin, waiting)) {
            results.push_back(BalanceBy(cluster, plugin, waiting));
        }
    }
    return results;
}

}  // namespace

void Balance(CCluster& cluster) {
    CClusterState& state = cluster.state;
    const CClusterConfigZNodeInfo config = CFrameworkCommon::Instance().GetClusterConfig();
    const bool bOnce = config.IsLoadBalanceOnePeriod();
    if (!config.IsLoadBalance() || (bOnce && state.bBalancedOnce) || !state.bSettled ||
        state.iNow < state.iNextBalance || cluster.store.IsAway()) {
        return;
    }
    state.iNextBalance = state.iNow + cluster.settings.iBalancePeriod;
    BalanceAll(cluster);
    if (bOnce) {
        state.bBalancedOnce = true;
        CEvent event;
        event.eEvent = EEvent::BALANCED_ONCE;
        event.strCause = "the configuration allows one period";
        cluster.Tell(std::move(event));
    }
}

void RenewBalance(CCluster& cluster) {
    cluster.state.bBalancedOnce = false;
    cluster.state.iNextBalance = cluster.state.iNow + cluster.settings.iBalancePeriod;
}

CAnswer BalanceNow(CCluster& cluster) {
    if (!cluster.state.bSettled) {
        return CAnswer::Refuse(EFault::REFUSED_BY_RULE, "the cluster has not settled");
    }
    if (cluster.store.IsAway()) {
        return CAnswer::Refuse(EFault::STORE_AWAY, "");
    }
    const std::vector<CCallResult> results = BalanceAll(cluster);
    if (results.empty()) {
        return CAnswer::Refuse(EFault::REFUSED_BY_RULE,
                               "no type may be balanced: work waits, or plug-ins are out");
    }
    const auto failed = std::find_if(results.begin(), results.end(),
                                     [](const CCallResult& result) { return result.IsFailure(); });
    return failed == results.end() ? CAnswer() : CAnswer::Refuse(failed->eFault, failed->strWhy);
}
