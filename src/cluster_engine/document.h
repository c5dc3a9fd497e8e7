#pragma once

#include "cluster_engine/cluster.h"
#include "cluster_engine/input.h"

/// The documents of the cluster that are not its members' own, and those that changed in the store.

/// Brings that document in, and nothing else changes. A text that cannot be read changes nothing.
CAnswer ReloadDocument(CCluster& cluster, const CDocumentChanged& input);

CAnswer AddCg(CCluster& cluster, const CCgAdd& input);
CAnswer UpdateCg(CCluster& cluster, const CCgUpdate& input);
CAnswer RemoveCg(CCluster& cluster, const CCgRemove& input);
CAnswer Promote(CCluster& cluster, const CPromote& input);
CAnswer RaiseMasterVersion(CCluster& cluster);
CAnswer ReadStandardTasks(CCluster& cluster);
