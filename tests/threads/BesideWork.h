#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <random>
#include <thread>

#include "platform/LongWork.h"
#include "platform/Progress.h"

namespace zemo::test {

/// Long work as the window does it: on another thread, while this one goes on with its events. A
/// third thread cancels it, now and then, as soon as it comes across it.
class BesideWork final : public platform::LongWork {
public:
    /// `handleEvents` is told whether the end of a play is waited for.
    BesideWork(std::function<void(bool pausing)> handleEvents, std::uint32_t seed);
    ~BesideWork() override;

    bool run(const Work& work, platform::Cancel cancel) override;
    void pause(std::chrono::microseconds duration) override;

    bool wasCancelled() const noexcept { return wasCancelled_; } ///< [main] the last one
    std::uint64_t cancelled() const noexcept { return cancelled_; }
    std::uint64_t done() const noexcept { return done_; }

private:
    void cancelNowAndThen(std::uint32_t seed);
    void show(platform::Progress* progress);

    std::function<void(bool)> handleEvents_;
    std::mutex mutex_; ///< of the pointer: what it points to is gone when the work is
    platform::Progress* shown_ = nullptr;
    bool wasCancelled_ = false;
    std::uint64_t cancelled_ = 0;
    std::uint64_t done_ = 0;
    std::atomic<bool> ended_{false};
    std::thread canceller_;
};

} // namespace zemo::test
