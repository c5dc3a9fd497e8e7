#pragma once

#include "cluster_engine/cluster.h"
#include "cluster_engine/input.h"

/// What an operator is told of the engine's surroundings, and what he says of them.

CAnswer Readmit(CCluster& cluster, const CReadmit& input);

/// A decision number that moved while no call ran: somebody else decides too.
void NoticeForeignDecision(CCluster& cluster);

/// At a tick: has the store gone away, or come back?
void NoticeStore(CCluster& cluster);
