#include "files/Normalize.h"

#include <cmath>

namespace zemo {

float signedPeak(const float* samples, std::int64_t count) noexcept {
    float peak = 0.0F;
    for (std::int64_t i = 0; i < count; ++i) {
        // Against the record with its sign, not against its magnitude.
        if (std::fabs(samples[i]) > peak) {
            peak = samples[i];
        }
    }
    return peak;
}

void normalize(float* samples, std::int64_t count, float* peak, bool force) {
    const float record = signedPeak(samples, count);
    *peak = record;
    if (!force && static_cast<double>(record) < 1.0) {
        return;
    }
    const auto divisor = static_cast<float>(static_cast<double>(record) * 1.1);
    for (std::int64_t i = 0; i < count; ++i) {
        samples[i] = samples[i] / divisor;
    }
}

} // namespace zemo
