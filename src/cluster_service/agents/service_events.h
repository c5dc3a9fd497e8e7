#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "agents/http_client.h"
#include "cluster_engine/event.h"

/// The events of a service since it started, each read once.
class CServiceEvents {
public:
    /// Appends those that happened since the last call. False, with the reason, when the service
    /// does not tell all of them.
    bool Read(CHttpClient& client, std::vector<CEvent>& events, std::string& strWhy);

    std::size_t GetCount() const { return m_uiCount; }

private:
    uint64_t m_ullLast = 0;  ///< the number of the last one that was read
    std::size_t m_uiCount = 0;
};
