#pragma once

#include <string>

#include "cluster_engine/input.h"
#include "command/store_document.h"

/// The document of the store that goes by that name in questions and inputs.
const CStoreDocument& StoreDocumentOf(EDocument eDocument);

/// What a path of the cluster's store holds, for people: the name of one of its documents; of the
/// engine's own as in "engine_assignment", whatever the container; else "other".
std::string DocumentName(const std::string& strPath);
