#include <QtTest>

#include "playback/SharedState.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::WindowUnderTest;

/// What the window shows from its first frame on.
class LaunchTest : public QObject {
    Q_OBJECT
private slots:
    void theMeterIsEmpty() {
        WindowUnderTest zemo;
        QVERIFY(QTest::qWaitForWindowExposed(zemo.delegate.window));
        QTRY_VERIFY(!zemo.delegate.levelView->picture().isNull());
        const QImage& picture = zemo.delegate.levelView->picture();
        for (const double height : {0.2, 0.5, 0.8, 0.95}) {
            const int row = static_cast<int>(height * picture.height());
            QCOMPARE(picture.pixelColor(picture.width() / 2, row).alpha(), 0);
        }
    }
};

QTEST_MAIN(LaunchTest)
#include "launch_test.moc"
