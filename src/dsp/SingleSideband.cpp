#include "dsp/SingleSideband.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "dsp/HilbertTransformer.h"
#include "dsp/SineTerms.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace dsp {
namespace {

constexpr std::size_t kDelay = 256;   ///< of the Hilbert transformer's centre, in samples
constexpr std::size_t kBlock = 16384; ///< samples that are transformed together

/// One sample of the sideband after the other.
class Modulator {
public:
    Modulator(std::span<const float> input, Sideband sideband, float frequency, double rate)
        : input_(input),
          sideband_(sideband),
          step_(kTwoPi * static_cast<double>(frequency) / rate) {}

    /// The phase steps before it is used, and is set back after it.
    double next(std::size_t i, double quadrature) {
        phase_ += step_;
        const double delayed = i >= kDelay ? static_cast<double>(input_[i - kDelay]) : 0.0;
        const double inPhase = delayed * std::cos(phase_);
        const double outOfPhase = quadrature * std::sin(phase_);
        if (phase_ >= kTwoPi) {
            phase_ -= kTwoPi;
        }
        return sideband_ == Sideband::Upper ? inPhase - outOfPhase : inPhase + outOfPhase;
    }

private:
    std::span<const float> input_;
    Sideband sideband_;
    double step_;
    double phase_ = 0.0;
};

void modulate(std::span<const float> input, std::span<double> wet, Modulator modulator, double rate,
              std::span<double, 513> delayLine) {
    std::vector<double> quadrature(std::min(kBlock, input.size()));
    std::vector<double> block(quadrature.size());
    for (std::size_t start = 0; start < input.size(); start += kBlock) {
        const std::size_t count = std::min(kBlock, input.size() - start);
        const auto part = input.subspan(start, count);
        std::copy(part.begin(), part.end(), block.begin());
        hilbertTransform(std::span(block).first(count), std::span(quadrature).first(count), rate,
                         delayLine);
        for (std::size_t i = 0; i < count; ++i) {
            wet[start + i] = modulator.next(start + i, quadrature[i]);
        }
    }
}

/// What every wet sample is divided by: its peak, where that exceeds full scale.
double divisorFor(std::span<const double> wet) {
    double peak = 1.0;
    for (const double sample : wet) {
        if (std::fabs(sample) > peak) {
            peak = std::fabs(sample);
        }
    }
    return peak;
}

} // namespace

void singleSideband(std::span<const float> input, std::span<float> output, Sideband sideband,
                    float frequency, float index, double rate, std::span<double, 513> delayLine) {
    std::vector<double> wet(input.size());
    std::array<double, 513> line{};
    std::copy(delayLine.begin(), delayLine.end(), line.begin());
    modulate(input, wet, Modulator(input, sideband, frequency, rate), rate, line);
    const double divisor = divisorFor(wet);
    const float mix = index > 1.0F ? 1.0F : index;
    for (std::size_t i = 0; i < input.size(); ++i) {
        const double scaled = divisor > 1.0 ? wet[i] / divisor : wet[i];
        output[i] = (1.0F - mix) * input[i] + mix * static_cast<float>(scaled);
    }
    std::copy(line.begin(), line.end(), delayLine.begin());
}

} // namespace dsp

Refusal ssbmBuffer(bool upper, float cf, float index, undo_struct* undo) {
    const auto sound = soundSamples();
    const std::span<double, 513> delayLine(hilbert_xv.data(), 513);
    return replaceSound(fBuffersize.load(), kSlackSamples, undo, [&](std::span<float> result) {
        dsp::singleSideband(sound, result, upper ? dsp::Sideband::Upper : dsp::Sideband::Lower, cf,
                            index, R, delayLine);
    });
}

} // namespace zemo
