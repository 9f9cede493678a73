#include <QLabel>
#include <QPushButton>
#include <QtTest>
#include <algorithm>
#include <atomic>
#include <functional>
#include <semaphore>
#include <thread>
#include <utility>

#include "interface/ProgressPanel.h"
#include "interface/SavePanel.h"
#include "platform_linux/LinuxServices.h"
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

/// Something that the window's thread does in the middle of a piece of work.
class Meanwhile {
public:
    void arrange(std::function<void()> deed) {
        deed_ = std::move(deed);
        isDone_ = false;
    }
    bool isDone() const { return isDone_; }

    /// [worker] Goes on when the deed is done.
    void meet() {
        if (deed_ == nullptr || isOnWindowsThread()) {
            return;
        }
        std::binary_semaphore done(0);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [&, deed = std::exchange(deed_, nullptr)] {
                deed();
                isDone_ = true;
                done.release();
            },
            Qt::QueuedConnection);
        done.acquire();
    }

private:
    static bool isOnWindowsThread() {
        return QThread::currentThread() == QCoreApplication::instance()->thread();
    }

    std::function<void()> deed_;
    std::atomic<bool> isDone_{false};
};

class MeetingWorkers final : public platform::Workers {
public:
    explicit MeetingWorkers(Meanwhile& meanwhile) : meanwhile_(meanwhile) {}
    unsigned count() const override { return workers_.count(); }
    void run(unsigned most, const Work& work) override {
        meanwhile_.meet();
        workers_.run(most, work);
    }

private:
    Meanwhile& meanwhile_;
    platform::ThreadWorkers workers_{2};
};

std::vector<float> someSound() {
    std::vector<float> sound(300000); // more than one thread takes at a time
    for (std::size_t i = 0; i < sound.size(); ++i) {
        sound[i] = 0.7F * std::sin(0.05F * static_cast<float>(i));
    }
    return sound;
}

/// A window with a sound, in the middle of whose next work something can be done.
struct BusyWindow : WindowUnderTest {
    Meanwhile meanwhile;
    MeetingWorkers workers{meanwhile};

    explicit BusyWindow(std::int32_t minor = kCurrent) {
        loadSound(someSound());
        versionMinor = minor;
        doResampling = doAM = doFM = false;
        platform::services().workers = &workers;
        platform.files.whileReading = [this] { meanwhile.meet(); };
        platform.operations.inject = [this](const std::string&, std::size_t) {
            meanwhile.meet();
            return 0L;
        };
    }

    void open(const Sheet& sheet) { (delegate.*sheet.open)(nullptr); }
    SheetPanel& panel(const Sheet& sheet) { return *(delegate.*sheet.panel); }
    void cancel(const Sheet& sheet) { (delegate.*sheet.cancel)->click(); }
    /// Does `deed` during the work that OK begins, up to whose end this goes.
    void confirm(const Sheet& sheet, std::function<void()> deed) {
        meanwhile.arrange(std::move(deed));
        (delegate.*sheet.ok)->click();
        QCoreApplication::processEvents(); // the older way
        QVERIFY(meanwhile.isDone());
    }

    void sendNote() {
        const std::vector<std::uint8_t> list{1, 0, 0, 0, 0, 0,    0,  0, 0,
                                             0, 0, 0, 3, 0, 0x99, 60, 64};
        std::thread([&] {
            platform.midi.read({list.data(), list.size()}, nullptr, nullptr);
        }).join();
    }
    void trigger(const char* menu) { delegate.window->findChild<QAction*>(menu)->trigger(); }
    bool isIdle() const {
        return bufferPlayer.rampState.load() == Silent && !platform.output.running;
    }
    QString result() const { return delegate.window->findChild<QLabel*>("resultValue")->text(); }
    std::ptrdiff_t traced(const std::string& text) const {
        return std::count_if(
            platform.trace.all.begin(), platform.trace.all.end(),
            [&](const std::string& line) { return line.find(text) != std::string::npos; });
    }
    QList<QDialog*> visibleDialogs() const {
        QList<QDialog*> found = delegate.window->findChildren<QDialog*>();
        found.removeIf([](const QDialog* dialog) { return !dialog->isVisible(); });
        return found;
    }
};

void addSheets() {
    QTest::addColumn<int>("sheet");
    QTest::addColumn<int>("minor");
    const char* const names[] = {"Resample", "AM", "FM", "HD"};
    for (int sheet = 0; sheet < 4; ++sheet) {
        QTest::addRow("%s, older way", names[sheet]) << sheet << kLegacy;
        QTest::addRow("%s, newer way", names[sheet]) << sheet << kCurrent;
    }
}

const Sheet& sheetAt(int index) {
    return kSheets[static_cast<std::size_t>(index)];
}

} // namespace

