#pragma once

#include "cluster_engine/cluster.h"
#include "cluster_engine/input.h"

/// Jobs: their tasks are read and placed by the plug-in of the job type. A task that has a place
/// already answers it, unless its container is silent. What finds no room is refused in its own
/// result and not kept.

CAnswer PlaceJob(CCluster& cluster, const CJob& job);

/// What PlaceJob would answer. Nothing changes, the decision number included.
CAnswer TryJob(CCluster& cluster, const CDryRun& job);

CAnswer EndTasks(CCluster& cluster, const CEndTasks& end);

CAnswer ShiftByHand(CCluster& cluster, const CManualShift& shift);

/// Lets a task have what the standard task that it names gives: private information that it lacks,
/// and that it must stay. False when it names none.
bool CompleteTask(const CCluster& cluster, CResourceTask& task);
