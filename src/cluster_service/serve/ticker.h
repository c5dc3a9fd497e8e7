#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "serve/input_queue.h"

/// Pushes a tick when the clock shows another second. A second that nobody lived through, as while
/// the process was stopped, has none; one that the engine works through has: its tick waits.
class CTicker {
public:
    explicit CTicker(CInputQueue& queue) : m_queue(queue) {}
    ~CTicker() { Stop(); }
    CTicker(const CTicker&) = delete;
    CTicker& operator=(const CTicker&) = delete;

    void Start();

    /// Returns when the thread has ended.
    void Stop();

private:
    void Run();

    CInputQueue& m_queue;
    std::mutex m_mutex;
    std::condition_variable m_stopped;
    bool m_bStop = false;  ///< guarded by m_mutex
    std::thread m_thread;
};
