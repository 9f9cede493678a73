#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/Clock.h"
#include "platform_linux/DeviceLead.h"
#include "platform_linux/RenderFeed.h"

namespace zemo::platform {

/// What is asked of a server for one stream.
struct StreamWish {
    std::uint32_t rate = 0; ///< in hertz
    /// How far ahead the server takes frames: a play survives so long a delay, and a stop is heard
    /// so late.
    std::chrono::milliseconds latency{0};
    std::string name; ///< that the server may show; it may be any bytes
};

/// What one stream and the output share. A stream that was left behind keeps it alive; the clock
/// outlives them all.
class DeviceRun {
public:
    DeviceRun(Clock& clock, const StreamWish& wish) : lead(wish.rate), clock_(clock) {}

    /// [audio][rt] As the feed's, and with a look at the clock, which enters no kernel.
    std::uint32_t fill(float* output, std::uint32_t frames) noexcept ZEMO_NONBLOCKING;

    RenderFeed feed;
    DeviceLead lead;
    std::atomic<bool> ended{false};  ///< the device says that the last frame was heard
    std::atomic<bool> failed{false}; ///< the device went away

private:
    Clock& clock_;
};

/// A connection to a sound server, and one stream on it. Any of these calls may hang for as long as
/// the server likes, so they are made on a CallThread, all on the same one.
class Device {
public:
    Device() = default;
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    virtual ~Device() = default; ///< closes and disconnects

    /// The device's own rate in hertz; 0 when there is no server, or no device behind it.
    virtual std::uint32_t connect() = 0;

    /// A stream that takes its frames from `run` once it is started.
    virtual bool openStream(std::shared_ptr<DeviceRun> run, const StreamWish& wish) = 0;
    virtual bool startStream() = 0;
    virtual void closeStream() = 0;

    /// Whether the stream goes to a device, and not to a server's stand-in for one that is gone.
    virtual bool isHeard() = 0;
};

using DeviceFactory = std::function<std::unique_ptr<Device>()>;

/// [any] The computer's default output through cubeb, not connected yet.
std::unique_ptr<Device> makeCubebDevice();

} // namespace zemo::platform
