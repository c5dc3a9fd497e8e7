#pragma once

#include <cstdint>
#include <vector>

#include "framework_service/base_data.h"

namespace [[gnu::visibility("hidden")]] framework_internal {

inline constexpr int32_t NUMERIC_SAMPLES = 3;

/// Takes a sample into a buffer of at most NUMERIC_SAMPLES: appended while there is room, then
/// written over the one at iSlot. Returns the average of what the buffer then holds.
CSystemResource TakeSample(std::vector<CSystemResource>& samples, int32_t iSlot,
                           const CSystemResource& sample);

}  // namespace framework_internal
