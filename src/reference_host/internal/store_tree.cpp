#include "internal/store_tree.h"

#include <zookeeper/zookeeper.h>

#include <utility>

std::vector<std::string> GetParentPaths(const std::string& strPath) {
    std::vector<std::string> paths;
    for (auto pos = strPath.find('/', 1); pos != std::string::npos;
         pos = strPath.find('/', pos + 1)) {
        paths.push_back(strPath.substr(0, pos));
    }
    return paths;
}

std::optional<std::string> GetChildName(const std::string& strParent, const std::string& strPath) {
    const std::string strPrefix = strParent == "/" ? strParent : strParent + "/";
    if (strPath.size() <= strPrefix.size() ||
        strPath.compare(0, strPrefix.size(), strPrefix) != 0) {
        return std::nullopt;
    }
    return strPath.substr(strPrefix.size(), strPath.find('/', strPrefix.size()) - strPrefix.size());
}

bool NamesANodeTwice(const std::vector<CStoreText>& texts) {
    std::set<std::string> setPath;
    for (const CStoreText& text : texts) {
        if (!setPath.insert(text.strPath).second) {
            return true;
        }
    }
    return false;
}

void CWatchTable::Set(const std::string& strPath, StoreWatcher pWatcher) {
    if (pWatcher != nullptr) {
        m_mapWatcher[strPath].insert(pWatcher);
    }
}

std::set<StoreWatcher> CWatchTable::Take(const std::string& strPath) {
    auto node = m_mapWatcher.extract(strPath);
    return node.empty() ? std::set<StoreWatcher>() : std::move(node.mapped());
}

std::set<std::string> CWatchTable::GetPaths() const {
    std::set<std::string> setPath;
    for (const auto& [strPath, setWatcher] : m_mapWatcher) {
        setPath.insert(strPath);
    }
    return setPath;
}

void CNodeEvents::AddCreated(const std::string& strPath, CWatchTable& watches) {
    m_events.push_back({ZOO_CREATED_EVENT, strPath, watches.Take(strPath)});
}

void CNodeEvents::AddChanged(const std::string& strPath, CWatchTable& watches) {
    m_events.push_back({ZOO_CHANGED_EVENT, strPath, watches.Take(strPath)});
}

void CNodeEvents::Fire() const {
    for (const auto& [iType, strPath, setWatcher] : m_events) {
        for (const StoreWatcher pWatcher : setWatcher) {
            pWatcher(nullptr, iType, ZOO_CONNECTED_STATE, strPath.c_str(), nullptr);
        }
    }
}
