#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/AudioOutput.h"
#include "platform_linux/DeviceOutput.h"
#include "platform_linux/SilentOutput.h"

namespace zemo::platform {

/// The output as the program has it: the computer's default device, or silence that keeps time
/// while there is none. Every start() tries the device again.
class LinuxOutputUnit final : public AudioOutputUnit {
public:
    /// The device is asked to play at `wantedRate` hertz; 0: at its own rate.
    explicit LinuxOutputUnit(double wantedRate = 0.0, DeviceLimits limits = {});
    LinuxOutputUnit(double wantedRate, DeviceFactory factory, Clock& clock, DeviceLimits limits);

    Status setRenderCallback(RenderCallback callback, void* context) override;
    Status sampleRate(double& hertz) override;
    Status setStreamFormat(const AudioStreamBasicDescription& format) override;
    Status initialize() override { return current_->initialize(); }
    Status start() override;
    Status stop() override { return current_->stop(); }
    bool isRunning() const noexcept override { return current_->isRunning(); }
    bool attend() override;
    void setSoundName(const std::string& name) override { device_.setSoundName(name); }
    void disconnect() override { device_.disconnect(); }
    bool takeFailure() override { return std::exchange(lost_, false); }
    std::string notice() const override { return notice_; }

private:
    Status beginSilence();

    DeviceOutput device_;
    SilentOutput silence_;
    AudioOutputUnit* current_ = &device_;
    bool lost_ = false;
    std::string notice_; ///< what the last play, or the launch, found out
};

class LinuxAudioOutput final : public AudioOutputService, private AudioOutputComponent {
public:
    AudioOutputComponent* findNext(const AudioComponentDescription& wanted) override;

private:
    Status newInstance(AudioOutputUnit*& unit) override;

    std::unique_ptr<LinuxOutputUnit> unit_;
};

} // namespace zemo::platform
