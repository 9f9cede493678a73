#include <QtTest>
#include <atomic>
#include <thread>

#include "playback/OutputUnit.h"
#include "playback/SharedState.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

namespace {

const QColor kRed = QColor::fromRgbF(0.8F, 0.2F, 0.4F, 1.0F);

/// Passes all messages on; resetPlayTitle only once it is let through.
class Turnstile final : public RenderDelegate {
public:
    explicit Turnstile(RenderDelegate& next) : next_(next) {}
    void updateValue(float level) override { next_.updateValue(level); }
    void resetMeter() override { next_.resetMeter(); }
    void resetPlayTitle() override {
        isReached = true;
        isReached.notify_one();
        isOpen.wait(false);
        next_.resetPlayTitle();
    }
    void traceIdleCycle(std::int32_t left) override { next_.traceIdleCycle(left); }
    void traceMissingBuffer() override { next_.traceMissingBuffer(); }

    std::atomic<bool> isReached{false};
    std::atomic<bool> isOpen{false};

private:
    RenderDelegate& next_;
};

} // namespace

/// What a press of Play, Revert, Mode or Test meets.
class PressTest : public QObject {
    Q_OBJECT

    static void attend(WindowUnderTest& zemo) {
        QMetaObject::invokeMethod(&zemo.delegate, "attendPlayback", Qt::DirectConnection);
    }

    /// A play that is stopped, up to its fade. Its messages wait from the fade on.
    static void playUpToTheFade(WindowUnderTest& zemo) {
        loadSound(std::vector<float>(100000, 0.5F));
        zemo.delegate.playButton->click();
        zemo.pump(512);
        zemo.delegate.playButton->click();
        QCOMPARE(bufferPlayer.rampState.load(), std::uint32_t{FadeOut});
    }

    static void expectPlaying(WindowUnderTest& zemo) {
        attend(zemo);
        QCOMPARE(bufferPlayer.rampState.load(), std::uint32_t{FadeIn});
        QCOMPARE(zemo.delegate.playButton->title(), QString("Stop"));
        QCOMPARE(zemo.delegate.playButton->attributedTitle().colour, kRed);
    }

    static void sendNote(WindowUnderTest& zemo) {
        const std::vector<std::uint8_t> list{1, 0, 0, 0, 0, 0,    0,  0, 0,
                                             0, 0, 0, 3, 0, 0x99, 60, 64};
        std::thread([&] {
            zemo.platform.midi.read({list.data(), list.size()}, nullptr, nullptr);
        }).join();
    }

    /// A key that is held down so long that it repeats `times` times.
    static void hold(QWidget* widget, Qt::Key key, Qt::KeyboardModifiers modifiers, int times) {
        const QString text = key == Qt::Key_Space ? QString(" ") : QString();
        for (int i = 0; i <= times; ++i) {
            QTest::simulateEvent(widget, true, key, modifiers, text, i > 0);
            if (i < times) { // as X11 has it
                QTest::simulateEvent(widget, false, key, modifiers, text, true);
            }
        }
        QTest::simulateEvent(widget, false, key, modifiers, text, false);
    }

private slots:
    void aPlayIsShownThoughTheEndOfTheOneBeforeIsStillToBeTold() {
        WindowUnderTest zemo;
        playUpToTheFade(zemo);
        zemo.platform.output.pump(512);
        zemo.delegate.playButton->click();
        expectPlaying(zemo);
    }

    void aPlayIsShownThoughItsPressMeetsTheCallThatEndsTheOneBefore() {
        WindowUnderTest zemo;
        playUpToTheFade(zemo);
        Turnstile turnstile(*renderDelegate.load());
        renderDelegate = &turnstile;
        std::thread audio([&] { zemo.platform.output.pump(512); });
        turnstile.isReached.wait(false);
        const auto open = [&] {
            turnstile.isOpen = true;
            turnstile.isOpen.notify_one();
        };
        zemo.platform.clock.whileSleeping = open;
        QCOMPARE(bufferPlayer.rampState.load(), std::uint32_t{Silent});
        zemo.delegate.playButton->click();
        open();
        audio.join();
        expectPlaying(zemo);
    }

    void theLinesOfThePlayBeforeComeBeforeThoseOfTheNext() {
        WindowUnderTest zemo;
        playUpToTheFade(zemo);
        zemo.platform.output.pump(512);
        zemo.platform.output.pump(512);
        zemo.platform.trace.out.clear();
        zemo.delegate.playButton->click();
        QCOMPARE(zemo.platform.trace.out,
                 "IdleCycle = 1\n100000 frames\n" + std::string(45, '_') + "\n\n");
    }

    void aStopByANoteShowsPlayHoweverSoonItsFadeEnds() {
        WindowUnderTest zemo;
        loadSound(std::vector<float>(100000, 0.5F));
        zemo.delegate.playButton->click();
        zemo.pump(512);
        zemo.platform.output.whileAttended = [&] {
            if (bufferPlayer.rampState == FadeOut) {
                zemo.platform.output.pump(512);
            }
        };
        sendNote(zemo);
        QCoreApplication::processEvents();
        attend(zemo);
        QCOMPARE(bufferPlayer.rampState.load(), std::uint32_t{Silent});
        QCOMPARE(zemo.delegate.playButton->title(), QString("Play"));
    }

