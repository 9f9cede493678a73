#include <QAccessible>
#include <QtTest>
#include <cmath>
#include <limits>

#include "interface/SoundColours.h"
#include "interface/SoundPicture.h"
#include "interface/SoundRuler.h"
#include "interface/SoundView.h"
#include "support/Waiting.h"

using namespace zemo;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

std::vector<float> constant(std::size_t count, float level) {
    return std::vector<float>(count, level);
}

/// Every stretch of a widget that is painted.
class PaintWatcher : public QObject {
public:
    QRegion painted;
    int paints = 0;

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            painted += static_cast<QPaintEvent*>(event)->region();
            ++paints;
        }
        return false;
    }
};

/// A view of 600 by 240 pixels with a sound in it, and what it shows.
class ViewOnScreen {
public:
    explicit ViewOnScreen(const std::vector<float>& samples, double rate = 48000.0) {
        view.resize(600, 240);
        view.setWave(overview::WavePyramid::build(samples), rate);
    }

    QImage picture() {
        QImage image((QSizeF(view.size()) * view.devicePixelRatioF()).toSize(),
                     QImage::Format_RGB32);
        image.setDevicePixelRatio(view.devicePixelRatioF());
        view.render(&image);
        return image;
    }

    /// Until all of it has been painted on the screen, and nothing is left to be.
    void waitUntilPainted() {
        PaintWatcher watcher;
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        view.installEventFilter(&watcher);
        view.update();
        QTRY_VERIFY(watcher.painted.contains(view.rect()));
    }

    /// The colour at a place in the view's own pixels.
    QColor at(const QImage& image, double x, double y) const {
        const double scale = view.devicePixelRatioF();
        return image.pixelColor(static_cast<int>(x * scale), static_cast<int>(y * scale));
    }

    /// The places on one row, in the view's pixels, that have nearly this colour.
    std::vector<double> whereOnRow(const QImage& image, double y, const QColor& colour) const {
        std::vector<double> places;
        const double scale = view.devicePixelRatioF();
        for (int x = 0; x < image.width(); ++x) {
            const QColor here = image.pixelColor(x, static_cast<int>(y * scale));
            const int off = std::abs(here.red() - colour.red()) +
                            std::abs(here.green() - colour.green()) +
                            std::abs(here.blue() - colour.blue());
            if (off < 60) {
                places.push_back((x + 0.5) / scale);
            }
        }
        return places;
    }

    double rowOf(double value) const {
        const auto wave = overview::WavePyramid::build(std::vector<float>{1.0F});
        return heightInPlot(view.plot(), shownMagnitude(*wave), value);
    }

    SoundView view;
};

