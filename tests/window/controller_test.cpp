#include <QtTest>
#include <thread>

#include "playback/OutputUnit.h"
#include "playback/SharedState.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

namespace {

const QColor kRed = QColor::fromRgbF(0.8F, 0.2F, 0.4F, 1.0F);
const QColor kGreen = QColor::fromRgbF(0.1F, 0.9F, 0.7F, 1.0F);

std::vector<float> constantSound(std::size_t samples) {
    return std::vector<float>(samples, 0.5F);
}

bool contains(const std::vector<std::string>& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

} // namespace

class ControllerTest : public QObject {
    Q_OBJECT
private slots:
    void launchSetsEverythingToItsStart() {
        doResampling = doAM = doSSB = doFM = true;
        value = 0.7F;
        WindowUnderTest zemo(44100.0);
        QCOMPARE(R, 44100.0);
        QCOMPARE(value.load(), 0.0F);
        QCOMPARE(fBuffersize.load(), 0);
        QCOMPARE(bufferPlayer.rampState.load(), 0U);
        QVERIFY(!doResampling && !doAM && !doSSB && !doFM);
        QCOMPARE(zemo.delegate.ustruct.bufsize, 0);
        QVERIFY(zemo.delegate.string.empty());
        QVERIFY(!zemo.platform.output.running);
    }

    void launchLogsTheSystemVersionAndAZeroTestValue() {
        WindowUnderTest zemo;
        QCOMPARE(zemo.platform.trace.logged.at(0), std::string("Version Minor = 10\n"));
        QCOMPARE(zemo.platform.trace.logged.at(1), std::string("TESTVAL = 0.000000\n"));
        QCOMPARE(versionMinor, 10);
    }

    void theWindowIsNotOpaqueAndHasTheBackgroundColour() {
        WindowUnderTest zemo;
        QVERIFY(zemo.delegate.window->testAttribute(Qt::WA_TranslucentBackground));
        QCOMPARE(zemo.delegate.window->backgroundColour(),
                 QColor::fromRgbF(0.19F, 0.18F, 0.23F, 0.99F));
    }

    void closingTheWindowQuits() {
        WindowUnderTest zemo;
        QVERIFY(zemo.delegate.applicationShouldTerminateAfterLastWindowClosed());
        QVERIFY(QGuiApplication::quitOnLastWindowClosed());
    }

    void playWithNothingLoadedOnlyClearsTheMeter() {
        WindowUnderTest zemo;
        value = 0.9F;
        zemo.delegate.playButton->click();
        QCOMPARE(value.load(), 0.0F);
        QCOMPARE(zemo.delegate.playButton->title(), QString("Play"));
        QVERIFY(!contains(zemo.platform.output.calls, "start"));
    }

    void playTurnsTheTitleIntoARedStop() {
        WindowUnderTest zemo;
        loadSound(constantSound(10000));
        zemo.delegate.playButton->click();
        const AttributedTitle& title = zemo.delegate.playButton->attributedTitle();
        QCOMPARE(title.text, QString("Stop"));
        QCOMPARE(title.colour, kRed);
        QCOMPARE(title.colouredLength, 4);
        QVERIFY(zemo.platform.output.running);
    }

    void aPlayIsCalledAfterItsSound() {
        WindowUnderTest zemo;
        zemo.platform.files.files["/Glöckchen.f32"] = std::vector<std::uint8_t>(4000, 1);
        zemo.delegate.openFileNamed("/Glöckchen.f32");
        zemo.delegate.playButton->click();
        QCOMPARE(zemo.platform.output.soundName, std::string("Glöckchen.f32"));
    }

    void theRedCoversTheLengthOfTheOldTitle() {
        WindowUnderTest zemo;
        loadSound(constantSound(10000));
        zemo.delegate.playButton->setTitle("Go");
        zemo.delegate.playButton->click();
        QCOMPARE(zemo.delegate.playButton->title(), QString("Stop"));
        QCOMPARE(zemo.delegate.playButton->attributedTitle().colouredLength, 2);
    }

    void aSecondPressAsksForTheFadeAndTurnsTheTitleGreen() {
        WindowUnderTest zemo;
        loadSound(constantSound(10000));
        zemo.delegate.playButton->click();
        zemo.delegate.playButton->click();
        QCOMPARE(bufferPlayer.rampState.load(), std::uint32_t{FadeOut});
        QCOMPARE(zemo.delegate.playButton->title(), QString("Stop"));
        QCOMPARE(zemo.delegate.playButton->attributedTitle().colour, kGreen);
        QCOMPARE(value.load(), 0.0F);
    }

