#pragma once

#include <ostream>
#include <string>

/// Puts a new run of this program in the place of this one, with the same arguments, listening
/// where this one does. Nothing of this run is brought to its end: it is as if it were killed. When
/// that cannot be done the process ends.
[[noreturn]] void BeginAnew(const std::string& strUrl, std::ostream& errors);
