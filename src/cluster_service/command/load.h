#pragma once

#include <ostream>

/// Each loads a part of what a service loads. False on failure: the reason is said on the stream.

/// Every plug-in of the library directory. Comes before LoadNodes.
bool LoadPlugins(std::ostream& errors);

/// The switches; they stay as they are where the document is absent.
bool LoadClusterConfig(std::ostream& errors);

/// The nodes and their containers; none where the document is absent. True also when no container
/// has got its cloud storage: see LoadCloudStorage.
bool LoadNodes(std::ostream& errors);

/// Did LoadNodes, which comes before it, find the cloud storage of the containers good or absent?
bool LoadCloudStorage(std::ostream& errors);

/// All that makes the cluster, in this order: configuration, nodes and containers, cloud storage.
/// False at the first failure.
bool LoadCluster(std::ostream& errors);

/// One document that a service loads beside the cluster. A document that is absent or without
/// data is a success that loads nothing.
bool LoadCgList(std::ostream& errors);
bool LoadDatabase(std::ostream& errors);
bool LoadManager(std::ostream& errors);
bool LoadVersions(std::ostream& errors);

/// The standard tasks. No folder of them is a success, said on the stream.
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
