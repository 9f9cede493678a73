#include "interface/TitledButton.h"

#include <QKeyEvent>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <algorithm>

#include "interface/Contrast.h"

namespace zemo {

TitledButton::TitledButton(QWidget* parent) : QPushButton(parent) {}

void TitledButton::setTitle(const QString& text) {
    setAttributedTitle({.text = text});
}

void TitledButton::setAttributedTitle(const AttributedTitle& title) {
    const bool wasOnLight = isOnLight();
    title_ = title;
    setAccessibleName(title.text);
    if (isOnLight() != wasOnLight) { // another rule of the style sheet holds now
        style()->unpolish(this);
        style()->polish(this);
    }
    update();
}

bool TitledButton::isOnLight() const {
    constexpr double kMiddle = 0.179; // as far from black as from white, as contrast is reckoned
    return title_.colour.isValid() && title_.colouredLength > 0 &&
           relativeLuminance(title_.colour) < kMiddle;
}

void TitledButton::setAlternateTitle(const QString& text) {
    alternateTitle_ = {.text = text};
}

void TitledButton::setTitleAlignment(Qt::Alignment alignment) {
    titleAlignment_ = alignment;
    update();
}

QSize TitledButton::sizeHint() const {
    const auto width = [this](const QString& text) {
        return fontMetrics().horizontalAdvance(text);
    };
    const int widest = std::max(width(title_.text), width(alternateTitle_.text));
    return QPushButton::sizeHint().expandedTo({widest + 32, fontMetrics().height() + 16});
}

void TitledButton::paintEvent(QPaintEvent* /*event*/) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    painter.drawControl(QStyle::CE_PushButton, option);

    painter.setFont(title_.font.value_or(font()));
    const QFontMetrics metrics = painter.fontMetrics();
    const int width = metrics.horizontalAdvance(title_.text);
    const QRect place = QStyle::alignedRect(layoutDirection(), titleAlignment_ | Qt::AlignVCenter,
                                            {width, metrics.height()}, rect());
    const QString coloured = title_.text.left(title_.colouredLength);
    painter.setPen(title_.colour);
    painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter, coloured);
    painter.setPen(palette().color(QPalette::ButtonText));
    painter.drawText(place.adjusted(metrics.horizontalAdvance(coloured), 0, 0, 0),
                     Qt::AlignLeft | Qt::AlignVCenter, title_.text.mid(coloured.size()));
}

/// Space plays and stops in the whole window; Enter presses the button that has the focus, once
/// however long it is held.
void TitledButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (!event->isAutoRepeat()) {
            click();
        }
        return;
    }
    QPushButton::keyPressEvent(event);
}

} // namespace zemo
