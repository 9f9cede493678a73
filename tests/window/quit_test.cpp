#include <QtTest>

#include "playback/SharedState.h"
#include "support/WindowUnderTest.h"

using namespace std::chrono_literals;
using namespace zemo;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

/// The end of the program with the window closed, in a play and without one.
class QuitTest : public QObject {
    Q_OBJECT

    static void playInto(WindowUnderTest& zemo) {
        loadSound(std::vector<float>(100000, 0.5F));
        zemo.delegate.playButton->click();
        zemo.pump(512);
        zemo.pump(512);
    }

private slots:
    void aPlayIsFadedOut() {
        WindowUnderTest zemo;
        playInto(zemo);
        std::vector<std::vector<float>> heard;
        zemo.platform.clock.whileSleeping = [&] {
            heard.push_back(zemo.platform.output.pump(512));
        };
        zemo.delegate.applicationWillTerminate();
        QCOMPARE(heard.size(), std::size_t{4}); // and three silent calls
        for (std::size_t i = 0; i < 512; ++i) {
            QCOMPARE(heard[0][i], 0.5F * static_cast<float>(512 - i) / 512.0F);
        }
        QCOMPARE(heard[1], std::vector<float>(512, 0.0F));
        QVERIFY(!zemo.platform.output.running);
        QVERIFY(zemo.platform.clock.time < 300ms);
    }

    void theDeviceIsLeftTimeToPlayTheFade() {
        WindowUnderTest zemo;
        playInto(zemo);
        zemo.platform.output.inUse = true;
        int sleeps = 0;
        zemo.platform.clock.whileSleeping = [&] {
            zemo.platform.output.running = false;
            zemo.platform.output.inUse = ++sleeps < 5;
        };
        bufferPlayer.isPlaying = 0;
        bufferPlayer.rampState = Silent;
        zemo.delegate.applicationWillTerminate();
        QCOMPARE(sleeps, 5);
    }

    void aServerThatDoesNotAnswerIsGivenUpAfter300Milliseconds() {
        WindowUnderTest zemo;
        playInto(zemo);
        zemo.delegate.applicationWillTerminate();
        QVERIFY(zemo.platform.output.running);
        QVERIFY(zemo.platform.clock.time >= 300ms);
        QVERIFY(zemo.platform.clock.time < 310ms);
    }

    void whereNothingPlaysNothingIsWaitedFor() {
        WindowUnderTest zemo;
        loadSound({0.5F});
        zemo.delegate.applicationWillTerminate();
        QCOMPARE(zemo.platform.clock.time, std::chrono::nanoseconds(0));
    }
};

QTEST_MAIN(QuitTest)
#include "quit_test.moc"
