#pragma once

#include <array>
#include <cstdint>

#include "dsp/Filters.h"
#include "dsp/HarmonicProcessor.h"
#include "dsp/TwoPole.h"

/// The way of one sample through the HD processor. All [any].
namespace zemo::dsp {

/// What a call of addHarmonics settles before its first sample.
struct HarmonicPath {
    bool filtered = false;   ///< the high-passed input is the driver
    TwoPole filter;          ///< that high-pass
    float knee = 0.0F;       ///< else the driver is compressed above this
    float comp = 0.0F;       ///< with this slope
    float divisor = 1.0F;    ///< and divided by this
    double slope = 0.0;      ///< pole of the DC blocker
    std::int64_t attack = 0; ///< samples of fade-in
    bool four = false;       ///< whether there is a fourth harmonic
    float dryShare = 0.0F;   ///< of the input
    float wetShare = 0.0F;   ///< of the harmonics
    float twoShare = 0.0F;   ///< of the second among them, 0 or 1
    float fourShare = 0.0F;  ///< of the fourth
};

HarmonicPath harmonicPath(const HdSettings& settings, float inPeak);

/// A DC blocker between two samples.
struct DcState {
    double prevIn = 0.0;
    double prevOut = 0.0;
};

/// All that one sample hands to the next.
struct HarmonicState {
    std::array<float, 3> inputs{};  ///< the high-pass's history, oldest first
    std::array<float, 3> outputs{}; ///< likewise
    DcState second;
    DcState fourth;
};

/// Equal bits, any NaN being equal to any other, in all that later samples hear.
bool sameState(const HarmonicState& left, const HarmonicState& right);

/// Whether both lead to the same results but for the sign of zeros: all is equal but what is left
/// in the fourth's blocker, which is next to nothing in both. h2 gives multiples of 2^-53: where
/// one differs from the one before, nothing of what is left stays in the sum, and where not it is
/// narrowed to 0. For slopes of at least 0 and below 1.
bool differInZerosOnly(const HarmonicState& left, const HarmonicState& right);

/// Whether there is so little in the fourth's blocker.
bool isFourthSpent(const HarmonicState& state);

/// The linear fade-in of the first samples.
inline double faded(double y, std::int64_t number, std::int64_t attack) {
    return number < attack ? y * static_cast<double>(number) / static_cast<double>(attack) : y;
}

/// The result at `number` for the input's sample there.
inline float harmonicSample(const HarmonicPath& path, float sample, std::int64_t number,
                            HarmonicState& state) {
    const float driver = path.filtered ? path.filter.step(sample, state.inputs, state.outputs)
                                       : compressed(sample, path.knee, path.comp) / path.divisor;
    const double bent = h2(static_cast<double>(driver));
    const double y = dcFilter(&state.second.prevIn, &state.second.prevOut, bent, path.slope);
    const double second = 0.5 * faded(y, number, path.attack);
    double fourth = 0.0;
    if (path.four) {
        const double z =
            dcFilter(&state.fourth.prevIn, &state.fourth.prevOut, h2(second), path.slope);
        fourth = faded(z, number, path.attack);
    }
    const float wet =
        static_cast<float>(second) * path.twoShare + static_cast<float>(fourth) * path.fourShare;
    return path.dryShare * sample + path.wetShare * wet;
}

/// Runs `state` over the samples [from, to) and writes them, if `output` is not null; both arrays
/// begin with the sound.
void runHarmonics(const HarmonicPath& path, const float* input, float* output, std::size_t from,
                  std::size_t to, HarmonicState& state);

} // namespace zemo::dsp
