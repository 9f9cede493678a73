#include "app/WorkInWindow.h"

#include <QApplication>
#include <QEventLoop>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <semaphore>
#include <thread>
#include <utility>

#include "platform/OutOfMemory.h"

namespace zemo {
namespace {

using namespace std::chrono_literals;

constexpr auto kUnnoticed = 5ms;  ///< work that is done so soon needs no events in between
constexpr auto kPatience = 300ms; ///< from a turn's beginning to the panel
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

WorkInWindow::WorkInWindow(QObject* parent) : QObject(parent) {
    panelCloser_.setSingleShot(true);
    connect(&panelCloser_, &QTimer::timeout, this, [this] { delete panel_; });
}

void WorkInWindow::setWindow(QWidget* window) {
    window_ = window;
    window->installEventFilter(this);
}

bool WorkInWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == window_ && event->type() == QEvent::Close && hasTurn_) {
        cancelTurn();
    }
    return false;
}

// Turns -------------------------------------------------------------------------------------------

WorkInWindow::Turn WorkInWindow::takeTurn(Play play) {
    if (isBusy()) {
        return {};
    }
    hasTurn_ = true;
    play_ = play;
    isCancelled_ = hasRun_ = false;
    turnBegan_.start();
    return Turn(this);
}

void WorkInWindow::endTurn() {
    hasTurn_ = false;
    panelCloser_.stop();
    delete panel_;
    if (!waiting_.empty()) {
        QMetaObject::invokeMethod(this, &WorkInWindow::doWaiting, Qt::QueuedConnection);
    }
}

void WorkInWindow::cancelTurn() {
    isCancelled_ = true;
    if (progress_ != nullptr) {
        progress_->requestStop();
    }
}

void WorkInWindow::onceIdle(std::function<void()> action) {
    waiting_.push_back(std::move(action));
    doWaiting();
}

/// Each of them may take a turn, and let events in which call this.
void WorkInWindow::doWaiting() {
    while (!isBusy() && !waiting_.empty()) {
        const std::function<void()> action = std::move(waiting_.front());
        waiting_.pop_front();
        action();
    }
}

// Work --------------------------------------------------------------------------------------------

bool WorkInWindow::run(const Work& work, platform::Cancel cancel) {
    const Turn turn = takeTurn(Play::MayBegin); // unless this is part of one
    const bool canCancel = cancel == platform::Cancel::Allowed;
    panelCloser_.stop();
    platform::Progress progress;
    const Restored<platform::Progress*> restored(progress_);
    progress_ = canCancel ? &progress : nullptr;
    if (canCancel && isCancelled_) {
        progress.requestStop();
    }
    hasRun_ = true;
    std::binary_semaphore done(0);
    std::atomic<bool> hasEnded{false};
    QEventLoop events;
    QTimer looks;
    QTimer firstLook; // at the moment, and not when one of the others happens to come
    const auto workAndTell = [&] {
        const platform::ProgressScope scope(&progress);
        work();
        hasEnded = true;
        done.release();
        platform::unlessOutOfMemory(
            [&] { QMetaObject::invokeMethod(&events, &QEventLoop::quit, Qt::QueuedConnection); },
            [] {}); // the next look sees it
    };
    const auto look = [&] {
        if (hasEnded) {
            events.quit();
        } else if (isPatienceOver()) {
            showPanel(cancel);
            panel_->setFraction(progress.fraction());
        }
    };
    for (QTimer* const timer : {&looks, &firstLook}) {
        connect(timer, &QTimer::timeout, this, look);
    }
    std::jthread worker;
    try {
        worker = std::jthread(workAndTell);
    } catch (const std::exception&) { // no thread is to be had, or no memory for one
        workAndTell();
    }
    if (!done.try_acquire_for(kUnnoticed)) {
        firstLook.setSingleShot(true);
        firstLook.setTimerType(Qt::PreciseTimer);
        firstLook.start(std::max(kPatience - std::chrono::milliseconds(turnBegan_.elapsed()), 0ms));
        looks.start(kBetweenLooks);
        events.exec();
        if (!done.try_acquire()) { // the program quits
            progress.requestStop();
        }
        worker.join();
    }
    closePanelSoon();
    return !progress.isStopRequested();
}

bool WorkInWindow::isPatienceOver() const {
    return hasTurn_ && turnBegan_.hasExpired(std::chrono::milliseconds(kPatience).count());
}

void WorkInWindow::showPanel(platform::Cancel cancel) {
    const bool canCancel = cancel == platform::Cancel::Allowed;
    if (panel_ != nullptr) {
        panel_->setWork(description_, canCancel);
        return;
    }
    QWidget* const sheet = QApplication::activeModalWidget();
    panel_ = new ProgressPanel(sheet != nullptr ? sheet : window_.data(), description_, canCancel);
    connect(panel_, &ProgressPanel::cancelled, this, &WorkInWindow::cancelTurn);
    panel_->open();
}

/// The turn's next work goes on with it, unless something comes in between: an alert, say.
void WorkInWindow::closePanelSoon() {
    if (panel_ != nullptr) {
        panelCloser_.start(0);
    }
}

void WorkInWindow::pause(std::chrono::microseconds duration) {
    const Restored<bool> pausingBefore(pausing_);
    pausing_ = true;
    panelCloser_.stop();
    QCoreApplication::processEvents();
    if (isPatienceOver()) { // what was made by then is not thrown away any more
        showPanel(hasRun_ ? platform::Cancel::NotAllowed : platform::Cancel::Allowed);
    }
    platform::services().clock->sleepFor(duration);
    closePanelSoon();
}

} // namespace zemo
