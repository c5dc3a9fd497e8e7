#pragma once

#include <chrono>
#include <string>

/// Remembers the paths that it is called with, over the whole program: tests use paths of their
/// own.
void RecordFired(const std::string& strPath);

int CountFired(const std::string& strPath);

/// Whether the path has fired so often, or does so in time.
bool AwaitFired(const std::string& strPath, int iCount = 1,
                std::chrono::milliseconds limit = std::chrono::seconds(20));
