#include <QtTest>

#include "dsp/AmplitudeModulation.h"
#include "dsp/HarmonicProcessor.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "dsp/SingleSideband.h"
#include "playback/SharedState.h"
#include "support/Sheets.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::addMechanisms;
using zemo::test::currentSound;
using zemo::test::kCurrent;
using zemo::test::kLegacy;
using zemo::test::kSheets;
using zemo::test::loadSound;
using zemo::test::Sheet;
using zemo::test::WindowUnderTest;

namespace {

std::vector<float> someSound(std::size_t samples = 30000) {
    std::vector<float> sound(samples);
    for (std::size_t i = 0; i < samples; ++i) {
        sound[i] = 0.7F * std::sin(0.05F * static_cast<float>(i % 4000));
    }
    return sound;
}

/// The sound that a transformation makes of someSound(), by the named function alone.
std::vector<float> expectedOf(const std::function<Refusal()>& transformation) {
    loadSound(someSound());
    if (transformation()) {
        qFatal("refused");
    }
    const std::vector<float> result = currentSound();
    loadSound(someSound());
    return result;
}

QString resultOf(const AppDelegate& delegate) {
    return delegate.window->findChild<QLabel*>("resultValue")->text();
}

/// A window with someSound(), its trace empty, the mechanism chosen.
struct SheetUnderTest : WindowUnderTest {
    explicit SheetUnderTest(std::int32_t minor, double rate = 48000.0) : WindowUnderTest(rate) {
        versionMinor = minor;
        doResampling = doAM = doFM = false;
        loadSound(someSound());
        forgetTrace();
    }
    void forgetTrace() {
        platform.trace.all.clear();
        platform.trace.out.clear();
    }
    /// What was traced since, and what the event loop still does.
    std::vector<std::string> traced() {
        QCoreApplication::processEvents();
        return platform.trace.all;
    }
};

using Lines = std::vector<std::string>;

} // namespace

class SheetTest : public QObject {
    Q_OBJECT
private slots:
    void nothingLoadedOpensNoSheet_data() { addMechanisms(); }
    void nothingLoadedOpensNoSheet() {
        QFETCH(const int, minor);
        SheetUnderTest zemo(minor);
        loadSound({});
        for (const Sheet& sheet : kSheets) {
            (zemo.delegate.*sheet.open)(nullptr);
            QVERIFY(zemo.delegate.*sheet.panel == nullptr);
        }
    }

    void everySheetIsWindowModalWithItsOkAsDefaultAndItsFirstFieldSelected_data() {
        addMechanisms();
    }
    void everySheetIsWindowModalWithItsOkAsDefaultAndItsFirstFieldSelected() {
        QFETCH(const int, minor);
        for (const Sheet& sheet : kSheets) {
            SheetUnderTest zemo(minor);
            (zemo.delegate.*sheet.open)(nullptr);
            SheetPanel* const panel = zemo.delegate.*sheet.panel;
            QVERIFY(panel->isVisible());
            QCOMPARE(panel->windowModality(), Qt::WindowModal);
            QCOMPARE(panel->parentWidget(), zemo.delegate.window);
            QVERIFY((zemo.delegate.*sheet.ok)->isDefault());
            auto* const first = panel->findChild<QLineEdit*>();
            if (sheet.panel != &AppDelegate::hdPanel) {
                QCOMPARE(first->selectedText(), first->text());
            }
            (zemo.delegate.*sheet.cancel)->click();
            QVERIFY(!panel->isVisible());
        }
    }

    void escapeIsCancelAndEnterIsOk() {
        SheetUnderTest zemo(kCurrent);
        zemo.delegate.AMDialog(nullptr);
        QTest::keyClick(zemo.delegate.amPanel, Qt::Key_Escape);
        QVERIFY(!zemo.delegate.amPanel->isVisible());
        QCOMPARE(currentSound(), someSound());
        zemo.delegate.AMDialog(nullptr);
        QTest::keyClick(zemo.delegate.amFreqTextField, Qt::Key_Return);
        QVERIFY(!zemo.delegate.amPanel->isVisible());
        QVERIFY(currentSound() != someSound());
    }

