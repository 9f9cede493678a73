#include "interface/SheetPanel.h"

#include <QLabel>
#include <QLineEdit>

namespace zemo {

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

void SheetPanel::reject() {
    if (cancelButton_ != nullptr) {
        cancelButton_->click();
    }
}

} // namespace zemo
