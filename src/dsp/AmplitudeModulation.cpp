#include "dsp/AmplitudeModulation.h"

#include "dsp/SineTerms.h"
#include "dsp/kernels/Carriers.h"
#include "platform/Pieces.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace dsp {

void amplitudeModulate(std::span<const float> input, std::span<float> output, float frequency,
                       float index, double rate) {
    const float step = phaseStep(frequency, rate);
    platform::forEachStretch(
        input.size(), kCarrierStretch, [&](std::size_t first, std::size_t count) {
            amplitudeModulateStretch(input.data() + first, output.data() + first, first, count,
                                     step, index);
        });
}

} // namespace dsp

Refusal amBuffer(float cf, float index, undo_struct* undo) {
    const auto sound = soundSamples();
    return replaceSound(fBuffersize.load(), kSlackSamples, undo, [&](std::span<float> result) {
        dsp::amplitudeModulate(sound, result, cf, index, R);
    });
}

} // namespace zemo
