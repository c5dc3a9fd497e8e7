#pragma once

#include "cluster_engine/cluster.h"

/// The cluster document has changed: the difference is applied by the registries' own operations,
/// so that what stays keeps its figures, tasks and report times. What the new text lacks leaves as
/// by a leave, without the flush.
CAnswer ReloadCluster(CCluster& cluster);
