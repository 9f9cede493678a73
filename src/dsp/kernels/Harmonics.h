#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "dsp/HarmonicChain.h"

/// The HD processor on many strips of a sound side by side, in the vectors of the processor at
/// hand. Each sample is the same bits as harmonicSample's from the same state. All [any].
namespace zemo::dsp {

/// Strips that run side by side: enough to fill the widest vectors twice.
inline constexpr std::size_t kStripsAbreast = 16;

/// The states of such strips, member by member.
struct StripStates {
    template <typename Number> using Row = std::array<Number, kStripsAbreast>;

    alignas(64) Row<float> olderIn;
    alignas(64) Row<float> newerIn;
    alignas(64) Row<float> olderOut;
    alignas(64) Row<float> newerOut;
    alignas(64) Row<double> secondIn;
    alignas(64) Row<double> secondOut;
    alignas(64) Row<double> fourthIn;
    alignas(64) Row<double> fourthOut;

    void set(std::size_t strip, const HarmonicState& state);
    /// The oldest values of the histories, which are not kept, are 0.
    HarmonicState get(std::size_t strip) const;
};

/// Runs strip s over `count` samples from input[s * stride] on, and writes them from
/// output[s * stride] on, if `output` is not null. All samples lie behind the attack. Returns the
/// highest one, or 0 if none is above.
float runStrips(const HarmonicPath& path, const float* input, float* output, std::size_t stride,
                std::size_t count, StripStates& states);

/// The largest magnitude; a NaN never counts.
float largestMagnitude(std::span<const float> samples);

/// The highest sample, or 0 if none is above; a NaN never counts.
float highestSample(std::span<const float> samples);

} // namespace zemo::dsp
