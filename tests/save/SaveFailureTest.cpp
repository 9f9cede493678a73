#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <gtest/gtest.h>

#include "SavedFiles.h"
#include "files/AtomicFile.h"
#include "files/AudioFileWriter.h"
#include "files_test/SoundChecks.h"
#include "platform/Progress.h"
#include "support/CancellingWork.h"
#include "support/FakePlatform.h"

/// Every system call of a save fails in turn, in every way.
namespace zemo::test {
namespace {

constexpr const char* kTarget = "/s/x";
constexpr long kSignals = 300; ///< in a row, where a call is interrupted "for good"

/// Four errors, and from a write one byte or none.
constexpr std::array<long, 6> kAnswers{-ENOSPC, -EIO, -EINTR,
                                       -EDQUOT, 1,    FakeFileOperations::kTakesNothing};

const Bytes& oldFile() {
    static const Bytes bytes = counting(77);
    return bytes;
}

/// How a sound is saved: by which function, as which kind of file, on which kind of disk.
struct Way {
    const char* name;
    const char* extension;
    bool fromCopy;
    bool nameless = true;
};
constexpr std::array kWays{Way{"caf", ".caf", true}, Way{"aif", ".aif", true},
                           Way{"caf without a copy", ".caf", false},
                           Way{"caf under a hidden name", ".caf", true, false},
                           Way{"aif under a hidden name", ".aif", true, false}};

void PrintTo(const Way& way, std::ostream* out) {
    *out << way.name;
}

std::string targetOf(const Way& way) {
    return std::string(kTarget) + way.extension;
}

const std::vector<float>& sound() {
    static const std::vector<float> samples{0.25F, -0.5F, 1.0F};
    return samples;
}

Bytes newFile(const Way& way) {
    const std::vector<std::uint32_t> words{0x3E800000, 0xBF000000, 0x3F800000, 0, 0};
    return way.extension == std::string(".caf") ? expectedCaf(words) : expectedAiffC(words);
}

bool save(const Way& way) {
    if (!way.fromCopy) {
        return saveSound(FileUrl(targetOf(way)));
    }
    SoundCopy copy = SoundCopy::take();
    return saveAsAudioFile(FileUrl(targetOf(way)), copy.bytes());
}

/// A save over an old file, and what is found wrong around it.
struct Scene {
    explicit Scene(const Way& way) : way_(way) {
        platform.launch(48000.0);
        loadSound(sound());
        platform.files.files[targetOf(way)] = oldFile();
        platform.operations.hasNamelessFiles = way.nameless;
    }

    /// All that is not as it must be, when the target has to hold `target`.
    std::string faults(const Bytes& target) const {
        std::string found;
        if (platform.files.files.at(targetOf(way_)) != target) {
            found += " the target;";
        }
        if (platform.files.files.size() != 1) {
            found += " a temporary file;";
        }
        if (platform.operations.openDescriptors() != 0) {
            found += " an open descriptor;";
        }
        if (currentSound() != sound() || !slackIsZero()) {
            found += " the sound;";
        }
        return found.empty() ? "all is well" : "wrong:" + found;
    }

    FakePlatform platform;

private:
    Way way_;
};

/// Says on standard error what it is told, and what is wrong at that moment.
class Witness final : public platform::Alert {
public:
    Witness(const Scene& scene, Bytes target) : scene_(scene), target_(std::move(target)) {}
    void runCritical(const std::string& title, const std::string& message,
                     const std::string& button) override {
        std::string line = title + "|" + message + "|" + button + "|" + scene_.faults(target_);
        std::replace(line.begin(), line.end(), '\n', ' ');
        std::fprintf(stderr, "%s\n", line.c_str());
    }

private:
    const Scene& scene_;
    Bytes target_;
};

/// The names of a save's calls in their order.
std::vector<std::string> callsOfASave(const Way& way) {
    Scene scene(way);
    EXPECT_TRUE(save(way));
    return scene.platform.operations.calls;
}

/// One failure: the call with that index gives the answer, once or for good (that is, every later
/// call of the same name as well).
struct Failure {
    std::string call;
    std::size_t index = 0;
    long answer = 0;
    bool forGood = false;
    bool isDone = false; ///< the target was replaced before

