#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "reference_host/store.h"

/// The paths above a node, the topmost first: "/a" and "/a/b" for "/a/b/c".
std::vector<std::string> GetParentPaths(const std::string& strPath);

/// The name of the child of a node through which a path goes, if it goes through one: "b" for "/a"
/// and "/a/b/c".
std::optional<std::string> GetChildName(const std::string& strParent, const std::string& strPath);

/// Whether two of the texts are for one node.
bool NamesANodeTwice(const std::vector<CStoreText>& texts);

/// The one-shot watches of a store. Guarded by the store's own mutex.
class CWatchTable {
public:
    /// The same watcher set twice on a node fires once. Null sets nothing.
    void Set(const std::string& strPath, StoreWatcher pWatcher);

    /// The watchers of a node, which it then has no more.
    std::set<StoreWatcher> Take(const std::string& strPath);

    /// The nodes with a watch.
    std::set<std::string> GetPaths() const;

private:
    std::map<std::string, std::set<StoreWatcher>> m_mapWatcher;
};

/// What a write did to nodes of a store without a server, for those who watch them.
class CNodeEvents {
public:
    void AddCreated(const std::string& strPath, CWatchTable& watches);
    void AddChanged(const std::string& strPath, CWatchTable& watches);

    /// Calls the watchers. Not with the store's mutex held.
    void Fire() const;

private:
    struct CEvent {
        int iType;
        std::string strPath;
        std::set<StoreWatcher> setWatcher;
    };

    std::vector<CEvent> m_events;
};
