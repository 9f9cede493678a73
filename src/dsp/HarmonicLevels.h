#pragma once

#include <atomic>
#include <span>

/// Peaks and scaling of a whole sound, on all workers. All [main], [worker].
namespace zemo::dsp {

/// Sets the peak to that level if it is below.
void raise(std::atomic<float>& peak, float to);

/// The highest sample, or 0 if none is above; a NaN never counts.
float highestOfSound(std::span<const float> samples);

void scaleSound(std::span<float> samples, float factor);

} // namespace zemo::dsp
