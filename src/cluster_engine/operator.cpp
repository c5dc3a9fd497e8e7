#include "cluster_engine/operator.h"

#include <utility>

#include "framework_service/schedule_mgr.h"

CAnswer Readmit(CCluster& cluster, const CReadmit& input) {
    CPluginRecord* const pPlugin = cluster.plugins.OfName(input.strPlugin);
    if (pPlugin == nullptr) {
        return CAnswer::Refuse(EFault::UNKNOWN_PLUGIN, input.strPlugin);
    }
    if (const EFault eFault = cluster.plugins.Readmit(*pPlugin); eFault != EFault::NONE) {
        return CAnswer::Refuse(eFault, input.strPlugin);
    }
    cluster.RestoreTables(*pPlugin);  // a late call may have changed them behind our back
    cluster.state.roomAppeared.insert(pPlugin->claims.containers.begin(),
                                      pPlugin->claims.containers.end());
    CEvent event;
    event.eEvent = EEvent::PLUGIN_READMITTED;
    event.strCause = input.strPlugin;
    cluster.Tell(std::move(event));
    return {};
}

void NoticeForeignDecision(CCluster& cluster) {
    const uint64_t ullDecision = CScheduleMgr::Instance().GetDecisionVerNum();
    if (ullDecision == cluster.state.ullDecision) {
        return;
    }
    cluster.state.ullDecision = ullDecision;
    CEvent event;
    event.eEvent = EEvent::DECISION_MOVED;
    event.ullDecision = ullDecision;
    event.strCause = "not by a decision of this service";
    cluster.Tell(std::move(event));
}

void NoticeStore(CCluster& cluster) {
    if (cluster.store.IsAway()) {
        std::string strText;
        bool bAbsent = false;
        cluster.store.Read(PSZ_STORE_PROBE, strText, bAbsent);
    }
    if (cluster.store.IsAway() == cluster.state.bStoreAway) {
        return;
    }
    cluster.state.bStoreAway = cluster.store.IsAway();
    CEvent event;
    event.eEvent = cluster.state.bStoreAway ? EEvent::STORE_AWAY : EEvent::STORE_BACK;
    if (cluster.state.bStoreAway) {
        cluster.TellNow(std::move(event));  // nothing may be written for a long time
    } else {
        cluster.Tell(std::move(event));
    }
}
