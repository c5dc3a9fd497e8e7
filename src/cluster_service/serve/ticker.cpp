#include "serve/ticker.h"

#include <chrono>
#include <ctime>

namespace {

using Clock = std::chrono::system_clock;

/// How long the clock goes on showing this second.
std::chrono::nanoseconds RestOfSecond() {
    const auto now = Clock::now().time_since_epoch();
    return std::chrono::ceil<std::chrono::seconds>(now) - now;
}

}  // namespace

void CTicker::Start() {
    m_thread = std::thread([this] { Run(); });
}

void CTicker::Stop() {
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_bStop = true;
    }
    m_stopped.notify_one();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void CTicker::Run() {
    std::time_t tmTold = Clock::to_time_t(Clock::now());
    std::unique_lock<std::mutex> guard(m_mutex);
    while (!m_stopped.wait_for(guard, RestOfSecond(), [this] { return m_bStop; })) {
        if (const std::time_t tmNow = Clock::to_time_t(Clock::now()); tmNow != tmTold) {
            tmTold = tmNow;
            m_queue.PushTick();
        }
    }
}
