#pragma once

#include <string>
#include <vector>

/// The findings that "check --json" has printed, in their order, each on one line: severity,
/// document, line:column, key path and finding, of which the middle two may be missing. Throws on
/// anything else.
std::vector<std::string> FoundIn(const std::string& strJson);
