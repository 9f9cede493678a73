#include "dsp/PhaseModulation.h"

#include <algorithm>
#include <cmath>

#include "dsp/SineTerms.h"
#include "platform/Format.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace dsp {
namespace {

/// The sum of a block's squares; from the input's last sample on it is set to 0, so that the
/// envelope closes.
float blockSum(std::span<const float> input, std::int64_t start, std::int64_t blockLength) {
    const auto count = static_cast<std::int64_t>(input.size());
    if (start + blockLength > count - 1) {
        return 0.0F;
    }
    float sum = 0.0F;
    for (std::int64_t j = start; j < start + blockLength; ++j) {
        const float x = input[static_cast<std::size_t>(j)];
        sum += x * x;
    }
    return sum;
}

void normalizeEnvelope(std::vector<EnvelopePoint>& envelope) {
    float loudest = 0.0F;
    for (const EnvelopePoint& point : envelope) {
        loudest = point.val > loudest ? point.val : loudest;
    }
    for (EnvelopePoint& point : envelope) {
        point.val =
            static_cast<float>(static_cast<double>(point.val) * 0.5 / static_cast<double>(loudest));
    }
}

/// One sample of the carrier. Two roundings in the phase, as the sum is written.
float modulated(std::size_t i, float x, float step, float index) {
    const float phase = static_cast<float>(i) * step + index * x;
    return sineOf(wrappedOnce(phase));
}

/// The stretch from one point to the next, the level in between by linear interpolation.
void modulateStretch(std::span<const float> input, std::span<float> output,
                     const EnvelopePoint& from, const EnvelopePoint& to, float step, float index) {
    for (std::int64_t j = from.count; j < to.count; ++j) {
        const auto i = static_cast<std::size_t>(j);
        const float level = from.val + static_cast<float>(j - from.count) * (to.val - from.val) /
                                           static_cast<float>(to.count - from.count);
        output[i] = modulated(i, input[i], step, index) * level;
    }
}

} // namespace

std::int64_t envelopeBlockLength(float lpf, double rate) {
    // Below the bounds of lpf the quotient can be more than an integer holds; no sound is as long.
    constexpr double kLongest = 4611686018427387904.0;
    return static_cast<std::int64_t>(std::min(rate / static_cast<double>(lpf), kLongest));
}

std::vector<EnvelopePoint> blockEnvelope(std::span<const float> input, std::int64_t blockLength) {
    const auto count = static_cast<std::int64_t>(input.size());
    std::vector<EnvelopePoint> envelope(static_cast<std::size_t>(count / blockLength + 1));
    std::size_t k = 0;
    for (std::int64_t start = 0; start < count; start += blockLength, ++k) {
        const float sum = blockSum(input, start, blockLength);
        envelope[k] = {.count = start,
                       .val = std::sqrt(sum) / static_cast<float>(blockLength),
                       .length = blockLength + 1};
    }
    normalizeEnvelope(envelope);
    return envelope;
}

void phaseModulate(std::span<const float> input, std::span<float> output,
                   std::span<const EnvelopePoint> envelope, float frequency, float index,
                   double rate) {
    const float step = phaseStep(frequency, rate);
    std::int64_t done = 0;
    for (std::size_t k = 0; k + 1 < envelope.size(); ++k) {
        // A point that was left at zero is no successor.
        modulateStretch(input, output, envelope[k], envelope[k + 1], step, index);
        done = std::max(done, envelope[k + 1].count);
    }
    // From the last point on the envelope is 0.
    for (auto i = static_cast<std::size_t>(done); i < input.size(); ++i) {
        output[i] = modulated(i, input[i], step, index) * 0.0F;
    }
}

} // namespace dsp

namespace {

void traceEnvelope(const std::vector<EnvelopePoint>& envelope) {
    for (std::size_t i = 0; i < envelope.size(); ++i) {
        platform::services().trace->print(platform::format(
            "envBuf[%ld].count = %ld\tenvBuf[%ld].val = %f\n", static_cast<long>(i),
            envelope[i].count, static_cast<long>(i), static_cast<double>(envelope[i].val)));
    }
}

} // namespace

float clampedEnvelopeRate(float lpf) {
    if (!(lpf >= dsp::kSlowestEnvelope)) {
        return dsp::kSlowestEnvelope; // NaN as well
    }
    return std::min(lpf, dsp::kFastestEnvelope);
}

Refusal pmRefusal(float lpf) {
    if (lpf > 0.0F && R >= static_cast<double>(lpf)) {
        return std::nullopt;
    }
    return platform::Error{platform::ErrorCategory::NotSupported, std::nullopt,
                           "The output's rate is below the rate of the envelope."};
}

Refusal pmBuffer(float cf, float index, float lpf) {
    if (Refusal refusal = pmRefusal(lpf)) {
        return refusal;
    }
    const auto sound = soundSamples();
    return replaceSound(fBuffersize.load(), kSlackSamples, [&](std::span<float> result) {
        const auto envelope = dsp::blockEnvelope(sound, dsp::envelopeBlockLength(lpf, R));
        if (dbp) {
            traceEnvelope(envelope);
        }
        dsp::phaseModulate(sound, result, envelope, cf, index, R);
    });
}

} // namespace zemo
