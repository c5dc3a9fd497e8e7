#pragma once

#include <ostream>
#include <string>
#include <vector>

/// What can be shown: each table by its name.
std::vector<std::string> ShowSubjects();

/// Loads what a service loads, and prints the table of that name, all for an empty one, as text or
/// as one JSON object; a document that is absent is shown empty, and nothing is shown after a
/// failure. Returns an exit code.
int Show(const std::string& strSubject, bool bJson, std::ostream& output, std::ostream& errors);
