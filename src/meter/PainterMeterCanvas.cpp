#include <QLinearGradient>
#include <QPainter>
#include <algorithm>

#include "meter/MeterCanvas.h"

namespace zemo {
namespace {

/// Colour components outside 0..1 are cut before they are blended, as OpenGL does.
double unit(float component) {
    return std::clamp(static_cast<double>(component), 0.0, 1.0);
}

QColor qtColour(const MeterColour& colour) {
    return QColor::fromRgbF(
        static_cast<float>(unit(colour.red)), static_cast<float>(unit(colour.green)),
        static_cast<float>(unit(colour.blue)), static_cast<float>(unit(colour.alpha)));
}

class PainterMeterCanvas final : public MeterCanvas {
public:
    void begin(const QSize& pixels) override {
        picture_ = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
        picture_.fill(Qt::transparent);
    }

    void draw(const MeterQuad& quad) override {
        // Far outside the view the numbers would be too large for the painter.
        const double foot = pixelRow(std::clamp(quad.foot, -kFar, kFar));
        const double top = pixelRow(std::clamp(quad.top, -kFar, kFar));
        QLinearGradient gradient(0.0, foot, 0.0, top);
        gradient.setColorAt(0.0, qtColour(quad.footColour));
        gradient.setColorAt(1.0, qtColour(quad.topColour));
        const double left = pixelColumn(MeterQuad::kLeft);
        const QRectF area(QPointF(left, top), QPointF(pixelColumn(MeterQuad::kRight), foot));
        QPainter painter(&picture_);
        painter.fillRect(area, gradient);
    }

    QImage end() override { return picture_; }

private:
    static constexpr float kFar = 1000.0F;

    double pixelRow(float y) const {
        return (1.0 - static_cast<double>(y)) / 2.0 * picture_.height();
    }
    double pixelColumn(float x) const {
        return (1.0 + static_cast<double>(x)) / 2.0 * picture_.width();
    }

    QImage picture_;
};

} // namespace

std::unique_ptr<MeterCanvas> makePainterMeterCanvas() {
    return std::make_unique<PainterMeterCanvas>();
}

} // namespace zemo
