#include <QProgressBar>
#include <QtTest>
#include <semaphore>
#include <thread>

#include "app/WorkInWindow.h"
#include "interface/ProgressPanel.h"
#include "platform/Progress.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using namespace std::chrono_literals;
using zemo::test::currentSound;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

namespace {

const std::vector<float> kSound{0.1F, -0.2F, 0.3F};

platform::LongWork& longWork() {
    return *platform::services().longWork;
}

/// Work of a hundred pieces that each take a while.
void slowWork(std::chrono::milliseconds piece) {
    platform::beginStage(100);
    for (int i = 0; i < 100 && !platform::isStopRequested(); ++i) {
        std::this_thread::sleep_for(piece);
        platform::pieceDone();
    }
}

/// Work of a hundred pieces, each of which waits until the window has let it go on.
class SteppedWork {
public:
    void operator()() {
        platform::beginStage(100);
        for (int i = 0; i < 100; ++i) {
            steps_.acquire();
            platform::pieceDone();
        }
    }
    void step() { steps_.release(); } ///< [main]

private:
    std::counting_semaphore<> steps_{0};
};

ProgressPanel* panelOf(const AppDelegate& delegate) {
    return delegate.window->findChild<ProgressPanel*>();
}

} // namespace

class LongWorkTest : public QObject {
    Q_OBJECT
private slots:
    void shortWorkShowsNothing() {
        WindowUnderTest zemo;
        bool done = false;
        QVERIFY(longWork().run([&] { done = true; }, platform::Cancel::Allowed));
        QVERIFY(done);
        QVERIFY(panelOf(zemo.delegate) == nullptr);
    }

