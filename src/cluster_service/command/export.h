#pragma once

#include <ostream>
#include <string>

#include "reference_host/store.h"

/// Writes the documents of the store to the files of a folder, each whole or not at all and byte
/// for byte as the store has it, also a text that is no document or too long for one; that is said.
/// What cannot be read or written keeps no other from its file. Says what it did with each. Returns
/// an exit code. strPlace is the store as a person is told it.
int Export(IStore& store, const std::string& strPlace, const std::string& strDir,
           std::ostream& output, std::ostream& errors);
