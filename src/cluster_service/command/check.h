#pragma once

#include <ostream>

/// Reads every document of the store, loads the plug-ins, and reports what is wrong with the
/// documents and between them. Returns an exit code.
int Check(std::ostream& output, std::ostream& errors);