    void aSheetKeepsWhatWasTyped() {
        SheetUnderTest zemo(kCurrent);
        zemo.delegate.AMDialog(nullptr);
        SheetPanel* const panel = zemo.delegate.amPanel;
        zemo.delegate.amFreqTextField->setText("123");
        zemo.delegate.amCancelButton->click();
        zemo.delegate.AMDialog(nullptr);
        QCOMPARE(zemo.delegate.amPanel, panel);
        QCOMPARE(zemo.delegate.amFreqTextField->text(), QString("123"));
        zemo.delegate.amCancelButton->click();
    }

    void cancelChangesNothingAndKeepsNoCopy_data() { addMechanisms(); }
    void cancelChangesNothingAndKeepsNoCopy() {
        QFETCH(const int, minor);
        for (const Sheet& sheet : kSheets) {
            SheetUnderTest zemo(minor);
            (zemo.delegate.*sheet.open)(nullptr);
            (zemo.delegate.*sheet.cancel)->click();
            zemo.traced();
            QCOMPARE(currentSound(), someSound());
            QCOMPARE(zemo.delegate.ustruct.bufsize, 0);
        }
    }

    void cancelIsTracedInItsOwnOrder_data() {
        QTest::addColumn<int>("sheet");
        QTest::addColumn<int>("minor");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("Resample, older")
            << 0 << kLegacy
            << QStringList{"log: Resampling Cancel Button pressed\n",
                           "log: Resampling Value = @0.000000", "log: sheet did close"};
        QTest::newRow("Resample, newer") << 0 << kCurrent
                                         << QStringList{"log: resamplePanel to be posted:\n",
                                                        "log: >Resampling Cancel Button pressed\n",
                                                        "out: ResampleDialogClosed\n"};
        QTest::newRow("AM, older")
            << 1 << kLegacy
            << QStringList{"log: AM Cancel Button pressed\n", "log: AM Sheet did end"};
        QTest::newRow("AM, newer")
            << 1 << kCurrent
            << QStringList{"log: >AM Cancel Button pressed\n", "out: AMDialogClosed\n"};
        QTest::newRow("FM, older")
            << 2 << kLegacy
            << QStringList{"log: FM Cancel Button pressed\n", "log: AM Sheet did end"};
        QTest::newRow("FM, newer")
            << 2 << kCurrent << QStringList{"log: >FM Cancel Button pressed\n"};
        QTest::newRow("HD, older")
            << 3 << kLegacy << QStringList{"log: HD Cancel Button pressed\n"};
        QTest::newRow("HD, newer")
            << 3 << kCurrent << QStringList{"log: >HD Cancel Button pressed\n"};
    }
    void cancelIsTracedInItsOwnOrder() {
        QFETCH(const int, sheet);
        QFETCH(const int, minor);
        QFETCH(const QStringList, lines);
        SheetUnderTest zemo(minor);
        rvalue = 0.0F;
        (zemo.delegate.*kSheets[static_cast<std::size_t>(sheet)].open)(nullptr);
        (zemo.delegate.*kSheets[static_cast<std::size_t>(sheet)].cancel)->click();
        QStringList traced;
        for (const std::string& line : zemo.traced()) {
            traced += QString::fromStdString(line);
        }
        QCOMPARE(traced, lines);
    }

    void resamplingRunsOnceAndKeepsTheCopy_data() { addMechanisms(); }
    void resamplingRunsOnceAndKeepsTheCopy() {
        QFETCH(const int, minor);
        SheetUnderTest zemo(minor);
        const auto expected = expectedOf([] { return resampleBuffer(1.5F); });
        zemo.delegate.ResampleDialog(nullptr);
        zemo.delegate.resamplingOkButton->click();
        zemo.traced();
        QCOMPARE(rvalue, 1.5F);
        QCOMPARE(currentSound(), expected);
        QCOMPARE(zemo.delegate.ustruct.bufsize, 30000);
        QCOMPARE(doResampling, minor == kCurrent); // only the older way clears it
    }

