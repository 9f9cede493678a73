#pragma once

#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "BesideWork.h"
#include "EagerOutput.h"
#include "KeptCopy.h"
#include "NotePlayer.h"
#include "SoundBook.h"
#include "SoundModel.h"
#include "files/AudioFileWriter.h"
#include "overview/OverviewBuilder.h"
#include "platform_linux/LinuxServices.h"
#include "playback/RenderMessageQueue.h"
#include "support/FakePlatform.h"

namespace zemo::test {

/// The program without its window: the main thread does at random what a person can have it do,
/// with all the threads beside it that the program has. All [main].
class StressedProgram {
public:
    explicit StressedProgram(std::uint32_t seed);
    StressedProgram(const StressedProgram&) = delete;
    StressedProgram& operator=(const StressedProgram&) = delete;
    ~StressedProgram();

    /// One thing that a person does, from its beginning to its end.
    void doSomething();
    /// Asks for the end of the play and waits for it. Whether it came.
    bool comeToRest();
    /// What was not as it should be, empty when all was.
    std::string wrong() const;

    std::uint64_t calls() const noexcept { return output_.calls(); }
    std::uint64_t callsWithSound() const noexcept { return output_.callsWithSound(); }
    std::uint64_t cancelled() const noexcept { return work_.cancelled(); }
    std::uint64_t midiLists() const noexcept { return notes_->lists(); }
    std::uint64_t notes() const noexcept { return presses_; }
    const std::map<std::string, std::uint64_t>& done() const noexcept { return done_; }

private:
    /// Nobody reads the lines; they come from any thread.
    struct NoTrace final : platform::TraceLog {
        void print(std::string_view) override {}
        void printError(std::string_view) override {}
        void log(std::string_view) override {}
    };
    /// Gets what the queue has for the window.
    struct Deaf final : RenderDelegate {
        void updateValue(float) override {}
        void repeatUpdateValue(float, std::uint32_t) override {}
        void resetMeter() override {}
        void resetPlayTitle() override {}
        void traceIdleCycle(std::int32_t) override {}
        void traceMissingBuffer() override {}
    };
    /// While one lives nothing else reads the sound.
    class SoundChange {
    public:
        explicit SoundChange(StressedProgram& program) : program_(program) {
            program_.builder_.stop();
        }
        SoundChange(const SoundChange&) = delete;
        SoundChange& operator=(const SoundChange&) = delete;
        ~SoundChange() { program_.builder_.rebuild(soundSamples(), R); }

    private:
        StressedProgram& program_;
    };
    /// A file, and what the sound is behind it; nothing: what it was.
    struct File {
        std::string path;
        std::optional<Samples> sound{};
        bool swap = false;
    };
    struct Held {
        HeldSound sound;
        Samples samples;
    };

    void makeFiles();
    void learnSound(File& file, const std::function<void()>& read);
    void handleEvents(bool pausing);
    void pressPlay();
    void attendPlayback();
    void listen();
    void changeManners();
    void lookAtCopy();
    std::string savedPath();

    void open(const File& file);
    void openSaved();
    void import(const File& file);
    void finish(bool force);
    void transform();
    void transformTo(const char* name, Samples made,
                     const std::function<Refusal()>& transformation);
    void revertSound();
    void hold();
    void save();

    /// Announces `made`, lets `change` happen, and publishes what it says came of it.
    template <typename Change> bool changeTo(const Samples& made, const Change& change);
    void check(const std::string& after);
    void complain(const std::string& what);
    std::uint32_t below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(random_() % limit);
    }
    bool oneIn(std::uint32_t times) { return below(times) == 0; }

    FakePlatform platform_;
    platform::SteadyClock clock_;
    platform::LinuxMemory memory_;
    platform::ThreadWorkers workers_{3};
    NoTrace trace_;
    Deaf deaf_;
    RenderMessageQueue queue_;
    std::mt19937 random_;
    SoundBook book_;
    EagerOutput output_;
    SoundModel model_;
    StressedDisk disk_{platform_.files};
    KeptCopy copy_{disk_.folder() / "rescue"};
    undo_struct undo_;
    std::optional<Held> held_;
    std::vector<File> files_;
    std::vector<File> foreign_;
    std::map<std::string, Samples> saved_;
    std::map<std::string, std::uint64_t> done_;
    std::string wrong_;
    std::uint64_t presses_ = 0;
    bool rude_ = false;
    overview::OverviewBuilder builder_{[](const overview::Overview&) {}};
    BesideWork work_;
    std::optional<NotePlayer> notes_; ///< last: its thread takes the services as they are
};

} // namespace zemo::test
