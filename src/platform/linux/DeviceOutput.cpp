#include "platform_linux/DeviceOutput.h"

#include <algorithm>
#include <cmath>

#include "platform/FourCharCode.h"
#include "platform/RealTime.h"

namespace zemo::platform {
namespace {

using namespace std::chrono_literals;

constexpr Status kDeviceError = static_cast<Status>(fourCharCode("!dev"));
/// Silence sent after the last sound. It is longer than what a server takes ahead: so when it has
/// been taken, the sound has been heard, however slowly the server goes; and a sound of a
/// millisecond fills as much as a server begins with. A server may also lose its last, partly
/// filled period.
constexpr double kTailSeconds = 0.16;
/// The most that one attendance adds to the time without a request: when the program itself was
/// held up, that is not the device's fault.
constexpr std::chrono::nanoseconds kLongestPause = 100ms;

std::uint32_t connectAnew(std::unique_ptr<Device>& device, const DeviceFactory& factory) {
    device.reset();
    std::unique_ptr<Device> made = factory();
    const std::uint32_t rate = made->connect();
    if (rate != 0) {
        device = std::move(made);
    }
    return rate;
}

/// Over the connection that is there; where that fails, over a new one.
bool openStream(std::unique_ptr<Device>& device, const DeviceFactory& factory,
                const std::shared_ptr<DeviceRun>& run, const StreamWish& wish) {
    if (device != nullptr && device->openStream(run, wish)) {
        return true;
    }
    return connectAnew(device, factory) != 0 && device->openStream(run, wish);
}

} // namespace

// The system's clock is read from a page that the kernel keeps for it.
ZEMO_TRUSTED_NONBLOCKING

std::uint32_t DeviceRun::fill(float* output, std::uint32_t frames) noexcept ZEMO_NONBLOCKING {
    lead.request(clock_.now(), frames);
    return feed.fill(output, frames);
}

ZEMO_TRUSTED_END

DeviceOutput::DeviceOutput(DeviceFactory factory, Clock& clock, DeviceLimits limits)
    : factory_(std::move(factory)), clock_(clock), limits_(limits), latency_(limits.latency) {}

DeviceOutput::~DeviceOutput() {
    closeRun();
    leaveServer();
}

bool DeviceOutput::open(double wantedRate) {
    closeRun();
    leaveServer();
    server_ = std::make_unique<Server>();
    auto found = server_->thread.ask<std::uint32_t>(
        [device = server_->device, factory = factory_] { return connectAnew(*device, factory); });
    const bool answered = found.wait_for(limits_.connect) == std::future_status::ready;
    const std::uint32_t rate = answered ? found.get() : 0;
    if (rate == 0) {
        leaveServer();
        return false;
    }
    setRate(wantedRate > 0.0 ? wantedRate : rate);
    return true;
}

void DeviceOutput::setRate(double hertz) {
    rate_ = static_cast<std::uint32_t>(std::lround(hertz));
}

Status DeviceOutput::setRenderCallback(RenderCallback callback, void* context) {
    callback_ = callback;
    context_ = context;
    return kNoError;
}

Status DeviceOutput::sampleRate(double& hertz) {
    hertz = rate_;
    return kNoError;
}

Status DeviceOutput::setStreamFormat(const AudioStreamBasicDescription& format) {
    const bool fits = format.mFormatID == kLinearPCM && format.mChannelsPerFrame == 1 &&
                      format.mBitsPerChannel == 32;
    return fits ? kNoError : kDeviceError;
}

/// A new run for each play, so that a stream that was left behind never meets a later one.
Status DeviceOutput::start() {
    if (run_ != nullptr && run_->feed.resume()) {
        return kNoError;
    }
    closeRun();
    failed_ = refused_ = false;
    if (server_ == nullptr && !CallThread::mayBeMade()) {
        return kDeviceError; // until a call returns that hangs
    }
    const StreamWish wish{rate_, latency_, soundName_};
    run_ = std::make_shared<DeviceRun>(clock_, wish);
    run_->feed.setCallback(callback_, context_);
    run_->feed.setTail(static_cast<std::uint32_t>(kTailSeconds * rate_));
    run_->feed.begin();
    attendedAt_ = askedAt_ = clock_.now();
    answer_ = askForStream(wish);
    if (answer_.wait_for(limits_.grace) == std::future_status::ready && !isReady()) {
        closeRun();
        leaveServer();
        return kDeviceError;
    }
    return kNoError;
}

std::future<bool> DeviceOutput::askForStream(const StreamWish& wish) {
    if (server_ == nullptr) {
        server_ = std::make_unique<Server>();
    }
    return server_->thread.ask<bool>([device = server_->device, factory = factory_, run = run_,
                                      wish] { return openStream(*device, factory, run, wish); });
}

/// Takes the answer, if it is there and was not taken before.
bool DeviceOutput::isReady() {
    return !answer_.valid() || answer_.get();
}

Status DeviceOutput::stop() {
    if (run_ != nullptr) {
        run_->feed.askStop();
    }
    if (!insideRealTime()) {
        closeRun();
    }
    return kNoError;
}

bool DeviceOutput::isRunning() const noexcept {
    return run_ != nullptr && run_->feed.phase() == RenderFeed::Phase::Rendering;
}

bool DeviceOutput::attend() {
    if (run_ == nullptr) {
        return false;
    }
    const bool more = hasBegun() ? attendRun() : attendBeginning();
    if (!more) {
        closeRun();
        if (failed_ || refused_) {
            leaveServer();
        }
    }
    return more;
}

/// Until the first request: the stream is made, then it is started.
bool DeviceOutput::attendBeginning() {
    const bool answered = !answer_.valid() || answer_.wait_for(0s) == std::future_status::ready;
    if ((answered && !isReady()) || run_->failed.load() || isQuiet()) {
        refused_ = true;
        return false;
    }
    if (answered && !started_) {
        started_ = true;
        answer_ = server_->thread.ask<bool>(
            [device = server_->device] { return (*device)->startStream(); });
    }
    return true;
}

bool DeviceOutput::attendRun() {
    if (run_->feed.phase() == RenderFeed::Phase::Drained) {
        const auto now = clock_.now();
        drainedSince_ = drainedSince_.value_or(now);
        failed_ = run_->failed.load();
        return !failed_ && !run_->ended.load() && now - *drainedSince_ < limits_.drain;
    }
    failed_ = run_->failed.load() || isQuiet() || isUnheard();
    return !failed_;
}

/// A device may go and its server have the stream play on into nothing: asked now and then.
bool DeviceOutput::isUnheard() {
    if (answer_.valid()) { // to this question, or to the one for the start
        return answer_.wait_for(0s) == std::future_status::ready && !answer_.get();
    }
    const auto now = clock_.now();
    if (now - askedAt_ >= limits_.question) {
        askedAt_ = now;
        answer_ =
            server_->thread.ask<bool>([device = server_->device] { return (*device)->isHeard(); });
    }
    return false;
}

/// Whether the device has not asked for frames for too long.
bool DeviceOutput::isQuiet() {
    const auto now = clock_.now();
    const auto passed = std::min(now - attendedAt_, kLongestPause);
    attendedAt_ = now;
    const std::uint64_t requests = run_->feed.requests();
    quiet_ = requests == requests_ ? quiet_ + passed : 0ns;
    requests_ = requests;
    // The second request may be late as well: the first one only fills the device's memory.
    return quiet_ >= (requests < 2 ? limits_.begin : limits_.call);
}

/// Afterwards no call of the callback runs, and none follows.
void DeviceOutput::closeRun() {
    if (run_ == nullptr) {
        return;
    }
    run_->feed.halt();
    if (run_->lead.wasLost()) {
        latency_ = std::max(latency_, limits_.safeLatency);
    }
    run_.reset();
    if (server_ != nullptr) {
        server_->thread.post([device = server_->device] {
            if (*device != nullptr) {
                (*device)->closeStream();
            }
        });
    }
    answer_ = {};
    started_ = false;
    requests_ = 0;
    quiet_ = 0ns;
    drainedSince_.reset();
}

/// A play on a server that has died is lost already, though it may not have been noticed yet.
void DeviceOutput::disconnect() {
    if (server_ == nullptr) {
        return;
    }
    if (run_ != nullptr) {
        auto heard = server_->thread.ask<bool>(
            [device = server_->device] { return *device == nullptr || (*device)->isHeard(); });
        failed_ = heard.wait_for(limits_.farewell) == std::future_status::ready && !heard.get();
        if (!failed_) {
            return;
        }
        closeRun();
    }
    leaveServer().wait_for(limits_.farewell);
}

/// The device goes on its own thread, after the last call that holds it.
std::future<bool> DeviceOutput::leaveServer() {
    if (server_ == nullptr) {
        return {};
    }
    auto left = server_->thread.ask<bool>([device = std::move(server_->device)] {
        device->reset();
        return true;
    });
    server_.reset();
    return left;
}

} // namespace zemo::platform
