#include "dsp/AmplitudeModulation.h"

#include "dsp/SineTerms.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace dsp {

void amplitudeModulate(std::span<const float> input, std::span<float> output, float frequency,
                       float index, double rate) {
    const float step = phaseStep(frequency, rate);
    for (std::size_t i = 0; i < input.size(); ++i) {
        const float sine = sineOf(wrappedOnce(static_cast<float>(i) * step));
        const float x = input[i];
        output[i] = (1.0F - index) * x + index * x * sine;
    }
}

} // namespace dsp

Refusal amBuffer(float cf, float index) {
    const auto sound = soundSamples();
    return replaceSound(fBuffersize.load(), kSlackSamples, [&](std::span<float> result) {
        dsp::amplitudeModulate(sound, result, cf, index, R);
    });
}

} // namespace zemo
