#pragma once

#include "serve/wakeups.h"

/// Sees to it that a service that has to end does, whatever hangs: while it lives, SIGTERM and
/// SIGINT wake the main thread to stop, and the process is gone in time; a second one ends it at
/// once. A process has one at a time.
class CEndInTime {
public:
    /// The wakeups outlive it.
    explicit CEndInTime(const CWakeups& wakeups);

    /// The service has ended: the signals end the process by themselves again.
    ~CEndInTime();

    CEndInTime(const CEndInTime&) = delete;
    CEndInTime& operator=(const CEndInTime&) = delete;

    /// The service ends. When no signal has asked for it, its time begins now.
    void Begin();

    /// What waited is done: whatever hangs from now on, this is the exit code of the process.
    void WorkedOff(int iExitCode);

    /// From now on the signals end the process by themselves. False when one has asked before.
    bool LeaveSignals();
};
