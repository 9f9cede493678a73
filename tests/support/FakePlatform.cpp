#include "support/FakePlatform.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>
#include <utility>

#include "playback/OutputUnit.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo::test {
namespace {

class MemoryFileStream final : public platform::FileStream {
public:
    MemoryFileStream(const std::vector<std::uint8_t>& bytes, std::size_t readable,
                     std::size_t unreadableByte, std::function<void()> whileReading)
        : bytes_(bytes),
          readable_(std::min(readable, bytes.size())),
          unreadableByte_(unreadableByte),
          whileReading_(std::move(whileReading)) {}

    std::uint64_t size() const override { return bytes_.size(); }

    std::size_t readAt(std::uint64_t offset, void* destination, std::size_t count) override {
        if (whileReading_) {
            whileReading_();
        }
        if (offset >= readable_) {
            return 0;
        }
        std::size_t read = std::min<std::size_t>(count, readable_ - offset);
        if (unreadableByte_ >= offset) {
            read = std::min<std::size_t>(read, unreadableByte_ - offset);
        }
        std::memcpy(destination, bytes_.data() + offset, read);
        return read;
    }

private:
    const std::vector<std::uint8_t>& bytes_;
    std::size_t readable_;
    std::size_t unreadableByte_;
    std::function<void()> whileReading_;
};

void resetSharedState() {
    bufferPlayer.outputUnit = nullptr;
    emptyBuffer();
    bufferPlayer.readPosition = 0.0;
    bufferPlayer.rampState = Silent;
    bufferPlayer.isPlaying = 0;
    bufferPlayer.buffer = nullptr;
    bufferPlayer.rmsMode = 0;
    bufferPlayer.idleCycles = 0;
    totalFrames = 0;
    value = 0.0F;
    R = 0.0;
    streamFormat = {};
    renderDelegate = nullptr;
}

} // namespace

std::vector<float> FakeOutput::pump(std::uint32_t frames, float before) {
    std::vector<float> output(frames, before);
    platform::RenderActionFlags flags = 0;
    const platform::AudioTimeStamp time{};
    platform::AudioBufferList data{
        1, {{1, frames * static_cast<std::uint32_t>(sizeof(float)), output.data()}}};
    callback(context, &flags, &time, 0, frames, &data);
    return output;
}

platform::Status FakeOutput::called(const std::string& name) {
    calls.push_back(name);
    const auto failure = failures.find(name);
    return failure != failures.end() ? failure->second : platform::kNoError;
}

platform::AudioOutputComponent*
FakeOutput::findNext(const platform::AudioComponentDescription& description) {
    called("findNext");
    wanted = description;
    return hasComponent ? this : nullptr;
}

platform::Status FakeOutput::newInstance(platform::AudioOutputUnit*& unit) {
    unit = this;
    return called("newInstance");
}

platform::Status FakeOutput::setRenderCallback(platform::RenderCallback proc, void* userContext) {
    callback = proc;
    context = userContext;
    return called("setRenderCallback");
}

platform::Status FakeOutput::sampleRate(double& hertz) {
    hertz = rate;
    return called("sampleRate");
}

platform::Status FakeOutput::setStreamFormat(const platform::AudioStreamBasicDescription& asked) {
    format = asked;
    return called("setStreamFormat");
}

platform::Status FakeOutput::initialize() {
    return called("initialize");
}

platform::Status FakeOutput::start() {
    const platform::Status status = called("start");
    if (status == platform::kNoError) {
        running = true;
        if (whileStarting) {
            whileStarting();
        }
    }
    return status;
}

platform::Status FakeOutput::stop() {
    running = false;
    return called("stop");
}

bool FakeOutput::attend() {
    ++attended;
    if (whileAttended) {
        whileAttended();
    }
    return running || inUse;
}

bool FakeOutput::takeFailure() {
    return std::exchange(failed, false);
}

void RecordingAlert::runCritical(const std::string& title, const std::string& message,
                                 const std::string& button) {
    shown.push_back({title, message, button});
}

void RecordingTrace::print(std::string_view text) {
    out += text;
    all.push_back("out: " + std::string(text));
}

void RecordingTrace::printError(std::string_view text) {
    err += text;
    all.push_back("err: " + std::string(text));
}

void RecordingTrace::log(std::string_view text) {
    logged.emplace_back(text);
    all.push_back("log: " + std::string(text));
}

