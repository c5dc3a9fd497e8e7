#pragma once

#include <ace/Guard_T.h>

#include "common_service/thread_mutex.h"
#include "framework_service/detail/snapshot_table.h"

namespace [[gnu::visibility("hidden")]] framework_internal {

using MutexGuard = ACE_Guard<HALD_Recursive_Thread_Mutex>;

enum class ELookup { FOUND, UNKNOWN, NOT_LOCKED };

/// Runs the operation on what find() answers, with the mutex held.
template <typename Finder, typename Operation>
ELookup WithFound(HALD_Recursive_Thread_Mutex& mutex, const Finder& find,
                  const Operation& operation) {
    const MutexGuard guard(mutex);
    if (!guard.locked()) {
        return ELookup::NOT_LOCKED;
    }
    auto* const pFound = find();
    if (pFound == nullptr) {
        return ELookup::UNKNOWN;
    }
    operation(*pFound);
    return ELookup::FOUND;
}

/// Reads the table's entry of that key, with the mutex held.
template <typename Key, typename Value, typename Operation>
ELookup ReadEntry(HALD_Recursive_Thread_Mutex& mutex, const CSnapshotTable<Key, Value>& table,
                  const Key& key, const Operation& operation) {
    return WithFound(
        mutex, [&] { return table.Find(key); }, operation);
}

/// Changes the table's entry of that key, with the mutex held.
template <typename Key, typename Value, typename Operation>
ELookup ChangeEntry(HALD_Recursive_Thread_Mutex& mutex, CSnapshotTable<Key, Value>& table,
                    const Key& key, const Operation& operation) {
    return WithFound(
        mutex, [&] { return table.Edit(key); }, operation);
}

}  // namespace framework_internal
