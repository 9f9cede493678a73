#include <QMenuBar>
#include <QMessageBox>
#include <QToolTip>
#include <QtTest>
#include <algorithm>
#include <map>

#include "interface/Contrast.h"
#include "interface/ProgressPanel.h"
#include "playback/SharedState.h"
#include "support/Waiting.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

namespace {

constexpr double kText = 4.5;     ///< of a text to its ground
constexpr double kControl = 3.0;  ///< of what shows the focus to what is there without it
constexpr int kCore = 6;          ///< pixels that a text has at least in its full colour
constexpr int kEdge = 6;          ///< of a button: its border is no text
constexpr int kFocusPixels = 100; ///< at least

/// An area of a widget's window at the pixels of the screen.
QImage pictureOf(QWidget* widget, const QRect& area) {
    const QPoint origin = widget->mapTo(widget->window(), area.topLeft());
    return widget->window()
        ->grab(QRect(origin, area.size()))
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}

/// The contrast of the text in a picture: of the colour that stands out most to the colour that is
/// there most. The scale is large, so that letters have pixels of their full colour.
double contrastIn(const QImage& picture) {
    std::map<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            ++counts[picture.pixel(x, y)];
        }
    }
    const auto isRarer = [](const auto& a, const auto& b) { return a.second < b.second; };
    const QRgb ground = std::max_element(counts.begin(), counts.end(), isRarer)->first;
    double most = 1.0;
    for (const auto& [colour, count] : counts) {
        if (count >= kCore) {
            most = std::max(most, contrast(QColor(colour), QColor(ground)));
        }
    }
    return most;
}

double contrastOf(QWidget* widget) {
    const int edge = qobject_cast<QAbstractButton*>(widget) != nullptr ? kEdge : 0;
    return contrastIn(pictureOf(widget, widget->rect().adjusted(edge, edge, -edge, -edge)));
}

void verifyText(QWidget* widget, const QString& when) {
    const double found = contrastOf(widget);
    QVERIFY2(found >= kText,
             qPrintable(QString("%1 %2: %3").arg(widget->objectName(), when).arg(found)));
}

void verifyLabels(QWidget* window, const QString& when) {
    int seen = 0;
    for (QLabel* const label : window->findChildren<QLabel*>()) {
        if (label->isVisible() && !label->text().isEmpty()) {
            verifyText(label, when);
            ++seen;
        }
    }
    QVERIFY(seen > 0);
}

/// In every state that a person can bring it to.
void verifyButton(QAbstractButton* button, const QString& when) {
    verifyText(button, when);
    button->setAttribute(Qt::WA_UnderMouse);
    verifyText(button, when + ", under the mouse");
    button->setDown(true);
    verifyText(button, when + ", pressed");
    button->setDown(false);
    button->setAttribute(Qt::WA_UnderMouse, false);
    button->setFocus(Qt::TabFocusReason);
    verifyText(button, when + ", with the focus");
}

void verifyButtons(QWidget* window, const QString& when) {
    for (QAbstractButton* const button : window->findChildren<QAbstractButton*>()) {
        if (button->isVisible()) {
            verifyButton(button, when);
        }
    }
}

/// How many pixels of a widget and around it stand out for the focus.
int pixelsOfFocus(QWidget* widget, QWidget* other) {
    const QRect area = widget->rect().adjusted(-3, -3, 3, 3);
    other->setFocus(Qt::TabFocusReason);
    const QImage without = pictureOf(widget, area);
    widget->setFocus(Qt::TabFocusReason);
    const QImage with = pictureOf(widget, area);
    int count = 0;
    for (int y = 0; y < with.height(); ++y) {
        for (int x = 0; x < with.width(); ++x) {
            if (with.pixel(x, y) != without.pixel(x, y) &&
                contrast(QColor(with.pixel(x, y)), QColor(without.pixel(x, y))) >= kControl) {
                ++count;
            }
        }
    }
    return count;
}

QList<QWidget*> tabStops(QWidget* window) {
    QList<QWidget*> stops;
    for (QWidget* w = window->nextInFocusChain(); w != window; w = w->nextInFocusChain()) {
        const bool isStop = (w->focusPolicy() & Qt::TabFocus) != 0 && w->focusProxy() == nullptr;
        if (isStop && w->isVisible() && w->window() == window) {
            stops += w;
        }
    }
    return stops;
}

void verifyFocusIsSeen(QWidget* window) {
    const QList<QWidget*> stops = tabStops(window);
    QVERIFY(stops.size() >= 2);
    for (qsizetype i = 0; i < stops.size(); ++i) {
        const int pixels = pixelsOfFocus(stops[i], stops[i == 0 ? 1 : 0]);
        QVERIFY2(pixels >= kFocusPixels,
                 qPrintable(QString("%1 %2: %3")
                                .arg(stops[i]->metaObject()->className(), stops[i]->objectName())
                                .arg(pixels)));
    }
}

QPalette lightPalette() {
    QPalette palette(QColor(0xef, 0xef, 0xef));
    palette.setColor(QPalette::Highlight, QColor(0x30, 0x8c, 0xc6));
    return palette;
}

