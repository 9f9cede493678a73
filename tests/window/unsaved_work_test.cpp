// Whatever somebody does in the window, no work is lost that stands in no file, and every sound
// goes by its own name.
#include <QLineEdit>
#include <QtTest>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

#include "interface/ProgressPanel.h"
#include "playback/SoundExchange.h"
#include "support/RescuedWindow.h"

using namespace zemo;
using zemo::test::hasCopyOf;
using zemo::test::RescuedWindow;
using zemo::test::soundsInCopies;

namespace fs = std::filesystem;

namespace {

constexpr int kLong = 20000; ///< milliseconds
constexpr const char* kNoCopy = "No rescue copy of the sound can be kept: save it to be safe";

using Sound = std::vector<float>;

/// Has no copy be kept: a file stands where the folder would be.
void blockFolder(const QTemporaryDir& state) {
    std::ofstream(state.filePath("zemo").toStdString()) << "in the way";
}

fs::path rootIn(const QTemporaryDir& state) {
    return state.filePath("zemo/rescue").toStdString();
}

/// Files with the names of copies, in a folder of the test's that they are to stay in.
fs::path precious(const QTemporaryDir& folder) {
    const fs::path place = folder.filePath("precious").toStdString();
    fs::create_directories(place);
    std::ofstream(place / ".lock") << "";
    std::ofstream(place / "diary.caf") << "dear diary";
    return place;
}

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// A disk that takes no file to its end until it is let go.
class HeldUpDisk final : public platform::PosixFileOperations {
public:
    int sync(int descriptor) override {
        while (isHeldUp && !platform::isStopRequested()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return PosixFileOperations::sync(descriptor);
    }
    std::atomic<bool> isHeldUp{true};
};

/// The folder of the program that runs.
fs::path onlyFolderIn(const QTemporaryDir& state) {
    return fs::directory_iterator(rootIn(state))->path();
}

} // namespace

class UnsavedWorkTest : public QObject {
    Q_OBJECT
private slots:

    // One copy for every lost sound --------------------------------------------------------------

    void the_work_before_another_file_survives_two_reverts() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp-48000.f32", 0.25F);
        const Sound work = zemo.sound();
        zemo.openRaw("bell.f32", 0.5F);
        QVERIFY(zemo.isOffered());
        QCOMPARE(zemo.offer(), QString("harp-48000 was not saved"));
        QTRY_VERIFY_WITH_TIMEOUT(hasCopyOf(state, work), kLong);
        zemo.revert();
        zemo.revert();
        QTest::qWait(200); // for whoever would write or remove a copy now
        QVERIFY(hasCopyOf(state, work));
        zemo.restore();
        QCOMPARE(zemo.sound(), work);
    }