/// From the press that begins some work to its end nothing else begins.
class MeanwhileTest : public QObject {
    Q_OBJECT
private slots:
    void aConfirmedSheetCannotBeCancelled_data() { addSheets(); }
    void aConfirmedSheetCannotBeCancelled() {
        QFETCH(const int, sheet);
        QFETCH(const int, minor);
        BusyWindow zemo(minor);
        zemo.open(sheetAt(sheet));
        bool wasVisible = false;
        bool staysAsItIs = false;
        zemo.confirm(sheetAt(sheet), [&] {
            wasVisible = zemo.panel(sheetAt(sheet)).isVisible();
            zemo.cancel(sheetAt(sheet));
            zemo.panel(sheetAt(sheet)).reject();
            staysAsItIs = zemo.panel(sheetAt(sheet)).isVisible() == wasVisible;
        });
        QVERIFY(staysAsItIs);
        QCOMPARE(zemo.traced("Cancel Button pressed"), 0);
        QVERIFY(!zemo.panel(sheetAt(sheet)).isVisible());
        QVERIFY(currentSound() != someSound());
        QCOMPARE(zemo.result(), QString("Done"));
    }

    void noSheetOpensDuringATransformation_data() { addSheets(); }
    void noSheetOpensDuringATransformation() {
        QFETCH(const int, sheet);
        QFETCH(const int, minor);
        BusyWindow zemo(minor);
        zemo.open(sheetAt(sheet));
        qsizetype opened = -1;
        zemo.confirm(sheetAt(sheet), [&] {
            const qsizetype before = zemo.visibleDialogs().size();
            for (const Sheet& other : kSheets) {
                zemo.open(other);
            }
            for (const char* const menu :
                 {"OpenMenu", "ImportMenu", "ExportMenu", "SaveAsAudioMenu", "HDMenu"}) {
                zemo.trigger(menu);
            }
            opened = zemo.visibleDialogs().size() - before;
        });
        QCOMPARE(opened, 0);
        QVERIFY(zemo.visibleDialogs().isEmpty());
        zemo.open(kSheets[1]); // and afterwards they open again
        QVERIFY(zemo.panel(kSheets[1]).isVisible());
        zemo.cancel(kSheets[1]);
    }

    /// Those that wait for their own end would keep the work waiting as well.
    void noDialogThatIsWaitedForOpens() {
        BusyWindow zemo;
        zemo.open(kSheets[1]);
        int opened = 0;
        QTimer closer;
        connect(&closer, &QTimer::timeout, this, [&] {
            if (auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
                ++opened;
                dialog->reject();
            }
        });
        zemo.confirm(kSheets[1], [&] {
            closer.start(0);
            zemo.trigger("OpenRawMenu");
            zemo.trigger("AboutMenu");
            closer.stop();
        });
        QCOMPARE(opened, 0);
    }

    void anotherSheetsOkWaitsForItsPerson() {
        BusyWindow zemo;
        const Sheet& am = kSheets[1];
        const Sheet& fm = kSheets[2];
        zemo.open(am);
        zemo.open(fm); // as a screen reader can
        bool isStillThere = false;
        zemo.confirm(fm, [&] {
            (zemo.delegate.*am.ok)->click();
            isStillThere = zemo.panel(am).isVisible();
        });
        QVERIFY(isStillThere);
        QVERIFY(zemo.panel(am).isVisible());
        const auto before = currentSound();
        (zemo.delegate.*am.ok)->click();
        QVERIFY(!zemo.panel(am).isVisible());
        QVERIFY(currentSound() != before);
    }

    void noPlayStartsDuringATransformation_data() { addSheets(); }
    void noPlayStartsDuringATransformation() {
        QFETCH(const int, sheet);
        QFETCH(const int, minor);
        BusyWindow zemo(minor);
        zemo.open(sheetAt(sheet));
        bool wasIdle = true;
        zemo.confirm(sheetAt(sheet), [&] {
            const auto look = [&] {
                QCoreApplication::processEvents();
                wasIdle = wasIdle && zemo.isIdle();
            };
            zemo.delegate.playButton->click();
            look();
            QTest::keyClick(zemo.delegate.playButton, Qt::Key_Return);
            look();
            QTest::keyClick(zemo.delegate.window, Qt::Key_Space);
            look();
            zemo.trigger("PlayMenu");
            look();
            zemo.sendNote();
            look();
            zemo.delegate.testButton->click();
            QCOMPARE(value.load(), 0.0F);
        });
        QVERIFY(wasIdle);
        QVERIFY(zemo.isIdle());
        QCOMPARE(zemo.delegate.playButton->title(), QString("Play"));
        QCOMPARE(zemo.traced("NOTE ON"), 1); // which the note is told to have done all the same
        zemo.delegate.playButton->click();
        QVERIFY(!zemo.isIdle());
    }

