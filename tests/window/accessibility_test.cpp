#include <QAccessible>
#include <QMenu>
#include <QMenuBar>
#include <QtTest>
#include <set>

#include "interface/ProgressPanel.h"
#include "playback/SharedState.h"
#include "support/Waiting.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

namespace {

bool isInformative(const QAccessibleInterface& item) {
    static const std::set<QAccessible::Role> kRoles{
        QAccessible::StaticText,  QAccessible::PushButton,   QAccessible::CheckBox,
        QAccessible::RadioButton, QAccessible::EditableText, QAccessible::Slider,
        QAccessible::ProgressBar, QAccessible::Graphic,      QAccessible::MenuItem,
        QAccessible::ButtonMenu,  QAccessible::ComboBox,     QAccessible::Grouping};
    return kRoles.contains(item.role()) || item.state().focusable;
}

QString placeOf(const QAccessibleInterface& item) {
    const QObject* const object = item.object();
    return object == nullptr
               ? QString("role %1").arg(item.role())
               : QString("%1 %2").arg(object->metaObject()->className(), object->objectName());
}

/// What a person would meet below this item without a name.
QStringList nameless(const QAccessibleInterface* item) {
    QStringList found;
    if (item == nullptr || item->state().invisible) {
        return found;
    }
    if (isInformative(*item) && item->text(QAccessible::Name).trimmed().isEmpty()) {
        found += placeOf(*item);
    }
    for (int i = 0; i < item->childCount(); ++i) {
        found += nameless(item->child(i));
    }
    return found;
}

QStringList nameless(QWidget* widget) {
    return nameless(QAccessible::queryAccessibleInterface(widget));
}

QString nameOf(QObject* object) {
    return QAccessible::queryAccessibleInterface(object)->text(QAccessible::Name);
}

QString labelOf(QWidget* widget) {
    const auto relations = QAccessible::queryAccessibleInterface(widget)->relations();
    for (const auto& [other, relation] : relations) {
        if (relation == QAccessible::Label) {
            return other->text(QAccessible::Name);
        }
    }
    return {};
}

struct WindowWithSound : WindowUnderTest {
    WindowWithSound() {
        loadSound(std::vector<float>(30000, 0.5F));
        delegate.window->activateWindow();
        if (!QTest::qWaitForWindowExposed(delegate.window)) {
            qFatal("the window is not shown");
        }
    }
    QAction* item(const char* name) const { return delegate.window->findChild<QAction*>(name); }
};

} // namespace

class AccessibilityTest : public QObject {
    Q_OBJECT
private slots:
    void everythingInTheMainWindowHasAName() {
        const WindowWithSound zemo;
        QCOMPARE(nameless(zemo.delegate.window), QStringList());
    }

    void everythingInEverySheetHasAName() {
        WindowWithSound zemo;
        const auto opens = {&AppDelegate::ResampleDialog, &AppDelegate::AMDialog,
                            &AppDelegate::FMDialog, &AppDelegate::HDDialog};
        for (const auto open : opens) {
            (zemo.delegate.*open)(nullptr);
            QWidget* const sheet = QApplication::activeModalWidget();
            QVERIFY(sheet != nullptr);
            QVERIFY(!nameOf(sheet).isEmpty());
            QCOMPARE(nameless(sheet), QStringList());
            QTest::keyClick(sheet, Qt::Key_Escape);
        }
    }

