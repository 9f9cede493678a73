#include "interface/SheetPanel.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>

#include "interface/Contrast.h"

namespace zemo {
namespace {

constexpr double kRing = 2.0;     ///< the pen's width
constexpr double kDistance = 2.0; ///< from the control
constexpr double kRadius = 4.0;
constexpr double kSeen = 3.0; ///< contrast that a mark has at least

QColor ringColour(const QPalette& palette) {
    const QColor highlight = palette.color(QPalette::Highlight);
    const bool isSeen = contrast(highlight, palette.color(QPalette::Window)) >= kSeen;
    return isSeen ? highlight : palette.color(QPalette::WindowText);
}

} // namespace

SheetPanel::SheetPanel(QWidget* parent) : QDialog(parent) {
    connect(qApp, &QApplication::focusChanged, this, [this] { update(); });
}

void SheetPanel::openAsSheet() {
    keepTextsWhole();
    open();
    QWidget* first = nextInFocusChain();
    while (first != this && (first->focusPolicy() & Qt::TabFocus) == 0) {
        first = first->nextInFocusChain();
    }
    first->setFocus();
    if (auto* const field = qobject_cast<QLineEdit*>(first)) {
        field->selectAll();
    }
}

/// A text in several lines has no least height of its own, and on a small screen would be cut.
void SheetPanel::keepTextsWhole() {
    for (QLabel* const label : findChildren<QLabel*>()) {
        if (label->wordWrap()) {
            label->setMinimumHeight(label->heightForWidth(label->minimumWidth()));
        }
    }
}

/// The usual style hardly marks a button or a slider that has the focus. Segments mark themselves.
void SheetPanel::paintEvent(QPaintEvent* event) {
    QDialog::paintEvent(event);
    const QWidget* const focus = focusWidget();
    if (focus == nullptr || !focus->hasFocus() || focus->parentWidget() != this) {
        return;
    }
    constexpr double kOut = kDistance + kRing / 2.0;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(ringColour(palette()), kRing));
    painter.drawRoundedRect(QRectF(focus->geometry()).adjusted(-kOut, -kOut, kOut, kOut), kRadius,
                            kRadius);
}

void SheetPanel::reject() {
    if (cancelButton_ != nullptr) {
        cancelButton_->click();
    }
}

} // namespace zemo
