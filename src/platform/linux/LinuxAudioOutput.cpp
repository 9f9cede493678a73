#include "platform_linux/LinuxAudioOutput.h"

namespace zemo::platform {

LinuxOutputUnit::LinuxOutputUnit(double wantedRate) : hasDevice_(device_.open(wantedRate)) {
    if (wantedRate > 0.0) {
        silence_.setRate(wantedRate);
    }
    if (hasDevice_) {
        current_ = &device_;
    }
}

Status LinuxOutputUnit::setRenderCallback(RenderCallback callback, void* context) {
    device_.setRenderCallback(callback, context);
    return silence_.setRenderCallback(callback, context);
}

Status LinuxOutputUnit::sampleRate(double& hertz) {
    const Status status = current_->sampleRate(hertz);
    silence_.setRate(hertz);
    return status;
}

Status LinuxOutputUnit::setStreamFormat(const AudioStreamBasicDescription& format) {
    return current_->setStreamFormat(format);
}

Status LinuxOutputUnit::start() {
    if (current_->isRunning() || !hasDevice_) {
        return current_->start();
    }
    silence_.stop();
    if (current_ != &device_) { // the device's own thread may be reading it
        current_ = &device_;
    }
    if (device_.start() == kNoError || (device_.reopen() && device_.start() == kNoError)) {
        return kNoError;
    }
    // The device went away after launch: keep time without it rather than end the program.
    current_ = &silence_;
    return silence_.start();
}

AudioOutputComponent* LinuxAudioOutput::findNext(const AudioComponentDescription& wanted) {
    const bool matches = wanted.componentType == kAudioUnitType_Output &&
                         wanted.componentSubType == kAudioUnitSubType_HALOutput;
    return matches ? this : nullptr;
}

Status LinuxAudioOutput::newInstance(AudioOutputUnit*& unit) {
    unit_ = std::make_unique<LinuxOutputUnit>();
    unit = unit_.get();
    return kNoError;
}

} // namespace zemo::platform
