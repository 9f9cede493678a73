#pragma once

#include <span>

#include "dsp/Transformation.h"

namespace zemo {

namespace dsp {

/// [any] Amplitude modulation of `input` by a sine of `frequency` hertz at `rate` hertz, mixed with
/// the dry signal: output = (1 - index) x + index x sin(phase). The phase is the product of the
/// sample's index and the step, in 32-bit floats, and set back once by 2 pi; so it grows coarser
/// as the sound goes on. `output` has the input's length and may be the input.
void amplitudeModulate(std::span<const float> input, std::span<float> output, float frequency,
                       float index, double rate);

} // namespace dsp

/// [main] Amplitude modulation of the sound by a carrier of `cf` hertz. The index is not limited: 0
/// leaves the sound as it is, 1 is pure ring modulation, above 1 the dry part is inverted.
Refusal amBuffer(float cf, float index, undo_struct* undo = nullptr);

} // namespace zemo
