#pragma once

#include <chrono>
#include <thread>

/// However slow the machine is, by then it has happened.
inline constexpr std::chrono::minutes NUMERIC_AMPLE{5};

/// Looks again and again until it is so.
template <typename Predicate>
bool ComesTrue(const Predicate& isSo) {
    const auto until = std::chrono::steady_clock::now() + NUMERIC_AMPLE;
    while (!isSo()) {
        if (std::chrono::steady_clock::now() > until) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
