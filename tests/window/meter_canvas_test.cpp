#include <QtTest>

#include "meter/LevelMeterGeometry.h"
#include "meter/MeterCanvas.h"

using namespace zemo;

namespace {

QImage drawn(MeterCanvas& canvas, const MeterFrame& frame) {
    canvas.begin({80, 400});
    for (const MeterQuad& quad : frame) {
        canvas.draw(quad);
    }
    return canvas.end().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

/// Pixels of one picture that differ from the other by more than `steps` of 255 in a component.
int differing(const QImage& one, const QImage& other, int steps) {
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            const bool same =
                std::abs(qRed(a) - qRed(b)) <= steps && std::abs(qGreen(a) - qGreen(b)) <= steps &&
                std::abs(qBlue(a) - qBlue(b)) <= steps && std::abs(qAlpha(a) - qAlpha(b)) <= steps;
            count += same ? 0 : 1;
        }
    }
    return count;
}

} // namespace

class MeterCanvasTest : public QObject {
    Q_OBJECT
private slots:
    void openGlAndThePainterDrawTheSamePicture_data() {
        QTest::addColumn<float>("before");
        QTest::addColumn<float>("level");
        QTest::newRow("silence") << 0.0F << 0.0F;
        QTest::newRow("low") << 0.0F << 0.5F;
        QTest::newRow("between the zones") << 0.0F << 0.8F;
        QTest::newRow("full") << 0.0F << 1.0F;
        QTest::newRow("over") << 0.0F << 1.3F;
        QTest::newRow("falling low") << 0.6F << 0.2F;
        QTest::newRow("falling through") << 1.0F << 0.2F;
        QTest::newRow("falling high") << 1.0F << 0.92F;
    }

    void openGlAndThePainterDrawTheSamePicture() {
        QFETCH(const float, before);
        QFETCH(const float, level);
        const auto openGl = makeGlMeterCanvas();
        QVERIFY2(openGl != nullptr, "this test needs an X server with OpenGL");
        const auto painter = makePainterMeterCanvas();
        const MeterFrame frame = meterFrame(level, meterFrame(before, {}).memory);
        const QImage one = drawn(*openGl, frame);
        const QImage other = drawn(*painter, frame);
        QCOMPARE(one.size(), other.size());
        // A quad's edge may fall on either side of a pixel's centre: a row of 40 for each edge.
        const int edges = 2 * static_cast<int>(frame.count);
        QVERIFY2(differing(one, other, 4) <= 40 * edges,
                 qPrintable(QString::number(differing(one, other, 4))));
        QImage empty(one.size(), one.format());
        empty.fill(Qt::transparent);
        QVERIFY(level == 0.0F || differing(one, empty, 4) > 1000);
    }
};

QTEST_MAIN(MeterCanvasTest)
#include "meter_canvas_test.moc"
