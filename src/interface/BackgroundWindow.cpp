#include "interface/BackgroundWindow.h"

#include <QPainter>

namespace zemo {

void BackgroundWindow::setOpaque(bool opaque) {
    setAttribute(Qt::WA_TranslucentBackground, !opaque);
}

void BackgroundWindow::setBackgroundColour(const QColor& colour) {
    backgroundColour_ = colour;
    update();
}

void BackgroundWindow::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(rect(), backgroundColour_);
}

} // namespace zemo
