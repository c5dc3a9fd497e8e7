#pragma once

#include <ostream>
#include <string>

#include "command/staged_change.h"

/// Reads documents into the store, from the files of a folder or from a store file such as --undo
/// keeps; when one file is refused nothing is written. bKept says whether the store outlives the
/// program. Says what it did with each. Returns an exit code.
int Import(CStage& stage, const std::string& strFrom, bool bKept, const CChangeOptions& options,
           std::ostream& output, std::ostream& errors);
