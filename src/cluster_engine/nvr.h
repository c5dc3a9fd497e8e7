#pragma once

#include "cluster_engine/cluster.h"
#include "cluster_engine/input.h"

/// NVRs and the bandwidth that they have for downloads. The library's two lists of them cannot be
/// read: the engine's state follows them, entry by entry.

CAnswer TakeNvrReport(CCluster& cluster, const CNvrReport& report);

/// The NVR for a high-speed download.
CAnswer SelectNvr(CCluster& cluster, const CHighSpeed& input);

/// Fills the library's lists, which are empty, as the state has them. Steps the clock.
void RestoreNvrs(CCluster& cluster);