    void resamplingIsTracedInItsOwnOrder_data() { addMechanisms(); }
    void resamplingIsTracedInItsOwnOrder() {
        QFETCH(const int, minor);
        SheetUnderTest zemo(minor);
        zemo.delegate.ResampleDialog(nullptr);
        zemo.delegate.resamplingOkButton->click();
        const Lines all = zemo.traced();
        const Lines grid{"out: len1 = 30000\tlen2 = 44998\n",
                         "out: X1[0] = 0.000000\tX1[0] = 0.624979\n",
                         "out: X2[0] = 0.000000\tX2[0] = 0.624958\n"};
        Lines expected;
        if (minor == kLegacy) {
            expected = {"log: Resampling Value = @1.500000", "log: Resampling Value = @1.500000"};
            expected.insert(expected.end(), grid.begin(), grid.end());
            expected.emplace_back("log: sheet did close");
        } else {
            expected = {"log: resamplePanel to be posted:\n", "log: Resampling Value = @1.500000",
                        "out: ResampleDialogClosed\n"};
            expected.insert(expected.end(), grid.begin(), grid.end());
        }
        QCOMPARE(all, expected);
    }

    void aRatioThatCannotBeChangesNothingAndSaysSo_data() { addMechanisms(); }
    void aRatioThatCannotBeChangesNothingAndSaysSo() {
        QFETCH(const int, minor);
        SheetUnderTest zemo(minor);
        zemo.delegate.ResampleDialog(nullptr);
        zemo.delegate.resamplingTextField->setText("-1");
        zemo.delegate.resamplingOkButton->click();
        zemo.traced();
        QCOMPARE(currentSound(), someSound());
        QCOMPARE(zemo.delegate.ustruct.bufsize, 0);
        QCOMPARE(zemo.delegate.window->findChild<QLabel*>("resultValue")->text(),
                 QString("The resampling ratio must be a number above 0."));
    }

    void resamplingNoSoundOnlyLogs_data() { addMechanisms(); }
    void resamplingNoSoundOnlyLogs() {
        QFETCH(const int, minor);
        SheetUnderTest zemo(minor);
        zemo.delegate.ResampleDialog(nullptr); // which does not open without one
        emptyBuffer();
        zemo.delegate.resamplingOkButton->click();
        const Lines all = zemo.traced();
        QCOMPARE(std::count(all.begin(), all.end(), "log: Nothing to resample"), 1);
        QCOMPARE(fBuffersize.load(), 0);
        QCOMPARE(zemo.delegate.ustruct.bufsize, 0);
    }

    void theAmSheetDoesWhatItsSegmentSays_data() {
        QTest::addColumn<int>("minor");
        QTest::addColumn<int>("segment");
        for (const int segment : {0, 1, 2}) {
            QTest::addRow("older way, segment %d", segment) << kLegacy << segment;
            QTest::addRow("newer way, segment %d", segment) << kCurrent << segment;
        }
    }
    void theAmSheetDoesWhatItsSegmentSays() {
        QFETCH(const int, minor);
        QFETCH(const int, segment);
        SheetUnderTest zemo(minor);
        // The delay line goes over from run to run: an even number of silent runs clears it.
        const auto clearLine = [] {
            loadSound(std::vector<float>(600));
            QVERIFY(!ssbmBuffer(true, 440.0F, 1.0F));
        };
        clearLine();
        const auto expected = expectedOf([segment] {
            return segment == 0 ? amBuffer(440.0F, 1.0F) : ssbmBuffer(segment == 2, 440.0F, 1.0F);
        });
        clearLine();
        loadSound(someSound());
        zemo.delegate.AMDialog(nullptr);
        zemo.delegate.amSegment->setSelectedSegment(segment);
        zemo.delegate.amOkButton->click();
        zemo.traced();
        QCOMPARE(currentSound(), expected);
        QCOMPARE(zemo.delegate.ustruct.bufsize, 30000);
        QCOMPARE(doAM, minor == kCurrent);
    }

