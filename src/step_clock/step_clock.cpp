#include "step_clock/step_clock.h"

#include <ctime>
#include <optional>

namespace {

thread_local std::optional<std::time_t> g_second;

std::time_t Now() {
    if (g_second) {
        return *g_second;
    }
    std::timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec;
}

}  // namespace

void CStepClock::Set(int64_t iSecond) {
    g_second = static_cast<std::time_t>(iSecond);
}

void CStepClock::Release() {
    g_second.reset();
}

/// Stands in front of the C library's clock.
extern "C" std::time_t time(std::time_t* pNow) noexcept {
    const std::time_t tmNow = Now();
    if (pNow != nullptr) {
        *pNow = tmNow;
    }
    return tmNow;
}
