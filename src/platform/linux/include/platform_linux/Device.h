#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform_linux/RenderFeed.h"

namespace zemo::platform {

/// What one stream and the output share. A stream that was left behind keeps it alive.
struct DeviceRun {
    RenderFeed feed;
    std::atomic<bool> ended{false};  ///< the device says that the last frame was heard
    std::atomic<bool> failed{false}; ///< the device went away
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

    /// A stream at `rate` hertz that takes its frames from `run` once it is started. The server may
    /// show its `name`, which may be any bytes.
    virtual bool openStream(std::shared_ptr<DeviceRun> run, std::uint32_t rate,
                            const std::string& name) = 0;
    virtual bool startStream() = 0;
    virtual void closeStream() = 0;

    /// Whether the stream goes to a device, and not to a server's stand-in for one that is gone.
    virtual bool isHeard() = 0;
};

using DeviceFactory = std::function<std::unique_ptr<Device>()>;

/// [any] The computer's default output through cubeb, not connected yet.
std::unique_ptr<Device> makeCubebDevice();

} // namespace zemo::platform
