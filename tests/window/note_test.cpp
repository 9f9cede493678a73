#include <QLabel>
#include <QTemporaryDir>
#include <QtTest>
#include <atomic>
#include <cstring>
#include <functional>
#include <thread>

#include "files/AudioFileLayout.h"
#include "playback/SharedState.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::currentSound;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

namespace {

/// Files in which the first read beside the interface thread does something before it reads.
class EventfulFiles final : public platform::FileSystem {
public:
    EventfulFiles(platform::FileSystem& files, std::function<void()> deed)
        : files_(files), deed_(std::move(deed)) {}

    std::unique_ptr<platform::FileStream> openForReading(const std::string& path,
                                                         int& error) override {
        auto stream = files_.openForReading(path, error);
        return stream != nullptr ? std::make_unique<Stream>(*this, std::move(stream)) : nullptr;
    }

private:
    class Stream final : public platform::FileStream {
    public:
        Stream(EventfulFiles& files, std::unique_ptr<platform::FileStream> stream)
            : files_(files), stream_(std::move(stream)) {}
        std::uint64_t size() const override { return stream_->size(); }
        std::size_t readAt(std::uint64_t offset, void* destination, std::size_t count) override {
            if (std::this_thread::get_id() != files_.interface_ && files_.deed_) {
                std::exchange(files_.deed_, nullptr)();
            }
            return stream_->readAt(offset, destination, count);
        }

    private:
        EventfulFiles& files_;
        std::unique_ptr<platform::FileStream> stream_;
    };

    platform::FileSystem& files_;
    std::function<void()> deed_;
    std::thread::id interface_ = std::this_thread::get_id();
};

std::vector<std::uint8_t> cafOf(const std::vector<float>& samples) {
    const std::size_t bytes = samples.size() * sizeof(float);
    std::vector<std::uint8_t> file = cafHeader(streamFormat, bytes);
    file.resize(file.size() + bytes);
    std::memcpy(file.data() + file.size() - bytes, samples.data(), bytes);
    return file;
}

} // namespace

/// Notes, and the service that brings them.
class NoteTest : public QObject {
    Q_OBJECT

    static void send(WindowUnderTest& zemo) {
        const std::vector<std::uint8_t> list{1, 0, 0, 0, 0, 0,    0,  0, 0,
                                             0, 0, 0, 3, 0, 0x99, 60, 64};
        std::thread([&] {
            zemo.platform.midi.read({list.data(), list.size()}, nullptr, nullptr);
        }).join();
    }

    /// Sends notes while the file that the program is started with is read, and lets the window go
    /// on with its events before the reading does.
    static void launchUnderNotes(WindowUnderTest& zemo, int notes) {
        const QTemporaryDir folder;
        const QString path = folder.filePath("noise.caf");
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        zemo.platform.files.files[path.toStdString()] = cafOf(std::vector<float>(100000, 0.5F));
        std::atomic<bool> handled{false};
        EventfulFiles files(zemo.platform.files, [&] {
            for (int i = 0; i < notes; ++i) {
                send(zemo);
            }
            QMetaObject::invokeMethod(
                &zemo.delegate,
                [&] {
                    handled = true;
                    handled.notify_one();
                },
                Qt::QueuedConnection);
            handled.wait(false);
        });
        platform::services().fileSystem = &files;
        zemo.delegate.openAtLaunch(path);
        platform::services().fileSystem = &zemo.platform.files;
        QCOMPARE(fBuffersize.load(), 100000);
        QCoreApplication::processEvents();
    }

    static QString result(WindowUnderTest& zemo) {
        return zemo.delegate.window->findChild<QLabel*>("resultValue")->text();
    }

    static void lookAgain(WindowUnderTest& zemo) {
        zemo.platform.midi.calls.clear();
        zemo.delegate.window->findChild<QAction*>("LookForMidiMenu")->trigger();
    }

private slots:
    void oneThatMeetsTheOpeningAtLaunchPlaysWhatIsOpened() {
        WindowUnderTest zemo;
        launchUnderNotes(zemo, 1);
        QCOMPARE(bufferPlayer.rampState.load(), std::uint32_t{FadeIn});
        QCOMPARE(zemo.delegate.playButton->title(), QString("Stop"));
    }

    void twoThatMeetTheOpeningAtLaunchPlayAndStop() {
        WindowUnderTest zemo;
        launchUnderNotes(zemo, 2);
        QCOMPARE(bufferPlayer.rampState.load(), std::uint32_t{FadeOut});
        zemo.pump(512);
        QCOMPARE(zemo.delegate.playButton->title(), QString("Play"));
    }

    void oneWithoutASoundPlaysNothing() {
        WindowUnderTest zemo;
        send(zemo);
        QCoreApplication::processEvents();
        QCOMPARE(bufferPlayer.rampState.load(), std::uint32_t{Silent});
        QCOMPARE(zemo.delegate.playButton->title(), QString("Play"));
    }

    void theServiceIsMadeAnewAsAtLaunch() {
        WindowUnderTest zemo;
        zemo.platform.midi.sources = 2;
        lookAgain(zemo);
        QCOMPARE(zemo.platform.midi.calls,
                 (std::vector<std::string>{"startOver", "createClient MIDI_Client",
                                           "createInputPort 7 MIDI_Input", "connectSource 9 100",
                                           "connectSource 9 101"}));
        QCOMPARE(result(zemo), QString("MIDI sources: 2"));
        zemo.platform.midi.sources = 0;
        lookAgain(zemo);
        QCOMPARE(result(zemo), QString("MIDI sources: 0"));
        QCOMPARE(zemo.platform.trace.out,
                 std::string("MIDI Sources: 0\nMIDI Sources: 2\nMIDI Sources: 0\n"));
    }

    void aServiceThatFailsWhenItIsMadeAnewEndsNothing() {
        WindowUnderTest zemo;
        loadSound({0.5F});
        for (const char* const call : {"createClient", "createInputPort"}) {
            zemo.platform.midi.failures = {{call, -50}};
            lookAgain(zemo);
            QCOMPARE(result(zemo), QString("MIDI cannot be used"));
            QVERIFY(zemo.platform.alert.shown.empty());
        }
        zemo.platform.midi.failures.clear();
        lookAgain(zemo);
        QCOMPARE(result(zemo), QString("MIDI sources: 0"));
    }
};

QTEST_MAIN(NoteTest)
#include "note_test.moc"
