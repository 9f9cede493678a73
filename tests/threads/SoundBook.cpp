#include "SoundBook.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <thread>

#include "platform/Format.h"
#include "playback/SharedState.h"

namespace zemo::test {
namespace {

bool isSameFrame(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

float inState(RampState state, float sample, std::uint32_t i, std::uint32_t length) {
    const auto whole = static_cast<float>(length);
    switch (state) {
    case FadeIn:
        return sample * static_cast<float>(i) / whole;
    case FadeOut:
        return sample * static_cast<float>(length - i) / whole;
    default:
        return sample;
    }
}

/// Whether the frames are that state of the sound from `first` on, and zeros behind its end.
bool isStateOf(RampState state, const std::vector<float>& sound, std::int64_t first,
               const float* frames, std::uint32_t count) {
    const auto left = static_cast<std::int64_t>(sound.size()) - first;
    const auto sounding =
        static_cast<std::uint32_t>(std::clamp<std::int64_t>(left, 0, std::int64_t{count}));
    for (std::uint32_t i = 0; i < sounding; ++i) {
        const float sample = sound[static_cast<std::size_t>(first + i)];
        if (!isSameFrame(frames[i], inState(state, sample, i, count))) {
            return false;
        }
    }
    return std::all_of(frames + sounding, frames + count,
                       [](float frame) { return frame == 0.0F; });
}

bool explains(const std::vector<float>& sound, std::int64_t position, const float* frames,
              std::uint32_t count) {
    for (const RampState state : {Steady, FadeIn, FadeOut}) {
        // The position as it was before the call, or that of a play that was begun meanwhile.
        if (isStateOf(state, sound, position, frames, count) ||
            isStateOf(state, sound, 0, frames, count)) {
            return true;
        }
    }
    return false;
}

} // namespace

void SoundBook::announce(std::vector<float> sound) {
    const std::int64_t number = announced_.load(relaxed) + 1;
    std::unique_ptr<const std::vector<float>>& kept = sounds_[place(number)];
    // Seldom, so that the threads are seldom put in an order: only where one is still looked up.
    while (kept != nullptr && oldestInUse_.load() <= number - static_cast<std::int64_t>(kKept)) {
        std::this_thread::yield();
    }
    kept = std::make_unique<const std::vector<float>>(std::move(sound));
    announced_.store(number, std::memory_order_release);
}

void SoundBook::withdraw() {
    announce(current());
    publish();
}

std::int64_t SoundBook::enter() noexcept {
    const std::int64_t oldest = surely_.load(relaxed);
    oldestInUse_.store(oldest, relaxed);
    return oldest;
}

std::string SoundBook::judge(std::int64_t oldest, std::int64_t position, const float* frames,
                             std::uint32_t count) {
    const bool silent = std::all_of(frames, frames + count, [](float f) { return f == 0.0F; });
    const std::int64_t newest = announced_.load(std::memory_order_acquire);
    bool explained = silent;
    for (std::int64_t number = oldest; number <= newest && !explained; ++number) {
        explained = explains(*sounds_[place(number)], position, frames, count);
    }
    std::string wrong;
    if (!explained) {
        wrong = platform::format("%u frames from %ld on in none of the sounds %ld to %ld:", count,
                                 position, oldest, newest);
        for (std::uint32_t i = 0; i < std::min(count, 12U); ++i) {
            wrong += platform::format(" %g", static_cast<double>(frames[i]));
        }
    }
    oldestInUse_.store(kNone, std::memory_order_release);
    return wrong;
}

} // namespace zemo::test
