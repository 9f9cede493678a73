#pragma once

#include <vector>

/// The sounds that come with the program, of our own synthesis. Mono, peak below 1.
namespace zemo::examples {

inline constexpr double kBellRate = 44100.0; ///< hertz
inline constexpr double kHarpRate = 48000.0;

/// A bell: inharmonic partials, each with its own decay (J.-C. Risset's additive bell, 1969).
std::vector<float> bell();

/// An arpeggio on plucked strings (K. Karplus and A. Strong, 1983).
std::vector<float> harp();

} // namespace zemo::examples
