#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <unordered_set>

struct MHD_Connection;

/// One connection's share of the resting place, which guards it.
struct CRest {
    MHD_Connection* pConnection = nullptr;  ///< while it rests
    bool bWoken = false;                    ///< since it was asked last
};

enum class ERest {
    AWAKE,   ///< there is something to do
    RESTS,   ///< suspended: to be handled again when it is woken
    CLOSED,  ///< the server stops: nobody rests any more
};

/// Where the connections of a server rest, suspended, until there is something for them: requests
/// until they are answered, streams while they have nothing to say. libmicrohttpd must not be
/// stopped while a connection is suspended; closing this place first sees to it. It knows too how
/// many answers are on their way, which arrive before the server stops. It outlives the server as
/// long as an answer is owed. Every operation but Rest may be called on any thread.
class CRestingPlace {
public:
    /// Suspends the connection, unless it was woken since the last time. To be called by its
    /// handler or its content reader.
    ERest Rest(CRest& rest, MHD_Connection* pConnection);

    void Wake(CRest& rest);

    /// Lets everyone look again, whether or not there is something: streams notice so that their
    /// clients are gone.
    void WakeAll();

    /// @name An answer has been given; it is sent, or its client is gone
    /// @{
    void BeginWay() { ++m_iUnderWay; }
    void EndWay() { --m_iUnderWay; }
    /// @}

    /// The server is about to stop: nothing new is to begin. Returns when no answer is under way
    /// any more, or after that time.
    void AwaitArrivals(std::chrono::milliseconds most);
    bool IsClosing() const { return m_bClosing; }

    /// Wakes all, for good.
    void Close();

private:
    void ResumeAllLocked();

    std::atomic<int> m_iUnderWay{0};
    std::atomic<bool> m_bClosing{false};

    std::mutex m_mutex;  ///< guards everything below, and every CRest
    bool m_bClosed = false;
    std::unordered_set<CRest*> m_resting;
};
