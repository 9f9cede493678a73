#include "dsp/PhaseModulation.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "dsp/SineTerms.h"
#include "dsp/kernels/Carriers.h"
#include "platform/Format.h"
#include "platform/Pieces.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace dsp {
namespace {

/// Blocks that are summed side by side: each sum waits for itself only.
constexpr std::size_t kBlocksAtOnce = 8;

/// The sums of the squares of `blocks` blocks, one behind the other, each in its samples' order.
void sumSquares(const float* samples, std::size_t blockLength, std::size_t blocks, float* sums) {
    std::fill_n(sums, blocks, 0.0F);
    for (std::size_t j = 0; j < blockLength; ++j) {
        for (std::size_t block = 0; block < blocks; ++block) {
            const float x = samples[block * blockLength + j];
            sums[block] += x * x;
        }
    }
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

/// A stretch of the sound between two points of the envelope, the level in between by linear
/// interpolation, or behind the last one, where it is 0.
struct Segment {
    std::size_t first = 0;
    std::size_t end = 0;
    LevelLine level;
};

std::vector<Segment> segmentsOf(std::span<const EnvelopePoint> envelope, std::size_t count) {
    std::vector<Segment> segments;
    segments.reserve(envelope.size() + 1);
    std::size_t done = 0;
    for (std::size_t k = 0; k + 1 < envelope.size(); ++k) {
        const EnvelopePoint& from = envelope[k];
        const EnvelopePoint& to = envelope[k + 1];
        if (to.count <= from.count) {
            continue; // a point that was left at zero is no successor
        }
        done = static_cast<std::size_t>(to.count);
        segments.push_back(
            {static_cast<std::size_t>(from.count),
             done,
             {from.val, to.val - from.val, static_cast<float>(to.count - from.count)}});
    }
    segments.push_back({done, count, {}});
    return segments;
}

/// The part of the sound from `first` to `end`, through all segments that it touches.
void modulatePart(std::span<const float> input, std::span<float> output,
                  std::span<const Segment> segments, const Carrier& carrier, std::size_t first,
                  std::size_t end) {
    auto segment = std::upper_bound(segments.begin(), segments.end(), first,
                                    [](std::size_t i, const Segment& s) { return i < s.end; });
    for (; first < end; ++segment) {
        const std::size_t count = std::min(end, segment->end) - first;
        phaseModulateStretch(input.data() + first, output.data() + first, first, count, carrier,
                             segment->level, first - segment->first);
        first += count;
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
    const auto length = static_cast<std::size_t>(blockLength);
    // The block that holds the last sample has a level of 0, so that the envelope closes.
    const std::size_t whole = input.empty() ? 0 : (input.size() - 1) / length;
    const std::size_t blocks = (input.size() + length - 1) / length;
    for (std::size_t k = 0; k < blocks; ++k) {
        envelope[k] = {.count = static_cast<std::int64_t>(k) * blockLength,
                       .val = 0.0F,
                       .length = blockLength + 1};
    }
    platform::forEachStretch(whole, kBlocksAtOnce, [&](std::size_t first, std::size_t few) {
        std::array<float, kBlocksAtOnce> sums{};
        sumSquares(input.data() + first * length, length, few, sums.data());
        for (std::size_t k = 0; k < few; ++k) {
            envelope[first + k].val = std::sqrt(sums.at(k)) / static_cast<float>(blockLength);
        }
    });
    normalizeEnvelope(envelope);
    return envelope;
}

void phaseModulate(std::span<const float> input, std::span<float> output,
                   std::span<const EnvelopePoint> envelope, float frequency, float index,
                   double rate) {
    const Carrier carrier{phaseStep(frequency, rate), index};
    const std::vector<Segment> segments = segmentsOf(envelope, input.size());
    platform::forEachStretch(
        input.size(), kCarrierStretch, [&](std::size_t first, std::size_t count) {
            modulatePart(input, output, segments, carrier, first, first + count);
        });
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

Refusal pmBuffer(float cf, float index, float lpf, undo_struct* undo) {
    if (Refusal refusal = pmRefusal(lpf)) {
        return refusal;
    }
    const auto sound = soundSamples();
    return replaceSound(fBuffersize.load(), kSlackSamples, undo, [&](std::span<float> result) {
        platform::expectStages(2);
        const auto envelope = dsp::blockEnvelope(sound, dsp::envelopeBlockLength(lpf, R));
        if (dbp) {
            traceEnvelope(envelope);
        }
        dsp::phaseModulate(sound, result, envelope, cf, index, R);
    });
}

} // namespace zemo
