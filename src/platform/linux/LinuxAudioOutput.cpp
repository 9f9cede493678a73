#include "platform_linux/LinuxAudioOutput.h"

#include "platform_linux/LinuxServices.h"

namespace zemo::platform {

namespace {

constexpr const char* kLost = "The audio device went away: the play was ended";

Clock& steadyClock() {
    static SteadyClock clock;
    return clock;
}

} // namespace

LinuxOutputUnit::LinuxOutputUnit(double wantedRate, DeviceLimits limits)
    : LinuxOutputUnit(wantedRate, makeCubebDevice, steadyClock(), limits) {}

LinuxOutputUnit::LinuxOutputUnit(double wantedRate, DeviceFactory factory, Clock& clock,
                                 DeviceLimits limits)
    : device_(std::move(factory), clock, limits) {
    if (wantedRate > 0.0) {
        silence_.setRate(wantedRate);
    }
    if (!device_.open(wantedRate)) {
        current_ = &silence_;
        notice_ = silence_.notice();
    }
}

Status LinuxOutputUnit::setRenderCallback(RenderCallback callback, void* context) {
    device_.setRenderCallback(callback, context);
    return silence_.setRenderCallback(callback, context);
}

Status LinuxOutputUnit::sampleRate(double& hertz) {
    const Status status = current_->sampleRate(hertz);
    silence_.setRate(hertz);
    device_.setRate(hertz);
    return status;
}

Status LinuxOutputUnit::setStreamFormat(const AudioStreamBasicDescription& format) {
    return current_->setStreamFormat(format);
}

Status LinuxOutputUnit::start() {
    if (current_->isRunning()) {
        return current_->start();
    }
    silence_.stop();
    if (current_ != &device_) { // the device's own thread may be reading it
        current_ = &device_;
    }
    lost_ = false;
    return device_.start() == kNoError ? kNoError : beginSilence();
}

/// Without a device the program keeps time rather than end.
Status LinuxOutputUnit::beginSilence() {
    current_ = &silence_;
    notice_ = silence_.notice();
    return silence_.start();
}

bool LinuxOutputUnit::attend() {
    const bool more = current_->attend();
    if (current_ != &device_) {
        return more;
    }
    if (device_.takeRefusal()) {
        beginSilence();
        return silence_.attend();
    }
    if (device_.takeFailure()) {
        lost_ = true;
        notice_ = kLost;
    } else if (device_.hasBegun()) {
        notice_.clear();
    }
    return more;
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
