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
    const std::uint32_t delivered = answer(output, frames);
    left_.fetch_add(1);
    return delivered;
}

std::uint32_t RenderFeed::answer(float* output, std::uint32_t frames) noexcept ZEMO_NONBLOCKING {
    if (phase_.load() != Phase::Rendering) {
        return fillTail(frames);
    }
    tailDone_ = 0;
    RenderActionFlags flags = 0;
    const AudioTimeStamp time{sampleTime_};
    AudioBufferList data{1, {{1, frames * static_cast<std::uint32_t>(sizeof(float)), output}}};
    callback_(context_, &flags, &time, 0, frames, &data);
    sampleTime_ += frames;
    return frames;
}

std::uint32_t RenderFeed::fillTail(std::uint32_t frames) noexcept ZEMO_NONBLOCKING {
    const std::uint32_t left = tailFrames_ - std::min(tailDone_, tailFrames_);
    if (frames < left) {
        tailDone_ += frames;
        return frames;
    }
    tailDone_ = tailFrames_;
    Phase expected = Phase::Tail;
    // When a play was begun in this very moment the run goes on instead.
    const bool resumed =
        !phase_.compare_exchange_strong(expected, Phase::Drained) && expected == Phase::Rendering;
    return resumed || frames == 0 ? frames : std::min(left, frames - 1);
}

void RenderFeed::begin() noexcept {
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
