#include "meter/levelOpenGLView.h"

#include <QPainter>

#include "playback/SharedState.h"

namespace zemo {

levelOpenGLView::levelOpenGLView(QWidget* parent) : QWidget(parent) {
    setAccessibleName(tr("Level meter"));
}

levelOpenGLView::~levelOpenGLView() = default;

void levelOpenGLView::drawRect() {
    if (canvas_ == nullptr) {
        canvas_ = makeGlMeterCanvas();
    }
    if (canvas_ == nullptr) {
        canvas_ = makePainterMeterCanvas();
    }
    canvas_->begin(size() * devicePixelRatio());
    drawValue(value.load(std::memory_order_relaxed));
    picture_ = canvas_->end();
}

void levelOpenGLView::drawValue(float /*ignored*/) {
    const MeterFrame frame = meterFrame(value.load(std::memory_order_relaxed), memory_);
    for (const MeterQuad& quad : frame) {
        canvas_->draw(quad);
    }
    memory_ = frame.memory;
}

void levelOpenGLView::resetPrevious() {
    memory_ = {.prev_v = 0.0F, .prev_cv = 0.0F};
    scaleLinear(&memory_.prev_v);
}

void levelOpenGLView::updateView(QObject* /*sender*/) {}

void levelOpenGLView::paintEvent(QPaintEvent* /*event*/) {
    drawRect();
    QPainter painter(this);
    painter.drawImage(rect(), picture_);
}

} // namespace zemo