QPalette darkPalette() {
    QPalette palette(QColor(0x35, 0x35, 0x35), QColor(0x2d, 0x2d, 0x2d));
    palette.setColor(QPalette::Base, QColor(0x23, 0x23, 0x23));
    palette.setColor(QPalette::Highlight, QColor(0x2a, 0x82, 0xda));
    return palette;
}

void addPalettes() {
    QTest::addColumn<QPalette>("palette");
    QTest::newRow("light") << lightPalette();
    QTest::newRow("dark") << darkPalette();
}

struct WindowWithSound : WindowUnderTest {
    WindowWithSound() {
        platform.files.files["/half.f32"] = bytesOf(std::vector<float>(96000, 0.5F));
        delegate.openFileNamed("/half.f32");
        delegate.window->activateWindow();
    }
    static std::vector<std::uint8_t> bytesOf(const std::vector<float>& samples) {
        const auto* const first = reinterpret_cast<const std::uint8_t*>(samples.data());
        return {first, first + samples.size() * sizeof(float)};
    }
    QWidget* sheet(void (AppDelegate::*open)(QObject*)) {
        (delegate.*open)(nullptr);
        return QApplication::activeModalWidget();
    }
};

const auto kSheets = {&AppDelegate::ResampleDialog, &AppDelegate::AMDialog, &AppDelegate::FMDialog,
                      &AppDelegate::HDDialog};

} // namespace

class ContrastTest : public QObject {
    Q_OBJECT
public:
    static void initMain() { qputenv("QT_SCALE_FACTOR", "3"); }

private slots:
    void cleanup() { QApplication::setPalette(lightPalette()); }

    void blackAndWhiteAreTwentyOneToOne() {
        QCOMPARE(contrast(Qt::black, Qt::white), 21.0);
        QCOMPARE(contrast(Qt::white, Qt::black), 21.0);
        QCOMPARE(contrast(Qt::red, Qt::red), 1.0);
        QVERIFY(std::abs(contrast(QColor(0x77, 0x77, 0x77), Qt::white) - 4.48) < 0.01);
    }

    void aTextThatHardlyStandsOutIsFound() {
        QLabel label("Hardly to be read");
        label.setStyleSheet("background: #777777; color: #999999; font-size: 20pt;");
        label.show();
        QVERIFY(contrastOf(&label) < 2.0);
        QVERIFY(contrastOf(&label) > 1.3);
    }

    void everyLabelStandsOut() {
        WindowWithSound zemo;
        auto* const notice = zemo.delegate.window->findChild<QLabel*>("notice");
        notice->setText("There is no sound output");
        notice->show();
        auto* const reason = zemo.delegate.window->findChild<QLabel*>("reasonValue");
        reason->setText("Why it was refused");
        reason->show();
        QTRY_VERIFY(!notice->size().isEmpty() && !reason->size().isEmpty());
        verifyLabels(zemo.delegate.window, "main window");
    }

    void everyButtonStandsOutInEveryState() {
        WindowWithSound zemo;
        verifyButtons(zemo.delegate.window, "at rest");
        zemo.delegate.soundView->setSpectrogramShown(true);
        verifyButtons(zemo.delegate.window, "with the spectrogram");
    }

    void thePlayButtonsTitleStandsOutInEveryColour() {
        WindowWithSound zemo;
        TitledButton* const button = zemo.delegate.playButton;
        zemo.delegate.playButtonPressed(button);
        QCOMPARE(button->attributedTitle().colour, QColor::fromRgbF(0.8F, 0.2F, 0.4F));
        verifyButton(button, "during a play");
        zemo.pump(512);
        zemo.delegate.playButtonPressed(button);
        QCOMPARE(button->attributedTitle().colour, QColor::fromRgbF(0.1F, 0.9F, 0.7F));
        verifyButton(button, "during the fade");
        zemo.delegate.setPlayTitle();
        verifyButton(button, "begun by a note");
        zemo.delegate.resetPlayTitle();
        verifyButton(button, "after a play");
    }

    void whatATitleOfTwoColoursHasInTheSecondStandsOutToo() {
        WindowWithSound zemo;
        TitledButton* const button = zemo.delegate.playButton;
        AttributedTitle title{.text = "....Stop", .colour = QColor::fromRgbF(0.8F, 0.2F, 0.4F)};
        title.colouredLength = 1;
        button->setAttributedTitle(title);
        verifyText(button, "in two colours");
    }

    void thePicturesTextsStandOut() {
        WindowWithSound zemo;
        SoundView* const view = zemo.delegate.soundView;
        QTRY_VERIFY(view->accessibleDescription().startsWith("Length"));
        for (const bool spectrogram : {false, true}) {
            view->setSpectrogramShown(spectrogram);
            const QRect plot = view->plot().toAlignedRect();
            const QRect levels(8, plot.top(), plot.left() - 16, plot.height());
            const QRect times(20, plot.bottom() + 7, view->width() - 40, 16);
            QTRY_VERIFY(contrastIn(pictureOf(view, levels)) >= kText);
            QTRY_VERIFY(contrastIn(pictureOf(view, times)) >= kText);
        }
        view->clear();
        QVERIFY(contrastIn(pictureOf(view, view->plot().toAlignedRect())) >= kText);
    }

