#include "app/WorkInWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <exception>
#include <semaphore>
#include <thread>

#include "platform/OutOfMemory.h"

namespace zemo {
namespace {

using namespace std::chrono_literals;

constexpr auto kUnnoticed = 5ms;  ///< work that is done so soon needs no events in between
constexpr auto kPatience = 300ms; ///< before the panel is shown
constexpr auto kBetweenLooks = 40ms;

/// Gives a variable its value back.
template <typename Value> class Restored {
public:
    explicit Restored(Value& variable) : variable_(variable), before_(variable) {}
    Restored(const Restored&) = delete;
    Restored& operator=(const Restored&) = delete;
    ~Restored() { variable_ = before_; }

private:
    Value& variable_;
    Value before_;
};

} // namespace

void WorkInWindow::setWindow(QWidget* window) {
    window_ = window;
    window->installEventFilter(this);
}

bool WorkInWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == window_ && event->type() == QEvent::Close && progress_ != nullptr) {
        progress_->requestStop();
    }
    return false;
}

bool WorkInWindow::run(const Work& work, platform::Cancel cancel) {
    const Restored<bool> busyBefore(busy_);
    busy_ = true;
    platform::Progress progress;
    const Restored<platform::Progress*> restored(progress_);
    progress_ = &progress;
    std::binary_semaphore done(0);
    std::atomic<bool> hasEnded{false};
    QEventLoop events;
    const auto workAndTell = [&] {
        const platform::ProgressScope scope(&progress);
        work();
        hasEnded = true;
        done.release();
        platform::unlessOutOfMemory(
            [&] { QMetaObject::invokeMethod(&events, &QEventLoop::quit, Qt::QueuedConnection); },
            [] {}); // the next look sees it
    };
    std::jthread worker;
    try {
        worker = std::jthread(workAndTell);
    } catch (const std::exception&) { // no thread is to be had, or no memory for one
        workAndTell();
    }
    if (done.try_acquire_for(kUnnoticed)) {
        return true;
    }
    QTimer looks;
    QElapsedTimer since;
    since.start();
    connect(&looks, &QTimer::timeout, this, [&] {
        if (hasEnded) {
            events.quit();
        } else if (since.hasExpired(std::chrono::milliseconds(kPatience).count())) {
            showPanel(progress, cancel);
        }
    });
    looks.start(kBetweenLooks);
    events.exec();
    if (!done.try_acquire()) { // the program quits
        progress.requestStop();
    }
    worker.join();
    delete panel_;
    return !progress.isStopRequested();
}

void WorkInWindow::showPanel(platform::Progress& progress, platform::Cancel cancel) {
    if (panel_ == nullptr) {
        QWidget* const sheet = QApplication::activeModalWidget();
        panel_ = new ProgressPanel(sheet != nullptr ? sheet : window_.data(), description_,
                                   cancel == platform::Cancel::Allowed);
        connect(panel_, &ProgressPanel::cancelled, this, [&progress] { progress.requestStop(); });
        panel_->open();
    }
    panel_->setFraction(progress.fraction());
}

void WorkInWindow::pause(std::chrono::microseconds duration) {
    const Restored<bool> busyBefore(busy_);
    const Restored<bool> pausingBefore(pausing_);
    busy_ = pausing_ = true;
    QCoreApplication::processEvents();
    platform::services().clock->sleepFor(duration);
}

} // namespace zemo
