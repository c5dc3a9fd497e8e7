#pragma once

#include <ostream>
#include <string>
#include <vector>

/// What can be shown: each table by its name.
std::vector<std::string> ShowSubjects();

/// Is that table shown from the store? All of them are, but the one of the plug-ins.
bool ShowNeedsStore(const std::string& strSubject);

/// Loads what a service loads, and prints the table of that name, all for an empty one, as text or
/// as one JSON object. A document that is absent is shown empty, and nothing is shown after a
/// failure, except what became of the plug-ins when they alone are asked for. Returns an exit code.
int Show(const std::string& strSubject, bool bJson, std::ostream& output, std::ostream& errors);
