#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>
#include <filesystem>
#include <limits>

#include "files/AudioFileWriter.h"
#include "platform_linux/LinuxServices.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/RescueCopies.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using namespace std::chrono_literals;
using zemo::test::WindowUnderTest;

namespace {

constexpr int kLong = 20000; ///< milliseconds

/// The window with its rescue line, over the real disk.
struct RescuedWindow : WindowUnderTest {
    platform::PosixFileOperations operations;
    platform::PosixFileSystem fileSystem;

    explicit RescuedWindow(const QTemporaryDir& state, double rate = 48000.0)
        : WindowUnderTest(rate) {
        platform::services().fileOperations = &operations;
        platform::services().fileSystem = &fileSystem;
        delegate.keepRescueCopies(state.filePath("zemo/rescue").toStdString());
    }

    template <typename Widget> Widget* find(const char* name) {
        return delegate.window->findChild<Widget*>(name);
    }
    bool isOffered() { return find<QWidget>("rescueLine")->isVisible(); }
    QString offer() { return find<QLabel>("rescueText")->text(); }
    QString notice() { return find<QLabel>("notice")->text(); }
    void restore() { find<QPushButton>("restoreButton")->click(); }
    void discard() { find<QPushButton>("discardButton")->click(); }
};

/// Leaves a copy behind as a program does that was killed.
void leaveWork(const QTemporaryDir& state, const char* name, float sample, double rate = 48000.0) {
    const RescuedWindow rescued(state, rate); // for its services
    SampleBlock samples = allocateSamples(1000);
    std::fill_n(samples.get(), 1000, sample);
    replaceBuffer(std::move(samples), 1000);
    const auto folder = rescue::RescueFolder::make(state.filePath("zemo/rescue").toStdString());
    QVERIFY(folder.has_value());
    QVERIFY(writeExactCopy(folder->fileFor(name), HeldSound::take()).done());
    emptyBuffer();
}

std::vector<std::filesystem::path> copyFiles(const QTemporaryDir& state) {
    return zemo::test::rescueCopies(state.path().toStdString());
}

qsizetype copiesIn(const QTemporaryDir& state) {
    return static_cast<qsizetype>(copyFiles(state).size());
}

/// A sample of the only copy; NaN when there is none.
float sampleOfCopy(const QTemporaryDir& state, int index) {
    constexpr int kHeader = 68; // of our CAF: file, description and data chunk
    float sample = std::numeric_limits<float>::quiet_NaN();
    for (const auto& path : copyFiles(state)) {
        QFile file(QString::fromStdString(path));
        if (file.open(QFile::ReadOnly) && file.seek(kHeader + qint64{4} * index)) {
            file.read(reinterpret_cast<char*>(&sample), sizeof sample);
        }
    }
    return sample;
}

class RescueOfferTest : public QObject {
    Q_OBJECT
private slots:

    void nothing_is_offered_where_nothing_was_left() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        QTest::qWait(100);
        QVERIFY(!zemo.isOffered());
    }

    void one_line_names_the_sound() {
        const QTemporaryDir state;
        leaveWork(state, "bell.caf", 0.5F);
        RescuedWindow zemo(state);
        QTRY_VERIFY_WITH_TIMEOUT(zemo.isOffered(), kLong);
        QVERIFY(zemo.offer().startsWith("Not saved last time: bell ("));
        auto* const label = zemo.find<QLabel>("rescueText");
        QVERIFY(label->heightForWidth(label->width()) < 2 * label->fontMetrics().height());
    }

    void several_are_offered_one_after_the_other_the_latest_first() {
        const QTemporaryDir state;
        leaveWork(state, "first.caf", 0.25F);
        QTest::qWait(20);
        leaveWork(state, "second.caf", 0.5F);
        RescuedWindow zemo(state);
        QTRY_VERIFY_WITH_TIMEOUT(zemo.isOffered(), kLong);
        QVERIFY(zemo.offer().contains("second"));
        zemo.restore();
        QCOMPARE(fBuffer.load()[0], 0.5F);
        QVERIFY(zemo.isOffered());
        QVERIFY(zemo.offer().contains("first"));
        zemo.discard();
        QVERIFY(!zemo.isOffered());
        QTRY_COMPARE_WITH_TIMEOUT(copiesIn(state), 1, kLong);
    }

