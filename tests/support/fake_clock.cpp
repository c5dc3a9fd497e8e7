#include "support/fake_clock.h"

#include <atomic>
#include <limits>

namespace {

constexpr std::time_t NUMERIC_REAL_CLOCK = std::numeric_limits<std::time_t>::min();

std::atomic<std::time_t> g_tmNow{NUMERIC_REAL_CLOCK};

std::time_t Now() {
    const std::time_t tmNow = g_tmNow;
    if (tmNow != NUMERIC_REAL_CLOCK) {
        return tmNow;
    }
    std::timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec;
}

}  // namespace

void SetClock(std::time_t tmNow) {
    g_tmNow = tmNow;
}

void AdvanceClock(std::time_t tmSeconds) {
    g_tmNow += tmSeconds;
}

void ResetClock() {
    g_tmNow = NUMERIC_REAL_CLOCK;
}

/// Stands in front of the C library's clock, for the executable and its shared libraries.
extern "C" std::time_t time(std::time_t* pNow) noexcept {
    const std::time_t tmNow = Now();
    if (pNow != nullptr) {
        *pNow = tmNow;
    }
    return tmNow;
}
