#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/Alert.h"
#include "platform/AudioOutput.h"
#include "platform/Clock.h"
#include "platform/FileOperations.h"
#include "platform/FileStream.h"
#include "platform/MidiInput.h"
#include "platform/Services.h"
#include "platform/SystemVersion.h"
#include "platform/TraceLog.h"
#include "playback/Delegate.h"
#include "playback/SharedState.h"

namespace zemo::test {

/// An output that the test pumps call by call. Every call of the interface is kept in `calls`.
class FakeOutput final : public platform::AudioOutputService,
                         public platform::AudioOutputComponent,
                         public platform::AudioOutputUnit {
public:
    // What the test arranges.
    bool hasComponent = true;
    double rate = 48000.0;
    std::map<std::string, platform::Status> failures; ///< status by the name of the call
    std::function<void()> whileStarting;              ///< runs inside start()
    std::function<void()> whileAttended;              ///< runs inside attend()
    bool failed = false;                              ///< what takeFailure() answers once

    // What the test finds.
    std::vector<std::string> calls;
    platform::AudioComponentDescription wanted{};
    platform::AudioStreamBasicDescription format{};
    platform::RenderCallback callback = nullptr;
    void* context = nullptr;
    bool running = false;
    bool inUse = false; ///< stopped, but a call of it is still under way
    int attended = 0;   ///< how often attend() was called
    std::string soundName;

    /// One render call of `frames` frames, made whether or not the unit runs. The output buffer is
    /// filled with `before` first.
    std::vector<float> pump(std::uint32_t frames, float before = 0.0F);

    platform::AudioOutputComponent*
    findNext(const platform::AudioComponentDescription& description) override;
    platform::Status newInstance(platform::AudioOutputUnit*& unit) override;
    platform::Status setRenderCallback(platform::RenderCallback proc, void* userContext) override;
    platform::Status sampleRate(double& hertz) override;
    platform::Status setStreamFormat(const platform::AudioStreamBasicDescription& asked) override;
    platform::Status initialize() override;
    platform::Status start() override;
    platform::Status stop() override;
    bool isRunning() const noexcept override { return running; }
    bool attend() override;
    void setSoundName(const std::string& name) override { soundName = name; }
    bool takeFailure() override;
    std::string notice() const override { return {}; }

private:
    platform::Status called(const std::string& name);
};

/// Keeps every alert instead of showing it.
class RecordingAlert final : public platform::Alert {
public:
    struct Shown {
        std::string title;
        std::string message;
        std::string button;
    };
    std::vector<Shown> shown;

    void runCritical(const std::string& title, const std::string& message,
                     const std::string& button) override;
};

/// Keeps every trace line; `all` has them in their order, each behind "out: ", "err: " or "log: ".
class RecordingTrace final : public platform::TraceLog {
public:
    std::string out;
    std::string err;
    std::vector<std::string> logged;
    std::vector<std::string> all;

    void print(std::string_view text) override;
    void printError(std::string_view text) override;
    void log(std::string_view text) override;
};

/// Time passes only when somebody sleeps; `whileSleeping` runs at every sleep.
class FakeClock final : public platform::Clock {
public:
    std::chrono::nanoseconds time{0};
    std::function<void()> whileSleeping;

    std::chrono::nanoseconds now() override { return time; }
    void sleepFor(std::chrono::nanoseconds amount) override;
};

/// Files in memory. A path that is not among them cannot be opened: ENOENT.
class MemoryFileSystem final : public platform::FileSystem {
public:
    std::map<std::string, std::vector<std::uint8_t>> files;
    std::map<std::string, int> openErrors; ///< error number by path
    std::size_t readableBytes = SIZE_MAX;  ///< reads past this many bytes of a file fall short
    std::size_t unreadableByte = SIZE_MAX; ///< a read that comes to this one ends before it
    std::function<void()> whileReading;    ///< runs before every read, on the reader's thread

    std::unique_ptr<platform::FileStream> openForReading(const std::string& path,
                                                         int& error) override;
};

/// The system calls of a save on files in memory; any of them can be made to fail.
class FakeFileOperations final : public platform::FileOperations {
public:
    explicit FakeFileOperations(MemoryFileSystem& fileSystem) : files_(fileSystem.files) {}

    /// Called before every call with its name and how many calls were made before it. What it
    /// returns other than 0 is the call's answer: a negative error number, or, from "write"
    /// and "writeAt", how many bytes are taken, kTakesNothing for none.
    std::function<long(const std::string& call, std::size_t index)> inject;
    static constexpr long kTakesNothing = INT64_MIN;
    std::vector<std::string> calls;
    bool hasNamelessFiles = true;
    std::map<std::string, std::string> links;                  ///< symbolic links
    std::map<std::string, platform::FileStatus> statuses;      ///< of files that are not plain
    std::map<std::string, std::vector<std::uint8_t>> streamed; ///< what each stream was given
    std::vector<platform::NewFileAccess> created;              ///< of the files that were made
    std::vector<std::string> attributesOf;                     ///< the files that were there
    /// Bytes that beginSync and finishSync were given, from the first on without a gap.
    std::uint64_t begun = 0;
    std::uint64_t finished = 0;

