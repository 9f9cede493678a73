#include <QtTest>
#include <bit>
#include <limits>

#include "playback/SharedState.h"
#include "support/Waiting.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::WindowUnderTest;

namespace {

std::vector<std::uint8_t> bytesOf(const std::vector<float>& samples) {
    const auto* const first = reinterpret_cast<const std::uint8_t*>(samples.data());
    return {first, first + samples.size() * sizeof(float)};
}

std::vector<float> halfLoud(std::size_t count) {
    return std::vector<float>(count, 0.5F);
}

void bigEndian(std::vector<std::uint8_t>& bytes, std::uint64_t value, int count) {
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

/// A CAF of a thousand zeros.
std::vector<std::uint8_t> caf(double rate, std::uint32_t channels, std::uint32_t flags) {
    std::vector<std::uint8_t> bytes{'c', 'a', 'f', 'f', 0, 1, 0, 0, 'd', 'e', 's', 'c'};
    bigEndian(bytes, 32, 8);
    bigEndian(bytes, std::bit_cast<std::uint64_t>(rate), 8);
    bytes.insert(bytes.end(), {'l', 'p', 'c', 'm'});
    for (const std::uint32_t word : {flags, 4 * channels, 1U, channels, 32U}) {
        bigEndian(bytes, word, 4);
    }
    bytes.insert(bytes.end(), {'d', 'a', 't', 'a'});
    bigEndian(bytes, 4004, 8);
    bytes.resize(bytes.size() + 4004);
    return bytes;
}

/// The window, and what it says of its sound.
class WindowWithFiles : public WindowUnderTest {
public:
    explicit WindowWithFiles(double rate = 48000.0) : WindowUnderTest(rate) {}

    void open(const std::string& path, const std::vector<std::uint8_t>& bytes) {
        platform.files.files[path] = bytes;
        delegate.openFileNamed(QString::fromStdString(path));
    }
    QString text(const char* label) const {
        return delegate.window->findChild<QLabel*>(label)->text();
    }
    QLabel* reason() const { return delegate.window->findChild<QLabel*>("reasonValue"); }
    QString described() const { return delegate.soundView->accessibleDescription(); }
};

} // namespace

class SoundOverviewTest : public QObject {
    Q_OBJECT
private slots:
    void anOpenedSoundIsDrawnAndItsPeakSaid() {
        WindowWithFiles zemo;
        zemo.open("/half.f32", bytesOf(halfLoud(96000)));
        QTRY_COMPARE(zemo.text("peakValue"), QString("−6.0 dBFS"));
        QCOMPARE(zemo.described(), QString("Length 2.000 s, peak −6.0 dBFS"));
    }

    void silenceHasNoPeakAtAll() {
        WindowWithFiles zemo;
        zemo.open("/silence.f32", bytesOf(std::vector<float>(1000)));
        QTRY_COMPARE(zemo.text("peakValue"), QString("−∞ dBFS"));
    }

    void samplesBeyondFullScaleAndNotFiniteAreCounted() {
        WindowWithFiles zemo;
        std::vector<float> samples = halfLoud(48000);
        samples[7] = samples[9] = -1.25F;
        samples[8] = std::numeric_limits<float>::quiet_NaN();
        zemo.open("/odd.f32", bytesOf(samples));
        QTRY_COMPARE(zemo.described(),
                     QString("Length 1.000 s, peak +1.9 dBFS, 2 beyond full scale · 1 not finite"));
    }

    void aTransformationAndRevertAreDrawn() {
        WindowWithFiles zemo;
        zemo.open("/half.f32", bytesOf(halfLoud(48000)));
        QTRY_COMPARE(zemo.described(), QString("Length 1.000 s, peak −6.0 dBFS"));
        zemo.delegate.ResampleDialog(nullptr);
        zemo.delegate.resamplingTextField->setText("0.5");
        zemo.delegate.resamplingOkButton->click();
        const std::int64_t count = fBuffersize.load();
        QVERIFY(count != 48000);
        const QString length = QString::number(static_cast<double>(count) / 48000.0, 'f', 3);
        QTRY_VERIFY(zemo.described().startsWith("Length " + length + " s, peak "));
        zemo.delegate.RevertMenu->trigger();
        QTRY_COMPARE(zemo.described(), QString("Length 1.000 s, peak −6.0 dBFS"));
    }

