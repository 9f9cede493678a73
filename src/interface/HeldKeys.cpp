#include "interface/HeldKeys.h"

#include <QCoreApplication>
#include <QWindow>

namespace zemo {

HeldKeys::HeldKeys(QWidget* window, const QList<QKeySequence>& keys)
    : QObject(window), window_(window), keys_(keys) {
    QCoreApplication::instance()->installEventFilter(this); // the window has no handle yet
}

/// A press asks first whether it may be a shortcut. A repeat is answered that it may not, and then
/// comes as a press that nobody gets.
bool HeldKeys::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    const bool isPress = type == QEvent::ShortcutOverride || type == QEvent::KeyPress;
    if ((!isPress && type != QEvent::KeyRelease) || window_ == nullptr ||
        watched != window_->windowHandle()) {
        return false;
    }
    const auto& key = *static_cast<QKeyEvent*>(event);
    if (type == QEvent::KeyRelease) {
        releasedAt_[key.key()] = key.timestamp();
    } else if (isRepeat(key) && isOnePress(key)) {
        event->accept();
        return true;
    }
    return false;
}

bool HeldKeys::isOnePress(const QKeyEvent& event) const {
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter ||
           keys_.contains(QKeySequence(event.keyCombination()));
}

/// Without a time 0 stands for it.
bool HeldKeys::isRepeat(const QKeyEvent& event) const {
    return event.isAutoRepeat() ||
           (event.timestamp() != 0 && releasedAt_.value(event.key()) == event.timestamp());
}

} // namespace zemo