    void anInvalidCarrierClosesTheAmSheetSilently_data() {
        QTest::addColumn<int>("minor");
        QTest::addColumn<QString>("frequency");
        QTest::addColumn<QString>("index");
        for (const int minor : {kLegacy, kCurrent}) {
            QTest::addRow("frequency 0, minor %d", minor) << minor << "0"
                                                          << "1";
            QTest::addRow("negative frequency, minor %d", minor) << minor << "-3"
                                                                 << "1";
            QTest::addRow("no number, minor %d", minor) << minor << "many"
                                                        << "1";
            QTest::addRow("negative index, minor %d", minor) << minor << "440"
                                                             << "-0.1";
        }
    }
    void anInvalidCarrierClosesTheAmSheetSilently() {
        QFETCH(const int, minor);
        QFETCH(const QString, frequency);
        QFETCH(const QString, index);
        SheetUnderTest zemo(minor);
        const QString before = zemo.delegate.window->findChild<QLabel*>("resultValue")->text();
        zemo.delegate.AMDialog(nullptr);
        zemo.delegate.amFreqTextField->setText(frequency);
        zemo.delegate.amIndexTextField->setText(index);
        zemo.delegate.amOkButton->click();
        zemo.traced();
        QVERIFY(!zemo.delegate.amPanel->isVisible());
        QCOMPARE(currentSound(), someSound());
        QCOMPARE(zemo.delegate.ustruct.bufsize, 0);
        QVERIFY(!doAM);
        QCOMPARE(zemo.delegate.window->findChild<QLabel*>("resultValue")->text(), before);
    }

    void aSheetThatDoesNothingClearsWhatAnEarlierOneSaid_data() { addMechanisms(); }
    void aSheetThatDoesNothingClearsWhatAnEarlierOneSaid() {
        QFETCH(const int, minor);
        SheetUnderTest zemo(minor);
        AppDelegate& d = zemo.delegate;
        const QString nothing = resultOf(d);
        const auto sayDone = [&] {
            d.AMDialog(nullptr);
            d.amFreqTextField->setText("440");
            d.amOkButton->click();
            zemo.traced();
            QCOMPARE(resultOf(d), QString("Done"));
        };
        for (const Sheet& sheet : kSheets) {
            sayDone();
            (d.*sheet.open)(nullptr);
            (d.*sheet.cancel)->click();
            zemo.traced();
            QCOMPARE(resultOf(d), nothing);
        }
        sayDone();
        d.AMDialog(nullptr);
        d.amFreqTextField->setText("0");
        d.amOkButton->click();
        zemo.traced();
        QCOMPARE(resultOf(d), nothing);
        sayDone();
        d.FMDialog(nullptr);
        d.fmIndexTextField->setText("-1");
        d.fmOkButton->click();
        zemo.traced();
        QCOMPARE(resultOf(d), nothing);
        sayDone();
        d.HDDialog(nullptr);
        d.hdSegment->setSelectedForSegment(false, 0);
        d.hdOkButton->click();
        zemo.traced();
        QCOMPARE(resultOf(d), nothing);
    }

    void aSheetThatDoesNothingLeavesWhatElseWasSaid() {
        SheetUnderTest zemo(kCurrent);
        zemo.delegate.exportFile("/kept.wav");
        const QString said = resultOf(zemo.delegate);
        QVERIFY(said.startsWith("Exported as kept.wav"));
        zemo.delegate.AMDialog(nullptr);
        zemo.delegate.amCancelButton->click();
        QCOMPARE(resultOf(zemo.delegate), said);
    }

    void theFieldsShowWhatWasRead_data() { addMechanisms(); }
    void theFieldsShowWhatWasRead() {
        QFETCH(const int, minor);
        SheetUnderTest zemo(minor);
        AppDelegate& d = zemo.delegate;
        d.ResampleDialog(nullptr);
        d.resamplingTextField->setText("1,5");
        d.resamplingOkButton->click();
        zemo.traced();
        QCOMPARE(rvalue, 1.0F);
        QCOMPARE(d.resamplingTextField->text(), QString("1"));
        d.AMDialog(nullptr);
        d.amFreqTextField->setText("many");
        d.amIndexTextField->setText(" 0.50");
        d.amOkButton->click();
        zemo.traced();
        QCOMPARE(d.amFreqTextField->text(), QString("0"));
        QCOMPARE(d.amIndexTextField->text(), QString(" 0.50")); // is what was read
        d.FMDialog(nullptr);
        d.fmFreqTextField->setText("440 Hz");
        d.fmIndexTextField->setText("0.1.2");
        d.fmLpfTextField->setText("8 or so");
        d.fmOkButton->click();
        zemo.traced();
        QCOMPARE(d.fmFreqTextField->text(), QString("440"));
        QCOMPARE(d.fmIndexTextField->text(), QString("0.1"));
        QCOMPARE(d.fmLpfTextField->text(), QString("8"));
        d.HDDialog(nullptr);
        d.hdHpfAttackTextField->setText("300.9");
        d.hdKneeTextField->setText("0,3");
        d.hdOkButton->click();
        zemo.traced();
        QCOMPARE(d.hdHpfAttackTextField->text(), QString("300"));
        QCOMPARE(d.hdKneeTextField->text(), QString("0"));
        d.HDDialog(nullptr);
        d.hdKneeTextField->setText("what was typed");
        d.hdCancelButton->click();
        QCOMPARE(d.hdKneeTextField->text(), QString("what was typed"));
    }

