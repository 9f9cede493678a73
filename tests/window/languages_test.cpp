#include <QMenuBar>
#include <QRegularExpression>
#include <QtTest>
#include <memory>

#include "app/Languages.h"
#include "interface/ManualWindow.h"
#include "interface/ProgressPanel.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

namespace {

constexpr QSize kScreen(1280, 800); ///< that every window fits on

/// A language for as long as one test takes.
class Spoken {
public:
    explicit Spoken(const QString& language) {
        if (language == "pseudo") {
            done_ = pseudo_.load(ZEMO_PSEUDO) && QCoreApplication::installTranslator(&pseudo_);
        } else {
            done_ = language == "en" || languages_.install(language);
        }
    }
    bool isDone() const { return done_; }

private:
    Languages languages_;
    QTranslator pseudo_;
    bool done_ = false;
};

QString textOf(const QWidget* widget) {
    if (const auto* const label = qobject_cast<const QLabel*>(widget)) {
        return label->text();
    }
    if (const auto* const titled = qobject_cast<const TitledButton*>(widget)) {
        return titled->title();
    }
    const auto* const button = qobject_cast<const QAbstractButton*>(widget);
    return button != nullptr ? button->text() : QString();
}

/// The labels and buttons that show a text.
QList<QWidget*> textsIn(const QWidget& top) {
    QList<QWidget*> found;
    for (QWidget* const widget : top.findChildren<QWidget*>()) {
        if (widget->isVisibleTo(&top) && !textOf(widget).isEmpty()) {
            found += widget;
        }
    }
    return found;
}

QRect placeIn(const QWidget& top, const QWidget* widget) {
    return {widget->mapTo(&top, QPoint()), widget->size()};
}

bool isWhole(const QWidget* widget) {
    if (const auto* const titled = qobject_cast<const TitledButton*>(widget)) { // less air will do
        return titled->width() >= titled->sizeHint().width() &&
               titled->height() >= titled->fontMetrics().height();
    }
    const auto* const label = qobject_cast<const QLabel*>(widget);
    if (label == nullptr || !label->wordWrap()) {
        const QSize wanted = widget->sizeHint();
        return widget->width() >= wanted.width() && widget->height() >= wanted.height();
    }
    if (label->height() < label->heightForWidth(label->width())) {
        return false;
    }
    // Between ideographs a line may end anywhere.
    static const QRegularExpression kBetweenWords("[ \u2e80-\uffff]");
    const QStringList words = label->text().split(kBetweenWords);
    return std::all_of(words.begin(), words.end(), [label](const QString& word) {
        return label->fontMetrics().horizontalAdvance(word) <= label->width();
    });
}

/// Numbers, units, keys and names of files are the same in every language.
bool isBeyondTranslation(const QString& text) {
    static const QRegularExpression kNoText("^[^\\p{L}]*$|^(OK|ZEMO)$|\\.(caf|wav)$");
    return kNoText.match(text).hasMatch();
}

void checkSpoken(const QString& language, const QString& text) {
    if (language == "pseudo" && !isBeyondTranslation(text)) {
        QVERIFY2(text.contains('[') && text.contains(']'), qPrintable("not translated: " + text));
    }
}

void checkWhole(const QWidget& top) {
    for (const QWidget* const widget : textsIn(top)) {
        const QString what = QString("%1 \"%2\": %3 x %4")
                                 .arg(widget->objectName(), textOf(widget))
                                 .arg(widget->width())
                                 .arg(widget->height());
        QVERIFY2(isWhole(widget), qPrintable("cut: " + what));
        QVERIFY2(top.rect().contains(placeIn(top, widget)), qPrintable("outside: " + what));
    }
}

void checkApart(const QWidget& top) {
    const QList<QWidget*> texts = textsIn(top);
    for (const QWidget* const one : texts) {
        for (const QWidget* const other : texts) {
            const bool apart = one == other || !placeIn(top, one).intersects(placeIn(top, other));
            QVERIFY2(apart, qPrintable(textOf(one) + " lies over " + textOf(other)));
        }
    }
}

void checkMenus(const QString& language, const QMenuBar& bar) {
    for (const QAction* const menu : bar.actions()) {
        checkSpoken(language, menu->text());
        QVERIFY(bar.rect().contains(bar.actionGeometry(const_cast<QAction*>(menu))));
        for (const QAction* const item : menu->menu()->actions()) {
            if (!item->isSeparator()) {
                checkSpoken(language, item->text());
            }
        }
    }
}

/// Everything that a test can see of a window, as it stands on the screen.
void check(const QString& language, QWidget& top) {
    QCoreApplication::processEvents();
    QVERIFY2(top.width() <= kScreen.width() && top.height() <= kScreen.height(),
             qPrintable(QString("%1 x %2").arg(top.width()).arg(top.height())));
    checkSpoken(language, top.windowTitle());
    for (const QWidget* const widget : top.findChildren<QWidget*>()) {
        checkSpoken(language, textOf(widget));
        checkSpoken(language, widget->toolTip());
        checkSpoken(language, widget->accessibleName());
        checkSpoken(language, widget->accessibleDescription());
    }
    checkWhole(top);
    checkApart(top);
}

std::vector<float> someSound() {
    std::vector<float> sound(48000, 0.5F);
    sound[1] = 1.5F;
    return sound;
}

/// A window with a sound in it.
struct Loaded : WindowUnderTest {
    Loaded() {
        loadSound(someSound());
        QMetaObject::invokeMethod(&delegate, "attendPlayback", Qt::DirectConnection);
    }
};

QString filledIn(QString pattern) {
    return pattern.replace("%1", "a %2 b").replace("%2", "48000");
}

} // namespace

