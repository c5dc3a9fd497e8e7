#pragma once

#include "cluster_engine/cluster.h"
#include "cluster_engine/input.h"

/// Who belongs to the cluster. A join writes the cluster document before the registries change, a
/// leave the assignments before the library's own removal: what is refused has changed nothing.

CAnswer Join(CCluster& cluster, const CJoin& input);
CAnswer Leave(CCluster& cluster, const CLeave& input);

/// A node that is drained is removed, and what may move leaves it, also where fault shift is off;
/// it runs on until its new place reports it. Reports do not end a drain: only emptiness, the
/// member status normal, or silence, which makes it a fault shift.
CAnswer Drain(CCluster& cluster, const CDrain& input);

/// A removed node keeps its work and gets none.
CAnswer SetMemberStatus(CCluster& cluster, const CMemberStatus& input);

/// At a tick: begins what is left of drains after a start, and ends those that are over.
void ContinueDrains(CCluster& cluster);

/// Reads the engine's own member document and applies it; after each load of the cluster. Returns
/// 0 or the store's code.
int LoadMemberStatus(CCluster& cluster);

/// Writes it, and takes out of the cluster document what the library has left there of a leave.
/// Returns 0 or the store's code.
int CommitMembership(CCluster& cluster);

/// Is there something for CommitMembership to write?
bool IsMembershipDirty(const CCluster& cluster);
