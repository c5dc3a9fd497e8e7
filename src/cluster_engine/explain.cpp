#include "cluster_engine/explain.h"

#include <list>
#include <map>
#include <utility>

#include "cluster_engine/moving.h"

namespace {

/// The plug-in's own reasons, by container; those of the engine come before them.
std::map<CContainerAddr, CPlacementReason> AskPlugin(CCluster& cluster, const CExplain& input,
                                                     const CResourceTask& task) {
    std::map<CContainerAddr, CPlacementReason> byContainer;
    CPluginRecord* const pPlugin = cluster.plugins.OfType(input.strType);
    std::list<CPlacementReason> reasons;
    if (pPlugin != nullptr && !pPlugin->bOut) {
        cluster.plugins.Explain(*pPlugin, task, reasons);
    }
    for (CPlacementReason& reason : reasons) {
        byContainer.emplace(reason.container, std::move(reason));
    }
    return byContainer;
}

}  // namespace

CAnswer Explain(CCluster& cluster, const CExplain& input) {
    const CContainerAddr* const pHolder =
        cluster.assignments.Holder(input.strType, input.strTaskId);
    CAnswer answer;
    answer.decisions = cluster.Decisions(input.strType, input.strTaskId);
    if (pHolder == nullptr) {
        return answer.decisions.empty() ? CAnswer::Refuse(EFault::UNKNOWN_TASK, input.strTaskId)
                                        : answer;
    }
    const auto byPlugin =
        AskPlugin(cluster, input, cluster.assignments.Find(*pHolder, input.strTaskId)->task);
    for (const auto& [addr, record] : cluster.state.containers) {
        if (addr.GetContainerType() != input.strType) {
            continue;
        }
        CReason reason;
        reason.container = addr;
        reason.strReason = WhyNotUsable(cluster, addr);
        const auto it = byPlugin.find(addr);
        if (reason.strReason.empty() && it != byPlugin.end()) {
            reason.strReason = it->second.strReason;
        }
        reason.bPossible =
            reason.strReason.empty() && (it == byPlugin.end() || it->second.bPossible);
        answer.reasons.push_back(std::move(reason));
    }
    return answer;
}
