#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace zemo::test {

/// Which sounds a render call may hear. The main thread writes a sound in before it can be heard,
/// and says when the ones before it are gone; the audio thread looks up what explains its frames.
///
/// What the two say to each other is relaxed where it can be, or the book itself would put their
/// threads in an order that the program does not.
class SoundBook {
public:
    SoundBook() { announce({}), publish(); }

    /// [main] From now on a call may hear this sound as well.
    void announce(std::vector<float> sound);
    /// [main] The sound that was announced last is the one: a call that begins now hears no other.
    void publish() noexcept { surely_.store(announced_.load(relaxed), relaxed); }
    /// [main] It did not come: the one before it goes on, under a new number.
    void withdraw();

    /// [main] The sound that was published last.
    const std::vector<float>& current() const { return *sounds_[place(surely_.load(relaxed))]; }

    /// [audio] At a call's entry: the oldest sound that it may hear.
    std::int64_t enter() noexcept;
    /// [audio] Behind the call: empty when its frames are those of one state of the player over one
    /// sound that it may have heard, from one of two positions on; or what they are.
    std::string judge(std::int64_t oldest, std::int64_t position, const float* frames,
                      std::uint32_t count);

private:
    static constexpr std::size_t kKept = 512;
    static constexpr std::int64_t kNone = std::numeric_limits<std::int64_t>::max();
    static constexpr auto relaxed = std::memory_order_relaxed;
    static std::size_t place(std::int64_t number) {
        return static_cast<std::size_t>(number) % kKept;
    }

    std::array<std::unique_ptr<const std::vector<float>>, kKept> sounds_;
    std::atomic<std::int64_t> announced_{-1};
    std::atomic<std::int64_t> surely_{-1};
    std::atomic<std::int64_t> oldestInUse_{kNone};
};

} // namespace zemo::test