    void each_of_two_works_has_its_copy() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.rewriteRaw("a.f32", 0.25F);
        const Sound first = zemo.sound();
        zemo.delegate.openAnyFile(QString::fromStdString(
            std::string(EXAMPLES) + "/harp-48000.caf")); // as a file that is dropped
        zemo.resample("0.5");
        const Sound second = zemo.sound();
        QTRY_VERIFY_WITH_TIMEOUT(hasCopyOf(state, first) && hasCopyOf(state, second), kLong);
        QVERIFY(zemo.isOffered());
        QCOMPARE(zemo.offer(), QString("a was not saved"));
    }

    void work_is_offered_when_an_open_empties_the_window() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        const Sound work = zemo.sound();
        zemo.delegate.openFileNamed(state.filePath("nothing.f32"));
        QCOMPARE(fBuffersize.load(), 0);
        QCOMPARE(zemo.headline(), QString("No sound"));
        QVERIFY(zemo.isOffered());
        zemo.restore();
        QCOMPARE(zemo.sound(), work);
        QVERIFY(!zemo.isOffered());
        QCOMPARE(zemo.headline(), QString("harp.f32"));
    }

    void the_third_of_three_rewrites_offers_the_first() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        const Sound first = zemo.sound();
        zemo.resample();
        QVERIFY(!zemo.isOffered()); // it is behind Revert
        zemo.resample();
        QVERIFY(zemo.isOffered());
        QCOMPARE(zemo.offer(), QString("harp was not saved"));
        QTRY_COMPARE_WITH_TIMEOUT(soundsInCopies(state).size(), std::size_t{3}, kLong);
        zemo.restore();
        QCOMPARE(zemo.sound(), first);
        QVERIFY(zemo.isOffered()); // what it took the place of
        zemo.discard();
        QTRY_COMPARE_WITH_TIMEOUT(soundsInCopies(state).size(), std::size_t{2}, kLong);
        QVERIFY(hasCopyOf(state, first));
    }

    void a_double_click_answers_one_offer_only() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.openRaw("harp.f32", 0.25F);
        for (int i = 0; i < 4; ++i) {
            zemo.resample();
        }
        QCOMPARE(zemo.offer(), QString("harp was not saved (1 of 2)"));
        auto* const button = zemo.find<QPushButton>("discardButton");
        QTest::mouseClick(button, Qt::LeftButton);
        QTest::mouseDClick(button, Qt::LeftButton); // the second click's press
        QTest::mouseRelease(button, Qt::LeftButton);
        QCOMPARE(zemo.offer(), QString("harp was not saved"));
        QVERIFY(zemo.isOffered());
        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(!zemo.isOffered());
    }

    void work_that_an_open_scales_is_offered_as_it_was() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        replaceBuffer(allocateSamples(1000), 1000);
        std::fill_n(fBuffer.load(), 1000, 1.75F);
        zemo.resample();
        const Sound loud = zemo.sound();
        zemo.delegate.openFileNamed(state.filePath("no such file.caf"));
        QVERIFY(zemo.sound() != loud);
        QVERIFY(zemo.isOffered());
        QTRY_VERIFY_WITH_TIMEOUT(hasCopyOf(state, loud) && hasCopyOf(state, zemo.sound()), kLong);
    }

    void what_stands_in_a_file_is_never_offered() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        zemo.delegate.exportFile(state.filePath("harp.wav"));
        zemo.openRaw("bell.f32", 0.5F);
        QTRY_COMPARE_WITH_TIMEOUT(soundsInCopies(state).size(), std::size_t{0}, kLong);
        QVERIFY(!zemo.isOffered());
    }

    void a_save_of_a_sound_that_is_gone_ends_its_offer() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        zemo.delegate.SaveAsAudioDialog(nullptr);
        auto* const panel = zemo.savePanel();
        zemo.openRaw("bell.f32", 0.5F);
        QVERIFY(zemo.isOffered());
        panel->findChild<QLineEdit*>("fileNameEdit")->setText(state.filePath("saved.caf"));
        panel->accept();
        QTRY_COMPARE_WITH_TIMEOUT(zemo.result(), QString("Saved as saved.caf"), kLong);
        QVERIFY(!zemo.isOffered());
        QCOMPARE(zemo.headline(), QString("bell.f32"));
    }

    // Bounds -------------------------------------------------------------------------------------

    void the_window_says_which_copy_goes_before_it_does() {
        const QTemporaryDir state;
        RescuedWindow zemo(state, 48000.0, {.mostBytes = 1});
        zemo.rewriteRaw("harp.f32", 0.25F);
        const Sound first = zemo.sound();
        zemo.resample();
        QTRY_COMPARE_WITH_TIMEOUT(soundsInCopies(state).size(), std::size_t{2}, kLong);
        QCOMPARE(zemo.notice(), QString()); // neither of them goes
        zemo.resample();
        QTRY_VERIFY_WITH_TIMEOUT(
            zemo.notice().contains("the next one will remove the oldest, harp first"), kLong);
        QVERIFY(hasCopyOf(state, first));
        zemo.resample();
        QTRY_VERIFY_WITH_TIMEOUT(!hasCopyOf(state, first), kLong);
        QVERIFY(hasCopyOf(state, zemo.sound()) ||
                QTest::qWaitFor([&] { return hasCopyOf(state, zemo.sound()); }, kLong));
        zemo.restore(); // what is offered is there
        QVERIFY(zemo.sound() != first);
    }

    void who_is_faster_than_the_disk_waits_or_cancels() {
        const QTemporaryDir state;
        HeldUpDisk disk;
        RescuedWindow zemo(state, 48000.0, {.mostHeldBytes = 1});
        platform::services().fileOperations = &disk;
        zemo.rewriteRaw("harp.f32", 0.25F);
        zemo.resample();
        zemo.resample();
        const Sound third = zemo.sound();
        QTimer finger;
        connect(&finger, &QTimer::timeout, this, [&] {
            if (auto* const panel = zemo.delegate.window->findChild<ProgressPanel*>()) {
                panel->findChild<QPushButton*>("progressCancelButton")->click();
            }
        });
        finger.start(5);
        zemo.resample();
        QCOMPARE(zemo.result(), QString("Cancelled"));
        QCOMPARE(zemo.sound(), third);
        finger.stop();
        disk.isHeldUp = false;
        zemo.resample();
        QCOMPARE(zemo.result(), QString("Done"));
        QTRY_COMPARE_WITH_TIMEOUT(soundsInCopies(state).size(), std::size_t{4}, kLong);
    }

    void a_lost_sound_that_is_not_on_the_disk_yet_is_restored_from_memory() {
        const QTemporaryDir state;
        HeldUpDisk disk;
        RescuedWindow zemo(state);
        platform::services().fileOperations = &disk;
        zemo.rewriteRaw("harp.f32", 0.25F);
        const Sound work = zemo.sound();
        zemo.openRaw("bell.f32", 0.5F);
        zemo.restore();
        QCOMPARE(zemo.sound(), work);
        QCOMPARE(zemo.headline(), QString("harp.f32"));
        QVERIFY(zemo.isModified());
        QVERIFY(!zemo.isOffered());
        QCOMPARE(soundsInCopies(state).size(), std::size_t{0});
        disk.isHeldUp = false;
        QTRY_VERIFY_WITH_TIMEOUT(hasCopyOf(state, work), kLong);
        QCOMPARE(soundsInCopies(state).size(), std::size_t{1});
    }

    void an_offer_without_its_copy_says_so_and_can_be_discarded() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        const std::weak_ptr<float> work = heldSound();
        zemo.openRaw("bell.f32", 0.5F);
        const Sound bell = zemo.sound();
        QTRY_VERIFY_WITH_TIMEOUT(work.expired(), kLong); // it is written then
        const fs::path copy = zemo::test::rescueCopies(rootIn(state)).at(0);
        fs::remove(copy);
        fs::create_symlink(copy.parent_path() / ".lock", copy); // nor is a link to be followed
        zemo.restore();
        QCOMPARE(zemo.result(), QString("The file cannot be read."));
        QCOMPARE(zemo.sound(), bell);
        QVERIFY(zemo.isOffered());
        zemo.discard();
        QVERIFY(!zemo.isOffered());
    }

    void closing_waits_for_the_disk_and_asks_who_does_not() {
        const QTemporaryDir state;
        HeldUpDisk disk;
        RescuedWindow zemo(state);
        platform::services().fileOperations = &disk;
        zemo.rewriteRaw("harp.f32", 0.25F);
        zemo.delegate.window->close();
        const auto panel = [&] { return zemo.delegate.window->findChild<ProgressPanel*>(); };
        QTimer finger;
        connect(&finger, &QTimer::timeout, this, [&] {
            if (panel() != nullptr) {
                panel()->findChild<QPushButton*>("progressCancelButton")->click();
            }
        });
        finger.start(5);
        QTRY_VERIFY_WITH_TIMEOUT(zemo.question() != nullptr, kLong);
        finger.stop();
        zemo.choose("Cancel");
        QCoreApplication::processEvents();
        QVERIFY(zemo.delegate.window->isVisible());
        disk.isHeldUp = false;
        zemo.delegate.window->close();
        QTRY_VERIFY_WITH_TIMEOUT(!zemo.delegate.window->isVisible(), kLong);
        QCOMPARE(soundsInCopies(state).size(), std::size_t{1});
    }

    // Names --------------------------------------------------------------------------------------

    void revert_brings_a_sound_back_with_its_name() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        QCOMPARE(zemo.headline(), QString("harp.f32"));
        zemo.openRaw("bell.f32", 0.5F);
        zemo.revert();
        QCOMPARE(zemo.headline(), QString("harp.f32"));
        zemo.revert();
        QCOMPARE(zemo.headline(), QString("bell.f32"));
    }

    void no_sound_does_not_stand_over_a_sound() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        zemo.delegate.openFileNamed(state.filePath("nothing.f32"));
        QCOMPARE(zemo.headline(), QString("No sound"));
        zemo.revert();
        QCOMPARE(fBuffersize.load(), 1000);
        QCOMPARE(zemo.headline(), QString("harp.f32"));
    }

    void a_save_gives_the_sound_the_files_name() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        zemo.delegate.SaveAsAudioDialog(nullptr);
        auto* const panel = zemo.savePanel();
        auto* const field = panel->findChild<QLineEdit*>("fileNameEdit");
        QCOMPARE(field->text(), QString("harp.caf"));
        field->setText(state.filePath("glass.aif"));
        panel->accept();
        QTRY_COMPARE_WITH_TIMEOUT(zemo.headline(), QString("glass.aif"), kLong);
        zemo.revert();
        QCOMPARE(zemo.headline(), QString("harp.f32"));
        zemo.revert();
        QCOMPARE(zemo.headline(), QString("glass.aif"));
    }

    void the_windows_title_has_the_name_and_the_mark_of_unsaved_changes() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        QCOMPARE(zemo.title(), QString("ZEMO"));
        QVERIFY(!zemo.isModified());
        zemo.openRaw("harp.f32", 0.25F);
        QCOMPARE(zemo.title(), QString("harp.f32[*] – ZEMO"));
        QVERIFY(!zemo.isModified());
        zemo.resample();
        QCOMPARE(zemo.title(), QString("harp.f32[*] – ZEMO"));
        QVERIFY(zemo.isModified());
        zemo.revert();
        QVERIFY(!zemo.isModified());
        zemo.revert();
        QVERIFY(zemo.isModified());
        zemo.delegate.exportFile(state.filePath("harp.flac"));
        QVERIFY(zemo.isModified());
        zemo.delegate.exportFile(state.filePath("harp.wav"));
        QVERIFY(!zemo.isModified());
    }

    void a_name_with_the_marks_own_letters_is_shown_as_it_is() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.openRaw("a[*]b.f32", 0.25F);
        QCOMPARE(zemo.title(), QString("a[*][*]b.f32[*] – ZEMO"));
    }

    void a_copy_brings_the_name_back_extension_and_all() {
        const QTemporaryDir state;
        Sound work;
        {
            RescuedWindow zemo(state);
            zemo.rewriteRaw("harp.v2.f32", 0.25F);
            work = zemo.sound();
        }
        RescuedWindow zemo(state);
        QTRY_VERIFY_WITH_TIMEOUT(zemo.isOffered(), kLong);
        QVERIFY(zemo.offer().startsWith("Not saved last time: harp.v2 ("));
        zemo.restore();
        QCOMPARE(zemo.sound(), work);
        QCOMPARE(zemo.headline(), QString("harp.v2.f32"));
        QVERIFY(zemo.isModified());
    }

    // Closing ------------------------------------------------------------------------------------

    void closing_asks_nothing_where_a_copy_is_kept() {
        const QTemporaryDir state;
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        zemo.delegate.window->close();
        QTRY_VERIFY_WITH_TIMEOUT(!zemo.delegate.window->isVisible(), kLong);
        QVERIFY(zemo.question() == nullptr);
        QCOMPARE(soundsInCopies(state).size(), std::size_t{1});
    }

    void closing_asks_nothing_where_nothing_is_unsaved() {
        const QTemporaryDir state;
        blockFolder(state);
        RescuedWindow zemo(state);
        zemo.openRaw("harp.f32", 0.25F);
        zemo.delegate.window->close();
        QVERIFY(!zemo.delegate.window->isVisible());
    }

    void closing_asks_where_no_copy_could_be_kept() {
        const QTemporaryDir state;
        blockFolder(state);
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        QTRY_VERIFY_WITH_TIMEOUT(zemo.notice().contains(kNoCopy), kLong);
        zemo.delegate.window->close();
        QTRY_VERIFY_WITH_TIMEOUT(zemo.question() != nullptr, kLong);
        QVERIFY(zemo.delegate.window->isVisible());
        QCOMPARE(zemo.choices(), QStringList({"Cancel", "Close Without Saving", "Save"}));
        zemo.choose("Cancel");
        QCoreApplication::processEvents();
        QVERIFY(zemo.delegate.window->isVisible());

        zemo.delegate.window->close();
        QTRY_VERIFY_WITH_TIMEOUT(zemo.question() != nullptr, kLong);
        zemo.question()->close(); // which is no answer
        QCoreApplication::processEvents();
        QVERIFY(zemo.delegate.window->isVisible());

        zemo.delegate.window->close();
        QTRY_VERIFY_WITH_TIMEOUT(zemo.question() != nullptr, kLong);
        zemo.choose("Close Without Saving");
        QTRY_VERIFY_WITH_TIMEOUT(!zemo.delegate.window->isVisible(), kLong);
    }

    void closing_with_save_saves_and_closes() {
        const QTemporaryDir state;
        blockFolder(state);
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        zemo.delegate.window->close();
        QTRY_VERIFY_WITH_TIMEOUT(zemo.question() != nullptr, kLong);
        zemo.choose("Save");
        QTRY_VERIFY_WITH_TIMEOUT(zemo.savePanel() != nullptr, kLong);
        auto* const panel = zemo.savePanel();
        panel->findChild<QLineEdit*>("fileNameEdit")->setText(state.filePath("saved.caf"));
        panel->accept();
        QTRY_VERIFY_WITH_TIMEOUT(!zemo.delegate.window->isVisible(), kLong);
        QVERIFY(QFile::exists(state.filePath("saved.caf")));
    }

    // The folder ---------------------------------------------------------------------------------

    void a_folder_that_is_linked_into_the_root_is_left_alone() {
        const QTemporaryDir state;
        const QTemporaryDir elsewhere;
        const fs::path victim = precious(elsewhere);
        {
            RescuedWindow zemo(state); // has the root made
            zemo.rewriteRaw("harp.f32", 0.25F);
        }
        fs::remove_all(onlyFolderIn(state));
        fs::create_directory_symlink(victim, rootIn(state) / "aBcDeF");
        RescuedWindow zemo(state);
        QTest::qWait(200); // for the offer that is not to come
        if (zemo.isOffered()) {
            zemo.discard();
            QTest::qWait(200);
        }
        QCOMPARE(contentOf(victim / "diary.caf"), std::string("dear diary"));
        QVERIFY(fs::exists(victim / ".lock"));
        QVERIFY(!zemo.isOffered());
    }

    void what_a_linked_copy_points_to_is_not_written_to() {
        const QTemporaryDir state;
        const QTemporaryDir elsewhere;
        const fs::path victim = precious(elsewhere) / "diary.caf";
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        QTRY_COMPARE_WITH_TIMEOUT(soundsInCopies(state).size(), std::size_t{1}, kLong);
        for (const auto& copy : zemo::test::rescueCopies(rootIn(state))) {
            fs::remove(copy);
            fs::create_symlink(victim, copy);
        }
        zemo.resample();
        QTRY_VERIFY_WITH_TIMEOUT(hasCopyOf(state, zemo.sound()), kLong);
        QCOMPARE(contentOf(victim), std::string("dear diary"));
    }

    void a_folder_that_becomes_a_link_is_not_written_to() {
        const QTemporaryDir state;
        const QTemporaryDir elsewhere;
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        QTRY_COMPARE_WITH_TIMEOUT(soundsInCopies(state).size(), std::size_t{1}, kLong);
        const fs::path folder = onlyFolderIn(state);
        fs::rename(folder, folder.string() + "-moved");
        fs::create_directory_symlink(elsewhere.path().toStdString(), folder);
        zemo.resample();
        QTRY_VERIFY_WITH_TIMEOUT(hasCopyOf(state, zemo.sound()), kLong);
        QVERIFY(
            QDir(elsewhere.path())
                .isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot));
    }

    void a_root_that_is_open_to_others_is_refused() {
        const QTemporaryDir state;
        fs::create_directories(rootIn(state));
        fs::permissions(rootIn(state), fs::perms::all);
        RescuedWindow zemo(state);
        zemo.rewriteRaw("harp.f32", 0.25F);
        QTRY_VERIFY_WITH_TIMEOUT(zemo.notice().contains(kNoCopy), kLong);
        QCOMPARE(soundsInCopies(state).size(), std::size_t{0});
    }

    void what_is_not_ours_in_an_abandoned_folder_stays() {
        const QTemporaryDir state;
        {
            RescuedWindow zemo(state);
            zemo.rewriteRaw("harp.f32", 0.25F);
        }
        const fs::path folder = onlyFolderIn(state);
        std::ofstream(folder / "thesis.txt") << "chapter one";
        RescuedWindow zemo(state);
        QTRY_VERIFY_WITH_TIMEOUT(zemo.isOffered(), kLong);
        zemo.discard();
        QTRY_COMPARE_WITH_TIMEOUT(soundsInCopies(state).size(), std::size_t{0}, kLong);
        QTest::qWait(200);
        QCOMPARE(contentOf(folder / "thesis.txt"), std::string("chapter one"));
    }
};

QTEST_MAIN(UnsavedWorkTest)
#include "unsaved_work_test.moc"
