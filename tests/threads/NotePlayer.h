#pragma once

#include <atomic>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include "midi/MidiClient.h"

namespace zemo::test {

/// A MIDI source with a thread of its own, which gives the program's midiReadProc packet lists of
/// notes, of anything else and of nonsense. What they ask for waits for the main thread.
class NotePlayer final : public MidiDelegate {
public:
    explicit NotePlayer(std::uint32_t seed);
    ~NotePlayer() override;

    /// [main] How many presses of the play button were asked for since the last time.
    std::uint64_t takePresses() noexcept { return presses_.exchange(0, std::memory_order_relaxed); }
    std::uint64_t lists() const noexcept { return lists_.load(std::memory_order_relaxed); }

    void playButtonPressedByMidi() override { presses_.fetch_add(1, std::memory_order_relaxed); }
    void setPlayTitleByMidi() override {}

private:
    void run(std::uint32_t seed);

    std::atomic<std::uint64_t> presses_{0};
    std::atomic<std::uint64_t> lists_{0};
    std::atomic<bool> ended_{false};
    std::thread thread_;
};

} // namespace zemo::test
