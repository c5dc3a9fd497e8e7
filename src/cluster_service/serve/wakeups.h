#pragma once

#include <chrono>
#include <optional>

/// What the main thread of a service waits for.
enum class EWakeup : unsigned char {
    STOP,           ///< a signal asks the service to end
    TRIED_TO_LOAD,  ///< the cluster has been loaded, or cannot be yet
    HOLD_LOST,      ///< others may have the cluster now
};

/// Where it waits.
class CWakeups {
public:
    using Clock = std::chrono::steady_clock;

    CWakeups();
    ~CWakeups();
    CWakeups(const CWakeups&) = delete;
    CWakeups& operator=(const CWakeups&) = delete;

    /// From any thread, and within a signal handler.
    void Send(EWakeup eWakeup) const;

    /// The next one, in their order; nothing when the deadline comes first.
    std::optional<EWakeup> Await(std::optional<Clock::time_point> deadline = std::nullopt) const;

private:
    int m_fdOut = -1;
    int m_fdIn = -1;
};