void FakeClock::sleepFor(std::chrono::nanoseconds amount) {
    time += amount;
    if (whileSleeping) {
        whileSleeping();
    }
}

std::unique_ptr<platform::FileStream> MemoryFileSystem::openForReading(const std::string& path,
                                                                       int& error) {
    const auto refused = openErrors.find(path);
    const auto found = files.find(path);
    if (refused != openErrors.end() || found == files.end()) {
        error = refused != openErrors.end() ? refused->second : ENOENT;
        return nullptr;
    }
    return std::make_unique<MemoryFileStream>(found->second, readableBytes, unreadableByte,
                                              whileReading);
}

long FakeFileOperations::called(const std::string& name) {
    const std::size_t index = calls.size();
    calls.push_back(name);
    return inject ? inject(name, index) : 0;
}

int FakeFileOperations::followLinks(const std::string& path, std::string& target) {
    const auto link = links.find(path);
    target = link != links.end() ? link->second : path;
    return static_cast<int>(called("followLinks"));
}

int FakeFileOperations::inspect(const std::string& path, platform::FileStatus& status) {
    const auto known = statuses.find(path);
    if (known != statuses.end()) {
        status = known->second;
    } else if (files_.count(path) > 0) {
        status = {.exists = true, .isRegular = true, .isWritable = true};
    }
    return static_cast<int>(called("inspect"));
}

std::vector<std::uint8_t>& FakeFileOperations::content(int descriptor) {
    const auto nameless = nameless_.find(descriptor);
    if (nameless != nameless_.end()) {
        return nameless->second;
    }
    const std::string& path = open_.at(descriptor);
    const auto stream = streamed.find(path);
    return stream != streamed.end() ? stream->second : files_[path];
}

int FakeFileOperations::createNameless(const std::string& /*folder*/,
                                       platform::NewFileAccess access) {
    if (const long answer = called("createNameless")) {
        return static_cast<int>(answer);
    }
    if (!hasNamelessFiles) {
        return -EOPNOTSUPP;
    }
    created.push_back(access);
    nameless_[nextDescriptor_] = {};
    open_[nextDescriptor_] = {};
    return nextDescriptor_++;
}

int FakeFileOperations::create(const std::string& path, platform::NewFileAccess access) {
    if (const long answer = called("create")) {
        return static_cast<int>(answer);
    }
    if (files_.count(path) > 0) {
        return -EEXIST;
    }
    created.push_back(access);
    files_[path] = {};
    open_[nextDescriptor_] = path;
    return nextDescriptor_++;
}

int FakeFileOperations::openStream(const std::string& path) {
    if (const long answer = called("openStream")) {
        return static_cast<int>(answer);
    }
    streamed[path];
    open_[nextDescriptor_] = path;
    return nextDescriptor_++;
}

void FakeFileOperations::awaitStream(int /*descriptor*/) {
    called("awaitStream");
}

int FakeFileOperations::copyAttributes(const std::string& like, int /*descriptor*/) {
    if (files_.count(like) > 0) {
        attributesOf.push_back(like);
    }
    return static_cast<int>(called("copyAttributes"));
}

long FakeFileOperations::taken(const std::string& name, std::size_t count) {
    const long answer = called(name);
    if (answer < 0) {
        return answer == kTakesNothing ? 0 : answer;
    }
    return answer > 0 ? std::min(static_cast<long>(count), answer) : static_cast<long>(count);
}

long FakeFileOperations::write(int descriptor, const void* bytes, std::size_t count) {
    const long answer = taken("write", count);
    if (answer > 0) {
        const auto* const first = static_cast<const std::uint8_t*>(bytes);
        std::vector<std::uint8_t>& file = content(descriptor);
        file.insert(file.end(), first, first + answer);
    }
    return answer;
}

long FakeFileOperations::writeAt(int descriptor, std::uint64_t offset, const void* bytes,
                                 std::size_t count) {
    const long answer = taken("writeAt", count);
    if (answer > 0) {
        std::vector<std::uint8_t>& file = content(descriptor);
        file.resize(std::max<std::size_t>(file.size(), offset + static_cast<std::size_t>(answer)));
        std::memcpy(file.data() + offset, bytes, static_cast<std::size_t>(answer));
    }
    return answer;
}

void FakeFileOperations::beginSync(int /*descriptor*/, std::uint64_t from, std::uint64_t bytes) {
    begun += from == begun ? bytes : 0;
}

