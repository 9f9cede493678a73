#pragma once

#include <cstddef>

/// Sine carriers in the vectors of the processor at hand. Each sample is the same bits as in the
/// plain form: a sine that might be rounded the other way is taken from the C library instead.
namespace zemo::dsp {

/// Samples that one worker takes at a time.
inline constexpr std::size_t kCarrierStretch = std::size_t{1} << 16;

/// A carrier whose phase is, in 32-bit floats, i * step + index * x[i], set back once by 2 pi.
struct Carrier {
    float step = 0.0F;  ///< radians a sample
    float index = 0.0F; ///< radians a unit of the sound
};

/// The level of the samples from `first` on, in 32-bit floats: from + k * rise / length, k counted
/// from `first`.
struct LevelLine {
    float from = 0.0F;
    float rise = 0.0F;
    float length = 1.0F;
};

/// [any] output[k] = (1 - index) x + index x sine, for `count` samples, the sound's `first` one
/// and on. `output` may be `input`. The carrier's own index is not read.
void amplitudeModulateStretch(const float* input, float* output, std::size_t first,
                              std::size_t count, float step, float index);

/// [any] output[k] = sine of the carrier's phase times the level. `output` may be `input`. The
/// stretch is `skip` samples into its level line.
void phaseModulateStretch(const float* input, float* output, std::size_t first, std::size_t count,
                          const Carrier& carrier, const LevelLine& level, std::size_t skip);

} // namespace zemo::dsp
