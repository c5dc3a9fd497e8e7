#pragma once

#include "cluster_engine/cluster.h"
#include "cluster_engine/input.h"

/// Why a task is where it is: the last decisions about it, and for each container of the type
/// whether it may take it, by the engine's own rules and by the plug-in's reasons.
CAnswer Explain(CCluster& cluster, const CExplain& input);
