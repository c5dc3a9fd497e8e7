#include "framework_service_lock/failing_locks.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>
#include <cstdint>

namespace {

thread_local std::uintptr_t t_uiBegin = 0;
thread_local std::uintptr_t t_uiEnd = 0;

}  // namespace

CFailingLocks::CFailingLocks(const void* pObject, std::size_t size) {
    t_uiBegin = reinterpret_cast<std::uintptr_t>(pObject);
    t_uiEnd = t_uiBegin + size;
}

CFailingLocks::~CFailingLocks() {
    t_uiBegin = 0;
    t_uiEnd = 0;
}

/// Stands in front of the C library's, for the executable and its shared libraries.
extern "C" int pthread_mutex_lock(pthread_mutex_t* pMutex) noexcept {
    using LockFunc = int (*)(pthread_mutex_t*);
    static const auto pLock = reinterpret_cast<LockFunc>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    const auto uiMutex = reinterpret_cast<std::uintptr_t>(pMutex);
    return t_uiBegin <= uiMutex && uiMutex < t_uiEnd ? EINVAL : pLock(pMutex);
}
