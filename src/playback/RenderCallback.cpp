#include "playback/RenderCallback.h"

#include <cmath>

#include "platform/RealTime.h"
#include "playback/Delegate.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace {

constexpr auto relaxed = std::memory_order_relaxed;

/// For a process in which nobody listens.
class NobodyListens final : public RenderDelegate {
    void updateValue(float) override {}
    void resetMeter() override {}
    void resetPlayTitle() override {}
    void traceIdleCycle(std::int32_t) override {}
    void traceMissingBuffer() override {}
};
constinit NobodyListens nobody;

RenderDelegate& listener() noexcept {
    RenderDelegate* const delegate = renderDelegate.load(std::memory_order_acquire);
    return delegate != nullptr ? *delegate : nobody;
}

/// One call of the callback. What other threads may change meanwhile (the ramp state, the position
/// of a play that is begun anew) is read once, at the entry, and written back only where it is
/// still what was read: a stop or a play asked for during the call is never lost.
class RenderCall {
public:
    RenderCall(BufferPlayer& player, const RenderPassage& sound, RenderDelegate& delegate,
               float* output, std::uint32_t frames) noexcept
        : player_(player),
          sound_(sound),
          delegate_(delegate),
          output_(output),
          frames_(frames),
          state_(player.rampState.load(std::memory_order_acquire)),
          wasPlaying_(player.isPlaying.load(relaxed) != 0),
          position_(player.readPosition.load()) {}

    void run() noexcept {
        renderFrames();
        publishLevel();
        endCall();
    }

private:
    void renderFrames() noexcept;
    float frame(std::uint32_t i, float sample) const noexcept;
    void measure(float frame) noexcept;
    void endOfBuffer() noexcept;
    void advance(double position) noexcept;
    void endPlay() noexcept;
    void clearPlaying() noexcept;
    void publishLevel() noexcept;
    void endCall() noexcept;
    void endSteadyCall() noexcept;
    void endSilentCall() noexcept;
    void endFadeOut() noexcept;
    void moveTo(RampState next) noexcept;

    BufferPlayer& player_;
    const RenderPassage& sound_;
    RenderDelegate& delegate_;
    float* const output_;
    const std::uint32_t frames_;
    std::uint32_t state_;
    const bool wasPlaying_;
    const double position_;
    std::int64_t total_ = 0;
    float peak_ = 0.0F;
    float sum_ = 0.0F;
    bool ended_ = false;
};

/// The index and the total advance together from 0. They are taken from one variable, or a play
/// that is begun anew between two reads would tear them apart.
void RenderCall::renderFrames() noexcept {
    double position = position_;
    total_ = static_cast<std::int64_t>(position_);
    for (std::uint32_t i = 0; i < frames_; ++i) {
        if (total_ < sound_.count()) {
            output_[i] = frame(i, sound_.samples()[total_]);
            measure(output_[i]);
        } else {
            output_[i] = 0.0F;
            endOfBuffer();
        }
        position += 1.0;
        total_ += 1;
    }
    advance(position);
    if (ended_) {
        endPlay();
    }
}

/// The four states are separate tests: a value above FadeOut leaves the frame as it is.
float RenderCall::frame(std::uint32_t i, float sample) const noexcept {
    const auto count = static_cast<float>(frames_);
    float result = output_[i];
    if (state_ == Silent) {
        result = 0.0F;
    }
    if (state_ == FadeIn) {
        result = sample * static_cast<float>(i) / count;
    }
    if (state_ == Steady) {
        result = sample;
    }
    if (state_ == FadeOut) {
        result = sample * static_cast<float>(frames_ - i) / count;
    }
    return result;
}

/// The peak keeps its sign, and a later equal magnitude wins. A NaN is never the peak.
void RenderCall::measure(float frame) noexcept {
    if (std::fabs(frame) >= std::fabs(peak_)) {
        peak_ = frame;
    }
    sum_ += frame * frame;
}

/// The message repeats for every remaining frame of the call.
void RenderCall::endOfBuffer() noexcept {
    value.store(0.0F, relaxed);
    delegate_.updateValue(0.0F);
    ended_ = true;
}

/// Not where a play was begun during a silent call: that one has its own position.
void RenderCall::advance(double position) noexcept {
    double expected = position_;
    if (player_.readPosition.compare_exchange_strong(expected, position)) {
        totalFrames.store(total_);
    }
}

/// A silent call that passes the end has no play to end: another thread may just have begun one.
/// And from the moment when isPlaying is 0 it may, so all else of this play is stored before.
void RenderCall::endPlay() noexcept {
    if (state_ != Silent) {
        state_ = Silent;
        player_.rampState.store(Silent, relaxed);
    }
    clearPlaying();
    player_.outputUnit->stop();
}

void RenderCall::clearPlaying() noexcept {
    if (wasPlaying_) {
        player_.isPlaying.store(0, std::memory_order_release);
    }
}

void RenderCall::publishLevel() noexcept {
    const float rms = std::sqrt(sum_ / static_cast<float>(frames_));
    const bool rmsMode = player_.rmsMode.load(relaxed) != 0;
    const float level = rmsMode ? static_cast<float>(1.414 * static_cast<double>(rms)) : peak_;
    value.store(level, relaxed);
    delegate_.updateValue(level);
}

void RenderCall::endCall() noexcept {
    switch (state_) {
    case Silent:
        return endSilentCall();
    case FadeIn:
        return moveTo(Steady);
    case Steady:
        return endSteadyCall();
    case FadeOut:
        return endFadeOut();
    default:
        return;
    }
}

/// Twice the call's frames, in 32 bits.
void RenderCall::endSteadyCall() noexcept {
    const std::uint32_t twoCalls = 2U * frames_;
    if (sound_.count() - total_ < std::int64_t{twoCalls}) {
        moveTo(FadeOut);
    }
}

void RenderCall::endSilentCall() noexcept {
    value.store(0.0F, relaxed);
    std::int32_t left = player_.idleCycles.load(relaxed);
    if (left > 0) {
        // A play begun during this call has set the count anew; then it stands.
        if (player_.idleCycles.compare_exchange_strong(left, left - 1, relaxed)) {
            delegate_.traceIdleCycle(left - 1);
        }
    } else if (!ended_) {
        clearPlaying();
        player_.outputUnit->stop();
    }
    delegate_.resetMeter();
    value.store(0.0F, relaxed);
    delegate_.updateValue(0.0F);
}

void RenderCall::endFadeOut() noexcept {
    player_.rampState.store(Silent, relaxed);
    player_.isPlaying.store(0, std::memory_order_release);
    delegate_.resetPlayTitle();
    delegate_.resetMeter();
}

/// A stop asked for during the call wins: it fades out over the whole of the next call.
void RenderCall::moveTo(RampState next) noexcept {
    player_.rampState.compare_exchange_strong(state_, next, relaxed);
}

} // namespace

platform::Status FloatBufferRenderProc(void* context, platform::RenderActionFlags* /*flags*/,
                                       const platform::AudioTimeStamp* /*time*/,
                                       std::uint32_t /*bus*/, std::uint32_t frames,
                                       platform::AudioBufferList* data) {
    const platform::RealTimeScope realTime;
    const RenderPassage sound;
    if (sound.samples() == nullptr) {
        listener().traceMissingBuffer();
        return platform::kNoError;
    }
    auto& player = *static_cast<BufferPlayer*>(context);
    auto* const output = static_cast<float*>(data->mBuffers[0].mData);
    RenderCall(player, sound, listener(), output, frames).run();
    return platform::kNoError;
}

} // namespace zemo
