#pragma once

#include <cstdint>
#include <span>

#include "dsp/EvenSpline.h"
#include "dsp/Transformation.h"

namespace zemo {

namespace dsp {

/// The shortest sound that has a spline, in samples.
inline constexpr std::int64_t kFewestKnots = 3;

/// [any] Where the old sample i and the new sample j lie, in seconds.
double knotTime(std::int64_t i, double rate);
double pointTime(std::int64_t j, double rate, float ratio);

/// [any] The length of a sound of `count` samples (at least 1) after resampling by `ratio`: one
/// less than the old, times the ratio in 32-bit floats, truncated; lowered where that rounding
/// would put the last new sample past the last old one at `rate` hertz. 0: there is no such length,
/// because the ratio is not a positive number or either length would be below 1 or above 2^31 - 1.
std::int32_t resampledLength(std::int64_t count, float ratio, double rate);

/// [any] The values of the spline through `input` (3 to 2^31 - 1 samples) at output.size() even
/// steps, 1 / ratio of the input's apart. Exactly 3 samples make the spline's system singular on an
/// even grid; the parabola through them is used. The first try takes `runUp`
/// rows of run-up, each further one four times as many. std::bad_alloc when there is no memory.
void resample(std::span<const float> input, std::span<float> output, float ratio, double rate,
              std::int64_t runUp = kSplineRunUp);

} // namespace dsp

/// [any] Why the sound cannot be resampled by `ratio`; of no sound nothing is asked.
Refusal resampleRefusal(float ratio);

/// [main] Changes the sound's number of samples by `ratio`, the rate as it is: above 1 it plays
/// longer and lower. Nothing, not even a refusal, when there is no sound.
Refusal resampleBuffer(float ratio, undo_struct* undo = nullptr);

} // namespace zemo
