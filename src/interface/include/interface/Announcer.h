#pragma once

#include <QWidget>

namespace zemo {

/// Says things to assistive technology that the window only shows: a notification that nobody sees.
/// Screen readers do not speak of a label whose text has changed, but they speak of a notification
/// that comes up. [main]
class Announcer final : public QWidget {
    Q_OBJECT
public:
    explicit Announcer(QWidget* parent);

    /// What it says last, also when it was said before.
    void say(const QString& text);
};

} // namespace zemo
