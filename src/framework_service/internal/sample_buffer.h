#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework_service/base_data.h"

namespace [[gnu::visibility("hidden")]] framework_internal {

inline constexpr int32_t NUMERIC_SAMPLES = 3;

/// The slot behind that one, in a ring that turns with every sample.
inline int32_t NextSlot(int32_t iSlot) {
    return (iSlot + 1) % NUMERIC_SAMPLES;
}

/// The newest sample's place in such a ring, from the first sample on.
inline std::size_t NewestSlot(int32_t iNextSlot) {
    return static_cast<std::size_t>((iNextSlot + NUMERIC_SAMPLES - 1) % NUMERIC_SAMPLES);
}

/// Takes a sample into a buffer of at most NUMERIC_SAMPLES: appended while there is room, then
/// written over the one at iSlot. Returns the average of what the buffer then holds.
CSystemResource TakeSample(std::vector<CSystemResource>& samples, int32_t iSlot,
                           const CSystemResource& sample);

}  // namespace framework_internal
