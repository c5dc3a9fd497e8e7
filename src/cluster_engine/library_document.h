#pragma once

#include <string>

#include "cluster_engine/cluster.h"
#include "common_service/data/communication_data.h"
#include "framework_service/store_path.h"

/// The library's documents as the engine itself reads and writes them, with what is to be answered.

/// The text of a document as the library writes it.
std::string LibraryText(CBaseJsonObject& document);

/// Reads one; done with bAbsent when there is nothing to read. A text that cannot be read is said.
CAnswer ReadLibraryDocument(CCluster& cluster, const ORVA_STORE_NODE& node,
                            CBaseJsonObject& document, bool& bAbsent);

/// Writes one. A text that does not fit is refused, and the store keeps the one it has.
CAnswer WriteLibraryDocument(CCluster& cluster, const ORVA_STORE_NODE& node,
                             CBaseJsonObject& document);

/// What is answered when a call of the library that writes a document came to that code.
CAnswer RefuseWrite(const ORVA_STORE_NODE& node, int iCode);

/// Says that a text cannot be read, and why, and refuses the input.
CAnswer RefuseText(CCluster& cluster, const ORVA_STORE_NODE& node, const std::string& strWhy);

/// Says that a document has been brought in.
void TellReloaded(CCluster& cluster, const ORVA_STORE_NODE& node);
