#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

/// Tells the service manager, if one has started this process, how the service is: "READY=1",
/// "STATUS=…".
void TellManager(const std::string& strState);

/// The service manager's watchdog, if it keeps one on this process. Callable from any thread.
class CWatchdog {
public:
    CWatchdog();

    /// There is progress. Costs nothing when it was told a moment ago.
    void Feed();

private:
    const std::chrono::steady_clock::duration m_pause;  ///< none when zero
    std::atomic<std::chrono::steady_clock::rep> m_next{0};
};
