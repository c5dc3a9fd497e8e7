#pragma once

#include <ostream>
#include <string>

/// Reads the documents from the files of a folder into the store; when one file is refused nothing
/// is written. Asks before it replaces a text that the store holds by another, unless bYes. Says
/// what it did with each. Returns an exit code.
int Import(const std::string& strDir, bool bYes, std::ostream& output, std::ostream& errors);

/// Writes the documents of the store to the files of a folder, each whole or not at all; when the
/// store fails no file is written. Says what it did with each. Returns an exit code.
int Export(const std::string& strDir, std::ostream& output, std::ostream& errors);