    void theTitleReturnsToPlayWhenTheFadeHasEnded() {
        WindowUnderTest zemo;
        loadSound(constantSound(10000));
        zemo.delegate.playButton->click();
        zemo.pump(512);
        zemo.delegate.playButton->click();
        QCOMPARE(zemo.delegate.playButton->title(), QString("Stop"));
        zemo.pump(512);
        QCOMPARE(zemo.delegate.playButton->title(), QString("Play"));
        QCOMPARE(zemo.delegate.playButton->attributedTitle().colouredLength, 0);
        QCOMPARE(zemo.delegate.playButton->accessibleName(), QString("Play"));
    }

    void theIdleCountIsPrintedInOrderBehindTheStart() {
        WindowUnderTest zemo;
        QCOMPARE(zemo.platform.trace.out, std::string("MIDI Sources: 0\n"));
        zemo.platform.trace.out.clear();
        loadSound(constantSound(4096));
        zemo.delegate.playButton->click();
        for (int call = 0; call < 12; ++call) {
            zemo.pump(512);
        }
        const std::string expected = "4096 frames\n" + std::string(45, '_') + "\n\nIdleCycle = 1\n";
        QCOMPARE(zemo.platform.trace.out.substr(0, expected.size()), expected);
        QVERIFY(!zemo.platform.output.running);
    }

    void aPressFromMidiMovesNoTitleButPlays() {
        WindowUnderTest zemo;
        loadSound(constantSound(10000));
        zemo.delegate.playButtonPressed(nullptr);
        QVERIFY(zemo.platform.output.running);
        QCOMPARE(zemo.delegate.playButton->title(), QString("Play"));
    }

    void aNoteOnPlaysAndShowsIt() {
        WindowUnderTest zemo;
        loadSound(constantSound(10000));
        const std::vector<std::uint8_t> list{1, 0, 0, 0, 0, 0,    0,  0, 0,
                                             0, 0, 0, 3, 0, 0x99, 60, 64};
        std::thread midi([&] {
            zemo.platform.midi.read({list.data(), list.size()}, nullptr, nullptr);
        });
        midi.join();
        QVERIFY(!zemo.platform.output.running); // not on the MIDI thread
        QCoreApplication::processEvents();
        QVERIFY(zemo.platform.output.running);
        QCOMPARE(zemo.delegate.playButton->title(), QString("Stop"));
        QCOMPARE(zemo.delegate.playButton->attributedTitle().colour, kRed);
    }

    void launchOpensTheOutputBeforeMidi() {
        WindowUnderTest zemo;
        QCOMPARE(zemo.platform.output.calls.back(), std::string("initialize"));
        QCOMPARE(zemo.platform.midi.calls.size(), std::size_t{2});
        QVERIFY(omni.load());
    }

    void setPlayTitleShowsARedStopOnlyWithASound() {
        WindowUnderTest zemo;
        zemo.delegate.setPlayTitle();
        QCOMPARE(zemo.delegate.playButton->title(), QString("Play"));
        loadSound(constantSound(10));
        zemo.delegate.setPlayTitle();
        const AttributedTitle& title = zemo.delegate.playButton->attributedTitle();
        QCOMPARE(title.text, QString("Stop"));
        QCOMPARE(title.colour, kRed);
        QCOMPARE(title.font->family(), QString("Lucida Grande"));
        QCOMPARE(title.font->pointSize(), 12);
        QVERIFY(title.alignment == Qt::AlignRight);
        QVERIFY(zemo.delegate.playButton->titleAlignment() == Qt::AlignHCenter);
    }

    void theModeButtonChangesBetweenPeakAndRms() {
        WindowUnderTest zemo;
        zemo.delegate.modeButton->click();
        QCOMPARE(zemo.delegate.modeButton->title(), QString("RMS"));
        QCOMPARE(int{bufferPlayer.rmsMode.load()}, 1);
        zemo.delegate.modeButton->click();
        QCOMPARE(zemo.delegate.modeButton->title(), QString("Peak"));
        QCOMPARE(int{bufferPlayer.rmsMode.load()}, 0);
    }

    void theModeButtonInItsMixedStateChangesNothing() {
        WindowUnderTest zemo;
        zemo.delegate.modeButton->click();
        zemo.delegate.modeButton->setState(StateButton::Mixed);
        zemo.delegate.modeButtonPressed(zemo.delegate.modeButton);
        QCOMPARE(zemo.delegate.modeButton->title(), QString("RMS"));
        QCOMPARE(int{bufferPlayer.rmsMode.load()}, 1);
    }

