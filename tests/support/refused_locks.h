#pragma once

/// While it lives, every registry lock that its thread asks for is refused.
class CRefusedLocks {
public:
    CRefusedLocks();
    ~CRefusedLocks();
    CRefusedLocks(const CRefusedLocks&) = delete;
    CRefusedLocks& operator=(const CRefusedLocks&) = delete;
};
