#include "files/Normalize.h"

#include <algorithm>
#include <cmath>

namespace zemo {
namespace {

constexpr std::int64_t kStretch = 64; ///< samples

/// Whether a stretch has no new record. Without an early end, so that it compiles to vectors.
bool allBelow(const float* samples, float record) noexcept {
    int found = 0;
    for (std::int64_t i = 0; i < kStretch; ++i) {
        found |= std::fabs(samples[i]) > record ? 1 : 0;
    }
    return found == 0;
}

} // namespace

float signedPeak(const float* samples, std::int64_t count) noexcept {
    float peak = 0.0F;
    std::int64_t i = 0;
    while (i < count) {
        if (count - i >= kStretch && allBelow(samples + i, peak)) {
            i += kStretch;
            continue;
        }
        for (const std::int64_t end = std::min(i + kStretch, count); i < end; ++i) {
            // Against the record with its sign, not against its magnitude.
            if (std::fabs(samples[i]) > peak) {
                peak = samples[i];
            }
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
