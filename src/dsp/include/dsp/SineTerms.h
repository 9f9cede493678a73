#pragma once

#include <cmath>

/// The arithmetic that the transformations share. All [any].
namespace zemo::dsp {

inline constexpr double kTwoPi = 6.283185307179586;

/// The sine of a 32-bit phase in radians, any finite value: right to half a unit in the last place
/// plus 2^-20 of one. Evaluated in double and rounded once, so that it is the same with any C
/// library. NaN for infinities and NaN.
inline float sineOf(float phase) {
    return static_cast<float>(std::sin(static_cast<double>(phase)));
}

/// A phase that has passed 2 pi is set back once, in double; further turns stay in it.
inline float wrappedOnce(float phase) {
    const auto wide = static_cast<double>(phase);
    return wide > kTwoPi ? static_cast<float>(wide - kTwoPi) : phase;
}

/// The phase step of a carrier of `frequency` hertz at `rate` hertz, in radians a sample.
inline float phaseStep(float frequency, double rate) {
    return static_cast<float>(static_cast<double>(frequency) * kTwoPi / rate);
}

} // namespace zemo::dsp
