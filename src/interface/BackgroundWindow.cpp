#include "interface/BackgroundWindow.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QPainter>
#include <QUrl>

#include "interface/FileNames.h"

namespace zemo {
namespace {

/// The first file of this computer among what is dragged, as pathFromBytes makes it; empty when
/// there is none. From the URL's escapes: Qt's own path has lost what is not UTF-8.
QString fileAmong(const QMimeData* dragged) {
    for (const QUrl& url : dragged->urls()) {
        if (url.isLocalFile()) {
            return pathFromBytes(unescapedName(url.path(QUrl::FullyEncoded)));
        }
    }
    return {};
}

} // namespace

BackgroundWindow::BackgroundWindow(QWidget* parent) : QMainWindow(parent) {
    setAcceptDrops(true);
}

void BackgroundWindow::setOpaque(bool opaque) {
    setAttribute(Qt::WA_TranslucentBackground, !opaque);
}

void BackgroundWindow::setBackgroundColour(const QColor& colour) {
    backgroundColour_ = colour;
    update();
}

void BackgroundWindow::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(rect(), backgroundColour_);
}

void BackgroundWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!fileAmong(event->mimeData()).isEmpty()) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    }
}

/// Told later: whoever drags waits for this to return.
void BackgroundWindow::dropEvent(QDropEvent* event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
    QMetaObject::invokeMethod(
        this, [this, path = fileAmong(event->mimeData())] { emit fileDropped(path); },
        Qt::QueuedConnection);
}

} // namespace zemo
