#pragma once

#include <ace/Guard_T.h>

#include "common_service/thread_mutex.h"

namespace [[gnu::visibility("hidden")]] framework_internal {

using MutexGuard = ACE_Guard<HALD_Recursive_Thread_Mutex>;

enum class ELookup { FOUND, UNKNOWN, NOT_LOCKED };

/// Runs the operation on the table's entry of that key, with the mutex held.
template <typename Table, typename Operation>
ELookup WithEntry(HALD_Recursive_Thread_Mutex& mutex, Table& table,
                  const typename Table::key_type& key, const Operation& operation) {
    const MutexGuard guard(mutex);
    if (!guard.locked()) {
        return ELookup::NOT_LOCKED;
    }
    const auto it = table.find(key);
    if (it == table.end()) {
        return ELookup::UNKNOWN;
    }
    operation(it->second);
    return ELookup::FOUND;
}

}  // namespace framework_internal
