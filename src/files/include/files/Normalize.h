#pragma once

#include <cstdint>

namespace zemo {

/// [any] The running record of `count` samples, sign kept: a sample replaces it when its magnitude
/// is greater than the record itself. So any sample replaces a negative record, and the result is
/// in general not the largest magnitude. NaN never counts.
float signedPeak(const float* samples, std::int64_t count) noexcept;

/// [main] Stores the signed peak through `peak`; when it is 1 or more, or `force` is set, divides
/// every sample by 1.1 times the peak.
void normalize(float* samples, std::int64_t count, float* peak, bool force);

} // namespace zemo
