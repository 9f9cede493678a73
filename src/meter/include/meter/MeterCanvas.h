#pragma once

#include <QImage>
#include <QSize>
#include <memory>

#include "meter/LevelMeterGeometry.h"

namespace zemo {

/// Where the meter's quads are drawn: a transparent picture, blended as the quads come.
class MeterCanvas {
public:
    MeterCanvas() = default;
    MeterCanvas(const MeterCanvas&) = delete;
    MeterCanvas& operator=(const MeterCanvas&) = delete;
    virtual ~MeterCanvas() = default;

    virtual void begin(const QSize& pixels) = 0;  ///< [main] an empty picture
    virtual void draw(const MeterQuad& quad) = 0; ///< [main] over what is there
    virtual QImage end() = 0;                     ///< [main] the picture, premultiplied
};

/// [main] OpenGL 1.x immediate mode into an off-screen buffer; null where there is no OpenGL.
std::unique_ptr<MeterCanvas> makeGlMeterCanvas();

/// [main] QPainter gradients, for systems without OpenGL: same quads, colours and order.
std::unique_ptr<MeterCanvas> makePainterMeterCanvas();

} // namespace zemo
