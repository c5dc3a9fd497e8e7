#include "cluster_engine/settling.h"

#include <algorithm>
#include <utility>

#include "cluster_engine/silence.h"

namespace {

void TellSettling(CCluster& cluster, EEvent eEvent, std::string strCause) {
    CEvent event;
    event.eEvent = eEvent;
    event.strCause = std::move(strCause);
    cluster.Tell(std::move(event));
}

}  // namespace

void BeginSettling(CCluster& cluster, const std::string& strCause) {
    cluster.state.bSettled = false;
    for (auto& [addr, record] : cluster.state.containers) {
        record.bReported = false;
    }
    RenewReportTimes(cluster);
    TellSettling(cluster, EEvent::SETTLING, strCause);
}

void ReadClock(CCluster& cluster, int64_t iSecond) {
    CClusterState& state = cluster.state;
    state.iTickStep = state.iLastTick != 0 ? iSecond - state.iLastTick : 1;
    state.iLastTick = iSecond;
    if (state.iTickStep < 0 || state.iTickStep > cluster.settings.iNobodyWatched) {
        state.iClockBehind = std::max<int64_t>(state.iClockBehind - state.iTickStep, 0);
    }
}

void NoticeClock(CCluster& cluster) {
    const int64_t iStep = cluster.state.iTickStep;
    if (iStep <= 0) {
        RenewReportTimes(cluster);
    } else if (iStep > cluster.settings.iNobodyWatched) {
        BeginSettling(cluster, "nobody watched for " + std::to_string(iStep) + " seconds");
    }
}

void Settle(CCluster& cluster) {
    CClusterState& state = cluster.state;
    const bool bAllHeard = std::all_of(
        state.containers.begin(), state.containers.end(),
        [](const auto& entry) { return entry.second.bReported || entry.second.bSilent; });
    if (state.bSettled || !bAllHeard) {
        return;
    }
    state.bSettled = true;
    state.iNextBalance = state.iNow + cluster.settings.iBalancePeriod;
    TellSettling(cluster, EEvent::SETTLED, "");
}
