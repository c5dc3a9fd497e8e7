#pragma once

#include <ostream>
#include <string>

/// Writes the documents of the store to the files of a folder, each whole or not at all; when the
/// store fails no file is written. Says what it did with each. Returns an exit code.
int Export(const std::string& strDir, std::ostream& output, std::ostream& errors);