    void workIsDoneOnAnotherThreadWhileTheEventsGoOn() {
        WindowUnderTest zemo;
        SteppedWork work;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] { work.step(); });
        timer.start(1);
        std::thread::id worker;
        longWork().run(
            [&] {
                worker = std::this_thread::get_id();
                work(); // comes to its end only if the events go on
            },
            platform::Cancel::Allowed);
        QVERIFY(worker != std::this_thread::get_id());
    }

    void workThatLastsShowsHowFarItIs() {
        WindowUnderTest zemo;
        int highest = -1;
        bool isModal = false;
        SteppedWork work;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            if (ProgressPanel* const panel = panelOf(zemo.delegate)) {
                const int shown = panel->findChild<QProgressBar*>()->value();
                QVERIFY(shown >= highest);
                highest = shown;
                isModal = panel->isVisible() && panel->windowModality() == Qt::WindowModal;
                work.step();
            }
        });
        timer.start(20); // as often as the panel looks, so it shows most of the steps
        QVERIFY(longWork().run([&] { work(); }, platform::Cancel::Allowed));
        QVERIFY2(highest > 500, qPrintable(QString::number(highest)));
        QVERIFY(isModal);
        QVERIFY(panelOf(zemo.delegate) == nullptr);
    }

    void cancelEndsTheWork_data() {
        QTest::addColumn<bool>("byEscape");
        QTest::newRow("button") << false;
        QTest::newRow("Escape") << true;
    }
    void cancelEndsTheWork() {
        QFETCH(const bool, byEscape);
        WindowUnderTest zemo;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            ProgressPanel* const panel = panelOf(zemo.delegate);
            if (panel == nullptr) {
                return;
            }
            timer.stop();
            if (byEscape) {
                QTest::keyClick(panel, Qt::Key_Escape);
            } else {
                panel->findChild<QPushButton*>("progressCancelButton")->click();
            }
        });
        timer.start(20);
        bool sawTheEnd = false;
        QVERIFY(!longWork().run(
            [&] {
                slowWork(100ms);
                sawTheEnd = !platform::isStopRequested();
            },
            platform::Cancel::Allowed));
        QVERIFY(!sawTheEnd);
        QVERIFY(panelOf(zemo.delegate) == nullptr);
    }

    /// They may have been meant for what was there before the panel.
    void returnAndSpaceInThePanelDoNothing() {
        WindowUnderTest zemo;
        SteppedWork work;
        QTimer timer;
        bool wereTyped = false;
        connect(&timer, &QTimer::timeout, this, [&] {
            ProgressPanel* const panel = panelOf(zemo.delegate);
            if (panel == nullptr) {
                return;
            }
            if (!std::exchange(wereTyped, true)) {
                auto* const button = panel->findChild<QPushButton*>("progressCancelButton");
                QVERIFY(button->focusPolicy() == Qt::NoFocus && !button->hasFocus());
                QWidget* const focus = panel->focusWidget();
                for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
                    QTest::keyClick(panel, key);
                    QTest::keyClick(focus != nullptr ? focus : panel, key);
                }
            }
            work.step();
        });
        timer.start(1);
        QVERIFY(longWork().run([&] { work(); }, platform::Cancel::Allowed));
        QVERIFY(wereTyped);
    }

    void whatCannotBeCancelledHasNoButtonAndGoesOn() {
        WindowUnderTest zemo;
        bool hadButton = false;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            if (ProgressPanel* const panel = panelOf(zemo.delegate)) {
                hadButton = hadButton || panel->findChild<QPushButton*>() != nullptr;
                QTest::keyClick(panel, Qt::Key_Escape);
                QVERIFY(panel->isVisible());
            }
        });
        timer.start(50);
        QVERIFY(longWork().run([] { slowWork(6ms); }, platform::Cancel::NotAllowed));
        QVERIFY(!hadButton);
    }

    void closingTheWindowCancels() {
        WindowUnderTest zemo;
        QTimer::singleShot(50, zemo.delegate.window, &QWidget::close);
        QVERIFY(!longWork().run([] { slowWork(100ms); }, platform::Cancel::Allowed));
    }

    /// What the menu and a screen reader can reach goes past the panel.
    void meanwhileNothingChangesTheSound() {
        WindowUnderTest zemo;
        loadSound(kSound);
        zemo.delegate.ustruct.buf = allocateSamples(1);
        zemo.delegate.ustruct.bufsize = 1;
        zemo.platform.files.files["/new.raw"] = {0, 0, 0, 0};
        zemo.delegate.AMDialog(nullptr);
        SteppedWork work;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            work.step();
            zemo.delegate.revertAction(nullptr);
            zemo.delegate.openFileNamed("/new.raw");
            zemo.delegate.amOkButton->click();
        });
        timer.start(1);
        const float* const block = fBuffer.load();
        longWork().run(
            [&] {
                work();
                QVERIFY(fBuffer.load() == block);
            },
            platform::Cancel::Allowed);
        timer.stop();
        QVERIFY(currentSound() == kSound);
        QCOMPARE(zemo.delegate.ustruct.bufsize, 1);
        zemo.delegate.revertAction(nullptr); // and afterwards it can be changed again
        QCOMPARE(currentSound().size(), std::size_t{1});
    }

    /// The end of a play is waited for with the events going on; a press then begins no new one.
    void aPlayIsNotBegunWhileItsEndIsWaitedFor() {
        WindowUnderTest zemo;
        loadSound(std::vector<float>(100000, 0.5F));
        zemo.delegate.playButton->click();
        zemo.pump(512);
        zemo.platform.clock.whileSleeping = [&] {
            zemo.delegate.playButton->click();
            if (zemo.platform.output.running) {
                zemo.platform.output.pump(512);
            }
        };
        fallIdle();
        zemo.platform.clock.whileSleeping = nullptr;
        QVERIFY(!zemo.platform.output.running);
        QCOMPARE(bufferPlayer.rampState.load(), static_cast<std::uint32_t>(Silent));
        QVERIFY(zemo.platform.clock.time < 1s);
    }
};

QTEST_MAIN(LongWorkTest)
#include "long_work_test.moc"
