#include <QtTest>

#include <QMessageBox>

#include "playback/SharedState.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

namespace {

SavePanel* savePanel(const WindowUnderTest& zemo) {
    return zemo.delegate.window->findChild<SavePanel*>();
}

/// The floats of the file at `path`, from `header` bytes on.
std::vector<float> savedSamples(WindowUnderTest& zemo, const QString& path, std::size_t header) {
    const auto& bytes = zemo.platform.files.files[path.toStdString()];
    std::vector<float> samples((bytes.size() - header) / sizeof(float));
    std::memcpy(samples.data(), bytes.data() + header, samples.size() * sizeof(float));
    return samples;
}

constexpr std::size_t kCafHeader = 68;

} // namespace

class SavePanelTest : public QObject {
    Q_OBJECT
private:
    QTemporaryDir folder_;

    QString place(const QString& name) const { return folder_.filePath(name); }

    static void choose(SavePanel* panel, const QString& path) {
        panel->findChild<QLineEdit*>("fileNameEdit")->setText(path);
        panel->accept();
        QCoreApplication::processEvents(); // the save begins once the panel is through
    }

private slots:
    void nothingLoadedOpensNoPanel() {
        WindowUnderTest zemo;
        zemo.delegate.SaveAsAudioMenu->trigger();
        QVERIFY(savePanel(zemo) == nullptr);
    }

    void thePanelIsASheetOfTheWindow() {
        WindowUnderTest zemo;
        loadSound({0.5F});
        zemo.delegate.SaveAsAudioMenu->trigger();
        QVERIFY(savePanel(zemo) != nullptr);
        QCOMPARE(savePanel(zemo)->windowModality(), Qt::WindowModal);
        savePanel(zemo)->reject();
        QVERIFY(zemo.platform.operations.calls.empty());
    }

    void theSoundIsSavedWithTwoZerosBehindIt() {
        WindowUnderTest zemo;
        loadSound({0.5F, -0.25F});
        zemo.delegate.SaveAsAudioMenu->trigger();
        choose(savePanel(zemo), place("x.caf"));
        QCOMPARE(savedSamples(zemo, place("x.caf"), kCafHeader),
                 (std::vector<float>{0.5F, -0.25F, 0.0F, 0.0F}));
    }

    void whatHappensWhileThePanelIsOpenIsNotSaved() {
        WindowUnderTest zemo;
        loadSound({0.5F, -0.25F});
        zemo.delegate.SaveAsAudioMenu->trigger();
        loadSound({0.125F});
        choose(savePanel(zemo), place("y.caf"));
        QCOMPARE(savedSamples(zemo, place("y.caf"), kCafHeader),
                 (std::vector<float>{0.5F, -0.25F, 0.0F, 0.0F}));
    }

    void theResultIsLoggedAndThenNoErrorWhateverItWas() {
        WindowUnderTest zemo;
        loadSound({0.5F});
        zemo.delegate.SaveAsAudioMenu->trigger();
        zemo.platform.operations.inject = [](const std::string& call, std::size_t) {
            return call == "closeDuplicate" ? -EIO : 0L;
        };
        choose(savePanel(zemo), place("z.caf"));
        const auto& logged = zemo.platform.trace.logged;
        QCOMPARE(logged.at(logged.size() - 2), std::string("0c"));
        QCOMPARE(logged.back(), std::string("no_err"));
        QCOMPARE(zemo.delegate.window->findChild<QLabel*>("resultValue")->text(),
                 QString("z.caf was not saved"));
    }

    void aNameWithoutAnExtensionGetsCaf() {
        WindowUnderTest zemo;
        loadSound({0.5F});
        zemo.delegate.SaveAsAudioMenu->trigger();
        choose(savePanel(zemo), place("plain"));
        QCOMPARE(zemo.platform.files.files.count(place("plain.caf").toStdString()), std::size_t{1});
        QCOMPARE(zemo.platform.trace.logged.at(zemo.platform.trace.logged.size() - 2),
                 std::string("1c"));
    }

    void aNameIsSuggestedWithAnExtensionThatIsWritten_data() {
        QTest::addColumn<QString>("sound");
        QTest::addColumn<QString>("suggested");
        for (const auto& [sound, suggested] :
             std::initializer_list<std::pair<QString, QString>>{{"harp.caf", "harp.caf"},
                                                                {"harp.AIF", "harp.AIF"},
                                                                {"harp.v2.mp3", "harp.v2.caf"},
                                                                {"harp", "harp.caf"},
                                                                {"", ""},
                                                                {".hidden", ""}}) {
            QTest::newRow(qPrintable("\"" + sound + "\"")) << sound << suggested;
        }
    }
    void aNameIsSuggestedWithAnExtensionThatIsWritten() {
        QFETCH(const QString, sound);
        QFETCH(const QString, suggested);
        SavePanel panel(nullptr, "Save As");
        panel.setAllowedFileTypes({"caf", "CAF", "aif", "AIF"});
        panel.suggestName(sound);
        QCOMPARE(panel.findChild<QLineEdit*>("fileNameEdit")->text(), suggested);
    }

    void anotherExtensionIsRefusedWithOneSentenceAndThePanelStays() {
        WindowUnderTest zemo;
        loadSound({0.5F});
        zemo.delegate.SaveAsAudioMenu->trigger();
        SavePanel* const panel = savePanel(zemo);
        QString sentence;
        QTimer::singleShot(0, this, [&] {
            auto* const box = panel->findChild<QMessageBox*>();
            sentence = box->text();
            box->accept();
        });
        choose(panel, place("sound.wav"));
        QCOMPARE(sentence, QString("The file's name must end in .caf, .CAF, .aif, .AIF."));
        QVERIFY(panel->isVisible());
        QVERIFY(zemo.platform.operations.calls.empty());
        panel->reject();
    }

    void aFileIsReplacedOnlyWhenTheUserSaysSo() {
        WindowUnderTest zemo;
        loadSound({0.5F});
        QFile old(place("old.caf"));
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.close();
        zemo.delegate.SaveAsAudioMenu->trigger();
        SavePanel* const panel = savePanel(zemo);
        QTimer::singleShot(
            0, this, [&] { panel->findChild<QMessageBox*>()->button(QMessageBox::No)->click(); });
        choose(panel, place("old.caf"));
        QVERIFY(panel->isVisible());
        QVERIFY(zemo.platform.operations.calls.empty());
        QTimer::singleShot(
            0, this, [&] { panel->findChild<QMessageBox*>()->button(QMessageBox::Yes)->click(); });
        choose(panel, place("old.caf"));
        QVERIFY(!zemo.platform.operations.calls.empty());
    }
};

QTEST_MAIN(SavePanelTest)
#include "save_panel_test.moc"
