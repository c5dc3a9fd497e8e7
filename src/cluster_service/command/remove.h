#pragma once

#include <ostream>
#include <string>

#include "command/staged_change.h"

/// Takes a container out of the stored cluster, and its node with the last one. Says what the store
/// holds afterwards. Returns an exit code.
int Remove(CStage& stage, const std::string& strNodeId, const std::string& strContainerType,
           const CChangeOptions& options, std::ostream& output, std::ostream& errors);
