#include "Pace.h"

#include <algorithm>
#include <cstdio>
#include <thread>

namespace zemo::recorders {
namespace {

using namespace std::chrono_literals;

constexpr auto kBetweenLooks = 500us;
// So long a server and its players never have work without a moment of rest, unless one of them is
// broken. The recording goes on then, so that the test that waits for it can say what it missed.
constexpr auto kLongest = 3s;

} // namespace

bool Pace::mayTick() {
    const Clock::time_point now = Clock::now();
    if (now < due_) {
        return false;
    }
    if (!isWatching_ || watch_.allAsleep()) {
        return true;
    }
    if (now > due_ + kLongest) {
        std::fputs("ticked although somebody was awake\n", stderr);
        return true;
    }
    return false;
}

void Pace::tick(std::uint32_t frames) {
    due_ =
        std::max(due_, Clock::now()) + std::chrono::nanoseconds(frames * 1'000'000'000ULL / rate_);
}

std::chrono::nanoseconds Pace::untilNextLook() const {
    return std::max<std::chrono::nanoseconds>(due_ - Clock::now(), kBetweenLooks);
}

void Pace::waitAndTick(std::uint32_t frames) {
    while (!mayTick()) {
        std::this_thread::sleep_for(untilNextLook());
    }
    tick(frames);
}

} // namespace zemo::recorders