class LanguagesTest : public QObject {
    Q_OBJECT

private:
    static void addLanguages() {
        QTest::addColumn<QString>("language");
        for (const QString& language : QStringList{"en", "pseudo"} + Languages::spoken()) {
            QTest::newRow(qPrintable(language)) << language;
        }
    }

    static void checkSheet(void (AppDelegate::*open)(QObject*), SheetPanel* AppDelegate::*panel) {
        QFETCH(QString, language);
        const Spoken spoken(language);
        Loaded window;
        (window.delegate.*open)(nullptr);
        check(language, *(window.delegate.*panel));
    }

private slots:
    static void theLanguagesAreTheThreeBesideEnglish() {
        QCOMPARE(Languages::spoken(), QStringList({"de", "fr", "ja"}));
    }

    static void theFirstLanguageThatIsSpokenIsChosen() {
        QCOMPARE(Languages::choose({"de-DE", "de", "en-US"}), "de");
        QCOMPARE(Languages::choose({"fr_CA"}), "fr");
        QCOMPARE(Languages::choose({"ja-Jpan-JP", "ja"}), "ja");
        QCOMPARE(Languages::choose({"eo", "fr"}), "fr");
        QCOMPARE(Languages::choose({"eo"}), "");
        QCOMPARE(Languages::choose({}), "");
    }

    static void whoeverWantsEnglishFirstGetsIt() {
        QCOMPARE(Languages::choose({"en-GB", "de"}), "");
        QCOMPARE(Languages::choose({"C", "de"}), "");
    }

    static void aLanguageThatIsNotThereChangesNothing() {
        Languages languages;
        QVERIFY(!languages.install("eo"));
        QVERIFY(!languages.install(""));
        QCOMPARE(AppDelegate::tr("Play"), "Play");
    }

    static void inEnglishEverySentenceStaysToTheLetter() {
        for (const QString& pattern : sentencePatterns()) {
            QCOMPARE(translated(filledIn(pattern)), filledIn(pattern));
        }
        QCOMPARE(translated("A sentence that nobody knows."), "A sentence that nobody knows.");
    }

    static void everySentenceOfTheCoreIsTranslatedWithItsParts() {
        const Spoken spoken("pseudo");
        QVERIFY(spoken.isDone());
        for (const QString& pattern : sentencePatterns()) {
            const QString text = translated(filledIn(pattern));
            QVERIFY2(text.startsWith('[') && text.endsWith(']'), qPrintable(text));
            QCOMPARE(text.contains("a 48000 b"), pattern.contains("%1"));
        }
    }

    static void whatFillsASentenceIsNotFilledItself() {
        const Spoken spoken("de");
        QCOMPARE(translated("ZEMO CAN'T READ THE FILE:\n%1 %2 %n.caf"),
                 "ZEMO KANN DIE DATEI NICHT LESEN:\n%1 %2 %n.caf");
    }

    static void noTextOfTheWindowIsCut_data() { addLanguages(); }
    static void noTextOfTheWindowIsCut() {
        QFETCH(QString, language);
        const Spoken spoken(language);
        QVERIFY(spoken.isDone());
        const Loaded window;
        check(language, *window.delegate.window);
        checkMenus(language, *window.delegate.window->menuBar());
    }

    static void noTextOfTheWindowWithoutASoundIsCut_data() { addLanguages(); }
    static void noTextOfTheWindowWithoutASoundIsCut() {
        QFETCH(QString, language);
        const Spoken spoken(language);
        const WindowUnderTest window;
        check(language, *window.delegate.window);
    }

