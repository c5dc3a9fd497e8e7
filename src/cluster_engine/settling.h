#pragma once

#include <string>

#include "cluster_engine/cluster.h"

/// After a load, and after a time when nobody watched, nothing is shifted or balanced before every
/// container has reported or its time is over.

void BeginSettling(CCluster& cluster, const std::string& strCause);

/// Before a tick: a clock that went back is behind the engine's time from then on, which goes on
/// from where it was, until the clock jumps forward again. Other inputs do not tell the clock: they
/// may have waited in a queue, and be a little older than the tick before them.
void ReadClock(CCluster& cluster, int64_t iSecond);

/// At a tick: when the clock went back, everybody counts as heard of now; after a gap, when nobody
/// watched, settling begins anew.
void NoticeClock(CCluster& cluster);

/// At a tick: is it over?
void Settle(CCluster& cluster);