    void aTestShowsItsLevelThoughTheEndOfAPlayIsStillToBeTold() {
        WindowUnderTest zemo;
        playUpToTheFade(zemo);
        zemo.platform.output.pump(512);
        zemo.delegate.testButton->click();
        const float level = value.load();
        QVERIFY(level != 0.0F);
        attend(zemo);
        QCOMPARE(value.load(), level);
    }

    void aHeldSpaceIsOnePress() {
        WindowUnderTest zemo;
        loadSound(std::vector<float>(100000, 0.5F));
        QVERIFY(QTest::qWaitForWindowActive(zemo.delegate.window));
        hold(zemo.delegate.modeButton, Qt::Key_Space, Qt::NoModifier, 5);
        QCOMPARE(bufferPlayer.rampState.load(), std::uint32_t{FadeIn});
        QCOMPARE(zemo.delegate.playButton->attributedTitle().colour, kRed);
        QCOMPARE(zemo.delegate.modeButton->title(), QString("Peak"));
    }

    /// As the X11 plugin tells it when it has read the release and not yet the press.
    void aRepeatIsNoPressThoughItIsNotToldAsOne() {
        WindowUnderTest zemo;
        QVERIFY(QTest::qWaitForWindowExposed(zemo.delegate.window));
        const auto isLetThrough = [&](QEvent::Type type, int key, Qt::KeyboardModifiers modifiers,
                                      quint64 time) {
            QKeyEvent event(type, key, modifiers);
            event.setTimestamp(time);
            event.ignore();
            QCoreApplication::sendEvent(zemo.delegate.window->windowHandle(), &event);
            return !event.isAccepted();
        };
        const std::vector<std::pair<int, Qt::KeyboardModifiers>> pressedOnce{
            {Qt::Key_Space, Qt::NoModifier},
            {Qt::Key_Z, Qt::ControlModifier},
            {Qt::Key_M, Qt::ControlModifier},
            {Qt::Key_T, Qt::ControlModifier},
            {Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier},
            {Qt::Key_Return, Qt::NoModifier},
            {Qt::Key_Enter, Qt::KeypadModifier}};
        for (const auto& [key, modifiers] : pressedOnce) {
            QVERIFY(isLetThrough(QEvent::ShortcutOverride, key, modifiers, 100));
            isLetThrough(QEvent::KeyRelease, key, modifiers, 600);
            QVERIFY(!isLetThrough(QEvent::ShortcutOverride, key, modifiers, 600));
            QVERIFY(!isLetThrough(QEvent::KeyPress, key, modifiers, 600));
            isLetThrough(QEvent::KeyRelease, key, modifiers, 640);
            QVERIFY(isLetThrough(QEvent::ShortcutOverride, key, modifiers, 641));
        }
        isLetThrough(QEvent::KeyRelease, Qt::Key_G, Qt::ControlModifier, 700);
        QVERIFY(isLetThrough(QEvent::ShortcutOverride, Qt::Key_G, Qt::ControlModifier, 700));
    }

    void aHeldEnterIsOnePress() {
        WindowUnderTest zemo;
        loadSound(std::vector<float>(100000, 0.5F));
        QVERIFY(QTest::qWaitForWindowActive(zemo.delegate.window));
        hold(zemo.delegate.playButton, Qt::Key_Return, Qt::NoModifier, 5);
        QCOMPARE(bufferPlayer.rampState.load(), std::uint32_t{FadeIn});
        hold(zemo.delegate.modeButton, Qt::Key_Enter, Qt::KeypadModifier, 5);
        QCOMPARE(zemo.delegate.modeButton->title(), QString("RMS"));
    }

    void aHeldShortcutOfTheModeIsOnePress() {
        WindowUnderTest zemo;
        QVERIFY(QTest::qWaitForWindowActive(zemo.delegate.window));
        hold(zemo.delegate.playButton, Qt::Key_M, Qt::ControlModifier, 5);
        QCOMPARE(zemo.delegate.modeButton->title(), QString("RMS"));
    }

    void aHeldShortcutOfTheTestIsOnePress() {
        WindowUnderTest zemo;
        QVERIFY(QTest::qWaitForWindowActive(zemo.delegate.window));
        zemo.platform.trace.logged.clear();
        hold(zemo.delegate.playButton, Qt::Key_T, Qt::ControlModifier, 5);
        QCOMPARE(zemo.platform.trace.logged.size(), std::size_t{2}); // a level is two lines
    }

    void aHeldShortcutOfRevertIsOnePress() {
        WindowUnderTest zemo;
        loadSound({0.5F, 0.25F, 0.125F});
        QVERIFY(QTest::qWaitForWindowActive(zemo.delegate.window));
        QVERIFY(make_revert(zemo.delegate.ustruct, fBuffer.load(), 3));
        loadSound({0.75F});
        hold(zemo.delegate.playButton, Qt::Key_Z, Qt::ControlModifier, 5);
        QCOMPARE(fBuffersize.load(), 3);
    }
};

QTEST_MAIN(PressTest)
#include "press_test.moc"
