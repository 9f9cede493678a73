#include "dsp/HarmonicProcessor.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "dsp/Filters.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {

double amp2db(double x) {
    return x <= 0.0 ? -140.0 : 20.0 * std::log10(x);
}

double db2amp(double d) {
    return std::pow(10.0, std::max(d, -140.0) / 20.0);
}

namespace dsp {
namespace {

/// The DC blocker's state, one for both harmonics: the fourth goes on where the second ended.
struct DcState {
    double prevIn = 0.0;
    double prevOut = 0.0;
};

void makeDriver(std::span<const float> input, std::span<float> driver, float inPeak,
                const HdSettings& settings) {
    const float divisor = settings.knee + (inPeak - settings.knee) * settings.comp;
    for (std::size_t i = 0; i < input.size(); ++i) {
        driver[i] = compressed(input[i], settings.knee, settings.comp) / divisor;
    }
}

/// h2 of `source`, without DC, faded in over `attack` samples, times `gain`.
template <typename Sample>
void shape(std::span<const Sample> source, std::span<double> result, DcState& state,
           const HdSettings& settings, double gain) {
    for (std::size_t i = 0; i < source.size(); ++i) {
        const double bent = h2(static_cast<double>(source[i]));
        double y = dcFilter(&state.prevIn, &state.prevOut, bent, settings.slope);
        if (static_cast<std::int64_t>(i) < settings.attack) {
            y = y * static_cast<double>(i) / settings.attack;
        }
        result[i] = gain * y;
    }
}

/// Returns the peak as the scaling sees it: only a sample greater than it, sign and all, raises it.
float mixIn(std::span<const float> input, std::span<float> output, std::span<const double> second,
            std::span<const double> fourth, const HdSettings& settings) {
    const float t = settings.two ? 1.0F : 0.0F;
    const float f = settings.four ? 1.0F : 0.0F;
    float outPeak = 0.0F;
    for (std::size_t i = 0; i < input.size(); ++i) {
        const float wet = static_cast<float>(second[i]) * t + static_cast<float>(fourth[i]) * f;
        output[i] = (1.0F - settings.mix) * input[i] + settings.mix * wet;
        if (output[i] > outPeak) {
            outPeak = std::fabs(output[i]);
        }
    }
    return outPeak;
}

} // namespace

float peakMagnitude(std::span<const float> samples) {
    float peak = 0.0F;
    for (const float sample : samples) {
        if (std::fabs(sample) > peak) {
            peak = std::fabs(sample);
        }
    }
    return peak;
}

float compressed(float sample, float knee, float comp) {
    float s = sample;
    if (std::fabs(s) > knee) {
        if (s > 0.0F) {
            s = knee + comp * (s - knee);
        }
        if (s < 0.0F) {
            s = -knee - comp * (s + knee);
        }
    }
    return s;
}

void addHarmonics(std::span<const float> input, std::span<float> output, const HdSettings& settings,
                  std::array<float, 3>& inputs, std::array<float, 3>& outputs) {
    std::vector<float> driver(input.size());
    std::vector<double> second(input.size());
    std::vector<double> fourth(input.size());
    const float inPeak = peakMagnitude(input);
    if (settings.hpSelect > 0) {
        // The high-passed input takes the driver's place, neither compressed nor normalized.
        twoPoleHighPass(input.data(), driver.data(), static_cast<std::int64_t>(input.size()),
                        static_cast<std::uint8_t>(settings.hpSelect - 1), inputs, outputs);
    } else {
        makeDriver(input, driver, inPeak, settings);
    }
    DcState state;
    shape(std::span<const float>(driver), second, state, settings, 0.5);
    if (settings.four) {
        shape(std::span<const double>(second), fourth, state, settings, 1.0);
    }
    const float outPeak = mixIn(input, output, second, fourth, settings);
    if (settings.scale) {
        const float factor = inPeak / outPeak;
        for (float& sample : output) {
            sample *= factor;
        }
    }
}

} // namespace dsp

Refusal hd(bool two, bool four, bool six, std::int32_t attack, bool scale, std::int32_t hpSelect,
           double slope, float mix, float knee, float comp, undo_struct* undo) {
    platform::TraceLog& trace = *platform::services().trace;
    if (two) {
        trace.print("TWO\n");
    }
    if (four) {
        trace.print("FOUR\n");
    }
    if (six) {
        trace.print("SIX\n");
    }
    const HdSettings settings{two, four, six, attack, scale, hpSelect, slope, mix, knee, comp};
    const auto sound = soundSamples();
    return replaceSound(fBuffersize.load(), kSlackSamples, undo, [&](std::span<float> result) {
        dsp::addHarmonics(sound, result, settings, xv, yv);
    });
}

} // namespace zemo