    void theMenuBarStandsOutAtRestAndChosen() {
        const WindowWithSound zemo;
        QMenuBar* const bar = zemo.delegate.window->menuBar();
        for (QAction* const action : bar->actions()) {
            const QRect area = bar->actionGeometry(action).adjusted(2, 2, -2, -2);
            QVERIFY(contrastIn(pictureOf(bar, area)) >= kText);
            bar->setActiveAction(action);
            QVERIFY(contrastIn(pictureOf(bar, area)) >= kText);
            QTest::keyClick(bar, Qt::Key_Escape);
        }
    }

    void aToolTipStandsOut_data() { addPalettes(); }
    void aToolTipStandsOut() {
        QFETCH(const QPalette, palette);
        QToolTip::setPalette(palette);
        const WindowWithSound zemo;
        QToolTip::showText({50, 50}, zemo.delegate.testButton->toolTip(), zemo.delegate.testButton);
        QLabel* tip = nullptr;
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            tip = widget->inherits("QTipLabel") ? qobject_cast<QLabel*>(widget) : tip;
        }
        QVERIFY(tip != nullptr);
        QVERIFY(contrastIn(pictureOf(tip, tip->rect().adjusted(3, 3, -3, -3))) >= kText);
        QToolTip::hideText();
        QTRY_VERIFY(!QToolTip::isVisible());
    }

    void theSheetsAreInTheSystemsColoursAndStandOut_data() { addPalettes(); }
    void theSheetsAreInTheSystemsColoursAndStandOut() {
        QFETCH(const QPalette, palette);
        QApplication::setPalette(palette);
        WindowWithSound zemo;
        for (const auto open : kSheets) {
            QWidget* const sheet = zemo.sheet(open);
            QCOMPARE(sheet->grab().toImage().pixelColor(9, 9), palette.color(QPalette::Window));
            verifyLabels(sheet, "sheet");
            verifyButtons(sheet, "sheet");
            for (QLineEdit* const field : sheet->findChildren<QLineEdit*>()) {
                field->deselect();
                QVERIFY(contrastIn(pictureOf(field, field->rect().adjusted(4, 4, -4, -4))) >=
                        kText);
            }
            QTest::keyClick(sheet, Qt::Key_Escape);
        }
    }

    void otherWindowsAreInTheSystemsColoursAndStandOut_data() { addPalettes(); }
    void otherWindowsAreInTheSystemsColoursAndStandOut() {
        QFETCH(const QPalette, palette);
        QApplication::setPalette(palette);
        WindowWithSound zemo;
        ProgressPanel panel(zemo.delegate.window, "Saving", true);
        panel.show();
        verifyLabels(&panel, "progress panel");
        verifyButtons(&panel, "progress panel");
        panel.hide();
        zemo.delegate.showManual();
        ManualWindow* manual = nullptr;
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            manual = manual == nullptr ? qobject_cast<ManualWindow*>(widget) : manual;
        }
        QVERIFY(manual != nullptr);
        QCOMPARE(manual->grab().toImage().pixelColor(9, 9), palette.color(QPalette::Base));
        auto* const browser = manual->findChild<QTextBrowser*>();
        QVERIFY(contrastIn(pictureOf(browser, browser->viewport()->rect())) >= kText);
        manual->close();
        bool wasSeen = false;
        QTimer::singleShot(50, this, [&] {
            QWidget* const box = QApplication::activeModalWidget();
            wasSeen = box->grab().toImage().pixelColor(3, 3) == palette.color(QPalette::Window);
            verifyLabels(box, "message box");
            verifyButtons(box, "message box");
            box->close();
        });
        zemo.delegate.aboutDialog(nullptr);
        QVERIFY(wasSeen);
    }

    void theFocusIsSeenOnEverythingInTheMainWindow() {
        WindowWithSound zemo;
        QTRY_VERIFY(zemo.delegate.window->isActiveWindow());
        verifyFocusIsSeen(zemo.delegate.window);
        zemo.delegate.soundView->setSpectrogramShown(true);
        zemo.delegate.playButtonPressed(zemo.delegate.playButton);
        verifyFocusIsSeen(zemo.delegate.window);
    }

    void theFocusIsSeenOnEverythingInTheSheets_data() { addPalettes(); }
    void theFocusIsSeenOnEverythingInTheSheets() {
        QFETCH(const QPalette, palette);
        QApplication::setPalette(palette);
        WindowWithSound zemo;
        for (const auto open : kSheets) {
            QWidget* const sheet = zemo.sheet(open);
            QTRY_VERIFY(sheet->isActiveWindow());
            verifyFocusIsSeen(sheet);
            QTest::keyClick(sheet, Qt::Key_Escape);
        }
    }
};

QTEST_MAIN(ContrastTest)
#include "contrast_test.moc"
