#pragma once

#include "cluster_engine/cluster.h"
#include "cluster_engine/input.h"

/// Cloud storage: allocations and reductions are decided by the plug-in, handed to the nodes with
/// their next reports, taken over from what they report, and saved.

CAnswer AllocateStorage(CCluster& cluster, const CStorageAllocate& input);
CAnswer ReduceStorage(CCluster& cluster, const CStorageReduce& input);
CAnswer SaveStorage(CCluster& cluster, const CStorageSave& input);

/// The report of a cloud storage container goes in as it came: its tasks are its figures.
void TakeStorageReport(CCluster& cluster, const CContainerAddr& addr,
                       const CContainerReport& report);

/// Hands a cloud storage container what its node is to be sent, until it has heard it.
void HandStorageRequests(CCluster& cluster, const CContainerReport& report, CAnswer& answer);

/// At a tick: what was reported of an allocation and could not be saved is tried again.
void SaveReportedStorage(CCluster& cluster);

/// At a tick: what was decided and not reported in time counts no longer, and is not handed any
/// more.
void ForgetPendingStorage(CCluster& cluster);
