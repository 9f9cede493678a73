#include "dsp/HarmonicProcessor.h"

#include <algorithm>
#include <cmath>

#include "dsp/Filters.h"
#include "dsp/HarmonicStrips.h"
#include "platform/Progress.h"
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
    addHarmonicsInStrips(input, output, settings, inputs, outputs, planStrips(settings));
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
    std::array<float, 3> inputs = xv;
    std::array<float, 3> outputs = yv;
    Refusal refusal =
        replaceSound(fBuffersize.load(), kSlackSamples, undo, [&](std::span<float> result) {
            platform::expectStages(scale ? 3 : 2);
            dsp::addHarmonics(sound, result, settings, inputs, outputs);
        });
    if (!refusal) {
        xv = inputs;
        yv = outputs;
    }
    return refusal;
}

} // namespace zemo
