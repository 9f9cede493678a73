#pragma once

#include <atomic>
#include <chrono>
#include <memory>

#include "platform/AudioOutput.h"
#include "platform_linux/RenderFeed.h"

struct cubeb;
struct cubeb_stream;

namespace zemo::platform {

/// The computer's default output through cubeb. A stream is made for every play and destroyed
/// after it: a stopped stream would begin its next play with what it still held of the last one.
class CubebOutput final : public AudioOutputUnit {
public:
    /// Start-up never waits for a sound server longer than this.
    static constexpr std::chrono::seconds kOpenTimeout{2};

    CubebOutput();
    ~CubebOutput() override;

    /// [main] Connects to the sound server, to play at `wantedRate` hertz (0: the device's own
    /// rate). False when there is none, or no device behind it.
    bool open(double wantedRate);

    /// [main] Connects anew, the rate as it was.
    bool reopen() { return open(rate_); }

    Status setRenderCallback(RenderCallback callback, void* context) override;
    Status sampleRate(double& hertz) override;
    Status setStreamFormat(const AudioStreamBasicDescription& format) override;
    Status initialize() override { return kNoError; }
    Status start() override;
    Status stop() override;
    bool isRunning() const noexcept override;
    bool attend() override;
    bool takeFailure() override { return failed_.exchange(false); }
    std::string notice() const override { return {}; }

private:
    struct ContextDeleter {
        void operator()(cubeb* context) const noexcept;
    };
    struct StreamDeleter {
        void operator()(cubeb_stream* stream) const noexcept;
    };
    /// What the library calls back on its own threads.
    struct Callbacks;

    static std::unique_ptr<cubeb, ContextDeleter> connect();
    void closeStream();

    std::unique_ptr<cubeb, ContextDeleter> context_;
    std::unique_ptr<cubeb_stream, StreamDeleter> stream_;
    RenderFeed feed_;
    std::uint32_t rate_ = 0;
    bool started_ = false; ///< main thread only: the stream was made to call
    std::chrono::steady_clock::time_point drainedSince_;
    std::atomic<bool> ended_{false};  ///< the device says that the last frame was heard
    std::atomic<bool> failed_{false}; ///< the device went away
};

} // namespace zemo::platform
