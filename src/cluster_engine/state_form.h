#pragma once

#include <json/value.h>

#include <string>

#include "cluster_engine/cluster.h"

/// The engine's whole state in one JSON form: what it knows itself, what its plug-ins have done
/// wrong, and what the library's registries and copies of documents hold. Not in it: the texts in
/// the store, and what the library takes from files and hands to the host (the standard tasks that
/// plug-ins ask the library for are read from their files again; the host is told the forwarding
/// type by the cluster document alone).

/// To be taken when nothing waits to be written.
Json::Value StateToJson(const CCluster& cluster);

/// Brings a state into a process that has loaded nothing yet but the plug-ins' files may be there.
/// The gate is shut meanwhile: nothing is written. Returns 0; or a code with the reason in strWhy,
/// and the state half restored.
int RestoreState(CCluster& cluster, const Json::Value& json, std::string& strWhy);
