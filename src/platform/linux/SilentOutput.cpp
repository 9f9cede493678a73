#include "platform_linux/SilentOutput.h"

#include <array>
#include <chrono>

#include "platform/RealTime.h"

namespace zemo::platform {

SilentOutput::~SilentOutput() {
    SilentOutput::stop();
}

Status SilentOutput::setRenderCallback(RenderCallback callback, void* context) {
    feed_.setCallback(callback, context);
    return kNoError;
}

Status SilentOutput::sampleRate(double& hertz) {
    hertz = rate_;
    return kNoError;
}

Status SilentOutput::setStreamFormat(const AudioStreamBasicDescription& /*format*/) {
    return kNoError;
}

Status SilentOutput::start() {
    if (feed_.resume()) {
        return kNoError;
    }
    if (thread_.joinable()) {
        thread_.join();
    }
    feed_.begin();
    return kNoError;
}

Status SilentOutput::stop() {
    feed_.askStop();
    if (insideRealTime()) {
        return kNoError;
    }
    if (thread_.joinable()) {
        thread_.join();
    }
    feed_.end();
    return kNoError;
}

bool SilentOutput::isRunning() const noexcept {
    return feed_.phase() == RenderFeed::Phase::Rendering;
}

bool SilentOutput::attend() {
    if (isRunning()) {
        if (!thread_.joinable()) {
            thread_ = std::thread([this] { run(); });
        }
        return true;
    }
    if (feed_.phase() == RenderFeed::Phase::Drained) {
        thread_.join();
        feed_.end();
    }
    return feed_.phase() != RenderFeed::Phase::Idle;
}

void SilentOutput::run() {
    using namespace std::chrono;
    const auto period = duration_cast<nanoseconds>(duration<double>(kFramesPerRenderCall / rate_));
    std::array<float, kFramesPerRenderCall> nobodyHears{};
    auto next = steady_clock::now();
    while (feed_.fill(nobodyHears.data(), nobodyHears.size()) == nobodyHears.size()) {
        next += period;
        std::this_thread::sleep_until(next);
    }
}

} // namespace zemo::platform
