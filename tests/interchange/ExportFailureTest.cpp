#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

#include <gtest/gtest.h>

#include "ForeignSounds.h"
#include "files_test/SoundChecks.h"
#include "interchange/Export.h"
#include "platform/Progress.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

/// Every system call of an export fails in turn, in every way.
namespace zemo::test {
namespace {

/// Four errors, and from a write one byte or none.
constexpr std::array<long, 6> kAnswers{-ENOSPC, -EIO, -EINTR,
                                       -EDQUOT, 1,    FakeFileOperations::kTakesNothing};
constexpr long kSignals = 300; ///< in a row, where a call is interrupted "for good"

/// A kind of file on a kind of disk.
struct Export {
    const char* path;
    bool nameless;
};

class ExportFailure : public testing::TestWithParam<Export> {
protected:
    ExportFailure() {
        platform.operations.hasNamelessFiles = GetParam().nameless;
        platform.launch(48000.0);
        loadSound(sound);
        platform.files.files[path] = oldFile;
        const auto result = exportSound(FileUrl(path));
        EXPECT_TRUE(result);
        newFile = platform.files.files.at(path);
        calls = platform.operations.calls;
        reset();
    }

    void reset() {
        platform.files.files = {{path, oldFile}};
        platform.operations.calls.clear();
        platform.operations.inject = nullptr;
    }

    void expectAllIsWell(bool done) {
        const Bytes& found = platform.files.files.at(path);
        EXPECT_TRUE(found == (done ? newFile : oldFile));
        EXPECT_EQ(platform.files.files.size(), 1U);
        EXPECT_EQ(platform.operations.openDescriptors(), 0U);
        EXPECT_EQ(currentSound(), sound);
        EXPECT_TRUE(slackIsZero());
        EXPECT_TRUE(platform.alert.shown.empty());
    }

    const std::string path = GetParam().path;
    const std::vector<float> sound = sine(48000, 440.0, 200'000);
    const Bytes oldFile = counting(77);
    Bytes newFile;
    std::vector<std::string> calls;
    FakePlatform platform;
};

TEST_P(ExportFailure, LeavesTheOldFileOrTheNewOneWholeAndNothingElse) {
    ASSERT_GE(calls.size(), 9U);
    const auto replacing =
        std::find(calls.begin(), calls.end(), GetParam().nameless ? "linkOver" : "rename");
    ASSERT_NE(replacing, calls.end());
    const auto replaced = static_cast<std::size_t>(replacing - calls.begin());
    for (std::size_t index = 0; index < calls.size(); ++index) {
        for (const long answer : kAnswers) {
            const bool ofWrites = calls[index] == "write" || calls[index] == "writeAt";
            const bool onlyOfWrites = answer == 1 || answer == FakeFileOperations::kTakesNothing;
            if (onlyOfWrites && !ofWrites) {
                continue;
            }
            SCOPED_TRACE(calls[index] + " " + std::to_string(index) + " answers " +
                         std::to_string(answer));
            platform.operations.inject = [&, left = answer == -EINTR ? kSignals : 1L](
                                             const std::string& call, std::size_t at) mutable {
                return call == calls[index] && at >= index && left-- > 0 ? answer : 0L;
            };
            const auto result = exportSound(FileUrl(path));
            EXPECT_TRUE(result ||
                        result.error().sentence.starts_with("The file cannot be written: "));
            // A signal is no failure, and neither is a write that takes less than all, a disk
            // without nameless files, or what comes after the target was replaced.
            const bool harmless = answer == -EINTR || answer == 1 || index > replaced ||
                                  calls[index] == "createNameless";
            EXPECT_EQ(static_cast<bool>(result), harmless);
            expectAllIsWell(static_cast<bool>(result));
            reset();
        }
    }
}

TEST_P(ExportFailure, AFullDiskIsSaidInOneSentence) {
    platform.operations.inject = [](const std::string& call, std::size_t) -> long {
        return call == "write" ? -ENOSPC : 0;
    };
    const auto result = exportSound(FileUrl(path));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().sentence, "The file cannot be written: No space left on device.");
    EXPECT_EQ(result.error().category, platform::ErrorCategory::DeviceFailed);
    expectAllIsWell(false);
}

TEST_P(ExportFailure, BetweenAnyTwoCallsTheTargetIsTheOldFileOrTheNewOneWhole) {
    bool isNew = false;
    platform.operations.inject = [&](const std::string& call, std::size_t) -> long {
        const Bytes& target = platform.files.files.at(path);
        isNew = isNew || target == newFile;
        EXPECT_TRUE(target == (isNew ? newFile : oldFile)) << call;
        return 0;
    };
    EXPECT_TRUE(exportSound(FileUrl(path)));
}

TEST_P(ExportFailure, AskedToStopAtAnyCallItLeavesTheOldFile) {
    const auto last = std::find(calls.begin(), calls.end(), "sync") - calls.begin();
    for (std::size_t stop = 0; stop <= static_cast<std::size_t>(last); ++stop) {
        platform::Progress progress;
        const platform::ProgressScope scope(&progress);
        platform.operations.inject = [&](const std::string&, std::size_t index) -> long {
            if (index == stop) {
                progress.requestStop();
            }
            return 0;
        };
        const auto result = exportSound(FileUrl(path));
        ASSERT_FALSE(result) << stop;
        EXPECT_EQ(result.error().category, platform::ErrorCategory::Cancelled);
        EXPECT_EQ(result.error().sentence, "The export was cancelled.");
        expectAllIsWell(false);
        reset();
    }
}

TEST_P(ExportFailure, CancelledAtTheLastMomentItLeavesTheOldFile) {
    CancelledWork work;
    platform::services().longWork = &work;
    const auto result = exportSound(FileUrl(path));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().category, platform::ErrorCategory::Cancelled);
    expectAllIsWell(false);
}

TEST_P(ExportFailure, ATargetThatMayNotBeWrittenIsRefused) {
    platform.operations.statuses[path] = {.exists = true, .isRegular = true};
    const auto result = exportSound(FileUrl(path));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().sentence, "The file cannot be written: Permission denied.");
    expectAllIsWell(false);
}

/// FLAC goes back to its head, so nothing of it may have gone out by then.
TEST_P(ExportFailure, AStreamGetsTheSameBytesAsAFile) {
    platform.operations.statuses[path] = {.exists = true, .isStream = true, .isWritable = true};
    ASSERT_TRUE(exportSound(FileUrl(path)));
    EXPECT_TRUE(platform.operations.streamed.at(path) == newFile);
    expectAllIsWell(false);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ExportFailure,
                         testing::Values(Export{"/s/x.wav", true}, Export{"/s/x.flac", true},
                                         Export{"/s/x.wav", false}, Export{"/s/x.flac", false}),
                         [](const auto& test) {
                             const std::string path = test.param.path;
                             return path.substr(path.rfind('.') + 1) +
                                    (test.param.nameless ? "" : "_under_a_hidden_name");
                         });

} // namespace
} // namespace zemo::test
