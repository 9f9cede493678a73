#pragma once

#include <QHash>
#include <QKeyEvent>
#include <QKeySequence>
#include <QList>
#include <QPointer>
#include <QWidget>

namespace zemo {

/// Makes a key that is held down in a window one press, where the key is one of those given, or
/// Enter. Actions that do not repeat are not enough for that: X11 tells a repeat as a release and a
/// press at the same time, and Qt takes it for these when it happens to read one of them later than
/// the other. [main]
class HeldKeys final : public QObject {
    Q_OBJECT
public:
    HeldKeys(QWidget* window, const QList<QKeySequence>& keys);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool isOnePress(const QKeyEvent& event) const;
    bool isRepeat(const QKeyEvent& event) const;

    QPointer<QWidget> window_;
    QList<QKeySequence> keys_;
    QHash<int, quint64> releasedAt_; ///< by key, in the system's milliseconds
};

} // namespace zemo
