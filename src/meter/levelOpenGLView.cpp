#include "meter/levelOpenGLView.h"

#include <QAccessible>
#include <QLocale>
#include <QPainter>
#include <cmath>

#include "MeterAccessible.h"
#include "playback/SharedState.h"

namespace zemo {
namespace {

constexpr QColor kFocus{0xb9, 0xb2, 0xe0};
constexpr double kRadius = 6.0;

} // namespace

levelOpenGLView::levelOpenGLView(QWidget* parent) : QWidget(parent) {
    installMeterAccessible();
    setAccessibleName(tr("Level meter"));
    setFocusPolicy(Qt::TabFocus); // for those who read it by ear
    speechClock_.start();
    speechTimer_.setSingleShot(true);
    connect(&speechTimer_, &QTimer::timeout, this, &levelOpenGLView::tellLevel);
}

levelOpenGLView::~levelOpenGLView() = default;

void levelOpenGLView::drawRect() {
    if (canvas_ == nullptr) {
        canvas_ = makeGlMeterCanvas();
    }
    if (canvas_ == nullptr) {
        canvas_ = makePainterMeterCanvas();
    }
    canvas_->begin((QSizeF(size()) * devicePixelRatioF()).toSize());
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
    if (hasFocus()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(kFocus, 2.0));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1.0, 1.0, -1.0, -1.0), kRadius, kRadius);
    }
    tellLevel();
}

/// What cannot be told yet is told later, so that the last level is always told.
void levelOpenGLView::tellLevel() {
    const float level = value.load(std::memory_order_relaxed);
    if (speech_.offer(level, SpokenLevel::Time(speechClock_.elapsed()))) {
        QAccessibleValueChangeEvent event(this, spokenDecibels(level));
        QAccessible::updateAccessibility(&event);
        emit levelTold(spokenDecibels(level));
    }
    const auto due = speech_.due(SpokenLevel::Time(speechClock_.elapsed()));
    if (!due) {
        speechTimer_.stop();
    } else if (!speechTimer_.isActive()) {
        speechTimer_.start(*due);
    }
}

QString levelOpenGLView::levelText() const {
    const double decibels = levelInDecibels(value.load(std::memory_order_relaxed));
    if (decibels < kSpokenFloor) {
        return tr("silent");
    }
    const QString sign = decibels < 0.0 ? QString("−") : decibels > 0.0 ? QString("+") : QString();
    return tr("%1 dBFS").arg(sign + QLocale().toString(std::fabs(decibels), 'f', 1));
}

} // namespace zemo