    void theNumbersHaveTheLocalesDecimalSign_data() { addMechanisms(); }
    void theNumbersHaveTheLocalesDecimalSign() {
        QFETCH(const int, minor);
        const QLocale before;
        QLocale::setDefault(QLocale(QLocale::German));
        SheetUnderTest zemo(minor);
        AppDelegate& d = zemo.delegate;
        d.HDDialog(nullptr);
        QCOMPARE(d.hdHpfSlopeTextField->text(), QString("0,995"));
        QCOMPARE(d.hdPanel->findChild<QLabel*>("hdHpfSlopeTextFieldUnit")->text(),
                 QString("0,6 to 0,998"));
        QCOMPARE(d.hdPanel->findChild<QLabel*>("hdCompTextFieldUnit")->text(), QString("0,2 to 1"));
        d.hdHpfSlopeTextField->setText("0.5");
        d.hdKneeTextField->setText("0,3");
        d.hdCompTextField->setText("0.7");
        d.hdOkButton->click();
        zemo.traced();
        QCOMPARE(d.hdHpfSlopeTextField->text(), QString("0,6"));
        QCOMPARE(d.hdKneeTextField->text(), QString("0,3"));
        QCOMPARE(d.hdCompTextField->text(), QString("0,7"));
        d.ResampleDialog(nullptr);
        QCOMPARE(d.resamplingTextField->text(), QString("1,5"));
        d.resamplingOkButton->click();
        zemo.traced();
        QCOMPARE(rvalue, 1.5F);
        QLocale::setDefault(before);
    }

    void theFmSheetClampsTheEnvelopeInItsField_data() {
        QTest::addColumn<int>("minor");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<float>("used");
        for (const int minor : {kLegacy, kCurrent}) {
            QTest::addRow("below, minor %d", minor) << minor << "2"
                                                    << "4" << 4.0F;
            QTest::addRow("above, minor %d", minor) << minor << "50"
                                                    << "32" << 32.0F;
            QTest::addRow("inside, minor %d", minor) << minor << "16.5"
                                                     << "16.5" << 16.5F;
        }
    }
    void theFmSheetClampsTheEnvelopeInItsField() {
        QFETCH(const int, minor);
        QFETCH(const QString, typed);
        QFETCH(const QString, shown);
        QFETCH(const float, used);
        SheetUnderTest zemo(minor);
        const auto expected = expectedOf([used] { return pmBuffer(440.0F, 2.0F, used); });
        zemo.delegate.FMDialog(nullptr);
        zemo.delegate.fmLpfTextField->setText(typed);
        zemo.delegate.fmOkButton->click();
        zemo.traced();
        QCOMPARE(zemo.delegate.fmLpfTextField->text(), shown);
        QCOMPARE(currentSound(), expected);
        QCOMPARE(doFM, minor == kCurrent);
    }

    void anInvalidCarrierClosesTheFmSheetSilently_data() { addMechanisms(); }
    void anInvalidCarrierClosesTheFmSheetSilently() {
        QFETCH(const int, minor);
        SheetUnderTest zemo(minor);
        zemo.delegate.FMDialog(nullptr);
        zemo.delegate.fmFreqTextField->setText("0");
        zemo.delegate.fmOkButton->click();
        zemo.traced();
        QCOMPARE(currentSound(), someSound());
        QCOMPARE(zemo.delegate.ustruct.bufsize, 0);
        QVERIFY(!doFM);
    }

