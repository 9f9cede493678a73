#include "playback/FrameRuns.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace zemo {
namespace {

static_assert(std::numeric_limits<float>::is_iec559);
constexpr std::int32_t kMagnitudeBits = 0x7FFFFFFF;
constexpr std::int32_t kInfinityBits = 0x7F800000; ///< what lies above is no number

/// Magnitudes have the order of their bits. As integers their maximum may be found in any order of
/// the frames, so the loop over this is a vector loop.
std::int32_t magnitudeBits(float frame) noexcept {
    const std::int32_t bits = std::bit_cast<std::int32_t>(frame) & kMagnitudeBits;
    return bits > kInfinityBits ? 0 : bits;
}

std::int32_t greatestMagnitudeBits(const float* frames, std::uint32_t count) noexcept {
    std::int32_t greatest = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        greatest = std::max(greatest, magnitudeBits(frames[i]));
    }
    return greatest;
}

} // namespace

void fadeInFrames(float* out, const float* in, std::uint32_t count,
                  std::uint32_t length) noexcept ZEMO_NONBLOCKING {
    const auto whole = static_cast<float>(length);
    for (std::uint32_t i = 0; i < count; ++i) {
        out[i] = in[i] * static_cast<float>(i) / whole;
    }
}

void fadeOutFrames(float* out, const float* in, std::uint32_t count,
                   std::uint32_t length) noexcept ZEMO_NONBLOCKING {
    const auto whole = static_cast<float>(length);
    for (std::uint32_t i = 0; i < count; ++i) {
        out[i] = in[i] * static_cast<float>(length - i) / whole;
    }
}

float peakOfFrames(const float* frames, std::uint32_t count) noexcept ZEMO_NONBLOCKING {
    const std::int32_t greatest = greatestMagnitudeBits(frames, count);
    for (std::uint32_t i = count; i > 0; --i) {
        // Compared as it is: a NaN must not pass for the 0 that it counted as.
        if ((std::bit_cast<std::int32_t>(frames[i - 1]) & kMagnitudeBits) == greatest) {
            return frames[i - 1];
        }
    }
    return 0.0F;
}

float sumOfSquaredFrames(const float* frames, std::uint32_t count) noexcept ZEMO_NONBLOCKING {
    float sum = 0.0F;
    for (std::uint32_t i = 0; i < count; ++i) {
        sum += frames[i] * frames[i];
    }
    return sum;
}

} // namespace zemo
