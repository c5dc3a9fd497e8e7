#pragma once

#include <chrono>
#include <string>

#include "common_service/oper_common.h"

/// Remembers the paths that it is called with, over the whole program: tests use paths of their
/// own.
void RecordFired(const std::string& strPath);

/// The same as a watcher.
void RecordFired(zhandle_t* zh, int type, int state, const char* path, void* watcherCtx);

int CountFired(const std::string& strPath);

/// Whether the path has fired so often, or does so in time.
bool AwaitFired(const std::string& strPath, int iCount = 1,
                std::chrono::milliseconds limit = std::chrono::seconds(20));
