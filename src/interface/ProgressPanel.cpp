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
    : QDialog(parent), bar_(new QProgressBar(this)) {
    setObjectName("progressPanel");
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("Please wait"));
    setMinimumWidth(kWidth);
    auto* const label = new QLabel(what, this);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    bar_->setObjectName("progressBar");
    bar_->setRange(0, kSteps);
    bar_->setAccessibleName(what);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(label);
    column->addWidget(bar_);
    if (canCancel) {
        cancelButton_ = new QPushButton(tr("Cancel"), this);
        cancelButton_->setObjectName("progressCancelButton");
        connect(cancelButton_, &QPushButton::clicked, this, &ProgressPanel::reject);
        column->addWidget(cancelButton_, 0, Qt::AlignRight);
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
