#pragma once

#include <string>

#include "cluster_engine/cluster.h"

/// Loads the plug-ins if that has not been done. Returns 0 or a code.
int LoadPlugins();

/// Loads everything that a cluster runs on, plug-ins first. Returns 0; or a code, with the reason.
int LoadCluster(CCluster& cluster, std::string& strWhy);
