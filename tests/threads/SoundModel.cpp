#include "SoundModel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

#include "dsp/AmplitudeModulation.h"
#include "dsp/Filters.h"
#include "dsp/HilbertTransformer.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "files/Normalize.h"
#include "playback/SharedState.h"

namespace zemo::test {

SoundModel::Histories SoundModel::ofTheProgram() {
    Histories histories{.inputs = xv, .outputs = yv};
    std::copy_n(hilbert_xv.begin(), histories.delayLine.size(), histories.delayLine.begin());
    return histories;
}

Samples SoundModel::resampled(float ratio) {
    const auto count = static_cast<std::int64_t>(sound.size());
    Samples made(static_cast<std::size_t>(dsp::resampledLength(count, ratio, R)));
    dsp::resample(sound, made, ratio, R);
    return made;
}

Samples SoundModel::amplitudeModulated(float frequency, float index) {
    Samples made(sound.size());
    dsp::amplitudeModulate(sound, made, frequency, index, R);
    return made;
}

Samples SoundModel::oneSideband(dsp::Sideband sideband, float frequency, float index) {
    Samples made(sound.size());
    dsp::singleSideband(sound, made, sideband, frequency, index, R, next_.delayLine);
    return made;
}

Samples SoundModel::phaseModulated(float frequency, float index, float envelopeRate) {
    Samples made(sound.size());
    const auto envelope = dsp::blockEnvelope(sound, dsp::envelopeBlockLength(envelopeRate, R));
    dsp::phaseModulate(sound, made, envelope, frequency, index, R);
    return made;
}

Samples SoundModel::withHarmonics(const HdSettings& settings) {
    Samples made(sound.size());
    dsp::addHarmonics(sound, made, settings, next_.inputs, next_.outputs);
    return made;
}

Samples SoundModel::normalized(bool force) const {
    Samples made = sound;
    float peak = 0.0F;
    normalize(made.data(), static_cast<std::int64_t>(made.size()), &peak, force);
    return made;
}

void SoundModel::accept(Samples made) {
    copy = std::move(sound);
    sound = std::move(made);
    now_ = next_;
}

void SoundModel::revert() {
    if (!copy.empty()) {
        std::swap(sound, copy);
    }
}

bool SoundModel::hasHistories() const {
    using Bytes = std::array<std::byte, sizeof(Histories)>;
    return std::bit_cast<Bytes>(ofTheProgram()) == std::bit_cast<Bytes>(now_);
}

Samples samplesOf(const undo_struct& undo) {
    return undo.buf == nullptr ? Samples() : Samples(undo.buf.get(), undo.buf.get() + undo.bufsize);
}

bool areSame(const Samples& a, const Samples& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](float x, float y) {
        return std::bit_cast<std::uint32_t>(x) == std::bit_cast<std::uint32_t>(y) ||
               (std::isnan(x) && std::isnan(y));
    });
}

} // namespace zemo::test
