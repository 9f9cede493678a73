#pragma once

#include <QColor>
#include <QMainWindow>

namespace zemo {

/// A main window that is not opaque: it fills itself with one colour, alpha included. [main]
class BackgroundWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit BackgroundWindow(QWidget* parent = nullptr) : QMainWindow(parent) {}

    /// To be called before the window is shown.
    void setOpaque(bool opaque);
    void setBackgroundColour(const QColor& colour);
    const QColor& backgroundColour() const { return backgroundColour_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor backgroundColour_;
};

} // namespace zemo
