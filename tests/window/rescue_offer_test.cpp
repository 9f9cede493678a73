#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>
#include <filesystem>

#include "files/AudioFileWriter.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/RescuedWindow.h"

using namespace zemo;
using zemo::test::RescuedWindow;

namespace {

constexpr int kLong = 20000; ///< milliseconds

/// Leaves a copy behind as a program does that was killed.
void leaveWork(const QTemporaryDir& state, const char* name, float sample, double rate = 48000.0) {
    const RescuedWindow rescued(state, rate); // for its services
    SampleBlock samples = allocateSamples(1000);
    std::fill_n(samples.get(), 1000, sample);
    replaceBuffer(std::move(samples), 1000);
    const auto folder = rescue::RescueFolder::make(state.filePath("zemo/rescue").toStdString());
    QVERIFY(folder.has_value());
    QVERIFY(writeExactCopy(*folder->pathFor(folder->nameFor(name)), HeldSound::take()).done());
    emptyBuffer();
}

std::vector<std::filesystem::path> copyFiles(const QTemporaryDir& state) {
    return zemo::test::rescueCopies(state.path().toStdString());
}

qsizetype copiesIn(const QTemporaryDir& state) {
    return static_cast<qsizetype>(copyFiles(state).size());
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
        zemo.resample();
        const char* const sentence = "No rescue copy of the sound can be kept: save it to be safe";
        QTRY_VERIFY_WITH_TIMEOUT(zemo.notice().contains(sentence), kLong);
        QVERIFY(file.remove());
        zemo.resample();
        QTRY_VERIFY_WITH_TIMEOUT(!zemo.notice().contains(sentence), kLong);
        QTRY_COMPARE_WITH_TIMEOUT(copiesIn(state), 2, kLong); // the one that had failed as well
    }

    void an_exact_export_counts_as_a_save_and_a_rounded_one_does_not() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        replaceBuffer(allocateSamples(1000), 1000);
        zemo.resample();
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
