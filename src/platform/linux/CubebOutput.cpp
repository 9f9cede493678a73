#include "platform_linux/CubebOutput.h"

#include <cubeb/cubeb.h>

#include <algorithm>
#include <cmath>
#include <future>
#include <thread>

#include "platform/FourCharCode.h"
#include "platform/RealTime.h"

namespace zemo::platform {
namespace {

using namespace std::chrono_literals;

constexpr Status kDeviceError = static_cast<Status>(fourCharCode("!dev"));
/// With half of this, one play in seven had a gap on a machine with two busy threads a core.
constexpr double kLatencySeconds = 0.1;
/// Silence sent after the last sound: a server may lose its last, partly filled period.
constexpr double kTailSeconds = 0.06;
/// How long to wait for the device to say that the last frame was heard.
constexpr auto kDrainTimeout = 1s;
constexpr std::uint32_t kLowestRate = 1000;
constexpr std::uint32_t kHighestRate = 1000000;

cubeb_stream_params monoFloat(std::uint32_t rate) {
    return {.format = CUBEB_SAMPLE_FLOAT32NE,
            .rate = rate,
            .channels = 1,
            .layout = CUBEB_LAYOUT_MONO,
            .prefs = CUBEB_STREAM_PREF_NONE};
}

cubeb* initializeContext() {
    cubeb* context = nullptr;
    return cubeb_init(&context, "ZEMO", nullptr) == CUBEB_OK ? context : nullptr;
}

} // namespace

struct CubebOutput::Callbacks {
    static long fill(cubeb_stream* /*stream*/, void* user, const void* /*input*/, void* output,
                     long frames) {
        auto& self = *static_cast<CubebOutput*>(user);
        return static_cast<long>(
            self.feed_.fill(static_cast<float*>(output), static_cast<std::uint32_t>(frames)));
    }

    static void stateChanged(cubeb_stream* /*stream*/, void* user, cubeb_state state) {
        auto& self = *static_cast<CubebOutput*>(user);
        if (state == CUBEB_STATE_ERROR) {
            self.failed_.store(true);
            self.feed_.drained();
        }
        if (state == CUBEB_STATE_ERROR || state == CUBEB_STATE_DRAINED) {
            self.ended_.store(true);
        }
    }
};

void CubebOutput::ContextDeleter::operator()(cubeb* context) const noexcept {
    cubeb_destroy(context);
}

void CubebOutput::StreamDeleter::operator()(cubeb_stream* stream) const noexcept {
    cubeb_stream_stop(stream);
    cubeb_stream_destroy(stream);
}

CubebOutput::CubebOutput() = default;

CubebOutput::~CubebOutput() {
    closeStream();
}

/// On a thread of its own: a server that takes the connection and never answers would hold the
/// program for as long as it likes. Then that thread is left behind.
std::unique_ptr<cubeb, CubebOutput::ContextDeleter> CubebOutput::connect() {
    std::promise<cubeb*> promise;
    std::future<cubeb*> context = promise.get_future();
    std::thread([promise = std::move(promise)]() mutable {
        promise.set_value(initializeContext());
    }).detach();
    const bool answered = context.wait_for(kOpenTimeout) == std::future_status::ready;
    return std::unique_ptr<cubeb, ContextDeleter>(answered ? context.get() : nullptr);
}

bool CubebOutput::open(double wantedRate) {
    closeStream();
    context_.reset();
    context_ = connect();
    std::uint32_t rate = 0;
    if (context_ == nullptr || cubeb_get_preferred_sample_rate(context_.get(), &rate) != CUBEB_OK ||
        rate < kLowestRate || rate > kHighestRate) { // a server without a device says -1
        context_.reset();
        return false;
    }
    rate_ = wantedRate > 0.0 ? static_cast<std::uint32_t>(std::lround(wantedRate)) : rate;
    feed_.setTail(static_cast<std::uint32_t>(kTailSeconds * rate_));
    return true;
}

Status CubebOutput::setRenderCallback(RenderCallback callback, void* context) {
    feed_.setCallback(callback, context);
    return kNoError;
}

Status CubebOutput::sampleRate(double& hertz) {
    hertz = rate_;
    return kNoError;
}

Status CubebOutput::setStreamFormat(const AudioStreamBasicDescription& format) {
    const bool fits = format.mFormatID == kLinearPCM && format.mChannelsPerFrame == 1 &&
                      format.mBitsPerChannel == 32;
    return fits ? kNoError : kDeviceError;
}

Status CubebOutput::start() {
    if (feed_.resume()) {
        return kNoError;
    }
    closeStream();
    if (context_ == nullptr) {
        return kDeviceError;
    }
    cubeb_stream_params params = monoFloat(rate_);
    std::uint32_t latency = 0;
    if (cubeb_get_min_latency(context_.get(), &params, &latency) != CUBEB_OK) {
        latency = 0;
    }
    latency = std::max(latency, static_cast<std::uint32_t>(kLatencySeconds * rate_));
    cubeb_stream* stream = nullptr;
    if (cubeb_stream_init(context_.get(), &stream, "ZEMO", nullptr, nullptr, nullptr, &params,
                          latency, Callbacks::fill, Callbacks::stateChanged, this) != CUBEB_OK) {
        return kDeviceError;
    }
    stream_.reset(stream);
    feed_.begin();
    return kNoError;
}

Status CubebOutput::stop() {
    feed_.askStop();
    if (!insideRealTime()) {
        closeStream();
    }
    return kNoError;
}

bool CubebOutput::isRunning() const noexcept {
    return feed_.phase() == RenderFeed::Phase::Rendering;
}

bool CubebOutput::attend() {
    if (stream_ == nullptr) {
        return false;
    }
    if (!started_) {
        started_ = true;
        if (cubeb_stream_start(stream_.get()) != CUBEB_OK) {
            failed_.store(true);
            closeStream();
            return false;
        }
    }
    const auto now = std::chrono::steady_clock::now();
    if (feed_.phase() != RenderFeed::Phase::Drained) {
        drainedSince_ = now;
        return true;
    }
    if (!ended_.load() && now - drainedSince_ < kDrainTimeout) {
        return true;
    }
    closeStream();
    return false;
}

void CubebOutput::closeStream() {
    stream_.reset();
    feed_.end();
    started_ = false;
    ended_.store(false);
}

} // namespace zemo::platform
