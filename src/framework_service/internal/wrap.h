#pragma once

#include <cstdint>

/// Signed 32-bit arithmetic that wraps around instead of being undefined.
namespace [[gnu::visibility("hidden")]] framework_internal {

constexpr int32_t WrapAdd(int32_t iLeft, int32_t iRight) {
    return static_cast<int32_t>(static_cast<uint32_t>(iLeft) + static_cast<uint32_t>(iRight));
}

constexpr int32_t WrapSub(int32_t iLeft, int32_t iRight) {
    return static_cast<int32_t>(static_cast<uint32_t>(iLeft) - static_cast<uint32_t>(iRight));
}

}  // namespace framework_internal
