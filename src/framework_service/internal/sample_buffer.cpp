#include "internal/sample_buffer.h"

namespace framework_internal {

CSystemResource TakeSample(std::vector<CSystemResource>& samples, int32_t iSlot,
                           const CSystemResource& sample) {
    if (samples.size() >= static_cast<std::size_t>(NUMERIC_SAMPLES)) {
        samples[static_cast<std::size_t>(iSlot)] = sample;
    } else {
        samples.push_back(sample);
    }
    CSystemResource average;
    average.GetAvgSystemResource(samples, average);
    return average;
}

}  // namespace framework_internal