    std::string description() const {
        return call + " " + std::to_string(index) + " answers " + std::to_string(answer) +
               (forGood ? " for good" : " once");
    }
};

/// A signal is not a failure; to be interrupted for good is to be interrupted kSignals times.
auto injectorOf(const Failure& failure) {
    return [failure, times = 0L](const std::string& call, std::size_t index) mutable -> long {
        const long most = !failure.forGood ? 1 : failure.answer == -EINTR ? kSignals : LONG_MAX;
        if (call != failure.call || index < failure.index || times == most) {
            return 0;
        }
        ++times;
        return failure.answer;
    };
}

enum class End : std::uint8_t { Saved, NotSaved, FormatError, WritingError };

/// Without nameless files the save goes on under a hidden name, whatever the reason. Once the
/// target is replaced the sound is saved, whatever fails then.
End expectedEnd(const Failure& failure) {
    if (failure.answer == -EINTR || failure.answer > 0 || failure.isDone ||
        failure.call == "createNameless") {
        return End::Saved;
    }
    if (failure.call == "close" || failure.call == "closeDuplicate") {
        return End::NotSaved;
    }
    const bool creates =
        failure.call == "followLinks" || failure.call == "inspect" || failure.call == "create";
    return creates ? End::FormatError : End::WritingError;
}

void expectEnd(const Way& way, const Failure& failure) {
    Scene scene(way);
    scene.platform.operations.inject = injectorOf(failure);
    const End end = expectedEnd(failure);
    if (end == End::Saved || end == End::NotSaved) {
        EXPECT_EQ(save(way), end == End::Saved);
        EXPECT_EQ(scene.faults(end == End::Saved ? newFile(way) : oldFile()), "all is well");
        EXPECT_TRUE(scene.platform.alert.shown.empty());
        return;
    }
    Witness witness(scene, oldFile());
    platform::services().alert = &witness;
    const long code = failure.answer == FakeFileOperations::kTakesNothing ? EIO : -failure.answer;
    const std::string operation =
        end == End::FormatError ? "Format error: " : "File writing error: ";
    EXPECT_EXIT(save(way), testing::ExitedWithCode(1),
                "^ZEMO: Error:\\|" + operation + " \\(" + std::to_string(code) +
                    "\\) Application will quit\\|OK\\|all is well\n$");
}

class SaveFailure : public testing::TestWithParam<Way> {};

TEST_P(SaveFailure, LeavesTheOldFileOrTheNewOneWholeAndNothingElse) {
    const auto calls = callsOfASave(GetParam());
    ASSERT_GE(calls.size(), 9U);
    const auto replacing = std::find_if(calls.begin(), calls.end(), [](const std::string& call) {
        return call == "rename" || call == "linkOver";
    });
    ASSERT_NE(replacing, calls.end());
    int failures = 0;
    for (std::size_t index = 0; index < calls.size(); ++index) {
        for (const long answer : kAnswers) {
            const bool onlyOfWrites = answer == 1 || answer == FakeFileOperations::kTakesNothing;
            if (onlyOfWrites && calls[index] != "write") {
                continue;
            }
            for (const bool forGood : {false, true}) {
                const Failure failure{calls[index], index, answer, forGood,
                                      static_cast<long>(index) > replacing - calls.begin()};
                SCOPED_TRACE(failure.description());
                expectEnd(GetParam(), failure);
                ++failures;
            }
        }
    }
    EXPECT_GE(failures, static_cast<int>(calls.size()) * 8);
}

/// Killed at any moment, the program leaves what the folder holds between two calls.
TEST_P(SaveFailure, BetweenAnyTwoCallsTheTargetIsTheOldFileOrTheNewOneWhole) {
    Scene scene(GetParam());
    std::size_t moments = 0;
    bool isNew = false;
    const std::size_t names = GetParam().nameless ? 1 : 2;
    scene.platform.operations.inject = [&](const std::string& call, std::size_t) {
        EXPECT_LE(scene.platform.files.files.size(), names) << call;
        const Bytes& target = scene.platform.files.files.at(targetOf(GetParam()));
        isNew = isNew || target == newFile(GetParam());
        EXPECT_TRUE(target == (isNew ? newFile(GetParam()) : oldFile())) << call;
        ++moments;
        return call == "write" && moments % 2 == 0 ? 1L : 0L;
    };
    EXPECT_TRUE(save(GetParam()));
    EXPECT_GT(moments, 9U);
}

TEST_P(SaveFailure, WhereNothingCanBeRemovedAtMostAHiddenFileIsLeft) {
    Scene scene(GetParam());
    Witness witness(scene, oldFile());
    platform::services().alert = &witness;
    scene.platform.operations.inject = [](const std::string& call, std::size_t) -> long {
        return call == "sync" || call == "remove" ? -EIO : 0;
    };
    EXPECT_EXIT(save(GetParam()), testing::ExitedWithCode(1),
                std::string("File writing error:  \\(5\\).*\\|") +
                    (GetParam().nameless ? "all is well" : "wrong: a temporary file;") + "\n$");
}

TEST_P(SaveFailure, TheNextSaveWorks) {
    Scene scene(GetParam());
    scene.platform.operations.inject = [](const std::string& call, std::size_t) -> long {
        return call == "close" || call == "closeDuplicate" ? -EIO : 0;
    };
    EXPECT_FALSE(save(GetParam()));
    scene.platform.operations.inject = nullptr;
    EXPECT_TRUE(save(GetParam()));
    EXPECT_EQ(scene.faults(newFile(GetParam())), "all is well");
}

TEST_P(SaveFailure, ATargetThatIsNeitherAFileNorAStreamIsRefused) {
    Scene scene(GetParam());
    scene.platform.operations.statuses[targetOf(GetParam())] = {.exists = true, .isWritable = true};
    Witness witness(scene, oldFile());
    platform::services().alert = &witness;
    EXPECT_EXIT(save(GetParam()), testing::ExitedWithCode(1),
                "Format error:  \\(22\\).*\\|all is well\n$");
}

TEST_P(SaveFailure, ATargetThatMayNotBeWrittenIsRefused) {
    Scene scene(GetParam());
    scene.platform.operations.statuses[targetOf(GetParam())] = {.exists = true, .isRegular = true};
    Witness witness(scene, oldFile());
    platform::services().alert = &witness;
    EXPECT_EXIT(save(GetParam()), testing::ExitedWithCode(1),
                "Format error:  \\(13\\).*\\|all is well\n$");
}

TEST_P(SaveFailure, ACancelledSaveIsNotSaidToHaveSaved) {
    Scene scene(GetParam());
    const CancellingWork work(0.0);
    EXPECT_FALSE(save(GetParam()));
    EXPECT_EQ(work.cancelled, 1);
    EXPECT_EQ(scene.faults(oldFile()), "all is well");
    EXPECT_TRUE(scene.platform.alert.shown.empty()) << "it is what the user wanted";
}

INSTANTIATE_TEST_SUITE_P(Ways, SaveFailure, testing::ValuesIn(kWays), [](const auto& test) {
    std::string name = test.param.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

TEST(CheckedSave, TheFailureIsOnStandardErrorAndStandardOutputToo) {
    Scene scene(kWays[0]);
    scene.platform.operations.inject = [](const std::string& call, std::size_t) -> long {
        return call == "write" ? -ENOSPC : 0;
    };
    /// Hands the trace over to the test, which does not see the ending process's memory.
    class Relay final : public platform::TraceLog {
        void print(std::string_view text) override { show("out", text); }
        void printError(std::string_view text) override { show("err", text); }
        void log(std::string_view) override {}
        static void show(const char* where, std::string_view text) {
            std::fprintf(stderr, "%s<%.*s>", where, static_cast<int>(text.size()), text.data());
        }
    } relay;
    platform::services().trace = &relay;
    EXPECT_EXIT(save(kWays[0]), testing::ExitedWithCode(1),
                "^err<Error: File writing error:  \\(28\\)\n>"
                "out<File writing error:  \\(28\\)\nApplication will quit\n>$");
}

// A file of many blocks ---------------------------------------------------------------------

class ManyBlocks : public testing::Test {
protected:
    static constexpr std::size_t kMebibytes = 25;

    ManyBlocks() : body(kMebibytes << 20) {
        std::size_t i = 0;
        for (std::byte& byte : body) {
            byte = static_cast<std::byte>(i++ % 251);
        }
        platform.files.files[kTarget] = oldFile();
    }

    WriteOutcome write() { return writeAtomically(kTarget, head, body); }

    bool holdsTheNewFile() {
        const Bytes& found = platform.files.files.at(kTarget);
        return found.size() == head.size() + body.size() &&
               std::memcmp(found.data(), head.data(), head.size()) == 0 &&
               std::memcmp(found.data() + head.size(), body.data(), body.size()) == 0;
    }

    FakePlatform platform;
    const Bytes head = counting(68);
    std::vector<std::byte> body;
};

TEST_F(ManyBlocks, ADiskThatFillsUpAtAnyWriteLeavesTheOldFile) {
    ASSERT_TRUE(write().done());
    const auto calls = platform.operations.calls;
    const auto writes = std::count(calls.begin(), calls.end(), "write");
    ASSERT_GE(writes, 4);
    for (long full = 0; full < writes; ++full) {
        platform.files.files = {{kTarget, oldFile()}};
        platform.operations.inject = [&, left = full](const std::string& call,
                                                      std::size_t) mutable -> long {
            return call == "write" && left-- <= 0 ? -ENOSPC : 0;
        };
        EXPECT_EQ(write().writeError, ENOSPC);
        EXPECT_EQ(platform.files.files, (std::map<std::string, Bytes>{{kTarget, oldFile()}}));
    }
}

TEST_F(ManyBlocks, TheDiskIsNeverMoreThanTwentyMebibytesBehind) {
    std::uint64_t beforeTheLastWrite = 0;
    std::uint64_t beforeTheSync = 0;
    platform.operations.inject = [&](const std::string& call, std::size_t) {
        beforeTheLastWrite = call == "write" ? platform.operations.finished : beforeTheLastWrite;
        beforeTheSync = call == "sync" ? platform.operations.finished : beforeTheSync;
        return 0L;
    };
    ASSERT_TRUE(write().done());
    EXPECT_EQ(beforeTheLastWrite, std::uint64_t{8} << 20);
    EXPECT_EQ(beforeTheSync, std::uint64_t{24} << 20); // all whole blocks, one by one
}

TEST_F(ManyBlocks, ACancelledSaveLeavesTheOldFileWhereverItIs) {
    ASSERT_TRUE(write().done());
    const std::size_t calls = platform.operations.calls.size();
    std::size_t cancelled = 0;
    for (std::size_t at = 0; at < calls; ++at) {
        platform::Progress progress;
        const platform::ProgressScope scope(&progress);
        platform.operations.calls.clear();
        platform.files.files = {{kTarget, oldFile()}};
        platform.operations.inject = [&](const std::string&, std::size_t index) {
            if (index == at) {
                progress.requestStop();
            }
            return 0L;
        };
        const WriteOutcome outcome = write();
        EXPECT_EQ(outcome.done(), !outcome.cancelled);
        EXPECT_EQ(platform.files.files.size(), 1U) << at;
        EXPECT_EQ(platform.files.files.at(kTarget) == oldFile(), outcome.cancelled) << at;
        EXPECT_EQ(platform.operations.openDescriptors(), 0U);
        cancelled += outcome.cancelled ? 1U : 0U;
    }
    EXPECT_GT(cancelled, calls / 2);
    EXPECT_LT(cancelled, calls); // once the file is flushed it is there
}

TEST_F(ManyBlocks, ADiskThatFailsWhileMoreIsWrittenLeavesTheOldFile) {
    for (const long late : {0L, 1L}) {
        platform.operations.inject = [left = late](const std::string& call,
                                                   std::size_t) mutable -> long {
            return call == "finishSync" && left-- == 0 ? -EIO : 0;
        };
        EXPECT_EQ(write().writeError, EIO);
        EXPECT_EQ(platform.files.files, (std::map<std::string, Bytes>{{kTarget, oldFile()}}));
        EXPECT_EQ(platform.operations.openDescriptors(), 0U);
    }
}

TEST_F(ManyBlocks, WritesOfAnyLengthGiveTheSameFile) {
    for (const long most : {4096L, 65537L, 1000003L, 5'000'000L}) {
        platform.operations.inject = [&](const std::string& call, std::size_t) {
            return call == "write" ? most : 0;
        };
        EXPECT_TRUE(write().done());
        EXPECT_TRUE(holdsTheNewFile()) << most;
    }
}

TEST_F(ManyBlocks, ASignalBeforeEveryCallChangesNothing) {
    bool interrupt = false;
    platform.operations.inject = [&](const std::string& call, std::size_t) -> long {
        interrupt = !interrupt && call != "close";
        return interrupt ? -EINTR : 0;
    };
    EXPECT_TRUE(write().done());
    EXPECT_TRUE(holdsTheNewFile());
}

TEST_F(ManyBlocks, AnInterruptedCloseIsNotRepeated) {
    for (const bool nameless : {false, true}) {
        platform.operations.hasNamelessFiles = nameless;
        platform.operations.calls.clear();
        platform.operations.inject = [](const std::string& call, std::size_t) -> long {
            return call == "close" || call == "closeDuplicate" ? -EINTR : 0;
        };
        EXPECT_TRUE(write().done());
        const auto& calls = platform.operations.calls;
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "close"), 1);
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "closeDuplicate"), nameless ? 1 : 0);
    }
}

