#include "StressedProgram.h"

#include <algorithm>
#include <chrono>

#include "ForeignSounds.h"
#include "dsp/AmplitudeModulation.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "files/SoundLoader.h"
#include "files_test/SoundFiles.h"
#include "interchange/Import.h"
#include "platform/Format.h"
#include "playback/OutputUnit.h"
#include "playback/SharedState.h"

namespace zemo::test {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kLongest = 1500; ///< samples; beyond them a sound is only made shorter

Samples noise(std::mt19937& random, std::size_t count, float loudness) {
    Samples samples(count);
    std::uniform_real_distribution<float> level(-loudness, loudness);
    std::generate(samples.begin(), samples.end(), [&] { return level(random); });
    return samples;
}

std::string difference(const Samples& is, const Samples& expected) {
    const std::size_t both = std::min(is.size(), expected.size());
    std::size_t i = 0;
    while (i < both && areSame({is[i]}, {expected[i]})) {
        ++i;
    }
    std::string text = platform::format("%zu samples, not %zu", is.size(), expected.size());
    if (i < both) {
        text += platform::format("; sample %zu is %g, not %g", i, static_cast<double>(is[i]),
                                 static_cast<double>(expected[i]));
    }
    return text;
}

/// The kernels of the model have the thread to themselves.
class OnOneThread {
public:
    OnOneThread() { platform::services().workers = nullptr; }
    OnOneThread(const OnOneThread&) = delete;
    OnOneThread& operator=(const OnOneThread&) = delete;
    ~OnOneThread() { platform::services().workers = workers_; }

private:
    platform::Workers* workers_ = platform::services().workers;
};

} // namespace

StressedProgram::StressedProgram(std::uint32_t seed)
    : random_(seed),
      output_(book_, seed + 1),
      work_([this](bool pausing) { handleEvents(pausing); }, seed + 2) {
    platform::Services& services = platform::services();
    services.audioOutput = &output_;
    services.clock = &clock_;
    services.memory = &memory_;
    services.trace = &trace_;
    renderDelegate = &queue_;
    createOutputUnit(&bufferPlayer);
    makeFiles();
    services.workers = &workers_;
    services.longWork = &work_;
    omni = true;
    notes_.emplace(seed + 3);
}

StressedProgram::~StressedProgram() {
    builder_.stop();
    if (bufferPlayer.outputUnit != nullptr) {
        output_.setManners(EagerOutput::Manners::Polite);
        haltOutputUnit();
    }
    renderDelegate = nullptr;
}

// Files ---------------------------------------------------------------------------------------

/// What each file brings is learnt beforehand, while nothing else goes on.
void StressedProgram::makeFiles() {
    platform::services().longWork = nullptr;
    auto& disk = platform_.files.files;
    for (int i = 0; i < 6; ++i) {
        const std::string number = std::to_string(i);
        const Samples samples = noise(random_, 200 + below(1500), i < 4 ? 0.9F : 1.5F);
        disk["/" + number + ".caf"] = cafFile({}, littleFloats(samples));
        disk["/" + number + ".raw"] = i % 2 == 0 ? littleFloats(samples) : bigFloats(samples);
        files_.push_back({.path = "/" + number + ".caf"});
        files_.push_back({.path = "/" + number + ".raw", .swap = i % 2 != 0});
    }
    disk["/refused.caf"] = cafFile({.rate = 1.0}, zeros(4));
    disk["/damaged.caf"] = counting(100);
    disk["/short.raw"] = text("abc");
    for (const char* path : {"/refused.caf", "/damaged.caf", "/short.raw", "/absent.raw"}) {
        files_.push_back({.path = path});
    }
    for (File& file : files_) {
        learnSound(file, [&] { openByExtension(FileUrl(file.path), file.swap); });
    }
    disk["/mono.wav"] = wavOf(48000, wordsOf(noise(random_, 1000, 0.9F)));
    disk["/slow.wav"] = wavOf(44100, wordsOf(noise(random_, 1000, 0.9F)));
    disk["/stereo.wav"] = wavOfZeros(2, 48000, 1000);
    disk["/damaged.wav"] = counting(100);
    for (const char* path : {"/mono.wav", "/slow.wav", "/stereo.wav", "/damaged.wav"}) {
        foreign_.push_back({.path = path});
    }
    for (File& file : foreign_) {
        learnSound(file, [&] { static_cast<void>(importSound(FileUrl(file.path))); });
    }
    emptyBuffer();
}

void StressedProgram::learnSound(File& file, const std::function<void()>& read) {
    loadSound({0.25F});
    const float* const before = fBuffer.load();
    read();
    if (fBuffer.load() != before) {
        file.sound = currentSound();
    }
}

// Events --------------------------------------------------------------------------------------

