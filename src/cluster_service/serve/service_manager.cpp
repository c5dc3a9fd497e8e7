#include "serve/service_manager.h"

#include <systemd/sd-daemon.h>

namespace {

using Clock = std::chrono::steady_clock;

/// A quarter of what the manager allows.
Clock::duration PauseOfWatchdog() {
    uint64_t ullMicroseconds = 0;
    const bool bKept = sd_watchdog_enabled(0, &ullMicroseconds) > 0;
    return std::chrono::microseconds(bKept ? ullMicroseconds / 4 : 0);
}

}  // namespace

void TellManager(const std::string& strState) {
    sd_notify(0, strState.c_str());
}

CWatchdog::CWatchdog() : m_pause(PauseOfWatchdog()) {}

void CWatchdog::Feed() {
    if (m_pause == Clock::duration::zero()) {
        return;
    }
    const Clock::rep now = Clock::now().time_since_epoch().count();
    if (now >= m_next) {
        m_next = now + m_pause.count();
        TellManager("WATCHDOG=1");
    }
}
