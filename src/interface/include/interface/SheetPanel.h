#pragma once

#include <QAbstractButton>
#include <QDialog>

namespace zemo {

/// A parameter panel. It neither accepts nor rejects by itself: Enter presses its default button,
/// and Escape or the window's close button presses the one that setCancelButton names. [main]
class SheetPanel : public QDialog {
    Q_OBJECT
public:
    explicit SheetPanel(QWidget* parent = nullptr);

    void setCancelButton(QAbstractButton* button) { cancelButton_ = button; }

    /// Shows the panel as a sheet of its parent, its first field selected.
    void openAsSheet();

    void reject() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void keepTextsWhole();

    QAbstractButton* cancelButton_ = nullptr;
};

} // namespace zemo
