#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// What the requests of one run came to.
struct CHttpLoadResult {
    std::chrono::nanoseconds took{};
    std::vector<std::chrono::nanoseconds> waits;  ///< for each answer

    double GetNanosecondsPerAnswer() const;
    double Get99thPercentile() const;  ///< of the waits, in nanoseconds
};

/// Clients of one server on this machine whose connections stay open, each with one request under
/// way at most. One thread serves them all.
class CHttpLoad {
public:
    /// The next request of a connection; empty when it has had its share.
    using NextRequest = std::function<std::string(std::size_t uiConnection)>;

    /// Throws when the server does not take so many.
    CHttpLoad(uint16_t uiPort, std::size_t uiConnections);
    ~CHttpLoad();
    CHttpLoad(const CHttpLoad&) = delete;
    CHttpLoad& operator=(const CHttpLoad&) = delete;

    /// A request that posts JSON to the server.
    std::string MakePost(const std::string& strPath, const std::string& strBody) const;

    /// Lets every connection ask until it has had its share. Throws on an answer other than 200.
    CHttpLoadResult Run(const NextRequest& next);

private:
    using Clock = std::chrono::steady_clock;

    struct CConnection {
        int iSocket = -1;
        std::string strRead;
        Clock::time_point asked;
    };

    bool Ask(std::size_t uiConnection, const NextRequest& next);
    bool Read(CConnection& connection) const;

    const uint16_t m_uiPort;
    const int m_iPoll;
    std::vector<CConnection> m_connections;
};
