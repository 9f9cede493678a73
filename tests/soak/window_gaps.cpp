// window_gaps: prints the longest time that the window's events had to wait, and how long a cancel
// took, while half an hour of sound was worked on. tools/soak window runs it; it is no test, since
// a busy machine keeps events waiting too.
#include <QElapsedTimer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>

#include "interface/ProgressPanel.h"
#include "interface/SavePanel.h"
#include "platform_linux/LinuxServices.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::WindowUnderTest;

namespace {

constexpr double kRate = 44100.0;
constexpr std::int64_t kHalfAnHour = 30 * 60 * 44100;

/// Ticks as often as the event loop lets it, and keeps the longest time in between. What a person
/// may notice is 50 ms; on a machine that others share a thread may have to wait as long for its
/// processor, so the test fails at the larger of that and a share of the whole work, which work
/// done on the window's own thread exceeds at once.
class GapMeter : public QObject {
public:
    GapMeter() {
        timer_.setTimerType(Qt::PreciseTimer);
        connect(&timer_, &QTimer::timeout, this, &GapMeter::tick);
        timer_.start(1);
        whole_.start();
        since_.start();
    }

    void tick() {
        longest_ = std::max(longest_, since_.restart());
        ++ticks_;
    }

    void report(const char* what) {
        tick();
        const qint64 whole = whole_.elapsed();
        qInfo("%s: %lld ms, longest gap %lld ms, %d ticks", what, static_cast<long long>(whole),
              static_cast<long long>(longest_), ticks_);
        QVERIFY2(longest_ <= std::max<qint64>(50, whole / 4), what);
    }

private:
    QTimer timer_;
    QElapsedTimer whole_;
    QElapsedTimer since_;
    qint64 longest_ = 0;
    int ticks_ = 0;
};

SampleBlock halfAnHour() {
    SampleBlock samples = allocateUnsetSamples(kHalfAnHour);
    double phase = 0.0;
    for (std::int64_t i = 0; i < kHalfAnHour; ++i) {
        phase += 0.05 + 0.00000001 * static_cast<double>(i % 3000000);
        samples.get()[i] = 0.6F * static_cast<float>(std::sin(phase));
    }
    return samples;
}

} // namespace

class WindowGaps : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        zemo_ = std::make_unique<WindowUnderTest>(kRate);
        platform::services().workers = &workers_;
        platform::services().clock = &clock_;
        platform::services().memory = &memory_;
        platform::services().fileSystem = &fileSystem_;
        platform::services().fileOperations = &fileOperations_;
        replaceBuffer(halfAnHour(), kHalfAnHour);
        versionMinor = 9;
        zemo_->delegate.keepRescueCopies(rescue_.filePath("zemo/rescue").toStdString());
    }
    void cleanupTestCase() {
        zemo_.reset();
        QFile::remove(file("caf"));
        QFile::remove(file("wav"));
    }

    void resampling() {
        AppDelegate& zemo = zemo_->delegate;
        zemo.ResampleDialog(nullptr);
        zemo.resamplingTextField->setText("1.2");
        measure("resample", [&] { zemo.resamplingOkButton->click(); });
        measure("Revert", [&] { zemo.revertAction(nullptr); });
        QCOMPARE(fBuffersize.load(), kHalfAnHour);
    }

    void modulatingTheAmplitude_data() {
        QTest::addColumn<int>("segment");
        QTest::newRow("AM") << 0;
        QTest::newRow("lower sideband") << 1;
    }
    void modulatingTheAmplitude() {
        QFETCH(const int, segment);
        AppDelegate& zemo = zemo_->delegate;
        zemo.AMDialog(nullptr);
        zemo.amFreqTextField->setText("300");
        zemo.amSegment->setSelectedSegment(segment);
        measure(QTest::currentDataTag(), [&] { zemo.amOkButton->click(); });
    }

    void modulatingThePhase() {
        AppDelegate& zemo = zemo_->delegate;
        zemo.FMDialog(nullptr);
        measure("FM", [&] { zemo.fmOkButton->click(); });
    }

    void addingHarmonics() {
        AppDelegate& zemo = zemo_->delegate;
        zemo.HDDialog(nullptr);
        zemo.hdHpSegment->setSelectedForSegment(true, 1);
        measure("HD", [&] { zemo.hdOkButton->click(); });
    }

    void savingAndOpening() {
        AppDelegate& zemo = zemo_->delegate;
        QFile::remove(file("caf"));
        zemo.SaveAsAudioDialog(nullptr);
        auto* const panel = zemo.window->findChild<SavePanel*>();
        panel->selectFile(file("caf"));
        measure("save", [&] {
            QMetaObject::invokeMethod(panel, "accept");
            QCoreApplication::processEvents();
        });
        QVERIFY(QFile::exists(file("caf")));
        measure("open", [&] { zemo.openFileNamed(file("caf")); });
        QCOMPARE(fBuffersize.load(), kHalfAnHour + 2);
    }

    void exportingAndImporting() {
        AppDelegate& zemo = zemo_->delegate;
        measure("export", [&] { zemo.exportFile(file("wav")); });
        measure("import", [&] { zemo.importFile(file("wav")); });
        QCOMPARE(fBuffersize.load(), kHalfAnHour + 2);
        R = 48000.0;
        measure("import at another rate", [&] { zemo.importFile(file("wav")); });
        R = kRate;
        QVERIFY(fBuffersize.load() > kHalfAnHour * 48 / 45);
    }

    void cancelling_data() {
        QTest::addColumn<bool>("isImport");
        QTest::newRow("cancel resample") << false;
        QTest::newRow("cancel import") << true;
    }
    /// From the press of the button to the window's being free again.
    void cancelling() {
        QFETCH(const bool, isImport);
        AppDelegate& zemo = zemo_->delegate;
        const float* const sound = fBuffer.load();
        const SampleBlock copy = zemo.ustruct.buf;
        QElapsedTimer since;
        QTimer finger;
        connect(&finger, &QTimer::timeout, this, [&] {
            if (auto* const panel = zemo.window->findChild<ProgressPanel*>()) {
                finger.stop();
                since.start();
                panel->findChild<QPushButton*>("progressCancelButton")->click();
            }
        });
        finger.start(5);
        if (isImport) {
            R = 48000.0;
            zemo.importFile(file("wav"));
            R = kRate;
        } else {
            zemo.ResampleDialog(nullptr);
            zemo.resamplingTextField->setText("8");
            zemo.resamplingOkButton->click();
        }
        QVERIFY(since.isValid());
        const qint64 answered = since.elapsed();
        qInfo("%s: %lld ms", QTest::currentDataTag(), static_cast<long long>(answered));
        QVERIFY(answered < 500); // 100 is the aim; the machine may be another's for a while
        QVERIFY(fBuffer.load() == sound);
        QVERIFY(zemo.ustruct.buf == copy);
    }

private:
    static QString file(const QString& extension) {
        return QDir::temp().filePath("zemo-half-an-hour." + extension);
    }

    static void measure(const char* what, const std::function<void()>& action) {
        QTest::qWait(50); // what the test itself left to be drawn
        GapMeter meter;
        action();
        meter.report(what);
    }

    QTemporaryDir rescue_; ///< every transformation is followed by the writing of its copy
    std::unique_ptr<WindowUnderTest> zemo_;
    platform::ThreadWorkers workers_{2};
    platform::SteadyClock clock_;
    platform::LinuxMemory memory_;
    platform::PosixFileSystem fileSystem_;
    platform::PosixFileOperations fileOperations_;
};

QTEST_MAIN(WindowGaps)
#include "window_gaps.moc"
