#include <QtTest>

#include "interface/SoundView.h"
#include "meter/levelOpenGLView.h"
#include "playback/SharedState.h"
#include "support/Waiting.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

namespace {

/// The pixels of the screen that a widget has.
QSize pixelsOf(const QWidget& widget) {
    return (QSizeF(widget.size()) * widget.devicePixelRatioF()).toSize();
}

/// Whether a picture has more in it than one of `size` pixels could show.
bool isFinerThan(const QImage& picture, const QSize& size) {
    const QImage coarse =
        picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
            .scaled(picture.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    double off = 0.0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            off += std::abs(qGray(picture.pixel(x, y)) - qGray(coarse.pixel(x, y)));
        }
    }
    return off / (picture.width() * picture.height()) > 1.0;
}

/// Another height in every column of any picture.
std::vector<float> restless() {
    std::vector<float> samples(400000);
    std::uint32_t state = 1;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        state = state * 1664525U + 1013904223U;
        const float loud = (i / 130) % 2 == 0 ? 0.9F : 0.2F;
        samples[i] = loud * (static_cast<float>(state >> 8U) / 8388608.0F - 1.0F);
    }
    return samples;
}

/// The name of a label or button whose text is cut, if there is one.
QString cutText(const QWidget* window) {
    for (const QLabel* const label : window->findChildren<QLabel*>()) {
        const int flags = Qt::TextShowMnemonic | (label->wordWrap() ? Qt::TextWordWrap : 0);
        const QRect room = label->contentsRect();
        const QRect text = label->fontMetrics().boundingRect(room, flags, label->text());
        const bool fits = text.width() <= room.width() && text.height() <= room.height();
        if (label->isVisible() && !label->text().isEmpty() && !fits) {
            return label->objectName();
        }
    }
    for (const QAbstractButton* const button : window->findChildren<QAbstractButton*>()) {
        const auto* const titled = qobject_cast<const TitledButton*>(button);
        const QString text = titled != nullptr ? titled->title() : button->text();
        const QSize size = button->fontMetrics().size(Qt::TextShowMnemonic, text);
        if (button->isVisible() &&
            (button->width() < size.width() + 4 || button->height() < size.height() + 4)) {
            return button->objectName();
        }
    }
    return {};
}

} // namespace

/// Run at several sizes of the screen's pixels.
class SharpnessTest : public QObject {
    Q_OBJECT
private slots:
    void theMeterHasAPixelForEveryPixelOfTheScreen() {
        const WindowUnderTest zemo;
        levelOpenGLView* const meter = zemo.delegate.levelView;
        QVERIFY(QTest::qWaitForWindowExposed(zemo.delegate.window));
        meter->repaint();
        QCOMPARE(meter->picture().size(), pixelsOf(*meter));
    }

    void theWaveIsAsFineAsTheScreen() {
        SoundView view;
        view.resize(600, 240);
        view.setWave(overview::WavePyramid::build(restless()), 48000.0);
        const QImage picture = view.grab().toImage();
        QCOMPARE(picture.size(), pixelsOf(view));
        if (view.devicePixelRatioF() > 1.0) {
            QVERIFY(isFinerThan(picture, view.size()));
        }
    }

    void aPictureThatWasBlownUpIsFound() {
        SoundView view;
        view.resize(600, 240);
        view.setWave(overview::WavePyramid::build(restless()), 48000.0);
        const QImage picture = view.grab().toImage();
        const QSize small = picture.size() / 2;
        const QImage blownUp =
            picture.scaled(small, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                .scaled(picture.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        QVERIFY(isFinerThan(picture, small));
        QVERIFY(!isFinerThan(blownUp, small * 3 / 2));
    }

    void noTextInTheMainWindowIsCut() {
        WindowUnderTest zemo;
        zemo.delegate.window->findChild<QLabel*>("soundName")
            ->setText("A rather long name of a sound that has to go on in a second line.caf");
        QTRY_COMPARE(cutText(zemo.delegate.window), QString()); // once it is laid out anew
    }

    void noTextInTheSheetsIsCut() {
        WindowUnderTest zemo;
        loadSound(std::vector<float>(30000, 0.5F));
        for (const auto open : {&AppDelegate::ResampleDialog, &AppDelegate::AMDialog,
                                &AppDelegate::FMDialog, &AppDelegate::HDDialog}) {
            (zemo.delegate.*open)(nullptr);
            QWidget* const sheet = QApplication::activeModalWidget();
            QTRY_COMPARE(cutText(sheet), QString());
            QTest::keyClick(sheet, Qt::Key_Escape);
        }
    }
};

QTEST_MAIN(SharpnessTest)
#include "sharpness_test.moc"
