// drag_source FILE: a window from which FILE can be dragged, as from a file manager. Says
// "accepted" when the pointer is over a window that takes it.

#include <cstdio>

#include <QApplication>
#include <QDrag>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

namespace {

class DragSource : public QLabel {
public:
    /// The path's own bytes, which need not be UTF-8.
    explicit DragSource(const QByteArray& file) : QLabel("Drag me"), file_(file) {
        setWindowTitle("Drag source");
        setAlignment(Qt::AlignCenter);
        setFixedSize(160, 80);
    }

protected:
    void mousePressEvent(QMouseEvent* /*event*/) override {
        auto* const dragged = new QMimeData;
        dragged->setUrls({QUrl::fromEncoded("file://" + file_.toPercentEncoding("/"))});
        auto* const drag = new QDrag(this);
        drag->setMimeData(dragged);
        connect(drag, &QDrag::actionChanged, [](Qt::DropAction action) {
            if (action == Qt::CopyAction) {
                std::puts("accepted");
                std::fflush(stdout);
            }
        });
        drag->exec(Qt::CopyAction);
    }

private:
    QByteArray file_;
};

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    DragSource source(argc > 1 ? argv[1] : "");
    source.show();
    return QApplication::exec();
}
