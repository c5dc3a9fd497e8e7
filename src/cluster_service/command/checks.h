#pragma once

#include "command/checked_store.h"
#include "command/finding.h"

/// Adds a finding on a document as a whole.
void Add(Findings& findings, EWeight eWeight, const CCheckedDocument& document,
         std::string strWhat);

/// Adds a finding on a value of a document.
void Add(Findings& findings, EWeight eWeight, const CCheckedDocument& document,
         const CDocumentEntry& entry, std::string strWhat);

/// Each check adds what it finds.

/// @name Of each document by itself
/// @{
void CheckPresence(const CCheckedStore& store, Findings& findings);
void CheckText(const CCheckedStore& store, Findings& findings);
void CheckKeys(const CCheckedStore& store, Findings& findings);
void CheckValues(const CCheckedStore& store, Findings& findings);
void CheckSize(const CCheckedStore& store, Findings& findings);
void CheckThresholds(const CCheckedStore& store, Findings& findings);
/// @}

/// @name Of the cluster document
/// @{
void CheckClusterCode(const CCheckedStore& store, Findings& findings);
void CheckNodeIds(const CCheckedStore& store, Findings& findings);
void CheckContainerAddresses(const CCheckedStore& store, Findings& findings);
void CheckNormalBehindRemoved(const CCheckedStore& store, Findings& findings);
void CheckNodesWithoutContainers(const CCheckedStore& store, Findings& findings);
/// @}

/// @name Of what other documents say of the nodes
/// @{
void CheckCloudStorageNodes(const CCheckedStore& store, Findings& findings);
void CheckCgEntries(const CCheckedStore& store, Findings& findings);
void CheckDatabase(const CCheckedStore& store, Findings& findings);
void CheckManager(const CCheckedStore& store, Findings& findings);
/// @}

/// @name Of the plug-ins and the standard tasks
/// @{
void CheckContainerTypes(const CCheckedStore& store, Findings& findings);
void CheckPlugins(const CCheckedStore& store, Findings& findings);
void CheckTasks(const CCheckedStore& store, Findings& findings);
/// @}
