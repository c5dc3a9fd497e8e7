#pragma once

#include <ostream>

/// Loads every plug-in of the library directory. False on failure, said on the stream.
bool LoadPlugins(std::ostream& errors);

/// Loads configuration and cluster, in this order; the plug-ins must be loaded. False at the first
/// failure, said on the stream.
bool LoadCluster(std::ostream& errors);

/// Loads what a service loads at its start: plug-ins, configuration, cluster, in this order. False
/// at the first failure, said on the stream.
bool LoadService(std::ostream& errors);

/// Load one document that a service loads beside the cluster. A document that is absent or without
/// data is a success that loads nothing. False on failure, said on the stream.
bool LoadCgList(std::ostream& errors);
bool LoadDatabase(std::ostream& errors);
bool LoadManager(std::ostream& errors);
bool LoadVersions(std::ostream& errors);

/// Loads the standard tasks. No folder of them is a success, said on the stream.
bool LoadTasks(std::ostream& errors);

/// Takes the plug-ins down, then the store: before main ends, since what plug-ins still log or
/// write needs a process that is whole.
class CServiceGuard {
public:
    CServiceGuard() = default;
    ~CServiceGuard();
    CServiceGuard(const CServiceGuard&) = delete;
    CServiceGuard& operator=(const CServiceGuard&) = delete;
};