    void aPlayMayStartAndStopDuringASave_data() {
        QTest::addColumn<QString>("work");
        for (const char* const work : {"save", "export", "import", "open"}) {
            QTest::newRow(work) << QString(work);
        }
    }
    void aPlayMayStartAndStopDuringASave() {
        QFETCH(const QString, work);
        BusyWindow zemo;
        zemo.delegate.exportFile("/other.wav");
        bool played = false;
        bool stopped = false;
        const auto deed = [&] {
            zemo.delegate.playButton->click();
            played = bufferPlayer.rampState.load() == FadeIn;
            zemo.pump(512);
            zemo.sendNote();
            QCoreApplication::processEvents();
            stopped = bufferPlayer.rampState.load() == FadeOut;
            zemo.pump(512);
            while (zemo.platform.output.running) {
                zemo.pump(512);
            }
        };
        zemo.meanwhile.arrange(deed);
        if (work == "save") {
            zemo.delegate.SaveAsAudioDialog(nullptr);
            auto* const panel = zemo.delegate.window->findChild<SavePanel*>();
            panel->selectFile("/saved.caf");
            static_cast<QDialog*>(panel)->accept();
            QCoreApplication::processEvents();
        } else if (work == "export") {
            zemo.delegate.exportFile("/exported.wav");
        } else if (work == "import") {
            zemo.delegate.importFile("/other.wav");
        } else {
            zemo.platform.files.files["/other.f32"] = std::vector<std::uint8_t>(1 << 20);
            zemo.delegate.openFileNamed("/other.f32");
        }
        QVERIFY(zemo.meanwhile.isDone());
        QVERIFY(played);
        QVERIFY(stopped);
    }

    /// In the older way the sheet ends before its work begins.
    void nothingBeginsBetweenOkAndTheWork() {
        BusyWindow zemo(kLegacy);
        zemo.open(kSheets[0]);
        (zemo.delegate.*kSheets[0].ok)->click();
        zemo.delegate.playButton->click();
        zemo.open(kSheets[1]);
        zemo.cancel(kSheets[0]);
        QVERIFY(zemo.isIdle());
        QVERIFY(zemo.delegate.amPanel == nullptr || !zemo.delegate.amPanel->isVisible());
        QVERIFY(currentSound() == someSound());
        QCoreApplication::processEvents();
        QVERIFY(currentSound() != someSound());
        QCOMPARE(zemo.result(), QString("Done"));
    }

    void aFileThatWasChosenByThenIsSavedAfterwards() {
        BusyWindow zemo;
        zemo.delegate.SaveAsAudioDialog(nullptr);
        auto* const panel = zemo.delegate.window->findChild<SavePanel*>();
        panel->selectFile("/kept.caf");
        zemo.open(kSheets[2]);
        zemo.confirm(kSheets[2], [&] {
            static_cast<QDialog*>(panel)->accept();
            QCoreApplication::processEvents();
            QVERIFY(!zemo.platform.files.files.contains("/kept.caf"));
        });
        QTRY_VERIFY(zemo.platform.files.files.contains("/kept.caf"));
        QCOMPARE(zemo.result(), QString("Saved as kept.caf"));
    }

    void nothingBeginsDuringASave() {
        BusyWindow zemo;
        zemo.delegate.ustruct.buf = allocateSamples(1);
        zemo.delegate.ustruct.bufsize = 1;
        zemo.platform.files.files["/other.f32"] = {0, 0, 0, 0};
        bool isBlocked = false;
        zemo.meanwhile.arrange([&] {
            zemo.trigger("RevertMenu");
            zemo.delegate.openAnyFile("/other.f32");
            zemo.delegate.importFile("/other.f32");
            zemo.open(kSheets[0]);
            isBlocked = currentSound() == someSound() && zemo.visibleDialogs().isEmpty();
        });
        zemo.delegate.exportFile("/exported.wav");
        QVERIFY(zemo.meanwhile.isDone());
        QVERIFY(isBlocked);
    }

    /// A person waits from the press on, whatever for.
    void thePanelComesWhileTheEndOfAPlayIsWaitedFor() {
        BusyWindow zemo;
        zemo.delegate.playButton->click();
        zemo.pump(512);
        bool wasSeen = false;
        zemo.platform.clock.whileSleeping = [&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            wasSeen = wasSeen || zemo.delegate.window->findChild<ProgressPanel*>() != nullptr;
        };
        zemo.open(kSheets[1]);
        (zemo.delegate.*kSheets[1].ok)->click();
        zemo.platform.clock.whileSleeping = nullptr;
        QVERIFY(wasSeen);
        QVERIFY(zemo.delegate.window->findChild<ProgressPanel*>() == nullptr);
        QVERIFY(currentSound() != someSound());
    }

    void cancelledWhileTheEndOfAPlayIsWaitedForTheSoundStays() {
        BusyWindow zemo;
        zemo.delegate.playButton->click();
        zemo.pump(512);
        zemo.platform.clock.whileSleeping = [&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            if (auto* const panel = zemo.delegate.window->findChild<ProgressPanel*>()) {
                QTest::keyClick(panel, Qt::Key_Escape);
            }
        };
        zemo.open(kSheets[1]);
        (zemo.delegate.*kSheets[1].ok)->click();
        zemo.platform.clock.whileSleeping = nullptr;
        QVERIFY(currentSound() == someSound());
        QCOMPARE(zemo.result(), QString("Cancelled"));
        zemo.open(kSheets[1]); // the next work is another one
        (zemo.delegate.*kSheets[1].ok)->click();
        QVERIFY(currentSound() != someSound());
    }
};

QTEST_MAIN(MeanwhileTest)
#include "meanwhile_test.moc"