    void everythingThatIsOursInThePanelsHasAName() {
        WindowWithSound zemo;
        for (const char* const name : {"OpenMenu", "ImportMenu", "SaveAsAudioMenu", "ExportMenu"}) {
            zemo.item(name)->trigger();
            auto* const panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            QVERIFY(panel != nullptr);
            for (QWidget* const widget : panel->findChildren<QWidget*>()) {
                const bool isUsed = widget->isVisible() && widget->focusPolicy() & Qt::TabFocus;
                if (isUsed && nameOf(widget).isEmpty()) {
                    QFAIL(qPrintable(QString("%1: %2").arg(name, widget->objectName())));
                }
            }
            panel->reject();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }

    void everythingInTheProgressPanelAndTheManualHasAName() {
        WindowWithSound zemo;
        ProgressPanel panel(zemo.delegate.window, "Saving", true);
        panel.show();
        QCOMPARE(nameless(&panel), QStringList());
        ManualWindow manual(ManualWindow::find(QApplication::applicationDirPath()));
        manual.show();
        QCOMPARE(nameless(&manual), QStringList());
    }

    void aValueKeepsItsTextAndIsNamedByTheLabelBesideIt() {
        const WindowWithSound zemo;
        const std::map<QString, QString> labels{{"lengthValue", "Length"},
                                                {"samplesValue", "Samples"},
                                                {"peakValue", "Peak"},
                                                {"rateValue", "Rate"},
                                                {"resultValue", "Result"}};
        for (const auto& [value, label] : labels) {
            auto* const widget = zemo.delegate.window->findChild<QLabel*>(value);
            QCOMPARE(labelOf(widget), label);
            QCOMPARE(nameOf(widget), widget->text());
        }
    }

    void aTextWithoutALabelIsDescribed() {
        const WindowWithSound zemo;
        for (const char* const name : {"soundName", "reasonValue", "notice"}) {
            QVERIFY(
                !zemo.delegate.window->findChild<QLabel*>(name)->accessibleDescription().isEmpty());
        }
    }

    void aFieldHasALabelWithALetter() {
        WindowWithSound zemo;
        zemo.delegate.HDDialog(nullptr);
        for (QLineEdit* const field : zemo.delegate.hdPanel->findChildren<QLineEdit*>()) {
            QVERIFY2(!labelOf(field).isEmpty(), qPrintable(field->objectName()));
        }
    }

    void everyMenuAndEveryItemHasALetterOfItsOwn() {
        const WindowWithSound zemo;
        QList<QWidget*> menus{zemo.delegate.window->menuBar()};
        for (QMenu* const menu : zemo.delegate.window->findChildren<QMenu*>()) {
            menus += menu;
        }
        for (const QWidget* const menu : menus) {
            std::set<QString> letters;
            for (const QAction* const action : menu->actions()) {
                const QString letter = QKeySequence::mnemonic(action->text()).toString();
                if (action->isSeparator() || action->text().isEmpty()) {
                    continue;
                }
                QVERIFY2(!letter.isEmpty(), qPrintable(action->text()));
                QVERIFY2(letters.insert(letter).second, qPrintable(action->text()));
            }
        }
    }

    void aResultIsSaidTogetherWithItsReason() {
        WindowWithSound zemo;
        auto* const announcer = zemo.delegate.window->findChild<Announcer*>();
        zemo.platform.files.files["/cut.caf"] = {'c', 'a', 'f', 'f', 0};
        zemo.delegate.openFileNamed("/cut.caf");
        const QString result = zemo.delegate.window->findChild<QLabel*>("resultValue")->text();
        const QString reason = zemo.delegate.window->findChild<QLabel*>("reasonValue")->text();
        QVERIFY(!result.isEmpty() && !reason.isEmpty());
        QTRY_COMPARE(nameOf(announcer), result + ". " + reason);
        QCOMPARE(QAccessible::queryAccessibleInterface(announcer)->role(),
                 QAccessible::Notification);
    }

    void theMeterHasAValueInDecibels() {
        const WindowWithSound zemo;
        QAccessibleInterface* const meter =
            QAccessible::queryAccessibleInterface(zemo.delegate.levelView);
        QVERIFY(meter->valueInterface() != nullptr);
        value.store(-0.5F);
        QCOMPARE(meter->valueInterface()->currentValue().toDouble(), -6.0);
        QCOMPARE(meter->text(QAccessible::Value), QString("−6.0 dBFS"));
        value.store(1.5F);
        QCOMPARE(meter->valueInterface()->currentValue().toDouble(), 0.0);
        QCOMPARE(meter->text(QAccessible::Value), QString("+3.5 dBFS"));
        value.store(0.0F);
        QCOMPARE(meter->valueInterface()->currentValue().toDouble(),
                 meter->valueInterface()->minimumValue().toDouble());
        QCOMPARE(meter->text(QAccessible::Value), QString("silent"));
        meter->valueInterface()->setCurrentValue(-3.0);
        QCOMPARE(value.load(), 0.0F);
    }

    void aMeterThatIsFedSixtyTimesASecondSpeaksTwiceASecond() {
        WindowWithSound zemo;
        levelOpenGLView* const meter = zemo.delegate.levelView;
        std::vector<qint64> times;
        QElapsedTimer timer;
        timer.start();
        connect(meter, &levelOpenGLView::levelTold, this,
                [&] { times.push_back(timer.elapsed()); });
        for (int frame = 0; frame < 120; ++frame) {
            value.store(0.1F + 0.01F * static_cast<float>(frame % 50));
            meter->repaint();
            QTest::qWait(16);
        }
        QVERIFY(times.size() >= 3);
        for (std::size_t i = 1; i < times.size(); ++i) {
            QVERIFY(times[i] - times[i - 1] >= 490); // the timer's clock is not this one
        }
    }

    void theMetersLastLevelIsToldAndThenNothing() {
        WindowWithSound zemo;
        levelOpenGLView* const meter = zemo.delegate.levelView;
        const QSignalSpy told(meter, &levelOpenGLView::levelTold);
        value.store(0.5F);
        meter->repaint();
        value.store(0.0F);
        meter->repaint();
        QTRY_COMPARE(told.size(), 2);
        QTest::qWait(1000); // in which it would speak twice more
        QCOMPARE(told.size(), 2);
        QCOMPARE(told.at(0).at(0).toDouble(), -6.0);
        QCOMPARE(told.at(1).at(0).toDouble(), kSpokenFloor);
    }
};

QTEST_MAIN(AccessibilityTest)
#include "accessibility_test.moc"
