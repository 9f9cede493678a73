#pragma once

#include <cstddef>

#include "dsp/HarmonicProcessor.h"

/// How addHarmonics spreads a sound, whose samples hang on all before them, over vectors and
/// workers: it is cut into strips, and each begins a run-up early from a guess. Where the state
/// that the guess has led to at the strip's start is to the bit the one that the strip before it
/// left, the strip is right; elsewhere it is done once more, until the two meet.
namespace zemo::dsp {

/// In samples, all multiples of 16.
struct StripPlan {
    std::size_t runUp = 0;
    std::size_t filterRunUp = 0; ///< the part of it before the DC blockers begin, in silence
    std::size_t shortest = 16;   ///< where strips would be shorter the sound is done in one
    std::size_t longest = 0;     ///< for one vector's lanes; at least `shortest`
};

/// What came of the guesses.
struct StripReport {
    std::size_t strips = 0;  ///< 0: done in one
    std::size_t failed = 0;  ///< strips that began from another state than was left to them
    std::size_t unheard = 0; ///< strips that this made no difference to
    std::size_t redone = 0;  ///< samples run once more, one after the other
    std::size_t copied = 0;  ///< samples of these that repeated earlier ones
};

/// The plan for such a run; run-up 0 where its DC blocker forgets too slowly or not at all for
/// strips to pay.
StripPlan planStrips(const HdSettings& settings);

/// [main], [worker] addHarmonics by that plan.
StripReport addHarmonicsInStrips(std::span<const float> input, std::span<float> output,
                                 const HdSettings& settings, std::array<float, 3>& inputs,
                                 std::array<float, 3>& outputs, const StripPlan& plan);

} // namespace zemo::dsp
