#include "internal/store_tree.h"

std::vector<std::string> GetParentPaths(const std::string& strPath) {
    std::vector<std::string> paths;
    for (auto pos = strPath.find('/', 1); pos != std::string::npos;
         pos = strPath.find('/', pos + 1)) {
        paths.push_back(strPath.substr(0, pos));
    }
    return paths;
}

void CWatchTable::Set(const std::string& strPath, StoreWatcher pWatcher) {
    if (pWatcher != nullptr) {
        m_mapWatcher[strPath].insert(pWatcher);
    }
}

void CWatchTable::Take(const std::string& strPath, CFired& fired) {
    const auto node = m_mapWatcher.extract(strPath);
    if (node.empty()) {
        return;
    }
    for (const StoreWatcher pWatcher : node.mapped()) {
        fired.emplace_back(strPath, pWatcher);
    }
}

std::set<std::string> CWatchTable::GetPaths() const {
    std::set<std::string> setPath;
    for (const auto& [strPath, setWatcher] : m_mapWatcher) {
        setPath.insert(strPath);
    }
    return setPath;
}

void CWatchTable::Fire(const CFired& fired) {
    for (const auto& [strPath, pWatcher] : fired) {
        pWatcher(strPath);
    }
}