    void a_copy_made_at_another_rate_is_converted_and_stays_as_it_is() {
        const QTemporaryDir state;
        leaveWork(state, "bell.caf", 0.5F, 96000.0);
        RescuedWindow zemo(state);
        QTRY_VERIFY_WITH_TIMEOUT(zemo.isOffered(), kLong);
        zemo.restore();
        QCOMPARE(fBuffersize.load(), 500);
        QVERIFY(!zemo.isOffered());
        QCOMPARE(copiesIn(state), 1);
    }

    void a_loud_copy_is_restored_as_it_was() {
        const QTemporaryDir state;
        leaveWork(state, "bell.caf", 1.75F);
        RescuedWindow zemo(state);
        QTRY_VERIFY_WITH_TIMEOUT(zemo.isOffered(), kLong);
        zemo.restore();
        QCOMPARE(fBuffersize.load(), 1000);
        QCOMPARE(fBuffer.load()[0], 1.75F);
    }

    void a_refused_file_that_has_the_work_scaled_has_its_copy_scaled() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        SampleBlock samples = allocateSamples(1000);
        std::fill_n(samples.get(), 1000, 1.75F);
        replaceBuffer(std::move(samples), 1000);
        zemo.delegate.ResampleDialog(nullptr);
        zemo.delegate.resamplingTextField->setText("1.5");
        zemo.delegate.resamplingOkButton->click();
        QTRY_COMPARE_WITH_TIMEOUT(copiesIn(state), 1, kLong);
        zemo.delegate.openFileNamed(state.filePath("no such file.caf"));
        const float scaled = fBuffer.load()[500];
        QVERIFY(scaled < 1.0F);
        QTRY_COMPARE_WITH_TIMEOUT(sampleOfCopy(state, 500), scaled, kLong);
    }

    void a_copy_that_cannot_be_read_stays_offered() {
        const QTemporaryDir state;
        leaveWork(state, "bell.caf", 0.5F);
        RescuedWindow zemo(state);
        QTRY_VERIFY_WITH_TIMEOUT(zemo.isOffered(), kLong);
        for (const auto& path : copyFiles(state)) {
            std::filesystem::resize_file(path, 10);
        }
        zemo.restore();
        QVERIFY(zemo.isOffered());
        QCOMPARE(fBuffersize.load(), 0);
    }

    void work_that_cannot_be_kept_is_told_until_it_can() {
        const QTemporaryDir state;
        const std::filesystem::path inTheWay = state.filePath("zemo").toStdString();
        QFile file(QString::fromStdString(inTheWay));
        QVERIFY(file.open(QFile::WriteOnly));
        file.close();
        RescuedWindow zemo(state);
        replaceBuffer(allocateSamples(1000), 1000);
        const auto transform = [&] {
            zemo.delegate.ResampleDialog(nullptr);
            zemo.delegate.resamplingTextField->setText("1.5");
            zemo.delegate.resamplingOkButton->click();
        };
        transform();
        const char* const sentence = "No rescue copy of the sound can be kept: save it to be safe";
        QTRY_VERIFY_WITH_TIMEOUT(zemo.notice().contains(sentence), kLong);
        QVERIFY(file.remove());
        transform();
        QTRY_VERIFY_WITH_TIMEOUT(!zemo.notice().contains(sentence), kLong);
        QCOMPARE(copiesIn(state), 1);
    }

    void an_exact_export_counts_as_a_save_and_a_rounded_one_does_not() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        replaceBuffer(allocateSamples(1000), 1000);
        zemo.delegate.ResampleDialog(nullptr);
        zemo.delegate.resamplingTextField->setText("1.5");
        zemo.delegate.resamplingOkButton->click();
        QTRY_COMPARE_WITH_TIMEOUT(copiesIn(state), 1, kLong);
        zemo.delegate.exportFile(state.filePath("bell.flac"));
        QTest::qWait(100);
        QCOMPARE(copiesIn(state), 1);
        zemo.delegate.exportFile(state.filePath("bell.WAV"));
        QTRY_COMPARE_WITH_TIMEOUT(copiesIn(state), 0, kLong);
    }
};

} // namespace

QTEST_MAIN(RescueOfferTest)
#include "rescue_offer_test.moc"
