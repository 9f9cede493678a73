#include <QPushButton>
#include <QtTest>
#include <atomic>
#include <cmath>
#include <semaphore>
#include <thread>

#include "interface/SavePanel.h"
#include "platform_linux/LinuxServices.h"
#include "playback/SharedState.h"
#include "support/Waiting.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using namespace std::chrono_literals;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

namespace {

constexpr std::size_t kSamples = 300000; // more than one thread takes at a time

bool isOnWindowsThread() {
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

/// Lets long work go on only when the window has handled an event. Work that is done on the
/// window's own thread, or that this thread waits for without its events, can never do so.
class Meetings {
public:
    /// [any] Waits until the window has handled an event that is sent now.
    void meet() {
        if (isOnWindowsThread()) {
            blocked_ = true;
            return;
        }
        ++count_;
        const auto handled = std::make_shared<std::binary_semaphore>(0);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [handled] { handled->release(); }, Qt::QueuedConnection);
        // So long only where the window will never answer.
        blocked_ = blocked_ || !handled->try_acquire_for(60s);
    }

    /// As above, for calls of which the window may make one by itself, such as to read a file's
    /// head.
    void meetUnlessOnWindowsThread() {
        if (!isOnWindowsThread()) {
            meet();
        }
    }

    int count() const { return count_; }
    bool wasBlocked() const { return blocked_; }

private:
    std::atomic<int> count_{0};
    std::atomic<bool> blocked_{false};
};

/// Two threads for transformations, which meet the window before each run.
class MeetingWorkers final : public platform::Workers {
public:
    explicit MeetingWorkers(Meetings& meetings) : meetings_(meetings) {}
    unsigned count() const override { return workers_.count(); }
    void run(unsigned most, const Work& work) override {
        meetings_.meet();
        workers_.run(most, work);
    }

private:
    Meetings& meetings_;
    platform::ThreadWorkers workers_{2};
};

/// A window with a sound, all of whose long work meets the window: transformations at each pass
/// over the sound, files at each read and each system call.
struct AwakeWindow : WindowUnderTest {
    Meetings meetings;
    MeetingWorkers workers{meetings};
    std::vector<std::string> callsOnWindowsThread; ///< of those that write

    AwakeWindow() {
        std::vector<float> sound(kSamples);
        for (std::size_t i = 0; i < sound.size(); ++i) {
            sound[i] = 0.7F * std::sin(0.05F * static_cast<float>(i));
        }
        loadSound(sound);
        versionMinor = 9;
        platform::services().workers = &workers;
        platform.files.whileReading = [this] { meetings.meetUnlessOnWindowsThread(); };
        platform.operations.inject = [this](const std::string& call, std::size_t) {
            if (isOnWindowsThread()) {
                callsOnWindowsThread.push_back(call);
            }
            meetings.meetUnlessOnWindowsThread();
            return 0L;
        };
    }

    void verifyMet() const {
        QVERIFY(meetings.count() > 0);
        QVERIFY(!meetings.wasBlocked());
    }
};

} // namespace

class AwakeTest : public QObject {
    Q_OBJECT
private slots:
    void resampling() {
        AwakeWindow zemo;
        zemo.delegate.ResampleDialog(nullptr);
        zemo.delegate.resamplingTextField->setText("2");
        zemo.delegate.resamplingOkButton->click();
        QCOMPARE(fBuffersize.load(), static_cast<std::int64_t>(2 * (kSamples - 1)));
        zemo.verifyMet();
    }

    void modulatingTheAmplitude_data() {
        QTest::addColumn<int>("segment");
        QTest::newRow("AM") << 0;
        QTest::newRow("lower sideband") << 1;
        QTest::newRow("upper sideband") << 2;
    }
    void modulatingTheAmplitude() {
        QFETCH(const int, segment);
        AwakeWindow zemo;
        zemo.delegate.AMDialog(nullptr);
        zemo.delegate.amFreqTextField->setText("300");
        zemo.delegate.amSegment->setSelectedSegment(segment);
        zemo.delegate.amOkButton->click();
        zemo.verifyMet();
    }

    void modulatingThePhase() {
        AwakeWindow zemo;
        zemo.delegate.FMDialog(nullptr);
        zemo.delegate.fmOkButton->click();
        zemo.verifyMet();
    }

    void addingHarmonics() {
        AwakeWindow zemo;
        zemo.delegate.HDDialog(nullptr);
        zemo.delegate.hdHpSegment->setSelectedForSegment(true, 1);
        zemo.delegate.hdOkButton->click();
        zemo.verifyMet();
    }

    void savingAndOpening() {
        AwakeWindow zemo;
        zemo.delegate.SaveAsAudioDialog(nullptr);
        auto* const panel = zemo.delegate.window->findChild<SavePanel*>();
        panel->selectFile("/awake.caf");
        QMetaObject::invokeMethod(panel, "accept");
        QTRY_VERIFY(zemo.platform.files.files.contains("/awake.caf"));
        QCOMPARE(zemo.callsOnWindowsThread, std::vector<std::string>{});
        zemo.verifyMet();
        const int met = zemo.meetings.count();
        zemo.delegate.openFileNamed("/awake.caf");
        QCOMPARE(fBuffersize.load(), static_cast<std::int64_t>(kSamples) + 2);
        QVERIFY(zemo.meetings.count() > met);
        zemo.verifyMet();
    }

    void exportingAndImporting() {
        AwakeWindow zemo;
        zemo.delegate.exportFile("/awake.wav");
        QVERIFY(zemo.platform.files.files.contains("/awake.wav"));
        QCOMPARE(zemo.callsOnWindowsThread, std::vector<std::string>{});
        zemo.verifyMet();
        const int met = zemo.meetings.count();
        R = 96000.0; // so that the rate is converted as well
        zemo.delegate.importFile("/awake.wav");
        QCOMPARE(fBuffersize.load(), static_cast<std::int64_t>(2 * kSamples));
        QVERIFY(zemo.meetings.count() > met);
        zemo.verifyMet();
    }
};

QTEST_MAIN(AwakeTest)
#include "awake_test.moc"
