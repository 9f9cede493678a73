#pragma once

#include <chrono>

namespace zemo::platform {

class Clock {
public:
    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    virtual std::chrono::nanoseconds now() = 0;               ///< [any] monotonic time
    virtual void sleepFor(std::chrono::nanoseconds time) = 0; ///< [main], [worker]
};

} // namespace zemo::platform
