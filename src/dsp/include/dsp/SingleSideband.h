#pragma once

#include <span>

#include "dsp/Transformation.h"

namespace zemo {

namespace dsp {

enum class Sideband { Lower = 0, Upper = 1 };

/// [any] Single-sideband modulation by the phasing method (R. Hartley, 1928): the input, delayed by
/// 256 samples, times the carrier's cosine, minus (upper) or plus (lower) its Hilbert transform
/// times the carrier's sine. Scaled down to a peak of 1 where it exceeds that, then mixed: output =
/// (1 - m) x + m wet, m = index, at most 1. The dry part is not delayed. `delayLine` is the Hilbert
/// transformer's and is left as the run leaves it. `output` has the input's length and is not the
/// input. Needs half a MiB a worker beside them; std::bad_alloc when it is not to be had, with
/// nothing changed.
void singleSideband(std::span<const float> input, std::span<float> output, Sideband sideband,
                    float frequency, float index, double rate, std::span<double, 513> delayLine);

} // namespace dsp

/// [main] Single-sideband modulation of the sound by a carrier of `cf` hertz, into the upper or the
/// lower sideband.
Refusal ssbmBuffer(bool upper, float cf, float index, undo_struct* undo = nullptr);

} // namespace zemo
