#include "BesideWork.h"

#include "platform/Clock.h"
#include "platform/Services.h"

namespace zemo::test {

using namespace std::chrono_literals;

BesideWork::BesideWork(std::function<void(bool)> handleEvents, std::uint32_t seed)
    : handleEvents_(std::move(handleEvents)), canceller_([this, seed] { cancelNowAndThen(seed); }) {
    platform::services().longWork = this;
}

BesideWork::~BesideWork() {
    platform::services().longWork = nullptr;
    ended_ = true;
    canceller_.join();
}

bool BesideWork::run(const Work& work, platform::Cancel cancel) {
    platform::Progress progress;
    std::atomic<bool> isDone{false};
    std::jthread worker([&] {
        const platform::ProgressScope scope(&progress);
        work();
        isDone = true;
    });
    if (cancel == platform::Cancel::Allowed) {
        show(&progress);
    }
    while (!isDone) {
        static_cast<void>(progress.fraction());
        handleEvents_(false);
        std::this_thread::yield();
    }
    show(nullptr);
    worker.join();
    wasCancelled_ = progress.isStopRequested();
    ++(wasCancelled_ ? cancelled_ : done_);
    return !wasCancelled_;
}

void BesideWork::pause(std::chrono::microseconds duration) {
    handleEvents_(true);
    platform::services().clock->sleepFor(duration);
}

void BesideWork::show(platform::Progress* progress) {
    const std::lock_guard lock(mutex_);
    shown_ = progress;
}

void BesideWork::cancelNowAndThen(std::uint32_t seed) {
    std::mt19937 random(seed);
    while (!ended_) {
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
        const std::lock_guard lock(mutex_);
        if (shown_ != nullptr && random() % 3 == 0) {
            shown_->requestStop();
        }
    }
}

} // namespace zemo::test
