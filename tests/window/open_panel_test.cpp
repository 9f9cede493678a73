#include <QComboBox>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QtTest>
#include <filesystem>
#include <fstream>

#include "playback/SharedState.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::currentSound;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

namespace {

QFileDialog* openPanel(const WindowUnderTest& zemo) {
    return zemo.delegate.window->findChild<QFileDialog*>();
}

QPushButton* openButton(QWidget* panel) {
    return panel->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Open);
}

QCheckBox* box(QWidget* panel, const QString& title) {
    for (QCheckBox* const one : panel->findChildren<QCheckBox*>()) {
        if (one->text() == title) {
            return one;
        }
    }
    return nullptr;
}

std::vector<std::uint8_t> bytesOf(const std::vector<float>& samples) {
    const auto* const first = reinterpret_cast<const std::uint8_t*>(samples.data());
    return {first, first + samples.size() * sizeof(float)};
}

} // namespace

class OpenPanelTest : public QObject {
    Q_OBJECT
public:
    ~OpenPanelTest() override { // Qt does not see the names that are not UTF-8
        std::error_code ignored;
        std::filesystem::remove_all(folder_.path().toStdString(), ignored);
    }

private:
    QTemporaryDir folder_;

    /// The panel looks at real files, the readers at the ones in memory: `name` is in both.
    std::string put(WindowUnderTest& zemo, const QString& name,
                    const std::vector<std::uint8_t>& bytes) {
        QFile file(folder_.filePath(name));
        if (!file.open(QIODevice::WriteOnly)) {
            qFatal("cannot write");
        }
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
        const std::string path = folder_.filePath(name).toStdString();
        zemo.platform.files.files[path] = bytes;
        return path;
    }

    /// The same under a name of any bytes.
    std::string putNamed(WindowUnderTest& zemo, const std::string& name,
                         const std::vector<std::uint8_t>& bytes) {
        const std::string path = folder_.path().toStdString() + "/" + name;
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        zemo.platform.files.files[path] = bytes;
        return path;
    }

    static void choose(QFileDialog* panel, const std::string& path) {
        panel->selectFile(QString::fromStdString(path));
        panel->findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(path));
        QMetaObject::invokeMethod(panel, "accept");
        QCoreApplication::processEvents(); // the file is taken in once the panel is through
    }

