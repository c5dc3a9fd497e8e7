#pragma once

#include <vector>

namespace [[gnu::visibility("hidden")]] framework_internal {

/// Keeps an object that nobody deletes reachable until the process ends, past every static
/// destructor: a leak checker sees an object that lives as long as the process, which it is.
template <typename T>
void KeepForProcessLife(T* pObject) {
    static auto* const pKept = new std::vector<T*>;
    pKept->push_back(pObject);
}

}  // namespace framework_internal
