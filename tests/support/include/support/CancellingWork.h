#pragma once

#include <thread>

#include "platform/LongWork.h"
#include "platform/Progress.h"

namespace zemo::test {

/// Long work whose user cancels it in the moment in which it has come that far; the service of this
/// process for as long as the object lives. Done on another thread, as in the window.
class CancellingWork final : public platform::LongWork {
public:
    explicit CancellingWork(double atFraction) : at_(atFraction) {
        platform::services().longWork = this;
    }
    ~CancellingWork() override { platform::services().longWork = nullptr; }

    int cancelled = 0; ///< how many pieces of work

    bool run(const Work& work, platform::Cancel cancel) override {
        CancelledProgress progress(cancel == platform::Cancel::Allowed ? at_ : kNever);
        std::jthread worker([&] {
            const platform::ProgressScope scope(&progress);
            work();
        });
        worker.join();
        cancelled += progress.isStopRequested() ? 1 : 0;
        return !progress.isStopRequested();
    }
    void pause(std::chrono::microseconds duration) override {
        platform::services().clock->sleepFor(duration);
    }

private:
    static constexpr double kNever = 2.0;

    class CancelledProgress final : public platform::Progress {
    public:
        explicit CancelledProgress(double atFraction) : at_(atFraction) { stopIfThere(); }

        void pieceDone() noexcept override {
            Progress::pieceDone();
            stopIfThere();
        }

    private:
        void stopIfThere() noexcept {
            if (fraction() >= at_) {
                requestStop();
            }
        }

        double at_;
    };

    double at_;
};

} // namespace zemo::test