    void theTestButtonShowsALevelAndLogsIt() {
        WindowUnderTest zemo;
        zemo.platform.trace.logged.clear();
        std::srand(7);
        const float r = static_cast<float>(std::rand()) / 2147483648.0F;
        const float expected = sinf(static_cast<float>(6.283185307179586 * static_cast<double>(r)));
        std::srand(7);
        QTest::mouseClick(zemo.delegate.testButton, Qt::LeftButton);
        QCOMPARE(value.load(), expected);
        QCOMPARE(zemo.platform.trace.logged.size(), std::size_t{2});
        QCOMPARE(zemo.platform.trace.logged[0],
                 "val = " + std::to_string(static_cast<double>(expected)) + "\n");
        QCOMPARE(zemo.platform.trace.logged[1], std::string("TESTVAL = 0.000000\n"));
    }

    void theTestButtonWithAltClearsTheMeter() {
        WindowUnderTest zemo;
        value = 0.5F;
        zemo.delegate.levelView->setPrev_cv(0.5F);
        QTest::mouseClick(zemo.delegate.testButton, Qt::LeftButton, Qt::AltModifier);
        QCOMPARE(value.load(), 0.0F);
        QCOMPARE(zemo.delegate.levelView->prev_cv(), 0.0F);
        QVERIFY(contains(zemo.platform.trace.logged, "val = 0.000000\n"));
    }

    void theMenuClearsTheMeterAsWell() {
        WindowUnderTest zemo;
        auto* const item = zemo.delegate.window->findChild<QAction*>("ClearMeterMenu");
        value = 0.5F;
        zemo.delegate.levelView->setPrev_cv(0.5F);
        zemo.platform.trace.logged.clear();
        item->trigger();
        QCOMPARE(value.load(), 0.0F);
        QCOMPARE(zemo.delegate.levelView->prev_cv(), 0.0F);
        QCOMPARE(zemo.platform.trace.logged,
                 (std::vector<std::string>{"val = 0.000000\n", "TESTVAL = 0.000000\n"}));
        loadSound(constantSound(10000));
        zemo.delegate.playButton->click();
        value = 0.25F;
        item->trigger();
        QCOMPARE(value.load(), 0.25F);
    }

    void theTestButtonDoesNothingDuringAPlay() {
        WindowUnderTest zemo;
        loadSound(constantSound(10000));
        zemo.delegate.playButton->click();
        zemo.platform.trace.logged.clear();
        value = 0.25F;
        zemo.delegate.testButton->click();
        QCOMPARE(value.load(), 0.25F);
        QVERIFY(zemo.platform.trace.logged.empty());
    }

    void spacePlaysWhateverHasTheFocus() {
        WindowUnderTest zemo;
        loadSound(constantSound(10000));
        QVERIFY(QTest::qWaitForWindowActive(zemo.delegate.window));
        zemo.delegate.modeButton->setFocus();
        QTest::keyClick(zemo.delegate.modeButton, Qt::Key_Space);
        QCOMPARE(zemo.delegate.playButton->title(), QString("Stop"));
        QCOMPARE(zemo.delegate.modeButton->title(), QString("Peak"));
    }

    void everyOutletOfTheMainWindowIsFilled() {
        WindowUnderTest zemo;
        const AppDelegate& d = zemo.delegate;
        QVERIFY(d.window && d.levelView && d.playButton && d.modeButton && d.testButton);
        QVERIFY(d.OpenMenu && d.SaveAsAudioMenu && d.ResampleMenu && d.AMMenu && d.FMMenu &&
                d.HDMenu && d.RevertMenu);
    }

    void theDeviceFailingInMidPlayPutsThePlayerToRest() {
        WindowUnderTest zemo;
        loadSound(constantSound(100000));
        zemo.delegate.playButton->click();
        zemo.pump(512);
        zemo.platform.output.running = false;
        zemo.platform.output.failed = true;
        zemo.pump(0);
        QCOMPARE(zemo.delegate.playButton->title(), QString("Play"));
        QCOMPARE(bufferPlayer.rampState.load(), 0U);
        QCOMPARE(int{bufferPlayer.isPlaying.load()}, 0);
        QCOMPARE(fBuffersize.load(), 100000);
    }

    void aPlayThatLostItsSoundBeforeItCouldGoOnIsAtRestInTheWindow() {
        WindowUnderTest zemo;
        zemo.platform.files.files["/empty.raw"] = {};
        loadSound(constantSound(100000));
        zemo.delegate.playButton->click();
        zemo.platform.output.running = false; // stopped by a call that saw the play before
        zemo.delegate.openFileNamed("/empty.raw");
        QCOMPARE(fBuffersize.load(), 0);
        QMetaObject::invokeMethod(&zemo.delegate, "attendPlayback", Qt::DirectConnection);
        QVERIFY(!zemo.platform.output.running);
        QCOMPARE(zemo.delegate.playButton->title(), QString("Play"));
        QCOMPARE(int{bufferPlayer.isPlaying.load()}, 0);
    }
};

QTEST_MAIN(ControllerTest)
#include "controller_test.moc"
