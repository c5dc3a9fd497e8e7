#pragma once

#include <ostream>
#include <string>

#include "reference_host/store.h"

/// Where a command works.
struct CClusterPlace {
    std::string strClusterCode;
    std::string strStore;
};

/// As a person is told it: cluster Main in sqlite:cluster.db
std::string PlaceText(const CClusterPlace& place);

/// What may be missing for a command to go on.
enum class EMayBeMissing { NOTHING, CLUSTER };

/// Looks whether the store is there, with the folder that its name may have, and the cluster in it.
/// Says on the stream what is not, with the clusters that are there instead, or why the store did
/// not answer.
bool IsPlaceThere(IStore& store, const CClusterPlace& place, EMayBeMissing eMayBeMissing,
                  std::ostream& errors);
