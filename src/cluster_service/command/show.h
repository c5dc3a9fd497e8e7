#pragma once

#include <ostream>
#include <string>
#include <vector>

/// What can be shown: each table by its name.
std::vector<std::string> ShowSubjects();

/// Is that table shown from the store? All of them are, but the one of the plug-ins.
bool ShowNeedsStore(const std::string& strSubject);

/// Loads what a service loads, and prints the table of that name, all for an empty one, as text or
/// as one JSON object. A document that is absent is shown empty. One that does not load keeps
/// its own tables from being shown and no others, and its fault is told. Plug-ins that do not load
/// end it, except when they alone are asked for. Returns an exit code.
int Show(const std::string& strSubject, bool bJson, std::ostream& output, std::ostream& errors);
