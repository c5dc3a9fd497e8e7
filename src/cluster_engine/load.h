#pragma once

#include <string>

#include "cluster_engine/cluster.h"
#include "cluster_engine/engine.h"

/// Loads the plug-ins if that has not been done. Returns 0 or a code.
int LoadPlugins();

/// Loads everything that a cluster runs on, plug-ins first, and tells of each step that went well.
/// Returns 0; or a code, with the reason.
int LoadCluster(CCluster& cluster, std::string& strWhy, const OnLoadStep& onStep);
