#include <QEvent>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <utility>

#include "app/AppDelegate.h"

namespace zemo {
bool AppDelegate::eventFilter(QObject* watched, QEvent* event) {
    if (watched == window && event->type() == QEvent::Close && !mayClose()) {
        event->ignore();
        return true;
    }
    const bool isButton = watched == restoreButton_ || watched == discardButton_;
    if (isButton && event->type() == QEvent::MouseButtonDblClick) {
        return true; // the first click has answered, and the second was not for the next offer
    }
    return QObject::eventFilter(watched, event);
}

void AppDelegate::closeWithoutAsking() {
    closesWithoutAsking_ = true;
    window->close();
}

bool AppDelegate::mayClose() {
    if (closesWithoutAsking_ || keeper_ == nullptr || !unsaved_.unkept()) {
        return true;
    }
    if (!std::exchange(isClosing_, true)) {
        onceClosed([this] { closeOnceKept(); });
    }
    return false;
}

/// Work that is under way is cancelled by then, and ends. What is not on the disk yet may come
/// there; a person who does not wait for that is asked.
void AppDelegate::closeOnceKept() {
    {
        const auto turn = work_.takeTurn(WorkInWindow::Play::MayBegin);
        keeper_->retry();
        work_.setDescription(tr("Writing rescue copies…"));
        platform::runLongWork([this] { keeper_->awaitCopies(); });
    }
    if (const auto unkept = unsaved_.unkept()) {
        askBeforeClosing(*unkept);
    } else {
        isClosing_ = false;
        window->close();
    }
}

void AppDelegate::askBeforeClosing(const rescue::UnsavedWork::Unkept& unkept) {
    auto* const box = new QMessageBox(window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(tr("Close ZEMO"));
    box->setTextFormat(Qt::PlainText);
    box->setText(
        tr("%1 was not saved, and no rescue copy of it could be kept.").arg(titleOf(unkept.name)));
    box->setInformativeText(tr("If you close without saving, it is lost."));
    QPushButton* const save = box->addButton(tr("Save"), QMessageBox::AcceptRole);
    QPushButton* const close =
        box->addButton(tr("Close Without Saving"), QMessageBox::DestructiveRole);
    box->setDefaultButton(save);
    box->setEscapeButton(box->addButton(QMessageBox::Cancel));
    connect(box, &QDialog::finished, this, [this, box, save, close, unkept] {
        isClosing_ = false;
        if (box->clickedButton() == close) {
            onceClosed([this] { closeWithoutAsking(); });
        } else if (box->clickedButton() == save) {
            onceClosed([this, unkept] {
                openSavePanel(unkept.sound, unkept.name, [this] { window->close(); });
            });
        }
    });
    box->open();
}

} // namespace zemo
