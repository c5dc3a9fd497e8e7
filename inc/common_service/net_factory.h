#pragma once

#include <map>
#include <mutex>
#include <string>
#include <unordered_set>

namespace HALD {

/// The peers from which links are accepted, each an address and a link type. Callable from any
/// thread.
class CNetFactory {
public:
    static CNetFactory& Instance();

    /// Returns 0, also for a link that is there already.
    int AddValidatedLink(const std::string& strIp, int iType);

    /// Returns 0, also for a link that is not there.
    int DelValidatedLink(const std::string& strIp, int iType);

    /// What the reference host adds: is this peer accepted?
    bool IsValidatedLink(const std::string& strIp, int iType);

    /// What the reference host adds: forgets every link.
    void Clear();

private:
    std::mutex m_mutex;
    std::map<int, std::unordered_set<std::string>> m_mapAddress;  ///< by link type
};

}  // namespace HALD