    int followLinks(const std::string& path, std::string& target) override;
    int inspect(const std::string& path, platform::FileStatus& status) override;
    int createNameless(const std::string& folder, platform::NewFileAccess access) override;
    int create(const std::string& path, platform::NewFileAccess access) override;
    int openStream(const std::string& path) override;
    void awaitStream(int descriptor) override;
    int copyAttributes(const std::string& like, int descriptor) override;
    long write(int descriptor, const void* bytes, std::size_t count) override;
    long writeAt(int descriptor, std::uint64_t offset, const void* bytes,
                 std::size_t count) override;
    void beginSync(int descriptor, std::uint64_t from, std::uint64_t bytes) override;
    int finishSync(int descriptor, std::uint64_t from, std::uint64_t bytes) override;
    int sync(int descriptor) override;
    int closeDuplicate(int descriptor) override;
    int close(int descriptor) override;
    int link(int descriptor, const std::string& path) override;
    int linkOver(int descriptor, const std::string& hidden, const std::string& path) override;
    int rename(const std::string& from, const std::string& to) override;
    int syncFolder(const std::string& folder) override;
    int remove(const std::string& path) override;
    std::uint64_t uniqueNumber() override { return ++lastNumber_; }

    std::size_t openDescriptors() const { return open_.size(); }

private:
    long called(const std::string& name);
    /// What a write of that many bytes answers.
    long taken(const std::string& name, std::size_t count);

    std::vector<std::uint8_t>& content(int descriptor);

    std::map<std::string, std::vector<std::uint8_t>>& files_;
    std::map<int, std::string> open_;
    std::map<int, std::vector<std::uint8_t>> nameless_;
    int nextDescriptor_ = 3;
    std::uint64_t lastNumber_ = 0;
};

/// A MIDI service whose sources and failures the test arranges.
class FakeMidi final : public platform::MidiService {
public:
    long sources = 0;
    std::map<std::string, platform::Status> failures; ///< status by the name of the call
    std::vector<std::string> calls;
    platform::MidiReadProc read = nullptr;
    std::function<void()> noticeChanged;
    bool omniAtDelivery = false;

    platform::Status createClient(const char* name, platform::MidiObject& client) override;
    platform::Status createInputPort(platform::MidiObject client, const char* name,
                                     platform::MidiReadProc proc, void* readContext,
                                     platform::MidiObject& port) override;
    long numberOfSources() override { return sources; }
    platform::MidiObject source(long index) override {
        return static_cast<platform::MidiObject>(100 + index);
    }
    platform::Status connectSource(platform::MidiObject port, platform::MidiObject source,
                                   void* sourceContext) override;
    void deliver() override { omniAtDelivery = omni; }
    void startOver() override { calls.emplace_back("startOver"); }
    void onNotice(const std::function<void()>& changed) override { noticeChanged = changed; }

private:
    platform::Status called(const std::string& name, const std::string& detail);
};

class FakeSystemVersion final : public platform::SystemVersion {
public:
    std::int32_t minor = 10;
    std::int32_t minorVersion() override { return minor; }
};

/// Keeps the callback's messages: "updateValue 0.5", "resetMeter", "resetPlayTitle",
/// "IdleCycle 1", "missing buffer".
class RecordingDelegate final : public RenderDelegate {
public:
    std::vector<std::string> messages;

    void updateValue(float level) override;
    void resetMeter() override;
    void resetPlayTitle() override;
    void traceIdleCycle(std::int32_t left) override;
    void traceMissingBuffer() override;
};

/// All the fakes, installed as this process's services for as long as the object lives. Shared
/// state is as at start before and after: empty sound, player at rest, no unit.
class FakePlatform {
public:
    FakePlatform();
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;
    ~FakePlatform();

    FakeOutput output;
    RecordingAlert alert;
    RecordingTrace trace;
    FakeClock clock;
    MemoryFileSystem files;
    FakeFileOperations operations{files};
    FakeMidi midi;
    FakeSystemVersion systemVersion;
    RecordingDelegate delegate;

    /// createOutputUnit over the fake output, at `hertz`.
    void launch(double hertz = 48000.0);

private:
    platform::Services before_;
};

/// Makes `samples` the shared sound, slack and all.
void loadSound(const std::vector<float>& samples);

/// The shared sound as a vector.
std::vector<float> currentSound();

} // namespace zemo::test