private slots:
    void thePanelIsASheetWithTwoUncheckedBoxes() {
        WindowUnderTest zemo;
        zemo.delegate.OpenMenu->trigger();
        QFileDialog* const panel = openPanel(zemo);
        QVERIFY(panel != nullptr);
        QCOMPARE(panel->windowModality(), Qt::WindowModal);
        QVERIFY(box(panel, "Swap Bytes") != nullptr && !box(panel, "Swap Bytes")->isChecked());
        QVERIFY(box(panel, "Normalize") != nullptr && !box(panel, "Normalize")->isChecked());
        QCOMPARE(panel->fileMode(), QFileDialog::ExistingFile);
        QCOMPARE(zemo.platform.trace.logged.back(), std::string("Dialog initialized\n"));
        panel->reject();
    }

    /// Reading lets events go on, and one of them may be the panel's deletion.
    void nothingIsReadWhileThePanelIsStillAtItsOwnEnd() {
        WindowUnderTest zemo;
        const std::string path = put(zemo, "later.raw", {0, 0, 0, 63});
        zemo.delegate.OpenMenu->trigger();
        QFileDialog* const panel = openPanel(zemo);
        panel->findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(path));
        bool readBefore = true;
        connect(panel, &QDialog::finished, this, [&] { readBefore = fBuffersize.load() > 0; });
        QMetaObject::invokeMethod(panel, "accept");
        QVERIFY(!readBefore);
        QCOMPARE(fBuffersize.load(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(fBuffersize.load(), 1);
    }

    void cancelStoresTheBoxesAndNothingElse() {
        WindowUnderTest zemo;
        loadSound({0.1F, 0.2F});
        zemo.delegate.OpenMenu->trigger();
        QFileDialog* const panel = openPanel(zemo);
        box(panel, "Swap Bytes")->setChecked(true);
        box(panel, "Normalize")->setChecked(true);
        const std::size_t logged = zemo.platform.trace.logged.size();
        panel->reject();
        QVERIFY(zemo.delegate.swapRaw);
        QVERIFY(zemo.delegate.norm);
        QCOMPARE(currentSound(), (std::vector<float>{0.1F, 0.2F}));
        QCOMPARE(zemo.platform.trace.logged.size(), logged);
    }

    void aRawFileIsLoadedUnscaled() {
        WindowUnderTest zemo;
        const std::string path = put(zemo, "tone.f32", bytesOf({0.25F, -0.5F, 0.125F}));
        zemo.delegate.OpenMenu->trigger();
        choose(openPanel(zemo), path);
        QCOMPARE(currentSound(), (std::vector<float>{0.25F, -0.5F, 0.125F}));
        QVERIFY(zemo.delegate.string.rfind("Raw data file: ", 0) == 0);
        QCOMPARE(zemo.delegate.maxval, 0.125F); // any sample replaces a negative record
    }

    void theNormalizeBoxScalesARawFile() {
        WindowUnderTest zemo;
        const std::string path = put(zemo, "tone.f32", bytesOf({0.25F, 0.5F}));
        zemo.delegate.OpenMenu->trigger();
        QFileDialog* const panel = openPanel(zemo);
        box(panel, "Normalize")->setChecked(true);
        choose(panel, path);
        const auto divisor = static_cast<float>(0.5 * 1.1);
        QCOMPARE(currentSound(), (std::vector<float>{0.25F / divisor, 0.5F / divisor}));
    }

    void aRefusedFileShowsKOAndKeepsTheSoundAndItsDescription() {
        WindowUnderTest zemo;
        const std::string good = put(zemo, "good.f32", bytesOf({0.25F, 0.5F}));
        zemo.delegate.openFileNamed(QString::fromStdString(good));
        const std::string bad = put(zemo, "bad.caf", {1, 2, 3});
        zemo.delegate.OpenMenu->trigger();
        choose(openPanel(zemo), bad);
        QCOMPARE(currentSound(), (std::vector<float>{0.25F, 0.5F}));
        QCOMPARE(zemo.platform.alert.shown.size(), std::size_t{1});
        QCOMPARE(zemo.platform.alert.shown[0].message,
                 std::string("ZEMO CAN'T READ THE FILE:\nbad.caf"));
        QCOMPARE(zemo.delegate.window->findChild<QLabel*>("soundName")->text(),
                 QString("good.f32"));
        QCOMPARE(zemo.delegate.window->findChild<QLabel*>("resultValue")->text(),
                 QString("KO (bad.caf)"));
    }

    /// Of whatever a raw file begins with, "KO" like the result of a refusal too.
    void aRawFileThatBeginsLikeARefusalIsOpened() {
        WindowUnderTest zemo;
        const std::string path = put(zemo, "ko.f32", {'K', 'O', 0, 0, 0, 0, 0, 63});
        QTimer::singleShot(0, this, [&] { choose(openPanel(zemo), path); });
        zemo.delegate.window->findChild<QAction*>("OpenRawMenu")->trigger();
        QCOMPARE(fBuffersize.load(), 2);
        QCOMPARE(zemo.delegate.window->findChild<QLabel*>("soundName")->text(), QString("ko.f32"));
        QCOMPARE(zemo.delegate.window->findChild<QLabel*>("resultValue")->text(), QString("KO"));
        QVERIFY(zemo.delegate.window->findChild<QLabel*>("reasonValue")->text().isEmpty());
    }

    void aFileWhoseNameIsNotUtf8IsChosenBelowTheList() {
        for (const bool byName : {false, true}) {
            WindowUnderTest zemo;
            const std::string path = putNamed(zemo, "caf\xE9 100%.f32", bytesOf({0.25F, 0.5F}));
            putNamed(zemo, "\xFF\xFE.f32", {1, 2, 3, 4});
            zemo.delegate.OpenMenu->trigger();
            QFileDialog* const panel = openPanel(zemo);
            panel->setDirectory(folder_.path());
            auto* const names = panel->findChild<QComboBox*>("namesThatAreNotUtf8");
            QTRY_VERIFY(names->isVisible());
            QCOMPARE(names->count(), 3);
            QCOMPARE(names->itemText(1), QString("caf%E9 100%25.f32"));
            QCOMPARE(names->itemText(2), QString("%FF%FE.f32"));
            auto* const field = panel->findChild<QLineEdit*>("fileNameEdit");
            if (byName) {
                field->setText("caf%E9 100%25.f32");
            } else {
                names->setCurrentIndex(1);
                emit names->textActivated(names->currentText());
                QCOMPARE(field->text(), names->currentText());
            }
            QTRY_VERIFY(openButton(panel)->isEnabled());
            openButton(panel)->click();
            QCoreApplication::processEvents();
            QCOMPARE(currentSound(), (std::vector<float>{0.25F, 0.5F}));
            QCOMPARE(zemo.delegate.window->findChild<QLabel*>("soundName")->text(),
                     QString("caf\uFFFD 100%.f32"));
            QVERIFY(zemo.platform.trace.out.find("File " + path + ":") != std::string::npos);
            QTRY_VERIFY(openPanel(zemo) == nullptr);
        }
    }

    void whatIsNoFileCannotBeOpened() {
        WindowUnderTest zemo;
        putNamed(zemo, "caf\xE9.f32", {1, 2, 3, 4});
        zemo.delegate.OpenMenu->trigger();
        QFileDialog* const panel = openPanel(zemo);
        panel->setDirectory(folder_.path());
        auto* const field = panel->findChild<QLineEdit*>("fileNameEdit");
        field->setText("caf%E9.f32");
        QVERIFY(openButton(panel)->isEnabled());
        field->setText("caf%E8.f32");
        QVERIFY(!openButton(panel)->isEnabled());
        panel->reject();
    }

    void theLineBelowTheListIsThereForSuchNamesAlone() {
        WindowUnderTest zemo;
        QTemporaryDir plain;
        zemo.delegate.OpenMenu->trigger();
        QFileDialog* const panel = openPanel(zemo);
        auto* const names = panel->findChild<QComboBox*>("namesThatAreNotUtf8");
        putNamed(zemo, "caf\xE9.f32", {1, 2, 3, 4});
        panel->setDirectory(folder_.path());
        QTRY_VERIFY(names->isVisible());
        panel->setDirectory(plain.path());
        QVERIFY(!names->isVisible());
        panel->setDirectory(folder_.path());
        QTRY_VERIFY(names->isVisible());
        panel->reject();
    }

    void aNameWithPercentSignsIsTheFilesOwnWhereThereIsSuchAFile() {
        WindowUnderTest zemo;
        putNamed(zemo, "caf\xE9.f32", bytesOf({0.25F}));
        const std::string plain = put(zemo, "caf%E9.f32", bytesOf({0.5F}));
        zemo.delegate.OpenMenu->trigger();
        choose(openPanel(zemo), plain);
        QCOMPARE(currentSound(), std::vector<float>{0.5F});
        QCOMPARE(zemo.delegate.window->findChild<QLabel*>("soundName")->text(),
                 QString("caf%E9.f32"));
    }

    void aFirstLineOfControlCharactersIsShownAsPlainText() {
        WindowUnderTest zemo;
        const std::string path = put(zemo, "odd.txt", {'<', 'b', '>', 7, '\n', 0, 0, 0});
        zemo.delegate.openFileNamed(QString::fromStdString(path));
        auto* const result = zemo.delegate.window->findChild<QLabel*>("resultValue");
        QCOMPARE(result->textFormat(), Qt::PlainText);
        QVERIFY(result->text().startsWith("Raw data file: <b>"));
        QVERIFY(!result->text().contains('\n'));
    }

    void theClassicPanelHasOneBoxReadsRawAndAlwaysScales() {
        WindowUnderTest zemo;
        const std::string path = put(zemo, "sound.caf", bytesOf({0.25F, 0.5F}));
        QTimer::singleShot(0, this, [&] {
            QFileDialog* const panel = openPanel(zemo);
            QVERIFY(box(panel, "Normalize") == nullptr);
            box(panel, "Swap Bytes")->setChecked(false);
            choose(panel, path);
        });
        zemo.delegate.window->findChild<QAction*>("OpenRawMenu")->trigger();
        const auto divisor = static_cast<float>(0.5 * 1.1);
        QCOMPARE(currentSound(), (std::vector<float>{0.25F / divisor, 0.5F / divisor}));
        QVERIFY(zemo.delegate.string.rfind("Raw data file: ", 0) != 0);
    }

    void aCancelledClassicPanelChangesNothing() {
        WindowUnderTest zemo;
        loadSound({0.5F});
        zemo.delegate.swapRaw = false;
        QTimer::singleShot(0, this, [&] {
            QFileDialog* const panel = openPanel(zemo);
            box(panel, "Swap Bytes")->setChecked(true);
            panel->reject();
        });
        zemo.delegate.window->findChild<QAction*>("OpenRawMenu")->trigger();
        QVERIFY(!zemo.delegate.swapRaw);
        QCOMPARE(currentSound(), std::vector<float>{0.5F});
    }

    void openingDuringAPlayFadesItFirst() {
        WindowUnderTest zemo;
        loadSound(std::vector<float>(100000, 0.5F));
        zemo.delegate.playButton->click();
        zemo.pump(512);
        std::vector<float> heard;
        zemo.platform.clock.whileSleeping = [&] {
            const auto call = zemo.platform.output.pump(512);
            heard.insert(heard.end(), call.begin(), call.end());
        };
        const std::string path = put(zemo, "next.f32", bytesOf({0.25F}));
        zemo.delegate.openFileNamed(QString::fromStdString(path));
        QVERIFY(heard.size() >= 1024);
        QCOMPARE(heard[256], 0.25F); // half-way down
        QCOMPARE(heard[600], 0.0F);
        QVERIFY(!zemo.platform.output.running);
        QCOMPARE(currentSound(), std::vector<float>{0.25F});
    }
};

QTEST_MAIN(OpenPanelTest)
#include "open_panel_test.moc"
