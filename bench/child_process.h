#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>

/// A process beside this one that runs the function and ends with it, or is killed with this
/// object. What it writes to its standard output can be read.
class CChildProcess {
public:
    /// Made while this process has one thread, unless the function executes a program at once.
    explicit CChildProcess(const std::function<void()>& run);
    ~CChildProcess();
    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;

    /// Reads until it says "listening on http://HOST:PORT". Throws when it ends before.
    uint16_t AwaitPort();

    /// Waits until it ends. Throws when it did not end well.
    void AwaitEnd();

private:
    pid_t m_iPid = -1;
    int m_iOutput = -1;
};
