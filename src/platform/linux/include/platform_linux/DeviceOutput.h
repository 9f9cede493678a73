#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <string>

#include "platform/AudioOutput.h"
#include "platform/Clock.h"
#include "platform_linux/CallThread.h"
#include "platform_linux/Device.h"

namespace zemo::platform {

/// How long a device may take before it counts as gone.
struct DeviceLimits {
    std::chrono::milliseconds connect{2000}; ///< start-up never waits longer than this
    /// From the start of a play to its first render call. Meanwhile the window goes on.
    std::chrono::milliseconds begin{2000};
    /// Between two render calls, so that the truth is shown within a second.
    std::chrono::milliseconds call{750};
    /// For the device to say that the last frame was heard.
    std::chrono::milliseconds drain{1000};
    /// From one question whether the stream goes to a device to the next.
    std::chrono::milliseconds question{200};
    /// What start() itself waits for a server; most have answered by then.
    std::chrono::milliseconds grace{30};
    /// What disconnect() waits.
    std::chrono::milliseconds farewell{200};
    /// What is asked of the server, and what after a play for which the device had to wait.
    std::chrono::milliseconds latency{50};
    std::chrono::milliseconds safeLatency{100};
};

/// A device as an output. All that may hang happens on a thread of its own: no call to this object
/// takes longer than the grace, but open() the whole limit. A connection that hangs or fails is
/// left behind, and the next start() makes a new one.
class DeviceOutput final : public AudioOutputUnit {
public:
    explicit DeviceOutput(DeviceFactory factory, Clock& clock, DeviceLimits limits = {});
    ~DeviceOutput() override;

    /// [main] Connects to the sound server, to play at `wantedRate` hertz (0: the device's own
    /// rate). False when there is none, when it does not answer, or no device is behind it.
    bool open(double wantedRate);

    /// [main] What is asked of the device from the next start() on, in hertz.
    void setRate(double hertz);

    Status setRenderCallback(RenderCallback callback, void* context) override;
    Status sampleRate(double& hertz) override;
    Status setStreamFormat(const AudioStreamBasicDescription& format) override;
    Status initialize() override { return kNoError; }
    /// An error when it is known at once that there is no device.
    Status start() override;
    Status stop() override;
    bool isRunning() const noexcept override;
    bool attend() override;
    void setSoundName(const std::string& name) override { soundName_ = name; }
    void disconnect() override;
    bool takeFailure() override { return std::exchange(failed_, false); }
    std::string notice() const override { return {}; }

    /// [main] True once after start() had promised a device that then did not come: no render call
    /// was made.
    bool takeRefusal() { return std::exchange(refused_, false); }

    /// [main] Whether the device has asked for frames since start().
    bool hasBegun() const noexcept { return run_ != nullptr && run_->feed.requests() > 0; }

private:
    /// A connection with its thread. The device belongs to that thread.
    struct Server {
        std::shared_ptr<std::unique_ptr<Device>> device =
            std::make_shared<std::unique_ptr<Device>>();
        CallThread thread;
    };

    std::future<bool> askForStream(const StreamWish& wish);
    bool isReady();
    bool attendBeginning();
    bool attendRun();
    bool isQuiet();
    bool isUnheard();
    void closeRun();
    std::future<bool> leaveServer();

    DeviceFactory factory_;
    Clock& clock_;
    DeviceLimits limits_;
    RenderCallback callback_ = nullptr;
    void* context_ = nullptr;
    std::uint32_t rate_ = 0;
    std::string soundName_;
    std::chrono::milliseconds latency_; ///< of the next stream
    std::unique_ptr<Server> server_;
    std::shared_ptr<DeviceRun> run_;
    std::future<bool> answer_; ///< to the last question; invalid when there is none to wait for
    bool started_ = false;     ///< the stream was asked to call
    std::uint64_t requests_ = 0;
    std::chrono::nanoseconds attendedAt_{0};
    std::chrono::nanoseconds quiet_{0}; ///< attended time without a request
    std::optional<std::chrono::nanoseconds> drainedSince_;
    std::chrono::nanoseconds askedAt_{0}; ///< whether the stream is heard
    bool failed_ = false;
    bool refused_ = false;
};

} // namespace zemo::platform
