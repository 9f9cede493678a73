#pragma once

#include <memory>

#include "platform/AudioOutput.h"
#include "platform_linux/CubebOutput.h"
#include "platform_linux/SilentOutput.h"

namespace zemo::platform {

/// The output as the program has it: the computer's default device, or silence that keeps time
/// where there is none, at launch or later.
class LinuxOutputUnit final : public AudioOutputUnit {
public:
    /// The device is asked to play at `wantedRate` hertz; 0: at its own rate.
    explicit LinuxOutputUnit(double wantedRate = 0.0);

    Status setRenderCallback(RenderCallback callback, void* context) override;
    Status sampleRate(double& hertz) override;
    Status setStreamFormat(const AudioStreamBasicDescription& format) override;
    Status initialize() override { return current_->initialize(); }
    Status start() override;
    Status stop() override { return current_->stop(); }
    bool isRunning() const noexcept override { return current_->isRunning(); }
    bool attend() override { return current_->attend(); }
    bool takeFailure() override { return current_->takeFailure(); }
    std::string notice() const override { return current_->notice(); }

private:
    CubebOutput device_;
    SilentOutput silence_;
    bool hasDevice_ = false; ///< at launch
    AudioOutputUnit* current_ = &silence_;
};

class LinuxAudioOutput final : public AudioOutputService, private AudioOutputComponent {
public:
    AudioOutputComponent* findNext(const AudioComponentDescription& wanted) override;

private:
    Status newInstance(AudioOutputUnit*& unit) override;

    std::unique_ptr<LinuxOutputUnit> unit_;
};

} // namespace zemo::platform