    void soundsThatFollowOneAnotherQuicklyLeaveThePictureOfTheLast() {
        WindowWithFiles zemo;
        for (int i = 1; i <= 20; ++i) {
            zemo.open("/a.f32", bytesOf(halfLoud(static_cast<std::size_t>(i) * 48000)));
        }
        QTRY_COMPARE(zemo.described(), QString("Length 20.000 s, peak −6.0 dBFS"));
        QTest::qWait(100);
        QCOMPARE(zemo.described(), QString("Length 20.000 s, peak −6.0 dBFS"));
    }

    void aSoundThatIsScaledInItsPlaceIsDrawnAsItIsThen() {
        WindowWithFiles zemo;
        zemo.open("/loud.f32", bytesOf(std::vector<float>(1000, 2.0F)));
        QTRY_COMPARE(zemo.text("peakValue"), QString("−0.8 dBFS")); // a tenth below full scale
    }

    void theWindowMayCloseWhileItIsDrawn() {
        for (int i = 0; i < 10; ++i) {
            WindowWithFiles zemo;
            zemo.open("/a.f32", bytesOf(halfLoud(480000)));
        }
        QCoreApplication::processEvents();
        QCOMPARE(fBuffersize.load(), 0);
    }

    void theMenuItemAndTheButtonGoTogether() {
        WindowWithFiles zemo;
        QVERIFY(zemo.delegate.SpectrogramMenu->isCheckable());
        QCOMPARE(zemo.delegate.SpectrogramMenu->shortcut(), QKeySequence("Ctrl+G"));
        zemo.delegate.SpectrogramMenu->trigger();
        QVERIFY(zemo.delegate.soundView->isSpectrogramShown());
        zemo.delegate.window->findChild<QPushButton*>("spectrogramButton")->click();
        QVERIFY(!zemo.delegate.SpectrogramMenu->isChecked());
    }

    void theLineFollowsThePlayAndGoesWithIt() {
        WindowWithFiles zemo;
        zemo.open("/half.f32", bytesOf(halfLoud(100000)));
        QCOMPARE(zemo.delegate.soundView->playhead(), -1.0);
        zemo.delegate.playButton->click();
        zemo.pump(512);
        zemo.pump(512);
        QTRY_COMPARE(zemo.delegate.soundView->playhead(), 1024.0);
        zemo.delegate.playButton->click();
        for (int call = 0; call < 12; ++call) {
            zemo.pump(512);
        }
        QCOMPARE(zemo.delegate.soundView->playhead(), -1.0);
    }

    void aFileAtAnotherRateIsRefusedWithBothRatesAndARemedy() {
        WindowWithFiles zemo;
        zemo.open("/other rate.caf", caf(44100.0, 1, 3));
        QCOMPARE(zemo.text("resultValue"), QString("KO (other rate.caf)"));
        QVERIFY(zemo.reason()->isVisible());
        QCOMPARE(zemo.reason()->text(),
                 QString("other rate.caf is at 44100 Hz, the output at 48000 Hz. "
                         "Import Audio… converts it."));
    }

    void otherRefusalsSayTheirReasonToo() {
        WindowWithFiles zemo;
        zemo.open("/a.caf", caf(48000.0, 2, 3));
        QCOMPARE(zemo.reason()->text(),
                 QString("a.caf has 2 channels, not one. Import Audio… converts it."));
        zemo.open("/b.caf", caf(48000.0, 1, 2));
        QCOMPARE(
            zemo.reason()->text(),
            QString("The samples of b.caf are not 32-bit floats. Import Audio… converts them."));
        zemo.open("/c.caf", {1, 2, 3});
        QCOMPARE(zemo.reason()->text(), QString("The file is neither CAF nor AIFF."));
    }

    void theReasonGoesWithTheNextResult() {
        WindowWithFiles zemo;
        zemo.open("/a.caf", {1, 2, 3});
        QVERIFY(zemo.reason()->isVisible());
        zemo.open("/half.f32", bytesOf(halfLoud(100)));
        QVERIFY(!zemo.reason()->isVisible());
    }

    void aRefusedFileLeavesThePictureOfTheSoundThatStays() {
        WindowWithFiles zemo;
        zemo.open("/half.f32", bytesOf(halfLoud(48000)));
        zemo.open("/bad.caf", {1, 2, 3});
        QTRY_COMPARE(zemo.described(), QString("Length 1.000 s, peak −6.0 dBFS"));
    }
};

QTEST_MAIN(SoundOverviewTest)
#include "sound_overview_test.moc"
