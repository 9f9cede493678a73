#include "playback/RenderCallback.h"

#include <algorithm>
#include <cmath>

#include "platform/RealTime.h"
#include "playback/Delegate.h"
#include "playback/FrameRuns.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace {

constexpr auto relaxed = std::memory_order_relaxed;
constexpr std::int64_t kExactPositions = std::int64_t{1} << 53;

/// For a process in which nobody listens.
class NobodyListens final : public RenderDelegate {
    void updateValue(float) override {}
    void repeatUpdateValue(float, std::uint32_t) override {}
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

// On an audio thread the RenderMessageQueue listens, whose messages have the attribute. Where
// zemo-batch renders there is none, and its listener prints. The unit's stop() raises a flag here.
ZEMO_TRUSTED_NONBLOCKING

/// All that the callback calls without knowing what it is.
class Outside {
public:
    Outside(RenderDelegate& delegate, platform::AudioOutputUnit* unit) noexcept
        : delegate_(delegate), unit_(unit) {}

    void updateValue(float level) const noexcept ZEMO_NONBLOCKING { delegate_.updateValue(level); }
    void repeatUpdateValue(float level, std::uint32_t times) const noexcept ZEMO_NONBLOCKING {
        delegate_.repeatUpdateValue(level, times);
    }
    void resetMeter() const noexcept ZEMO_NONBLOCKING { delegate_.resetMeter(); }
    void resetPlayTitle() const noexcept ZEMO_NONBLOCKING { delegate_.resetPlayTitle(); }
    void traceIdleCycle(std::int32_t left) const noexcept ZEMO_NONBLOCKING {
        delegate_.traceIdleCycle(left);
    }
    void traceMissingBuffer() const noexcept ZEMO_NONBLOCKING { delegate_.traceMissingBuffer(); }
    void stopUnit() const noexcept ZEMO_NONBLOCKING { unit_->stop(); }

private:
    RenderDelegate& delegate_;
    platform::AudioOutputUnit* unit_;
};

ZEMO_TRUSTED_END

/// One call of the callback. What other threads may change meanwhile (the ramp state, the position
/// of a play that is begun anew) is read once, at the entry, and written back only where it is
/// still what was read: a stop or a play asked for during the call is never lost.
class RenderCall {
public:
    RenderCall(BufferPlayer& player, const RenderPassage& sound, const Outside& outside,
               float* output, std::uint32_t frames) noexcept
        : player_(player),
          sound_(sound),
          outside_(outside),
          output_(output),
          frames_(frames),
          state_(player.rampState.load(std::memory_order_acquire)),
          wasPlaying_(player.isPlaying.load(relaxed) != 0),
          position_(player.readPosition.load()) {}

    void run() noexcept ZEMO_NONBLOCKING {
        renderFrames();
        publishLevel();
        endCall();
    }

private:
    void renderFrames() noexcept;
    void soundFrames(const float* samples, std::uint32_t count) noexcept;
    void endOfBuffer(std::uint32_t remaining) noexcept;
    double positionAfter(std::int64_t first) const noexcept;
    void advance(double position) noexcept;
    void endPlay() noexcept;
    void fallSilent() noexcept;
    void clearPlaying() noexcept;
    void publishLevel() noexcept;
    float peakLevel() const noexcept;
    float rmsLevel() const noexcept;
    void endCall() noexcept;
    void endSteadyCall() noexcept;
    void endSilentCall() noexcept;
    void endFadeOut() noexcept;
    void moveTo(RampState next) noexcept;

