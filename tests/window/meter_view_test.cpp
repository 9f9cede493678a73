#include <QtTest>

#include "meter/levelOpenGLView.h"
#include "playback/SharedState.h"

using namespace zemo;

namespace {

/// The row of a picture `height` pixels high in which the position y (-1..1, upward) lies.
int rowOf(double y, int height) {
    return static_cast<int>((1.0 - y) / 2.0 * height);
}

class MeterOnScreen {
public:
    MeterOnScreen() {
        view.resize(100, 400);
        view.resetPrevious();
    }
    QColor at(double y) {
        view.drawRect();
        return view.picture().pixelColor(50, rowOf(y, view.picture().height()));
    }
    levelOpenGLView view;
};

} // namespace

class MeterViewTest : public QObject {
    Q_OBJECT
private slots:
    void init() { value = 0.0F; }

    void drawValueIgnoresItsArgumentAndDrawsTheLiveLevel() {
        MeterOnScreen meter;
        value = 0.5F;
        meter.view.drawRect();
        const QImage live = meter.view.picture();
        meter.view.resetPrevious();
        value = 0.5F;
        meter.view.drawRect();
        QCOMPARE(meter.view.picture(), live);
        QCOMPARE(meter.view.prev_cv(), 0.5F);
    }

    void theBarSpansTheMiddleHalf() {
        MeterOnScreen meter;
        value = 1.0F;
        meter.view.drawRect();
        const QImage picture = meter.view.picture();
        const int row = rowOf(-0.5, picture.height());
        QCOMPARE(picture.pixelColor(20, row).alpha(), 0);
        QCOMPARE(picture.pixelColor(30, row).alpha(), 255);
        QCOMPARE(picture.pixelColor(70, row).alpha(), 255);
        QCOMPARE(picture.pixelColor(80, row).alpha(), 0);
    }

    void aFallingLevelLeavesOneFrameOfGhost() {
        MeterOnScreen meter;
        value = 1.0F;
        QCOMPARE(meter.at(0.9).alpha(), 255);
        value = 0.2F;
        QCOMPARE(meter.at(0.9).alpha(), 153); // 0.6
        QCOMPARE(meter.at(0.9).alpha(), 0);
    }

    void theFirstFrameEverDrawsAGhostUpToTheMiddle() {
        levelOpenGLView view;
        view.resize(100, 400);
        view.drawRect();
        QCOMPARE(view.picture().pixelColor(50, rowOf(-0.5, 400)).alpha(), 153);
        QCOMPARE(view.picture().pixelColor(50, rowOf(0.1, 400)).alpha(), 0);
    }

    void resetPreviousLeavesNoGhost() {
        MeterOnScreen meter;
        value = 1.0F;
        meter.view.drawRect();
        meter.view.resetPrevious();
        QCOMPARE(meter.view.prev_v(), -0.98F);
        QCOMPARE(meter.view.prev_cv(), 0.0F);
        value = 0.0F;
        QCOMPARE(meter.at(0.5).alpha(), 0);
    }

    void levelsBeyondOneAndInfiniteOnesFillTheViewAndStayInside() {
        for (const float level : {1.5F, 1e30F, HUGE_VALF}) {
            MeterOnScreen meter;
            value = level;
            QCOMPARE(meter.at(0.99).alpha(), 255);
        }
    }

    void aLevelThatIsNotANumberIsDrawnWithoutHarm() {
        MeterOnScreen meter;
        value = NAN;
        QCOMPARE(meter.at(0.9).alpha(), 0);
    }

    void theTestValueIsOnlyKept() {
        levelOpenGLView view;
        QCOMPARE(view.testVal(), 0.0F);
        view.setTestVal(0.3F);
        QCOMPARE(view.testVal(), 0.3F);
        view.updateView(nullptr);
        QCOMPARE(view.testVal(), 0.3F);
    }
};

QTEST_MAIN(MeterViewTest)
#include "meter_view_test.moc"
