#pragma once

#include <thread>

#include "platform/AudioOutput.h"
#include "platform_linux/RenderFeed.h"

namespace zemo::platform {

/// An output that nobody hears: it makes the render calls at the pace of real time.
class SilentOutput final : public AudioOutputUnit {
public:
    static constexpr double kDefaultRate = 48000.0;

    ~SilentOutput() override;

    /// [main] The pace, in hertz. Before start().
    void setRate(double hertz) noexcept { rate_ = hertz; }

    Status setRenderCallback(RenderCallback callback, void* context) override;
    Status sampleRate(double& hertz) override;
    Status setStreamFormat(const AudioStreamBasicDescription& format) override;
    Status initialize() override { return kNoError; }
    Status start() override;
    Status stop() override;
    bool isRunning() const noexcept override;
    bool attend() override;
    bool takeFailure() override { return false; }
    std::string notice() const override { return "No audio device: playing silently"; }

private:
    void run();

    RenderFeed feed_;
    double rate_ = kDefaultRate;
    std::thread thread_;
};

} // namespace zemo::platform
