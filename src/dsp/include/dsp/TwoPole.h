#pragma once

#include <array>
#include <cstdint>

namespace zemo::dsp {

/// The two-pole high-pass of Filters.h, one sample at a time, in 32-bit floats. All [any].
struct TwoPole {
    float twoBack = 0.0F; ///< feedback on y[n-2]
    float oneBack = 0.0F; ///< feedback on y[n-1]
    float gain = 1.0F;    ///< divides the input

    /// Shifts the sample and its result into the histories, oldest first, and returns the result.
    float step(float sample, std::array<float, 3>& inputs, std::array<float, 3>& outputs) const {
        inputs = {inputs[1], inputs[2], sample / gain};
        const float y = (inputs[0] + inputs[2]) - 2.0F * inputs[1] + twoBack * outputs[1] +
                        oneBack * outputs[2];
        outputs = {outputs[1], outputs[2], y};
        return y;
    }
};

/// The filter of that number: 1, or 0 for every other.
TwoPole twoPole(std::uint8_t selector);

/// The part of a history that a call begins with: the newest value, if it is finite.
std::array<float, 3> keptHistory(const std::array<float, 3>& history);

} // namespace zemo::dsp
