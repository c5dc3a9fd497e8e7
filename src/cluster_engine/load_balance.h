#pragma once

#include "cluster_engine/cluster.h"

/// Once a period each plug-in that balances is asked for moves, of which the first few are carried
/// out. With "one period" in the configuration that happens once after each start and each change
/// of the document, and then not again.

/// At a tick.
void Balance(CCluster& cluster);

/// The configuration has been read: its one period is still to come.
void RenewBalance(CCluster& cluster);

/// An operator's word, whatever the configuration says.
CAnswer BalanceNow(CCluster& cluster);
