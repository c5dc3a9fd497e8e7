#pragma once

#include <functional>
#include <string>

/// Runs it in a process of its own, forked from this one, and returns what it returned. The test
/// fails when something failed there, or when it did not come to its end.
std::string InLife(const std::function<std::string()>& run);
