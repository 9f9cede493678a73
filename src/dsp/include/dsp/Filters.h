#pragma once

#include <array>
#include <cstdint>

namespace zemo {

/// The history of two_pole_iir, input and output, oldest first. Zero at start. [main]
extern std::array<float, 3> xv;
extern std::array<float, 3> yv;

namespace dsp {

/// [any] A Butterworth high-pass of two poles (bilinear transform; gain 0 at DC, 1 at half the
/// rate): selector 1 has its corner at 0.0226757 of the sample rate (1000 Hz at 44100 Hz), every
/// other at 0.0113379 (500 Hz). The corners do not follow the rate. In 32-bit floats; `out` may be
/// `in`.
///
/// The oldest two values of the history are cleared at entry and the newest ones are not: the first
/// outputs of a call still hear the end of the call before. That is intended. Only a newest value
/// that is not finite is cleared, so that one bad sound does not silence all later ones.
void twoPoleHighPass(const float* in, float* out, std::int64_t n, std::uint8_t selector,
                     std::array<float, 3>& inputs, std::array<float, 3>& outputs);

} // namespace dsp

/// [main] The same over the program's one history.
void two_pole_iir(const float* in, float* out, std::int64_t n, std::uint8_t selector);

/// [any] One step of a DC blocker, y = x - prevIn + r prevOut (J. O. Smith, Introduction to Digital
/// Filters, "DC Blocker"): the pole is at r. The caller keeps the state.
inline double dcFilter(double* prevIn, double* prevOut, double x, double r) {
    const double y = x - *prevIn + r * *prevOut;
    *prevIn = x;
    *prevOut = y;
    return y;
}

/// A low-pass of 513 taps, linear in phase: 1 at DC, 0.98 at 0.005 of the sample rate, 0.5 at 0.01,
/// below 2e-5 from 0.02 on. The taps sum to 49.9985.
extern const std::array<float, 513> firxcoeffs;

/// The delay line of firhp, newest last. Zero at start, never cleared. [main]
extern std::array<float, 513> firxv;

/// [main] One step of that filter. Nothing calls it.
float firhp(float x);

} // namespace zemo
