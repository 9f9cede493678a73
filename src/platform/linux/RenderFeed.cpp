#include "platform_linux/RenderFeed.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace zemo::platform {

void RenderFeed::setCallback(RenderCallback callback, void* context) noexcept {
    callback_ = callback;
    context_ = context;
}

std::uint32_t RenderFeed::fill(float* output, std::uint32_t frames) noexcept ZEMO_NONBLOCKING {
    std::fill_n(output, frames, 0.0F);
    entered_.fetch_add(1);
    const bool isLeftSilent = leavesSilent_.exchange(false);
    const std::uint32_t delivered = isLeftSilent ? frames : answer(output, frames);
    left_.fetch_add(1);
    return delivered;
}

/// `output` is silent as it comes.
std::uint32_t RenderFeed::answer(float* output, std::uint32_t frames) noexcept ZEMO_NONBLOCKING {
    std::uint32_t done = 0;
    while (done < frames) {
        const Phase phase = phase_.load();
        if (phase == Phase::Rendering && undelivered_ == 0) {
            render();
        }
        const std::uint32_t wanted = frames - done;
        const std::uint32_t tailLeft = tailFrames_ - std::min(tailDone_, tailFrames_);
        if (undelivered_ > 0 && (phase == Phase::Rendering || phase == Phase::Tail)) {
            done += takeRendered(output + done, wanted);
        } else if (wanted < tailLeft) {
            tailDone_ += wanted;
            done = frames;
        } else if (endTail()) {
            return std::min(done + tailLeft, frames - 1); // only a short answer ends the run
        }
    }
    return frames;
}

/// A frame that the callback leaves alone is silent.
void RenderFeed::render() noexcept ZEMO_NONBLOCKING {
    block_.fill(0.0F);
    RenderActionFlags flags = 0;
    const AudioTimeStamp time{sampleTime_};
    AudioBufferList data{1, {{1, sizeof block_, block_.data()}}};
    callback_(context_, &flags, &time, 0, kFramesPerRenderCall, &data);
    sampleTime_ += kFramesPerRenderCall;
    undelivered_ = kFramesPerRenderCall;
    tailDone_ = 0;
}

/// The next frames of the last render call, `most` at most; how many.
std::uint32_t RenderFeed::takeRendered(float* output,
                                       std::uint32_t most) noexcept ZEMO_NONBLOCKING {
    const std::uint32_t taken = std::min(most, undelivered_);
    std::copy_n(block_.end() - undelivered_, taken, output);
    undelivered_ -= taken;
    return taken;
}

/// False when a play was begun in this very moment: the run goes on instead.
bool RenderFeed::endTail() noexcept ZEMO_NONBLOCKING {
    tailDone_ = tailFrames_;
    Phase expected = Phase::Tail;
    return phase_.compare_exchange_strong(expected, Phase::Drained) || expected != Phase::Rendering;
}

void RenderFeed::begin() noexcept {
    undelivered_ = 0; // of a run that was halted
    tailDone_ = 0;
    sampleTime_ = 0.0;
    phase_.store(Phase::Rendering);
}

bool RenderFeed::resume() noexcept {
    Phase expected = Phase::Tail;
    return phase_.compare_exchange_strong(expected, Phase::Rendering) ||
           expected == Phase::Rendering;
}

void RenderFeed::askStop() noexcept ZEMO_NONBLOCKING {
    Phase expected = Phase::Rendering;
    phase_.compare_exchange_strong(expected, Phase::Tail);
}

void RenderFeed::halt() noexcept {
    phase_.store(Phase::Idle);
    const std::uint64_t entered = entered_.load();
    while (left_.load() < entered) { // the callback never waits, so this is short
        std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
}

} // namespace zemo::platform
