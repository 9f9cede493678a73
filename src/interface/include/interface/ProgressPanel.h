#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;
class QPushButton;

namespace zemo {

/// Says how far something is that takes long, with a button that cancels it. [main]
class ProgressPanel final : public QDialog {
    Q_OBJECT
public:
    ProgressPanel(QWidget* parent, const QString& what, bool canCancel);

    /// What is done now, and whether it can be cancelled.
    void setWork(const QString& what, bool canCancel);
    /// From 0 to 1. The bar never goes back, but for other work.
    void setFraction(double fraction);

    /// Escape and the window's close button cancel as well; what cannot be cancelled goes on.
    /// Return and Space do nothing: they may be meant for what was there before.
    void reject() override;

signals:
    void cancelled(); ///< once

private:
    void showButton(bool isShown);

    QLabel* label_;
    QProgressBar* bar_;
    QPushButton* cancelButton_ = nullptr;
};

} // namespace zemo