    void theHdSheetClampsItsFieldsAndShowsIt_data() { addMechanisms(); }
    void theHdSheetClampsItsFieldsAndShowsIt() {
        QFETCH(const int, minor);
        SheetUnderTest zemo(minor);
        const auto expected =
            expectedOf([] { return hd(true, true, false, 100, true, 0, 0.6, 0.5F, 0.0F, 0.2F); });
        zemo.delegate.HDDialog(nullptr);
        AppDelegate& d = zemo.delegate;
        d.hdSegment->setSelectedForSegment(true, 1);
        d.hdHpfSlopeTextField->setText("0.5");
        d.hdHpfAttackTextField->setText("50");
        d.hdKneeTextField->setText("-0.3");
        d.hdCompTextField->setText("0.1");
        d.hdOkButton->click();
        zemo.traced();
        QCOMPARE(d.hdHpfSlopeTextField->text(), QString("0.6"));
        QCOMPARE(d.hdHpfAttackTextField->text(), QString("100"));
        QCOMPARE(d.hdKneeTextField->text(), QString("0"));
        QCOMPARE(d.hdCompTextField->text(), QString("0.2"));
        QCOMPARE(currentSound(), expected);
    }

    void theFirstValuesOfTheHdSheetAreUsable_data() { addMechanisms(); }
    void theFirstValuesOfTheHdSheetAreUsable() {
        QFETCH(const int, minor);
        SheetUnderTest zemo(minor);
        const auto expected = expectedOf(
            [] { return hd(true, false, false, 500, true, 0, 0.995, 0.5F, 0.5F, 0.5F); });
        zemo.forgetTrace();
        zemo.delegate.HDDialog(nullptr);
        zemo.delegate.hdOkButton->click();
        const Lines all = zemo.traced();
        QCOMPARE(currentSound(), expected);
        QCOMPARE(all, minor == kLegacy ? Lines{"out: TWO\n"}
                                       : (Lines{"out: TWO\n", "log: >HD OK Button pressed\n"}));
    }

    void withNoHarmonicTheHdSheetChangesNothing_data() { addMechanisms(); }
    void withNoHarmonicTheHdSheetChangesNothing() {
        QFETCH(const int, minor);
        SheetUnderTest zemo(minor);
        zemo.delegate.HDDialog(nullptr);
        zemo.delegate.hdSegment->setSelectedForSegment(false, 0);
        zemo.delegate.hdOkButton->click();
        zemo.traced();
        QCOMPARE(currentSound(), someSound());
        QCOMPARE(zemo.delegate.ustruct.bufsize, 0);
    }

    void revertGoesBackAndForth() {
        SheetUnderTest zemo(kCurrent);
        zemo.delegate.RevertMenu->trigger();
        QCOMPARE(currentSound(), someSound());
        zemo.delegate.ResampleDialog(nullptr);
        zemo.delegate.resamplingOkButton->click();
        const auto resampled = currentSound();
        zemo.delegate.RevertMenu->trigger();
        QCOMPARE(currentSound(), someSound());
        QCOMPARE(zemo.delegate.window->findChild<QLabel*>("samplesValue")->text(),
                 QLocale().toString(30000));
        zemo.delegate.RevertMenu->trigger();
        QCOMPARE(currentSound(), resampled);
    }

    void aPlayHasFallenIdleBeforeATransformationStarts() {
        SheetUnderTest zemo(kCurrent);
        zemo.delegate.playButton->click();
        zemo.pump(512);
        zemo.platform.clock.whileSleeping = [&] { zemo.platform.output.pump(512); };
        zemo.delegate.AMDialog(nullptr);
        zemo.delegate.amOkButton->click();
        QVERIFY(!zemo.platform.output.running);
        QCOMPARE(zemo.delegate.playButton->title(), QString("Play"));
        QVERIFY(currentSound() != someSound());
    }
};

QTEST_MAIN(SheetTest)
#include "sheet_test.moc"
