#include "interface/SheetPanel.h"

#include <QLineEdit>

namespace zemo {

void SheetPanel::openAsSheet() {
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

void SheetPanel::reject() {
    if (cancelButton_ != nullptr) {
        cancelButton_->click();
    }
}

} // namespace zemo
