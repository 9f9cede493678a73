#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "dsp/Transformation.h"

namespace zemo {

/// [any] The Chebyshev polynomial T2.
constexpr double h2(double x) noexcept {
    return 2.0 * x * x - 1.0;
}
/// [any] As T4, but with 8x where that has 8x^2. Intended; hd does not use it.
constexpr double h4(double x) noexcept {
    return 8.0 * x * x * x * x - 8.0 * x + 1.0;
}
/// [any] The Chebyshev polynomial T6. hd does not use it.
constexpr double h6(double x) noexcept {
    return 32.0 * x * x * x * x * x * x - 48.0 * x * x * x * x + 18.0 * x * x - 1.0;
}

/// [any] Decibels of an amplitude; -140 for 0 and below.
double amp2db(double x);
/// [any] Amplitude of a level in decibels, that of -140 dB for all below.
double db2amp(double d);

/// What the HD processor does, in the order of hd's arguments.
struct HdSettings {
    bool two = false;          ///< mix in the second harmonic
    bool four = false;         ///< mix in the fourth
    bool six = false;          ///< only named in the trace: there is no sixth-harmonic stage
    std::int32_t attack = 0;   ///< samples of linear fade-in of the harmonics
    bool scale = false;        ///< bring the result to the input's peak
    std::int32_t hpSelect = 0; ///< 0: none; 1, 2: the high-pass of that number drives the harmonics
    double slope = 0.0;        ///< pole of the DC blocker
    float mix = 0.0F;          ///< share of the processed signal
    float knee = 0.0F;         ///< linear amplitude above which the driver is compressed
    float comp = 0.0F;         ///< slope above the knee; 1: no compression
};

namespace dsp {

/// [any] The largest magnitude; a NaN never counts.
float peakMagnitude(std::span<const float> samples);

/// [any] One sample of the driver before it is normalized: above the knee the curve goes on with
/// slope `comp`. For negative samples it goes on the other way, s = -knee - comp (s + knee), which
/// folds them back towards zero: this asymmetry is part of the sound.
float compressed(float sample, float knee, float comp);

/// [any] Even harmonics by waveshaping (D. Arfib, 1979; M. Le Brun, 1979): a driver made from the
/// input goes through h2 once for the second harmonic and twice for the fourth. `inputs` and
/// `outputs` are the high-pass's history. `output` has the input's length and is not the input.
/// Runs on all workers; beside the arrays it needs some kilobytes for each 10 million
/// samples; std::bad_alloc when they are not to be had, with the histories as they were.
void addHarmonics(std::span<const float> input, std::span<float> output, const HdSettings& settings,
                  std::array<float, 3>& inputs, std::array<float, 3>& outputs);

} // namespace dsp

/// [main] The HD processor on the sound. Where the numbers say so the result has infinite samples
/// or NaN: a silent sound with knee 0 or compression 1, or, with `scale`, a result without a
/// positive sample. docs/DSP.md has them all.
Refusal hd(bool two, bool four, bool six, std::int32_t attack, bool scale, std::int32_t hpSelect,
           double slope, float mix, float knee, float comp, undo_struct* undo = nullptr);

} // namespace zemo
