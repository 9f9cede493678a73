#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

#include "platform/AudioOutput.h"
#include "playback/Delegate.h"
#include "playback/SoundExchange.h"

/// What a render call has about it in the measurements.
namespace zemo::bench {

/// Answers every call and does nothing.
class NoOutput final : public platform::AudioOutputUnit {
    platform::Status setRenderCallback(platform::RenderCallback, void*) override { return 0; }
    platform::Status sampleRate(double&) override { return 0; }
    platform::Status setStreamFormat(const platform::AudioStreamBasicDescription&) override {
        return 0;
    }
    platform::Status initialize() override { return 0; }
    platform::Status start() override { return 0; }
    platform::Status stop() override { return 0; }
    bool isRunning() const noexcept override { return false; }
    bool attend() override { return false; }
    bool takeFailure() override { return false; }
    std::string notice() const override { return {}; }
};

/// Takes the messages and does nothing with them.
struct Deaf final : RenderDelegate {
    void updateValue(float) override {}
    void repeatUpdateValue(float, std::uint32_t) override {}
    void resetMeter() override {}
    void resetPlayTitle() override {}
    void traceIdleCycle(std::int32_t) override {}
    void traceMissingBuffer() override {}
};

/// [main] A sine of so many samples becomes the sound.
inline void loadSine(std::int64_t count) {
    SampleBlock samples = allocateSamples(count);
    for (std::int64_t i = 0; i < count; ++i) {
        samples.get()[i] = 0.8F * std::sin(0.05F * static_cast<float>(i));
    }
    replaceBuffer(std::move(samples), count);
}

} // namespace zemo::bench
