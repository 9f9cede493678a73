#pragma once

#include <cstdint>

#include "platform/RealTime.h"

/// The render callback's arithmetic on a run of frames. Every function gives the same bits as the
/// plain loop over single frames; none allocates, locks, blocks or does input or output.
///
/// `count` is the run's length; `length` is that of the call, over which a fade goes. The two
/// differ in the call in which the sound ends.
namespace zemo {

/// [any][rt] out[i] = in[i] * i / length, multiplied first.
void fadeInFrames(float* out, const float* in, std::uint32_t count,
                  std::uint32_t length) noexcept ZEMO_NONBLOCKING;

/// [any][rt] out[i] = in[i] * (length - i) / length, multiplied first.
void fadeOutFrames(float* out, const float* in, std::uint32_t count,
                   std::uint32_t length) noexcept ZEMO_NONBLOCKING;

/// [any][rt] The frame of the greatest magnitude with its sign, of equal ones the last. A NaN is
/// never the peak; without any number in the run it is 0.
float peakOfFrames(const float* frames, std::uint32_t count) noexcept ZEMO_NONBLOCKING;

/// [any][rt] Added up in float, from the first frame to the last.
float sumOfSquaredFrames(const float* frames, std::uint32_t count) noexcept ZEMO_NONBLOCKING;

} // namespace zemo
