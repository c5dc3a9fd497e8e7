#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

/// A client's connection: is a request on its way, and since when?
class CHttpConnection {
public:
    using Clock = std::chrono::steady_clock;

    CHttpConnection(int iSocket, bool bTooMany) : m_iSocket(iSocket), m_bTooMany(bTooMany) {}

    /// Is it one more than allowed?
    bool IsTooMany() const { return m_bTooMany; }

    /// The first line of a request is here.
    void BeginRequest();

    /// All of it is here. False when that took too long: the client has been told so, and nothing
    /// more must be.
    bool EndRequest();

    /// Tells the client of a request that began before that moment, and is not here yet, that it
    /// took too long, and ends the connection.
    void EndIfBegunBefore(Clock::time_point moment);

private:
    static constexpr Clock::rep NUMERIC_NONE = 0;
    static constexpr Clock::rep NUMERIC_TOO_LATE = -1;

    const int m_iSocket;
    const bool m_bTooMany;
    std::atomic<Clock::rep> m_begun{NUMERIC_NONE};
};

/// The connections that are open. On any thread.
class CHttpConnections {
public:
    explicit CHttpConnections(std::size_t uiAllowed) : m_uiAllowed(uiAllowed) {}

    CHttpConnection* Open(int iSocket);
    void Close(CHttpConnection* pConnection);

    std::size_t GetNumber() const;
    void EndIfBegunBefore(CHttpConnection::Clock::time_point moment);

private:
    const std::size_t m_uiAllowed;
    mutable std::mutex m_mutex;  ///< guards the next
    std::unordered_map<CHttpConnection*, std::unique_ptr<CHttpConnection>> m_connections;
};
