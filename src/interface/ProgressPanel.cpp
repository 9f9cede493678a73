#include "interface/ProgressPanel.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace zemo {
namespace {

constexpr int kSteps = 1000;
constexpr int kWidth = 340;

} // namespace

ProgressPanel::ProgressPanel(QWidget* parent, const QString& what, bool canCancel)
    : QDialog(parent), label_(new QLabel(this)), bar_(new QProgressBar(this)) {
    setObjectName("progressPanel");
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("Please wait"));
    setMinimumWidth(kWidth);
    label_->setTextFormat(Qt::PlainText);
    label_->setWordWrap(true);
    bar_->setObjectName("progressBar");
    bar_->setRange(0, kSteps);
    bar_->setFocusPolicy(Qt::TabFocus); // what a screen reader tells of
    auto* const column = new QVBoxLayout(this);
    column->addWidget(label_);
    column->addWidget(bar_);
    setWork(what, canCancel);
}

void ProgressPanel::setWork(const QString& what, bool canCancel) {
    if (label_->text() != what) {
        label_->setText(what);
        bar_->setAccessibleName(what);
        bar_->setValue(0);
    }
    if (canCancel != (cancelButton_ != nullptr)) {
        showButton(canCancel);
    }
}

void ProgressPanel::showButton(bool isShown) {
    delete cancelButton_;
    cancelButton_ = nullptr;
    if (isShown) {
        cancelButton_ = new QPushButton(tr("Cancel"), this);
        cancelButton_->setObjectName("progressCancelButton");
        cancelButton_->setAutoDefault(false);
        cancelButton_->setFocusPolicy(Qt::NoFocus);
        connect(cancelButton_, &QPushButton::clicked, this, &ProgressPanel::reject);
        layout()->addWidget(cancelButton_);
        layout()->setAlignment(cancelButton_, Qt::AlignRight);
    }
}

void ProgressPanel::setFraction(double fraction) {
    bar_->setValue(std::max(bar_->value(), static_cast<int>(fraction * kSteps)));
}

void ProgressPanel::reject() {
    if (cancelButton_ != nullptr && cancelButton_->isEnabled()) {
        cancelButton_->setEnabled(false);
        emit cancelled();
    }
}

} // namespace zemo
