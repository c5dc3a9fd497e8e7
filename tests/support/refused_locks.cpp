#include "support/refused_locks.h"

#include <ace/OS_NS_Thread.h>
#include <pthread.h>

#include <cerrno>

namespace {

thread_local bool t_bRefused = false;

}

CRefusedLocks::CRefusedLocks() {
    t_bRefused = true;
}

CRefusedLocks::~CRefusedLocks() {
    t_bRefused = false;
}

/// Stands in front of ACE's own, for the executable and its shared libraries.
int ACE_OS::mutex_lock(ACE_mutex_t* pMutex) {
    const int iError = t_bRefused ? EAGAIN : pthread_mutex_lock(pMutex);
    if (iError != 0) {
        errno = iError;
        return -1;
    }
    return 0;
}