int FakeFileOperations::finishSync(int /*descriptor*/, std::uint64_t from, std::uint64_t bytes) {
    const long answer = called("finishSync");
    finished += answer == 0 && from == finished ? bytes : 0;
    return static_cast<int>(answer);
}

int FakeFileOperations::sync(int /*descriptor*/) {
    return static_cast<int>(called("sync"));
}

int FakeFileOperations::closeDuplicate(int /*descriptor*/) {
    return static_cast<int>(called("closeDuplicate"));
}

int FakeFileOperations::close(int descriptor) {
    open_.erase(descriptor);
    nameless_.erase(descriptor);
    return static_cast<int>(called("close"));
}

int FakeFileOperations::link(int descriptor, const std::string& path) {
    if (const long answer = called("link")) {
        return static_cast<int>(answer);
    }
    if (files_.count(path) > 0) {
        return -EEXIST;
    }
    files_[path] = nameless_.at(descriptor);
    return 0;
}

int FakeFileOperations::linkOver(int descriptor, const std::string& hidden,
                                 const std::string& path) {
    if (const long answer = called("linkOver")) {
        return static_cast<int>(answer);
    }
    if (files_.count(hidden) > 0) {
        return -EEXIST;
    }
    files_[path] = nameless_.at(descriptor);
    return 0;
}

int FakeFileOperations::rename(const std::string& from, const std::string& to) {
    if (const long answer = called("rename")) {
        return static_cast<int>(answer);
    }
    files_[to] = files_.at(from);
    files_.erase(from);
    return 0;
}

int FakeFileOperations::syncFolder(const std::string& /*folder*/) {
    return static_cast<int>(called("syncFolder"));
}

int FakeFileOperations::remove(const std::string& path) {
    if (const long answer = called("remove")) {
        return static_cast<int>(answer);
    }
    return files_.erase(path) > 0 ? 0 : -ENOENT;
}

platform::Status FakeMidi::called(const std::string& name, const std::string& detail) {
    calls.push_back(name + " " + detail);
    const auto failure = failures.find(name);
    return failure != failures.end() ? failure->second : platform::kNoError;
}

platform::Status FakeMidi::createClient(const char* name, platform::MidiObject& client) {
    client = 7;
    return called("createClient", name);
}

platform::Status FakeMidi::createInputPort(platform::MidiObject client, const char* name,
                                           platform::MidiReadProc proc, void* /*readContext*/,
                                           platform::MidiObject& port) {
    read = proc;
    port = 9;
    return called("createInputPort", std::to_string(client) + " " + name);
}

platform::Status FakeMidi::connectSource(platform::MidiObject port, platform::MidiObject source,
                                         void* /*sourceContext*/) {
    return called("connectSource", std::to_string(port) + " " + std::to_string(source));
}

void RecordingDelegate::updateValue(float level) {
    std::ostringstream text;
    text << "updateValue " << level;
    messages.push_back(text.str());
}

void RecordingDelegate::resetMeter() {
    messages.emplace_back("resetMeter");
}

void RecordingDelegate::resetPlayTitle() {
    messages.emplace_back("resetPlayTitle");
}

void RecordingDelegate::traceIdleCycle(std::int32_t left) {
    messages.push_back("IdleCycle " + std::to_string(left));
}

void RecordingDelegate::traceMissingBuffer() {
    messages.emplace_back("missing buffer");
}

FakePlatform::FakePlatform() : before_(platform::services()) {
    platform::services() = {.audioOutput = &output,
                            .alert = &alert,
                            .clock = &clock,
                            .fileOperations = &operations,
                            .fileSystem = &files,
                            .midi = &midi,
                            .systemVersion = &systemVersion,
                            .trace = &trace};
    resetSharedState();
}

FakePlatform::~FakePlatform() {
    resetSharedState();
    platform::services() = before_;
}

void FakePlatform::launch(double hertz) {
    output.rate = hertz;
    renderDelegate = &delegate;
    createOutputUnit(&bufferPlayer);
}

void loadSound(const std::vector<float>& samples) {
    const auto count = static_cast<std::int64_t>(samples.size());
    SampleBlock block = allocateSamples(count);
    std::copy(samples.begin(), samples.end(), block.get());
    replaceBuffer(std::move(block), count);
}

std::vector<float> currentSound() {
    const float* const samples = fBuffer.load();
    return samples == nullptr ? std::vector<float>()
                              : std::vector<float>(samples, samples + fBuffersize.load());
}

} // namespace zemo::test