    static void noTitleOfThePlayAndModeButtonsIsCut_data() { addLanguages(); }
    static void noTitleOfThePlayAndModeButtonsIsCut() {
        QFETCH(QString, language);
        const Spoken spoken(language);
        Loaded window;
        window.delegate.playButton->click();
        window.delegate.modeButton->click();
        check(language, *window.delegate.window);
        window.delegate.setPlayTitle();
        window.delegate.modeButton->click();
        check(language, *window.delegate.window);
        window.delegate.resetPlayTitle();
        check(language, *window.delegate.window);
    }

    static void noTextOfTheResampleSheetIsCut_data() { addLanguages(); }
    static void noTextOfTheResampleSheetIsCut() {
        checkSheet(&AppDelegate::ResampleDialog, &AppDelegate::resamplePanel);
    }
    static void noTextOfTheAmSheetIsCut_data() { addLanguages(); }
    static void noTextOfTheAmSheetIsCut() {
        checkSheet(&AppDelegate::AMDialog, &AppDelegate::amPanel);
    }
    static void noTextOfTheFmSheetIsCut_data() { addLanguages(); }
    static void noTextOfTheFmSheetIsCut() {
        checkSheet(&AppDelegate::FMDialog, &AppDelegate::fmPanel);
    }
    static void noTextOfTheHdSheetIsCut_data() { addLanguages(); }
    static void noTextOfTheHdSheetIsCut() {
        checkSheet(&AppDelegate::HDDialog, &AppDelegate::hdPanel);
    }

    static void noTextOfTheProgressPanelIsCut_data() { addLanguages(); }
    static void noTextOfTheProgressPanelIsCut() {
        QFETCH(QString, language);
        const Spoken spoken(language);
        ProgressPanel panel(nullptr, AppDelegate::tr("Transforming the sound…"), true);
        panel.show();
        check(language, panel);
    }

    static void aManualThatIsMissingIsMissedInTheLanguage_data() { addLanguages(); }
    static void aManualThatIsMissingIsMissedInTheLanguage() {
        QFETCH(QString, language);
        const Spoken spoken(language);
        ManualWindow manual({});
        manual.show();
        check(language, manual);
        checkSpoken(language, manual.findChild<QTextBrowser*>()->toPlainText());
    }

    static void theOpenPanelsBoxesAreWhole_data() { addLanguages(); }
    static void theOpenPanelsBoxesAreWhole() {
        QFETCH(QString, language);
        const Spoken spoken(language);
        Loaded window;
        window.delegate.OpenDialog(nullptr);
        auto* const panel = window.delegate.window->findChild<QFileDialog*>();
        QCoreApplication::processEvents();
        checkSpoken(language, panel->windowTitle());
        QCOMPARE(panel->findChildren<QCheckBox*>().size(), 2);
        for (const QCheckBox* const box : panel->findChildren<QCheckBox*>()) {
            checkSpoken(language, box->text());
            QVERIFY2(isWhole(box), qPrintable(box->text()));
        }
    }

    static void theNumbersAreWrittenAsInTheLanguage() {
        const QLocale before;
        qunsetenv("LC_ALL");
        qunsetenv("LC_NUMERIC");
        QLocale::setDefault(QLocale(QLocale::English));
        {
            const Spoken spoken("fr");
            Loaded window;
            AppDelegate& d = window.delegate;
            d.HDDialog(nullptr);
            QCOMPARE(d.hdHpfSlopeTextField->text(), QString("0,995"));
            QCOMPARE(d.hdPanel->findChild<QLabel*>("hdHpfSlopeTextFieldUnit")->text(),
                     QString("de 0,6 à 0,998"));
            d.hdKneeTextField->setText("0,3");
            d.hdOkButton->click();
            QCOMPARE(d.hdKneeTextField->text(), QString("0,3")); // a number here
        }
        QCOMPARE(QLocale().decimalPoint(), QString("."));
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Switzerland));
        {
            const Spoken spoken("de"); // of which this locale is one
            QCOMPARE(QLocale().territory(), QLocale::Switzerland);
        }
        QLocale::setDefault(QLocale(QLocale::English));
        qputenv("LC_NUMERIC", "en_GB.UTF-8"); // as somebody wants it
        {
            const Spoken spoken("de");
            QCOMPARE(QLocale().decimalPoint(), QString("."));
        }
        qunsetenv("LC_NUMERIC");
        QLocale::setDefault(before);
    }

    static void theWordsOfTheWindowAreTranslated() {
        const Spoken spoken("de");
        Loaded window;
        QCOMPARE(window.delegate.playButton->title(), "Wiedergabe");
        QCOMPARE(window.delegate.OpenMenu->text(), QStringLiteral("Ö&ffnen\u00a0…"));
        window.delegate.AMDialog(nullptr);
        QCOMPARE(window.delegate.amSegment->titles(), QStringList({"AM", "ESB unten", "ESB oben"}));
    }
};

QTEST_MAIN(LanguagesTest)
#include "languages_test.moc"
