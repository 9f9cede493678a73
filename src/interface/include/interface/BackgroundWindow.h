#pragma once

#include <QColor>
#include <QMainWindow>
#include <QString>

namespace zemo {

/// A main window that is not opaque: it fills itself with one colour, alpha included. Files can be
/// dropped on it. [main]
class BackgroundWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit BackgroundWindow(QWidget* parent = nullptr);

    /// To be called before the window is shown.
    void setOpaque(bool opaque);
    void setBackgroundColour(const QColor& colour);
    const QColor& backgroundColour() const { return backgroundColour_; }

signals:
    void fileDropped(const QString& path); ///< the first of those that were dropped

protected:
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    QColor backgroundColour_;
};

} // namespace zemo
