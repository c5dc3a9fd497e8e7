#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/store.h"

/// The paths above a node, the topmost first: "/a" and "/a/b" for "/a/b/c".
std::vector<std::string> GetParentPaths(const std::string& strPath);

/// The one-shot watches of a store that keeps them itself. Guarded by the store's own mutex.
class CWatchTable {
public:
    using CFired = std::vector<std::pair<std::string, StoreWatcher>>;

    /// The same watcher set twice on a node fires once. Null sets nothing.
    void Set(const std::string& strPath, StoreWatcher pWatcher);

    /// Moves the watches of a node that was created or written to fired.
    void Take(const std::string& strPath, CFired& fired);

    /// The nodes with a watch.
    std::set<std::string> GetPaths() const;

    /// Calls the watchers. Not with the store's mutex held.
    static void Fire(const CFired& fired);

private:
    std::map<std::string, std::set<StoreWatcher>> m_mapWatcher;
};