    BufferPlayer& player_;
    const RenderPassage& sound_;
    const Outside& outside_;
    float* const output_;
    const std::uint32_t frames_;
    std::uint32_t state_;
    const bool wasPlaying_;
    const double position_;
    std::int64_t total_ = 0;
    std::uint32_t measured_ = 0; ///< the call's first frames, of which its level is taken
    bool ended_ = false;
};

/// The index and the total advance together from 0. They are taken from one variable, or a play
/// that is begun anew between two reads would tear them apart.
void RenderCall::renderFrames() noexcept {
    const auto first = static_cast<std::int64_t>(position_);
    const std::int64_t left = std::max<std::int64_t>(sound_.count() - first, 0);
    const auto sounding = static_cast<std::uint32_t>(std::min<std::int64_t>(left, frames_));
    total_ = first + frames_;
    if (sounding > 0) {
        soundFrames(sound_.samples() + first, sounding);
    }
    if (sounding < frames_) {
        std::fill(output_ + sounding, output_ + frames_, 0.0F);
        endOfBuffer(frames_ - sounding);
    }
    advance(positionAfter(first));
    if (ended_) {
        endPlay();
    }
}

/// A value above FadeOut leaves the frames as they are.
void RenderCall::soundFrames(const float* samples, std::uint32_t count) noexcept {
    measured_ = count;
    switch (state_) {
    case Silent:
        std::fill_n(output_, count, 0.0F);
        measured_ = 0; // peak and sum of silence are what they are without it
        return;
    case FadeIn:
        return fadeInFrames(output_, samples, count, frames_);
    case Steady:
        std::copy_n(samples, count, output_);
        return;
    case FadeOut:
        return fadeOutFrames(output_, samples, count, frames_);
    default:
        return;
    }
}

/// The message repeats for every remaining frame of the call.
void RenderCall::endOfBuffer(std::uint32_t remaining) noexcept {
    value.store(0.0F, relaxed);
    outside_.repeatUpdateValue(0.0F, remaining);
    ended_ = true;
}

/// 1.0 a frame. Whole numbers that a double holds exactly may be added at once.
double RenderCall::positionAfter(std::int64_t first) const noexcept {
    if (static_cast<double>(first) == position_ && total_ <= kExactPositions) {
        return static_cast<double>(total_);
    }
    double position = position_;
    for (std::uint32_t i = 0; i < frames_; ++i) {
        position += 1.0;
    }
    return position;
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
        fallSilent();
    }
    clearPlaying();
    outside_.stopUnit();
}

/// A stop that was asked for during the call has nothing more to end. A play that was begun during
/// it stands: that can be when a stop came so late that nothing played any more.
void RenderCall::fallSilent() noexcept {
    std::uint32_t expected = state_;
    state_ = Silent;
    if (!player_.rampState.compare_exchange_strong(expected, Silent, relaxed) &&
        expected == FadeOut) {
        player_.rampState.compare_exchange_strong(expected, Silent, relaxed);
    }
}

void RenderCall::clearPlaying() noexcept {
    if (wasPlaying_) {
        player_.isPlaying.store(0, std::memory_order_release);
    }
}

void RenderCall::publishLevel() noexcept {
    const float level = player_.rmsMode.load(relaxed) != 0 ? rmsLevel() : peakLevel();
    value.store(level, relaxed);
    outside_.updateValue(level);
}

/// Without any frame 0.
float RenderCall::peakLevel() const noexcept {
    return peakOfFrames(output_, measured_);
}

float RenderCall::rmsLevel() const noexcept {
    const float sum = sumOfSquaredFrames(output_, measured_);
    const float rms = std::sqrt(sum / static_cast<float>(frames_));
    return static_cast<float>(1.414 * static_cast<double>(rms));
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
            outside_.traceIdleCycle(left - 1);
        }
    } else if (!ended_) {
        clearPlaying();
        outside_.stopUnit();
    }
    outside_.resetMeter();
    value.store(0.0F, relaxed);
    outside_.updateValue(0.0F);
}

void RenderCall::endFadeOut() noexcept {
    fallSilent();
    clearPlaying();
    outside_.resetPlayTitle();
    outside_.resetMeter();
}

/// A stop asked for during the call wins: it fades out over the whole of the next call.
void RenderCall::moveTo(RampState next) noexcept {
    player_.rampState.compare_exchange_strong(state_, next, relaxed);
}

} // namespace

platform::Status FloatBufferRenderProc(void* context, platform::RenderActionFlags* /*flags*/,
                                       const platform::AudioTimeStamp* /*time*/,
                                       std::uint32_t /*bus*/, std::uint32_t frames,
                                       platform::AudioBufferList* data) noexcept ZEMO_NONBLOCKING {
    const platform::RealTimeScope realTime;
    const RenderPassage sound;
    auto& player = *static_cast<BufferPlayer*>(context);
    const Outside outside(listener(), player.outputUnit);
    if (sound.samples() == nullptr) {
        outside.traceMissingBuffer();
        return platform::kNoError;
    }
    auto* const output = static_cast<float*>(data->mBuffers[0].mData);
    RenderCall(player, sound, outside, output, frames).run();
    return platform::kNoError;
}

} // namespace zemo
