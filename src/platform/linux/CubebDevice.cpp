#include <cubeb/cubeb.h>

#include <algorithm>
#include <cstring>

#include "platform/RealTime.h"
#include "platform/Utf8.h"
#include "platform_linux/Device.h"
#include "platform_linux/JackServer.h"

namespace zemo::platform {
namespace {

constexpr std::uint32_t kLowestRate = 1000;
constexpr std::uint32_t kHighestRate = 1000000;

constexpr const char* kProgram = "ZEMO";

/// PulseAudio and PipeWire make this sink, which nobody hears, when the last other one goes.
constexpr const char* kStandIn = "auto_null";

struct ContextDeleter {
    void operator()(cubeb* context) const noexcept { cubeb_destroy(context); }
};

struct StreamDeleter {
    void operator()(cubeb_stream* stream) const noexcept {
        cubeb_stream_stop(stream);
        cubeb_stream_destroy(stream);
    }
};

/// What the server takes: it would leave a name out that is not UTF-8. On JACK it is a part of the
/// port's, by which people keep their connections, so the program's stands there.
const char* streamName(const std::string& name) {
    return name.empty() || !isUtf8(name) ? kProgram : name.c_str();
}

cubeb_stream_params monoFloat(std::uint32_t rate) {
    return {.format = CUBEB_SAMPLE_FLOAT32NE,
            .rate = rate,
            .channels = 1,
            .layout = CUBEB_LAYOUT_MONO,
            .prefs = CUBEB_STREAM_PREF_NONE};
}

/// What the library calls back on its own threads. `user` is the stream's run.
long fill(cubeb_stream* /*stream*/, void* user, const void* /*input*/, void* output,
          long frames) noexcept ZEMO_NONBLOCKING {
    return static_cast<long>(static_cast<DeviceRun*>(user)->fill(
        static_cast<float*>(output), static_cast<std::uint32_t>(frames)));
}

void stateChanged(cubeb_stream* /*stream*/, void* user, cubeb_state state) {
    auto& run = *static_cast<DeviceRun*>(user);
    if (state == CUBEB_STATE_ERROR) {
        run.failed.store(true);
        run.feed.drained();
    } else if (state == CUBEB_STATE_DRAINED) {
        run.ended.store(true);
    }
}

/// A stream is made for every play and destroyed after it: a stopped stream would begin its next
/// play with what it still held of the last one.
class CubebDevice final : public Device {
public:
    std::uint32_t connect() override {
        cubeb* context = nullptr;
        if (cubeb_init(&context, kProgram, nullptr) != CUBEB_OK) {
            return 0;
        }
        context_.reset(context);
        std::uint32_t rate = 0;
        const bool known = cubeb_get_preferred_sample_rate(context, &rate) == CUBEB_OK &&
                           rate >= kLowestRate && rate <= kHighestRate;
        return known ? rate : 0; // a server without a device says -1
    }

    bool openStream(std::shared_ptr<DeviceRun> run, const StreamWish& wish) override {
        closeStream();
        const bool isOnJack = std::strcmp(cubeb_get_backend_id(context_.get()), "jack") == 0;
        cubeb_stream_params params = monoFloat(wish.rate);
        const std::uint32_t latency = latencyFrames(params, wish.latency);
        cubeb_stream* stream = nullptr;
        if (cubeb_stream_init(context_.get(), &stream, isOnJack ? kProgram : streamName(wish.name),
                              nullptr, nullptr, nullptr, &params, latency, fill, stateChanged,
                              run.get()) != CUBEB_OK) {
            return false;
        }
        if (isOnJack) { // a period that has begun by now goes to nobody: its graph is an older one
            run->feed.leaveFirstRequestSilent();
        }
        run_ = std::move(run);
        stream_.reset(stream);
        jackServer_ = isOnJack ? jackServerSocket(JackPlaces::ofThisProcess()) : 0;
        return isHeard();
    }

    bool startStream() override { return cubeb_stream_start(stream_.get()) == CUBEB_OK; }

    void closeStream() override { stream_.reset(); }

    bool isHeard() override {
        if (jackServer_ != 0 && jackServer_ != jackServerSocket(JackPlaces::ofThisProcess())) {
            return false; // the library tells nobody
        }
        cubeb_device* device = nullptr;
        if (stream_ == nullptr ||
            cubeb_stream_get_current_device(stream_.get(), &device) != CUBEB_OK) {
            return true; // it cannot be known
        }
        const bool heard =
            device->output_name == nullptr || std::strcmp(device->output_name, kStandIn) != 0;
        cubeb_stream_device_destroy(stream_.get(), device);
        return heard;
    }

private:
    /// At least the server's least.
    std::uint32_t latencyFrames(cubeb_stream_params params, std::chrono::milliseconds wanted) {
        std::uint32_t least = 0;
        if (cubeb_get_min_latency(context_.get(), &params, &least) != CUBEB_OK) {
            least = 0;
        }
        const std::chrono::duration<double> seconds = wanted;
        return std::max(least, static_cast<std::uint32_t>(seconds.count() * params.rate));
    }

    // In this order: the stream goes first, and what it calls back into last.
    std::shared_ptr<DeviceRun> run_;
    std::unique_ptr<cubeb, ContextDeleter> context_;
    std::unique_ptr<cubeb_stream, StreamDeleter> stream_;
    std::uint64_t jackServer_ = 0; ///< that the stream was opened on, as far as can be seen
};

} // namespace

std::unique_ptr<Device> makeCubebDevice() {
    return std::make_unique<CubebDevice>();
}

} // namespace zemo::platform
