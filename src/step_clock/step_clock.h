#pragma once

#include <cstdint>

#include "cluster_engine/host.h"

/// An executable that links this has a clock of its own: time() tells the second that was last set
/// on the calling thread, to the executable, its libraries and its plug-ins; and the real time on a
/// thread on which none was set.
class CStepClock : public IStepClock {
public:
    /// Freezes the clock of the calling thread.
    void Set(int64_t iSecond) override;

    /// Gives the calling thread the real time back.
    static void Release();
};
