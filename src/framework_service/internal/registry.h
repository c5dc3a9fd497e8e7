#pragma once

#include <ace/Guard_T.h>

#include "common_service/thread_mutex.h"
#include "framework_service/detail/snapshot_table.h"

namespace [[gnu::visibility("hidden")]] framework_internal {

using MutexGuard = ACE_Guard<HALD_Recursive_Thread_Mutex>;

/// Reports nothing.
struct CSilence {
    void operator()() const {}
};

/// Runs the operation on what find() answers, or reportUnknown when that is null, with the mutex
/// held. Without the mutex neither runs. Returns whether the operation ran.
template <typename Finder, typename Operation, typename Report>
bool WithFound(HALD_Recursive_Thread_Mutex& mutex, const Finder& find, const Operation& operation,
               const Report& reportUnknown) {
    const MutexGuard guard(mutex);
    if (!guard.locked()) {
        return false;
    }
    auto* const pFound = find();
    if (pFound == nullptr) {
        reportUnknown();
        return false;
    }
    operation(*pFound);
    return true;
}

/// Reads the table's entry of that key, with the mutex held. What calls the host, which may come
/// back and change the table, does so last and with copies: the entry may be gone then.
template <typename Key, typename Value, typename Operation, typename Report = CSilence>
bool ReadEntry(HALD_Recursive_Thread_Mutex& mutex, const CSnapshotTable<Key, Value>& table,
               const Key& key, const Operation& operation, const Report& reportUnknown = {}) {
    return WithFound(
        mutex, [&] { return table.Find(key); }, operation, reportUnknown);
}

/// Changes the table's entry of that key, in the same way.
template <typename Key, typename Value, typename Operation, typename Report = CSilence>
bool ChangeEntry(HALD_Recursive_Thread_Mutex& mutex, CSnapshotTable<Key, Value>& table,
                 const Key& key, const Operation& operation, const Report& reportUnknown = {}) {
    return WithFound(
        mutex, [&] { return table.Edit(key); }, operation, reportUnknown);
}

}  // namespace framework_internal
