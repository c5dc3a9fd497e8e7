#pragma once

#include "command/checked_store.h"
#include "command/finding.h"

/// Each check adds what it finds.

/// @name Of each document by itself
/// @{
void CheckPresence(const CCheckedStore& store, Findings& findings);
void CheckText(const CCheckedStore& store, Findings& findings);
void CheckSize(const CCheckedStore& store, Findings& findings);
void CheckThresholds(const CCheckedStore& store, Findings& findings);
/// @}

/// @name Of the cluster document
/// @{
void CheckNodeIds(const CCheckedStore& store, Findings& findings);
void CheckContainerAddresses(const CCheckedStore& store, Findings& findings);
void CheckNormalBehindRemoved(const CCheckedStore& store, Findings& findings);
void CheckNodeIps(const CCheckedStore& store, Findings& findings);
/// @}

/// @name Of what other documents say of the nodes
/// @{
void CheckCloudStorageNodes(const CCheckedStore& store, Findings& findings);
void CheckCgEntries(const CCheckedStore& store, Findings& findings);
void CheckDatabase(const CCheckedStore& store, Findings& findings);
void CheckManager(const CCheckedStore& store, Findings& findings);
/// @}

/// @name Of the plug-ins
/// @{
void CheckContainerTypes(const CCheckedStore& store, Findings& findings);
void CheckPlugins(const CCheckedStore& store, Findings& findings);
/// @}
