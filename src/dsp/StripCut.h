#pragma once

#include "dsp/HarmonicStrips.h"
#include "dsp/kernels/Harmonics.h"

namespace zemo::dsp {

/// Samples before a run-up that its guess reads.
inline constexpr std::size_t kGuessed = 2;

/// Strips of `stride` samples in groups of kStripsAbreast, from `first` on without a gap.
struct StripCut {
    std::size_t first = 0;
    std::size_t groups = 0;
    std::size_t stride = 0;

    std::size_t strips() const { return groups * kStripsAbreast; }
    std::size_t start(std::size_t strip) const { return first + strip * stride; }
    std::size_t end() const { return start(strips()); }
};

/// The strips begin behind the attack, far enough from the start for the first one's run-up, and
/// leave at the end the samples that fill the high-pass's histories. [main], [worker]
StripCut cutSound(std::size_t length, std::int32_t attack, const StripPlan& plan);

} // namespace zemo::dsp
