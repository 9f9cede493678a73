#include "app/FirstFrame.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QEventLoop>
#include <chrono>
#include <thread>

namespace zemo {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 250ms;
constexpr auto kRound = 500us;

/// Sees the paint event before the window does; the whole frame is painted within the same round
/// of the event loop.
class PaintWatch final : public QObject {
public:
    bool eventFilter(QObject* /*window*/, QEvent* event) override {
        painted = painted || event->type() == QEvent::Paint;
        return false;
    }

    bool painted = false;
};

} // namespace

void showFirstFrame(QWidget& window) {
    PaintWatch watch;
    const QDeadlineTimer patience(kPatience);
    window.installEventFilter(&watch);
    window.show();
    while (!watch.painted && !patience.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        std::this_thread::sleep_for(kRound); // waiting for events here would wait for keys, too
    }
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); // sends the picture
}

} // namespace zemo
