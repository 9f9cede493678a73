#pragma once

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "platform/RealTime.h"
#include "playback/SharedState.h"

/// How the sound is replaced while the audio thread may be reading it.
///
/// The callback takes the sound's address and length once, at its entry, between the two halves of
/// a RenderPassage. The main thread first publishes length 0, waits until every call that may have
/// seen the old length has left, and only then publishes the new address, the new length, and
/// frees the old block. So a call sees a matching pair or nothing, and never waits.
namespace zemo {

/// How long a play under way may take to fade and fall idle before it is cut.
inline constexpr std::chrono::milliseconds kIdleWait{1000};

/// Samples on the heap. Shared, so that a save can hold the sound as it was while another takes its
/// place: a block that others hold must not be written to.
using SampleBlock = std::shared_ptr<float>;

/// [any] Takes over a block of malloc's; null, the block freed, when there is no memory for that.
SampleBlock ownSamples(float* samples) noexcept;

/// [main], [worker] `count` zeroed samples plus kSlackSamples of slack; null when there is no
/// memory for them.
SampleBlock allocateSamples(std::int64_t count);

/// [main], [worker] The same for a caller that sets every one of the `count` samples: only the
/// slack is zeroed. On a page boundary, where copies from and to files are fastest.
SampleBlock allocateUnsetSamples(std::int64_t count);

/// [main] Whether the output runs, so that the callback may be reading the sound.
bool isSounding();

/// [main] Returns when each render call that has begun by now has ended, its messages included. A
/// call never waits, so this lasts no longer than one.
void awaitRenderCallsUnderWay();

/// [main] Asks a play under way for its stop and waits until the callback is not called any more,
/// at most kIdleWait; then stops the unit outright.
void fallIdle();

/// [main] Frees the sound: fBuffer null, fBuffersize 0. Falls idle first.
void emptyBuffer();

/// [main] Makes `samples` the sound, with `slack` readable samples behind its `count`, and frees
/// the old one. Falls idle first.
void replaceBuffer(SampleBlock samples, std::int64_t count, std::int64_t slack = kSlackSamples);

/// [main] The same, but hands the old sound back: `samples`, `count` and `slack` become what the
/// sound was.
void swapBuffer(SampleBlock& samples, std::int64_t& count, std::int64_t& slack);

/// [main] The sound's block, for somebody who needs it for longer than it may be the sound; null
/// when there is none.
SampleBlock heldSound();

/// [main] Makes sure that nobody else holds the sound's block, by a copy where somebody does. False
/// when there is no memory for it.
bool ensureSoundIsWritable();

/// [main] While one lives there is no sound to play: its samples may be written to, and no render
/// call reads them, not even of a play that is begun meanwhile. Falls idle first.
class SoundWithheld {
public:
    SoundWithheld();
    SoundWithheld(const SoundWithheld&) = delete;
    SoundWithheld& operator=(const SoundWithheld&) = delete;
    ~SoundWithheld();

    std::int64_t count() const noexcept { return count_; } ///< samples of the sound

private:
    std::int64_t count_;
};

/// [main] How many samples behind the sound's end may be read.
std::int64_t slackSamples() noexcept;

/// [main] Frees the sound and sets fBuffersize to 0 but leaves fBuffer dangling. Nothing calls it,
/// and nothing may while a play is running.
void clean();

/// [audio][rt] The callback's passage through the sound: what it may read while it lives.
class RenderPassage {
public:
    RenderPassage() noexcept ZEMO_NONBLOCKING;
    RenderPassage(const RenderPassage&) = delete;
    RenderPassage& operator=(const RenderPassage&) = delete;
    ~RenderPassage() ZEMO_NONBLOCKING;

    const float* samples() const noexcept ZEMO_NONBLOCKING { return samples_; }
    /// 0 while the sound is exchanged.
    std::int64_t count() const noexcept ZEMO_NONBLOCKING { return count_; }

private:
    std::int64_t count_;
    const float* samples_;
};

} // namespace zemo
