#pragma once

#include "cluster_engine/cluster.h"
#include "cluster_engine/input.h"

/// What nodes and containers report of themselves. A container is answered what to take up
/// and what to drop, as often as its reports ask for it.

CAnswer TakeNodeReport(CCluster& cluster, const CNodeReport& report);
CAnswer TakeContainerReport(CCluster& cluster, const CContainerReport& report);
