#include "app/FirstFrame.h"

#include <QEvent>
#include <QTimer>
#include <chrono>
#include <utility>

namespace zemo {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 250ms;

class FirstFrame final : public QObject {
public:
    FirstFrame(QWidget& window, std::function<void()> next)
        : QObject(&window), next_(std::move(next)) {
        window.installEventFilter(this);
        QTimer::singleShot(kPatience, this, [this] { proceed(); });
    }

    /// The window's widgets are painted, and the picture is sent, before the queued call is made.
    bool eventFilter(QObject* window, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            window->removeEventFilter(this);
            QMetaObject::invokeMethod(
                this, [this] { proceed(); }, Qt::QueuedConnection);
        }
        return false;
    }

private:
    /// What is called may run an event loop of its own, in which the other call arrives.
    void proceed() {
        if (const auto next = std::exchange(next_, nullptr)) {
            next();
            deleteLater();
        }
    }

    std::function<void()> next_;
};

} // namespace

void afterFirstFrame(QWidget& window, std::function<void()> next) {
    new FirstFrame(window, std::move(next)); // the window owns it
}

} // namespace zemo
