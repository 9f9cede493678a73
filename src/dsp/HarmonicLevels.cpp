#include "dsp/HarmonicLevels.h"

#include "dsp/HarmonicProcessor.h"
#include "dsp/kernels/Harmonics.h"
#include "platform/Pieces.h"

namespace zemo::dsp {
namespace {

constexpr std::size_t kAtATime = 1U << 18U; ///< samples that a worker takes at a time

template <typename Measure> float peakBy(std::span<const float> samples, const Measure& measure) {
    std::atomic<float> peak = 0.0F;
    platform::forEachStretch(samples.size(), kAtATime, [&](std::size_t first, std::size_t count) {
        raise(peak, measure(samples.subspan(first, count)));
    });
    return peak;
}

} // namespace

void raise(std::atomic<float>& peak, float to) {
    float now = peak.load();
    while (to > now && !peak.compare_exchange_weak(now, to)) {
    }
}

float peakMagnitude(std::span<const float> samples) {
    return peakBy(samples, largestMagnitude);
}

float highestOfSound(std::span<const float> samples) {
    return peakBy(samples, highestSample);
}

void scaleSound(std::span<float> samples, float factor) {
    platform::forEachStretch(samples.size(), kAtATime, [&](std::size_t first, std::size_t count) {
        for (float& sample : samples.subspan(first, count)) {
            sample *= factor;
        }
    });
}

} // namespace zemo::dsp
