#pragma once

#include <chrono>
#include <cstdint>

#include "SleepWatch.h"

namespace zemo::recorders {

/// When a recorder that is its server's clock may let the next period begin: not before the last
/// one's time has passed (late, it does not catch up), and when server and players sleep.
class Pace {
public:
    /// `rate` in hertz; `parent` is the process whose children are watched, or 0: nobody is.
    Pace(std::uint32_t rate, pid_t parent)
        : rate_(rate), isWatching_(parent != 0), watch_(parent) {}

    /// Whether the next period may begin now. Never waits.
    bool mayTick();

    /// When to ask that next.
    std::chrono::nanoseconds untilNextLook() const;

    /// Whether the server or a player is stopped, so that the period under way may never end.
    bool isStopped() const { return watch_.anyStopped(); }

    /// The next period, of so many frames, begins now.
    void tick(std::uint32_t frames);

    /// Waits until the next period may begin, and begins it.
    void waitAndTick(std::uint32_t frames);

private:
    using Clock = std::chrono::steady_clock;

    std::uint32_t rate_;
    bool isWatching_;
    SleepWatch watch_;
    Clock::time_point due_ = Clock::now();
};

} // namespace zemo::recorders
