#pragma once

#include <cstddef>

/// As long as it lives, this thread cannot lock the mutexes that lie in the object: the attempt
/// fails with EINVAL. One at a time per thread.
class CFailingLocks {
public:
    template <typename Object>
    explicit CFailingLocks(const Object& object) : CFailingLocks(&object, sizeof(object)) {}
    ~CFailingLocks();
    CFailingLocks(const CFailingLocks&) = delete;
    CFailingLocks& operator=(const CFailingLocks&) = delete;

private:
    CFailingLocks(const void* pObject, std::size_t size);
};