TEST_F(ManyBlocks, AHundredTakenNamesAreGivenUp) {
    for (const char* const taken : {"create", "linkOver"}) {
        platform.operations.hasNamelessFiles = taken == std::string("linkOver");
        platform.operations.calls.clear();
        platform.operations.inject = [&](const std::string& call, std::size_t) -> long {
            return call == taken ? -EEXIST : 0;
        };
        const WriteOutcome outcome = write();
        EXPECT_EQ(outcome.createError + outcome.writeError, EEXIST);
        const auto& calls = platform.operations.calls;
        EXPECT_EQ(std::count(calls.begin(), calls.end(), taken), 100);
        EXPECT_EQ(platform.files.files, (std::map<std::string, Bytes>{{kTarget, oldFile()}}));
    }
}

TEST_F(ManyBlocks, AFileWithoutAnythingInItIsAFileToo) {
    EXPECT_TRUE(writeAtomically(kTarget, {}, {}).done());
    EXPECT_EQ(platform.files.files.at(kTarget), Bytes());
}

TEST_F(ManyBlocks, WhatIsWrittenOverStandsInThePlaceOfWhatWasThere) {
    for (const long most : {0L, 1L, 7L}) {
        platform.operations.inject = [&, interrupt = false](const std::string& call,
                                                            std::size_t) mutable -> long {
            interrupt = !interrupt;
            return call != "writeAt" ? 0 : (interrupt ? -EINTR : most);
        };
        AtomicFile file;
        ASSERT_EQ(file.create(kTarget), 0);
        ASSERT_EQ(file.write(counting(100).data(), 100), 0);
        ASSERT_EQ(file.writeAt(5, zeros(20).data(), 20), 0);
        ASSERT_EQ(file.write(counting(3).data(), 3), 0);
        ASSERT_EQ(file.close(), 0);
        ASSERT_EQ(file.replaceTarget(), 0);
        Bytes expected = join({counting(100), counting(3)});
        std::fill_n(expected.begin() + 5, 20, 0);
        EXPECT_EQ(platform.files.files.at(kTarget), expected) << most;
    }
}

TEST_F(ManyBlocks, AFileThatIsNotFinishedIsTakenAway) {
    for (const bool nameless : {false, true}) {
        platform.operations.hasNamelessFiles = nameless;
        {
            AtomicFile file;
            ASSERT_EQ(file.create(kTarget), 0);
            ASSERT_EQ(file.write(body.data(), 10), 0);
            EXPECT_EQ(platform.files.files.size(), nameless ? 1U : 2U);
        }
        EXPECT_EQ(platform.files.files, (std::map<std::string, Bytes>{{kTarget, oldFile()}}));
        EXPECT_EQ(platform.operations.openDescriptors(), 0U);
    }
}

} // namespace
} // namespace zemo::test
