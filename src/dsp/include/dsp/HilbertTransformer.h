#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace zemo {

/// The delay line of the Hilbert transformer, oldest sample first; 513 used. Zero at start and
/// never cleared: what it holds goes over from one single-sideband run to the next. [main]
extern std::array<double, 514> hilbert_xv;

/// Coefficients of the transformer: an ideal Hilbert response scaled by pi/2 under a Hamming window
/// (A. Oppenheim and R. Schafer, Discrete-Time Signal Processing, ch. 12), the tap at odd offset k
/// before the centre 256 being (1/k)(0.54 + 0.46 cos(pi k / 256)), the one after it its negative,
/// to ten decimals; even offsets are 0. The first 513 are used.
extern const std::array<double, 514> hilbert_xcoeffs;  ///< 44.1 kHz
extern const std::array<float, 516> hilbert_xcoeffs48; ///< the same as floats
extern const std::array<float, 516> hilbert_xcoeffs88;
extern const std::array<float, 516> hilbert_xcoeffs96;

/// Divides every sample on entry, so that the transformer's gain is 1.
inline constexpr double HILBERT_GAIN = 1.570483967;

/// [main] One step: takes a sample in, gives the Hilbert transform of the one 256 samples before
/// it. The rate R chooses the table: 44100, 48000 and 88200 have one, 88200 sums two (and so comes
/// out doubled), and for every other rate, 96000 too, the result is 0.
double hilbertTransform(double x);

namespace dsp {

/// What the transformer sums at a rate: the taps, all of them as doubles, `passes` times over the
/// same window into one sum. No pass: the result is 0.
struct HilbertTable {
    std::array<double, 513> taps{};
    int passes = 0;
};

/// [any] The tables of that rate, as hilbertTransform says.
const HilbertTable& hilbertTableAt(double rate);

} // namespace dsp
} // namespace zemo
