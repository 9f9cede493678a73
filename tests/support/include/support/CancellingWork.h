#pragma once

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/LongWork.h"
#include "platform/Progress.h"

namespace zemo::test {

/// Long work whose user cancels it as soon as it has come that far; the service of this process for
/// as long as the object lives. Done on another thread, as in the window.
class CancellingWork final : public platform::LongWork {
public:
    explicit CancellingWork(double atFraction) : at_(atFraction) {
        platform::services().longWork = this;
    }
    ~CancellingWork() override { platform::services().longWork = nullptr; }

    int cancelled = 0; ///< how many pieces of work

    bool run(const Work& work, platform::Cancel cancel) override {
        platform::Progress progress;
        std::atomic<bool> done{false};
        if (at_ <= 0.0 && cancel == platform::Cancel::Allowed) {
            progress.requestStop();
        }
        std::jthread worker([&] {
            const platform::ProgressScope scope(&progress);
            work();
            done = true;
        });
        while (!done) {
            if (progress.fraction() >= at_ && cancel == platform::Cancel::Allowed) {
                progress.requestStop();
            }
            // Who sleeps gets a processor as soon as he wakes, also on a busy machine; who only
            // yields has had his share of it when the moment comes.
            std::this_thread::sleep_for(std::chrono::microseconds(20));
        }
        worker.join();
        cancelled += progress.isStopRequested() ? 1 : 0;
        return !progress.isStopRequested();
    }
    void pause(std::chrono::microseconds duration) override {
        platform::services().clock->sleepFor(duration);
    }

private:
    double at_;
};

} // namespace zemo::test
