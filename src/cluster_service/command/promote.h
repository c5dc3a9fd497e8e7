#pragma once

#include <ostream>
#include <string>

#include "command/staged_change.h"

/// Makes a slave of the centre database its master; the two change places. Says what the store
/// holds afterwards. Returns an exit code.
int Promote(CStage& stage, const std::string& strNodeId, const CChangeOptions& options,
            std::ostream& output, std::ostream& errors);