void StressedProgram::handleEvents(bool pausing) {
    const bool isSilent = bufferPlayer.rampState.load() == Silent;
    const std::uint64_t presses = notes_->takePresses() + (oneIn(isSilent ? 2 : 15) ? 1 : 0);
    presses_ += presses;
    for (std::uint64_t i = 0; i < std::min<std::uint64_t>(presses, 3) && !pausing; ++i) {
        pressPlay();
    }
    if (oneIn(4)) {
        bufferPlayer.rmsMode = static_cast<std::uint8_t>(below(2));
        omni = oneIn(2);
        channel = static_cast<std::uint8_t>(below(3));
    }
    attendPlayback();
}

/// As the play button.
void StressedProgram::pressPlay() {
    if (fBuffersize.load() == 0) {
        value.store(0.0F);
    } else if (bufferPlayer.rampState.load() == Silent) {
        bufferPlay0(0);
    } else {
        bufferStop0();
        value.store(0.0F);
    }
    attendPlayback();
}

void StressedProgram::attendPlayback() {
    superviseOutputUnit();
    queue_.drain(deaf_);
}

void StressedProgram::listen() {
    const std::uint64_t enough = calls() + below(40);
    const auto deadline = clock_.now() + 3ms;
    while (calls() < enough && clock_.now() < deadline) {
        handleEvents(false);
    }
    ++done_["listen"];
}

void StressedProgram::lookAtCopy() {
    if (const std::string wrong = copy_.wrong(); !wrong.empty()) {
        complain(wrong);
    }
    ++done_["rescue copy"];
}

std::string StressedProgram::savedPath() {
    return disk_.folder() / (oneIn(2) ? "saved.caf" : "saved.aif");
}

bool StressedProgram::comeToRest() {
    output_.setManners(EagerOutput::Manners::Polite);
    rude_ = false;
    superviseOutputUnit();
    bufferStop0();
    const auto deadline = clock_.now() + 20s;
    bool more = superviseOutputUnit();
    while (more && clock_.now() < deadline) {
        std::this_thread::yield();
        more = superviseOutputUnit();
    }
    queue_.drain(deaf_);
    const bool atRest = !more && !output_.isRunning() && bufferPlayer.isPlaying == 0 &&
                        bufferPlayer.rampState == Silent;
    if (!atRest) {
        complain("the player does not come to rest: state " +
                 std::to_string(bufferPlayer.rampState.load()) + ", playing " +
                 std::to_string(bufferPlayer.isPlaying.load()) + (more ? ", unit in use" : ""));
    }
    ++done_["rest"];
    return atRest;
}

void StressedProgram::changeManners() {
    if (comeToRest() && oneIn(2)) {
        output_.setManners(EagerOutput::Manners::Rude);
        rude_ = true;
    }
}

// What a person does --------------------------------------------------------------------------

void StressedProgram::doSomething() {
    switch (below(20)) {
    case 0:
    case 1:
    case 2:
        return open(files_[below(static_cast<std::uint32_t>(files_.size()))]);
    case 3:
        return import(foreign_[below(static_cast<std::uint32_t>(foreign_.size()))]);
    case 4:
        return openSaved();
    case 5:
        return oneIn(3) ? lookAtCopy() : hold();
    case 6:
    case 7:
        return save();
    case 8:
    case 9:
        return revertSound();
    case 10:
        return oneIn(4) ? changeManners() : listen();
    case 11:
    case 12:
    case 13:
        return listen();
    default:
        return transform();
    }
}

template <typename Change>
bool StressedProgram::changeTo(const Samples& made, const Change& change) {
    book_.announce(made);
    const bool came = change();
    came ? book_.publish() : book_.withdraw();
    return came;
}

void StressedProgram::open(const File& file) {
    const SoundChange change(*this);
    bool cancelled = false;
    const bool came = changeTo(file.sound.value_or(model_.sound), [&] {
        cancelled = openByExtension(FileUrl(file.path), file.swap).cancelled;
        return !cancelled && file.sound.has_value();
    });
    if (came) {
        model_.sound = *file.sound;
    }
    check("open " + file.path);
    if (!cancelled) {
        finish(oneIn(4));
    }
    ++done_[cancelled ? "open, cancelled" : "open"];
}

void StressedProgram::openSaved() {
    const std::string path = savedPath();
    if (saved_.count(path) > 0) {
        open({.path = path, .sound = saved_.at(path)});
    }
}

void StressedProgram::finish(bool force) {
    float peak = 0.0F;
    const Samples normalized = model_.normalized(force);
    changeTo(normalized, [&] {
        finishOpening("", &peak, force);
        return true;
    });
    model_.sound = normalized;
    check("finishOpening");
}

void StressedProgram::import(const File& file) {
    const SoundChange change(*this);
    const bool came = changeTo(file.sound.value_or(model_.sound),
                               [&] { return static_cast<bool>(importSound(FileUrl(file.path))); });
    if (came) {
        model_.sound = *file.sound;
    }
    ++done_[work_.wasCancelled() ? "import, cancelled" : "import"];
    check("import " + file.path);
}

