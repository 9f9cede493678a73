#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "platform/AudioOutput.h"

namespace zemo::platform {

/// The life of one device run, shared by the outputs: render calls, then a tail of silence, then
/// the end. The audio thread fills; the main thread begins, resumes and ends.
///
/// Every render call is one of kFramesPerRenderCall frames. What a request leaves of them is kept
/// for the next one, and what was rendered is delivered before the tail begins, unless the run is
/// halted or its device is gone.
class RenderFeed {
public:
    enum class Phase : std::uint8_t {
        Idle,      ///< no device run
        Rendering, ///< the callback is called
        Tail,      ///< the stop was asked for: silence, so that the last sound is heard in full
        Drained,   ///< nothing more comes
    };

    void setCallback(RenderCallback callback, void* context) noexcept; ///< [main]
    /// [main] The silence behind the last frame of the last render call.
    void setTail(std::uint32_t frames) noexcept { tailFrames_ = frames; }

    /// [any] Before the first request: render calls begin with the second one.
    void leaveFirstRequestSilent() noexcept { leavesSilent_.store(true); }

    /// [audio][rt] Fills `frames` mono frames. Returns fewer only at the very end.
    std::uint32_t fill(float* output, std::uint32_t frames) noexcept ZEMO_NONBLOCKING;

    void begin() noexcept;  ///< [main] with no device run under way
    bool resume() noexcept; ///< [main] true when render calls go on in the run under way
    void askStop() noexcept ZEMO_NONBLOCKING; ///< [any][rt] render calls give way to the tail
    void drained() noexcept ZEMO_NONBLOCKING {
        phase_.store(Phase::Drained);
    }                                                  ///< [any] the device has ended
    void end() noexcept { phase_.store(Phase::Idle); } ///< [main] the device run is over

    /// [main] Returns when no call of the callback is running; none follows, whatever the device
    /// still asks for.
    void halt() noexcept;

    /// [any] Requests of the device so far, in all runs.
    std::uint64_t requests() const noexcept ZEMO_NONBLOCKING { return entered_.load(); }

    Phase phase() const noexcept ZEMO_NONBLOCKING { return phase_.load(); } ///< [any][rt]

private:
    std::uint32_t answer(float* output, std::uint32_t frames) noexcept ZEMO_NONBLOCKING;
    void render() noexcept ZEMO_NONBLOCKING;
    std::uint32_t takeRendered(float* output, std::uint32_t most) noexcept ZEMO_NONBLOCKING;
    bool endTail() noexcept ZEMO_NONBLOCKING;

    RenderCallback callback_ = nullptr;
    void* context_ = nullptr;
    std::uint32_t tailFrames_ = 0;
    std::atomic<Phase> phase_{Phase::Idle};
    /// Sequentially consistent, as is the phase: either a request sees that the run was halted, or
    /// the halt sees the request and waits for it.
    std::atomic<std::uint64_t> entered_{0};
    std::atomic<std::uint64_t> left_{0};
    std::atomic<bool> leavesSilent_{false}; ///< the next request
    // Of the audio thread, and of begin(), before it runs.
    std::array<float, kFramesPerRenderCall> block_{}; ///< of the last render call
    std::uint32_t undelivered_ = 0;                   ///< its last frames, which wait
    std::uint32_t tailDone_ = 0;
    double sampleTime_ = 0.0; ///< frames rendered in this run
};

} // namespace zemo::platform