double luminance(const QColor& colour) {
    const auto linear = [](double c) {
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(static_cast<double>(colour.redF())) +
           0.7152 * linear(static_cast<double>(colour.greenF())) +
           0.0722 * linear(static_cast<double>(colour.blueF()));
}

double contrast(const QColor& a, const QColor& b) {
    const double lighter = std::max(luminance(a), luminance(b));
    const double darker = std::min(luminance(a), luminance(b));
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace

class SoundViewTest : public QObject {
    Q_OBJECT
private slots:
    void theWaveReachesFromItsLeastToItsGreatestSample() {
        std::vector<float> samples(60000);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i] = i % 2 == 0 ? 0.75F : -0.25F;
        }
        ViewOnScreen screen(samples);
        const QImage picture = screen.picture();
        const double x = screen.view.plot().center().x();
        QCOMPARE(screen.at(picture, x, screen.rowOf(0.7)), colours::kPeak);
        QCOMPARE(screen.at(picture, x, screen.rowOf(0.8)), colours::kPlot);
        QCOMPARE(screen.at(picture, x, screen.rowOf(-0.3)), colours::kPlot);
    }

    void theBodyIsTheRms() {
        std::vector<float> samples(60000, 0.0F);
        for (std::size_t i = 0; i < samples.size(); i += 4) {
            samples[i] = i % 8 == 0 ? 0.8F : -0.8F;
        }
        ViewOnScreen screen(samples); // the root of a quarter of 0.64
        const QImage picture = screen.picture();
        const double x = screen.view.plot().center().x();
        QCOMPARE(screen.at(picture, x, screen.rowOf(0.36)), colours::kRms);
        QCOMPARE(screen.at(picture, x, screen.rowOf(-0.36)), colours::kRms);
        QCOMPARE(screen.at(picture, x, screen.rowOf(0.46)), colours::kPeak);
    }

    void aSampleBeyondFullScaleIsMarkedAtItsPlace_data() {
        QTest::addColumn<int>("sample");
        QTest::newRow("first") << 0;
        QTest::newRow("somewhere") << 23456;
        QTest::newRow("last") << 99999;
    }
    void aSampleBeyondFullScaleIsMarkedAtItsPlace() {
        QFETCH(const int, sample);
        std::vector<float> samples = constant(100000, 0.1F);
        samples[static_cast<std::size_t>(sample)] = 1.001F;
        ViewOnScreen screen(samples);
        const QRectF plot = screen.view.plot();
        const auto marks = screen.whereOnRow(screen.picture(), plot.top() + 2.5, colours::kBeyond);
        QVERIFY(!marks.empty());
        QVERIFY(std::abs(marks.front() - screen.view.xOf(sample)) <= 2.0);
        QVERIFY(marks.back() - marks.front() <= 3.0);
    }

    void oneThatIsNotFiniteIsMarkedOtherwise() {
        std::vector<float> samples = constant(100000, 0.1F);
        samples[70000] = kNaN;
        ViewOnScreen screen(samples);
        const QRectF plot = screen.view.plot();
        const QImage picture = screen.picture();
        QVERIFY(screen.whereOnRow(picture, plot.top() + 2.5, colours::kBeyond).empty());
        const auto marks = screen.whereOnRow(picture, plot.bottom() - 2.5, colours::kNotFinite);
        QVERIFY(!marks.empty());
        QVERIFY(std::abs(marks.front() - screen.view.xOf(70000)) <= 2.0);
    }

    void theMarksAreSeenOnTheSpectrogramToo() {
        std::vector<float> samples = constant(100000, 0.1F);
        samples[40000] = 1.5F;
        ViewOnScreen screen(samples);
        screen.view.setSpectrogram(overview::Spectrogram::build(samples, 48000.0));
        screen.view.setSpectrogramShown(true);
        const auto marks =
            screen.whereOnRow(screen.picture(), screen.view.plot().top() + 2.5, colours::kBeyond);
        QVERIFY(!marks.empty());
        QVERIFY(std::abs(marks.front() - screen.view.xOf(40000)) <= 2.0);
    }

    void theWaveBeyondFullScaleHasTheWarningColour() {
        ViewOnScreen screen(constant(60000, 2.0F));
        const QRectF plot = screen.view.plot();
        const double y = heightInPlot(plot, 2.0 * 1.06, 2.0);
        QVERIFY(screen.whereOnRow(screen.picture(), y, colours::kBeyond).size() > 400);
    }

    void theLineStandsAtThePlaceThatIsPlayed() {
        ViewOnScreen screen(constant(100000, 0.1F));
        const double y = screen.rowOf(0.6);
        for (const double sample : {0.0, 12345.0, 50000.0, 99999.0}) {
            screen.view.setPlayhead(sample);
            const auto line = screen.whereOnRow(screen.picture(), y, colours::kPlayhead);
            QVERIFY(!line.empty());
            QVERIFY(std::abs(line.front() - screen.view.xOf(sample)) <= 1.5);
            QVERIFY(line.back() - line.front() <= 2.0);
        }
        screen.view.setPlayhead(-1.0);
        QVERIFY(screen.whereOnRow(screen.picture(), y, colours::kPlayhead).empty());
    }

    void theLineMovesWithoutAnythingElseBeingPainted() {
        ViewOnScreen screen(constant(100000, 0.1F));
        screen.view.setPlayhead(20000.0);
        screen.view.show();
        screen.waitUntilPainted();
        PaintWatcher watcher;
        screen.view.installEventFilter(&watcher);
        screen.view.setPlayhead(20500.0);
        QTRY_VERIFY(watcher.paints > 0);
        QVERIFY(watcher.painted.contains(
            QPointF(screen.view.xOf(20500.0), screen.view.plot().center().y()).toPoint()));
        QVERIFY(watcher.painted.boundingRect().width() <= 20);
    }

    void aMoveOfLessThanAPixelPaintsNothing() {
        ViewOnScreen screen(constant(10000000, 0.1F));
        screen.view.show();
        screen.view.setPlayhead(5000000.0);
        screen.waitUntilPainted();
        PaintWatcher watcher;
        screen.view.installEventFilter(&watcher);
        screen.view.setPlayhead(5000001.0);
        const QRect corner(0, 0, 1, 1);
        screen.view.update(corner); // is painted together with what else is to be
        QTRY_VERIFY(watcher.paints > 0);
        QCOMPARE(watcher.painted, QRegion(corner));
    }

    void theButtonTurnsFromTheWaveToTheSpectrogram() {
        const std::vector<float> samples = constant(60000, 0.5F);
        ViewOnScreen screen(samples);
        screen.view.setSpectrogram(overview::Spectrogram::build(samples, 48000.0));
        const QImage wave = screen.picture();
        auto* const button = screen.view.findChild<TitledButton*>("spectrogramButton");
        const QSignalSpy changes(&screen.view, &SoundView::spectrogramShownChanged);
        button->click();
        QVERIFY(screen.view.isSpectrogramShown());
        QVERIFY(screen.picture() != wave);
        button->click();
        QCOMPARE(screen.picture(), wave);
        QCOMPARE(changes.size(), 2);
    }

    void theSpectrogramIsBrightWhereTheSoundIs() {
        std::vector<float> samples(96000);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i] = static_cast<float>(std::sin(0.13089969389957472 * static_cast<double>(i)));
        }
        const auto spectrogram = overview::Spectrogram::build(samples, 48000.0); // 1 kHz
        ViewOnScreen screen(samples);
        screen.view.setSpectrogram(spectrogram);
        screen.view.setSpectrogramShown(true);
        const QRectF plot = screen.view.plot();
        const auto rowAt = [&](double hertz) {
            return plot.bottom() - spectrogram->heightOf(hertz) * plot.height();
        };
        const QImage picture = screen.picture();
        QVERIFY(luminance(screen.at(picture, plot.center().x(), rowAt(1000.0))) > 0.6);
        QVERIFY(luminance(screen.at(picture, plot.center().x(), rowAt(5000.0))) < 0.1);
    }

    void enterTurnsItWhenTheViewHasTheFocus() {
        ViewOnScreen screen(constant(1000, 0.1F));
        QVERIFY((screen.view.focusPolicy() & Qt::TabFocus) != 0);
        QTest::keyClick(&screen.view, Qt::Key_Return);
        QVERIFY(screen.view.isSpectrogramShown());
        QTest::keyClick(&screen.view, Qt::Key_Enter);
        QVERIFY(!screen.view.isSpectrogramShown());
    }

    void assistiveTechnologyFindsAPictureWithItsDescription() {
        std::vector<float> samples = constant(96000, 0.5F);
        samples[10] = -1.5F;
        samples[20] = samples[21] = kNaN;
        ViewOnScreen screen(samples);
        QAccessibleInterface* const found = QAccessible::queryAccessibleInterface(&screen.view);
        QCOMPARE(found->role(), QAccessible::Graphic);
        QCOMPARE(found->text(QAccessible::Name), QString("Picture of the sound"));
        QCOMPARE(found->text(QAccessible::Description),
                 QString("Length 2.000 s, peak +3.5 dBFS, 1 beyond full scale · 2 not finite"));
        screen.view.clear();
        QCOMPARE(found->text(QAccessible::Description),
                 QString("Open a sound, or drop a file here"));
    }

    void theLegendNeverRunsUnderTheButton() {
        std::vector<float> samples = constant(100000, 0.1F);
        samples[0] = 1.5F;
        samples[1] = kNaN;
        ViewOnScreen screen(samples);
        auto* const button = screen.view.findChild<TitledButton*>("spectrogramButton");
        button->hide(); // what is behind it
        for (int width = 320; width < 900; width += 20) {
            screen.view.resize(width, 240);
            const QImage picture = screen.picture();
            for (int x = button->x(); x < width - 10; ++x) {
                QCOMPARE(screen.at(picture, x, button->geometry().center().y()), colours::kCard);
            }
        }
    }

    void everySoundHasAPicture_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<float>("level");
        QTest::newRow("one sample") << 1 << 0.5F;
        QTest::newRow("two samples") << 2 << -0.5F;
        QTest::newRow("silence") << 5000 << 0.0F;
        QTest::newRow("nothing finite") << 5000 << kNaN;
        QTest::newRow("the greatest float") << 5000 << std::numeric_limits<float>::max();
        QTest::newRow("the least float") << 5000 << std::numeric_limits<float>::denorm_min();
    }
    void everySoundHasAPicture() {
        QFETCH(const int, count);
        QFETCH(const float, level);
        for (const double rate : {1e-3, 48000.0, 1e12}) {
            const std::vector<float> samples = constant(static_cast<std::size_t>(count), level);
            ViewOnScreen screen(samples, rate);
            screen.view.setSpectrogram(overview::Spectrogram::build(samples, rate));
            const QImage wave = screen.picture();
            screen.view.setSpectrogramShown(true);
            QVERIFY(screen.picture() != wave);
            screen.view.resize(1, 1);
            QVERIFY(!screen.picture().isNull());
        }
    }

    void textsAndMarksStandOutFromWhatIsBehindThem() {
        QVERIFY(contrast(colours::kText, colours::kCard) >= 4.5);
        for (const QColor& mark : {colours::kPeak, colours::kRms, colours::kBeyond,
                                   colours::kNotFinite, colours::kPlayhead, colours::kLine}) {
            QVERIFY(contrast(mark, colours::kPlot) >= 3.0);
        }
        for (const QColor& mark : {colours::kPeak, colours::kRms, colours::kBeyond,
                                   colours::kNotFinite, colours::kFocus, colours::kLine}) {
            QVERIFY(contrast(mark, colours::kCard) >= 3.0);
        }
    }

    void timesAreRoundAndFarEnoughApart_data() {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("a twentieth")
            << 0.05 << QStringList{"0.00 s", "0.01 s", "0.02 s", "0.03 s", "0.04 s", "0.05 s"};
        QTest::newRow("seconds") << 3.5 << QStringList{"0 s", "1 s", "2 s", "3 s"};
        QTest::newRow("minutes") << 150.0
                                 << QStringList{"0 s", "30 s", "1:00", "1:30", "2:00", "2:30"};
        QTest::newRow("hours") << 7200.0
                               << QStringList{"0 s", "30:00", "1:00:00", "1:30:00", "2:00:00"};
        QTest::newRow("nothing") << 0.0 << QStringList{};
    }
    void timesAreRoundAndFarEnoughApart() {
        QFETCH(const double, seconds);
        QFETCH(const QStringList, texts);
        QStringList found;
        for (const Tick& tick : timeTicks(seconds, 500.0, 80.0)) {
            found += tick.text;
        }
        QCOMPARE(found, texts);
    }

    void aRulerOfAnyLengthHasFewMarks() {
        for (int power = -24; power < 25; ++power) {
            const double seconds = 0.3 * std::pow(3.7, power);
            const auto ticks = timeTicks(seconds, 580.0, 76.0);
            QVERIFY(ticks.size() <= 8);
            QVERIFY(seconds < 1e-8 || ticks.size() >= 2);
        }
    }

    void frequenciesAreOneTwoAndFive() {
        QStringList found;
        for (const Tick& tick : frequencyTicks(20.0, 2400.0)) {
            found += tick.text;
        }
        QCOMPARE(found,
                 (QStringList{"20 Hz", "50 Hz", "100 Hz", "200 Hz", "500 Hz", "1 kHz", "2 kHz"}));
    }

    void aPeakIsGivenInDecibels() {
        QCOMPARE(decibelText(1.0F), QString("0.0 dBFS"));
        QCOMPARE(decibelText(0.96605F), QString("−0.3 dBFS"));
        QCOMPARE(decibelText(0.999F), QString("0.0 dBFS"));
        QCOMPARE(decibelText(1.5F), QString("+3.5 dBFS"));
        QCOMPARE(decibelText(0.0F), QString("−∞ dBFS"));
    }

    void onlyWhatThereIsIsCounted() {
        QCOMPARE(countsText(0, 0), QString());
        QCOMPARE(countsText(12, 0), QString("12 beyond full scale"));
        QCOMPARE(countsText(12, 3), QString("12 beyond full scale · 3 not finite"));
    }
};

QTEST_MAIN(SoundViewTest)
#include "sound_view_test.moc"
