#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/Revert.h"
#include "files_test/SoundFiles.h"
#include "platform/LongWork.h"
#include "platform/Memory.h"
#include "platform_linux/LinuxServices.h"
#include "support/FailingAllocator.h"
#include "support/FakePlatform.h"

/// Operations whose every request for memory is made to fail in turn: that one alone, and then that
/// one with all that follow.
namespace zemo::test {

using Words = std::vector<std::uint32_t>;

/// A text that asks for no memory.
class FixedText {
public:
    void append(std::string_view text);
    void clear() { size_ = 0; }
    std::string_view text() const { return {bytes_.data(), size_}; }

private:
    std::array<char, 4096> bytes_{};
    std::size_t size_ = 0;
};

/// Alerts, and what goes to standard error, a line each. All other lines are forgotten.
class Sentences final : public platform::Alert, public platform::TraceLog {
public:
    FixedText said;

    /// A sentence that a function has returned.
    void add(std::string_view sentence);

    void runCritical(const std::string& title, const std::string& message,
                     const std::string& button) override;
    void print(std::string_view /*text*/) override {}
    void printError(std::string_view text) override { said.append(text); }
    void log(std::string_view /*text*/) override {}
};

/// The question whether a library may be called is a request like any other.
class AskedMemory final : public platform::Memory {
public:
    void preferLargePages(void* /*block*/, std::size_t /*bytes*/) override {}
    bool isGranted(std::size_t bytes) override;
};

/// Long work on another thread, as in the window.
class WorkOnAnotherThread final : public platform::LongWork {
public:
    bool run(const Work& work, platform::Cancel cancel) override;
    void pause(std::chrono::microseconds /*duration*/) override {}
};

/// All that may be lost.
struct State {
    Words sound;
    Words copy; ///< for Revert
    std::vector<double> histories;
    std::map<std::string, Bytes> files; ///< in the folder, hidden ones as well

    bool operator==(const State&) const = default;
};

/// What an operation may say in refusing: one of these.
using Sayings = std::vector<std::string>;

class EveryAllocation : public testing::Test {
protected:
    EveryAllocation();
    ~EveryAllocation() override;

    /// True: it was done. False: it has said why not, in one sentence.
    using Run = std::function<bool()>;

    /// Lets every request of `run` fail, from the state that `prepare` brings about. A refusal
    /// must leave that state or one of the others.
    void failEach(const Run& run, const Sayings& sayings, const std::vector<State>& others = {});

    virtual void prepare();
    virtual State state();

    std::string path(const std::string& name) const { return folder_ + "/" + name; }
    void keep(const std::string& name, const Bytes& content); ///< a file of every start

    FakePlatform platform_;
    Sentences sentences_;
    platform::PosixFileSystem fileSystem_;
    platform::PosixFileOperations fileOperations_;
    AskedMemory memory_;
    undo_struct undo_;
    std::vector<float> sound_; ///< at every start
    /// Libraries whose own requests are granted, by a part of their file's name.
    const char* sparing_ = "";

private:
    std::size_t countRequests(const Run& run, State& result);
    void failOne(const Run& run, const MemoryFault& fault, const Sayings& sayings,
                 const State& expected, const std::vector<State>& left);

    std::string folder_;
    std::map<std::string, Bytes> kept_;
};

} // namespace zemo::test