void StressedProgram::transform() {
    if (model_.sound.size() < static_cast<std::size_t>(dsp::kFewestKnots)) {
        return;
    }
    const float frequency = 100.0F + static_cast<float>(below(5000));
    const float index = static_cast<float>(below(5)) / 4.0F;
    const OnOneThread model;
    switch (below(5)) {
    case 0: {
        const float ratio = (model_.sound.size() > kLongest ? 0.3F : 0.5F) +
                            static_cast<float>(below(100)) / 100.0F;
        return transformTo("resample", model_.resampled(ratio),
                           [=, this] { return resampleBuffer(ratio, &undo_); });
    }
    case 1:
        return transformTo("AM", model_.amplitudeModulated(frequency, index),
                           [=, this] { return amBuffer(frequency, index, &undo_); });
    case 2: {
        const bool upper = oneIn(2);
        const auto sideband = upper ? dsp::Sideband::Upper : dsp::Sideband::Lower;
        return transformTo(upper ? "upper sideband" : "lower sideband",
                           model_.oneSideband(sideband, frequency, index),
                           [=, this] { return ssbmBuffer(upper, frequency, index, &undo_); });
    }
    case 3:
        return transformTo("FM", model_.phaseModulated(frequency, index, 16.0F),
                           [=, this] { return pmBuffer(frequency, index, 16.0F, &undo_); });
    default: {
        const HdSettings s{.two = oneIn(2),
                           .four = oneIn(2),
                           .attack = static_cast<std::int32_t>(below(500)),
                           .scale = oneIn(2),
                           .hpSelect = static_cast<std::int32_t>(below(3)),
                           .slope = 0.99,
                           .mix = 0.5F,
                           .knee = 0.5F,
                           .comp = 0.25F};
        return transformTo("HD", model_.withHarmonics(s), [=, this] {
            return hd(s.two, s.four, s.six, s.attack, s.scale, s.hpSelect, s.slope, s.mix, s.knee,
                      s.comp, &undo_);
        });
    }
    }
}

void StressedProgram::transformTo(const char* name, Samples made,
                                  const std::function<Refusal()>& transformation) {
    platform::services().workers = &workers_;
    Refusal refusal;
    changeTo(made, [&] {
        fallIdle();
        const SoundChange change(*this);
        refusal = transformation();
        return !refusal;
    });
    if (!refusal) {
        model_.accept(std::move(made));
        copy_.keep(model_.sound);
    } else {
        model_.reject();
        if (refusal->category != platform::ErrorCategory::Cancelled) {
            complain(std::string(name) + ": " + std::string(refusal->sentence));
        }
    }
    ++done_[std::string(name) + (refusal ? ", cancelled" : "")];
    check(name);
}

void StressedProgram::revertSound() {
    if (undo_.bufsize > 0) {
        const SoundChange change(*this);
        changeTo(model_.copy, [&] {
            revert(undo_);
            return true;
        });
        model_.revert();
        copy_.keep(model_.sound);
        ++done_["Revert"];
        check("Revert");
    }
}

void StressedProgram::hold() {
    if (fBuffersize.load() > 0) {
        held_ = Held{HeldSound::take(), model_.sound};
        ++done_["hold"];
    }
}

/// What is held, perhaps for long, or the sound as it is. The pair behind the sound is saved too.
void StressedProgram::save() {
    if (!held_ && model_.sound.empty()) {
        return;
    }
    Held held = held_ ? std::move(*held_) : Held{HeldSound::take(), model_.sound};
    held_.reset();
    const auto readable = held.sound.readable();
    Samples expected(readable.begin(), readable.end());
    expected.resize(held.samples.size() + 2);
    if (!areSame(held.samples, Samples(expected.begin(), expected.end() - 2))) {
        complain("a sound that is held has changed");
    }
    const std::string path = savedPath();
    const bool saved = saveHeldSound(FileUrl(path), held.sound);
    if (saved) {
        saved_[path] = expected;
        copy_.drop();
    }
    ++done_[saved ? "save" : "save, cancelled"];
    check("save");
}

// What is to be true --------------------------------------------------------------------------

void StressedProgram::check(const std::string& after) {
    if (!areSame(currentSound(), model_.sound)) {
        complain("not the sound that is expected after " + after + ": " +
                 difference(currentSound(), model_.sound));
    }
    if (!areSame(samplesOf(undo_), model_.copy)) {
        complain("not the copy that is expected after " + after);
    }
    if (!model_.hasHistories()) {
        complain("not the filters' histories that are expected after " + after);
    }
}

void StressedProgram::complain(const std::string& what) {
    if (wrong_.empty()) {
        wrong_ = what;
    }
}

std::string StressedProgram::wrong() const {
    return wrong_.empty() ? output_.firstWrong() : wrong_;
}

} // namespace zemo::test
