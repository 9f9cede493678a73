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

class ExportFailure : public testing::TestWithParam<const char*> {
protected:
    ExportFailure() {
        platform.launch(48000.0);
        loadSound(sound);
        const auto result = exportSound(FileUrl(GetParam()));
        EXPECT_TRUE(result);
        newFile = platform.files.files.at(GetParam());
        calls = platform.operations.calls;
        reset();
    }

    void reset() {
        platform.files.files = {{GetParam(), oldFile}};
        platform.operations.calls.clear();
        platform.operations.inject = nullptr;
    }

    /// After an error the target is the old file, or the new one if only the folder was not
    /// flushed.
    void expectAllIsWell(bool done) {
        const Bytes& found = platform.files.files.at(GetParam());
        const auto& made = platform.operations.calls;
        const bool replaced = std::count(made.begin(), made.end(), "syncFolder") > 0;
        EXPECT_TRUE(found == (done || replaced ? newFile : oldFile));
        EXPECT_EQ(platform.files.files.size(), 1U);
        EXPECT_EQ(platform.operations.openDescriptors(), 0U);
        EXPECT_EQ(currentSound(), sound);
        EXPECT_TRUE(slackIsZero());
        EXPECT_TRUE(platform.alert.shown.empty());
    }

    const std::vector<float> sound = sine(48000, 440.0, 200'000);
    const Bytes oldFile = counting(77);
    Bytes newFile;
    std::vector<std::string> calls;
    FakePlatform platform;
};

TEST_P(ExportFailure, LeavesTheOldFileOrTheNewOneWholeAndNothingElse) {
    ASSERT_GE(calls.size(), 9U);
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
            const auto result = exportSound(FileUrl(GetParam()));
            EXPECT_TRUE(result ||
                        result.error().sentence.starts_with("The file cannot be written: "));
            // A signal is no failure, and neither is a write that takes less than all.
            const bool harmless = answer == -EINTR || answer == 1;
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
    const auto result = exportSound(FileUrl(GetParam()));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().sentence, "The file cannot be written: No space left on device.");
    EXPECT_EQ(result.error().category, platform::ErrorCategory::DeviceFailed);
    expectAllIsWell(false);
}

TEST_P(ExportFailure, BetweenAnyTwoCallsTheTargetIsTheOldFileOrTheNewOneWhole) {
    bool isNew = false;
    platform.operations.inject = [&](const std::string& call, std::size_t) -> long {
        const Bytes& target = platform.files.files.at(GetParam());
        isNew = isNew || target == newFile;
        EXPECT_TRUE(target == (isNew ? newFile : oldFile)) << call;
        return 0;
    };
    EXPECT_TRUE(exportSound(FileUrl(GetParam())));
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
        const auto result = exportSound(FileUrl(GetParam()));
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
    const auto result = exportSound(FileUrl(GetParam()));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().category, platform::ErrorCategory::Cancelled);
    expectAllIsWell(false);
}

TEST_P(ExportFailure, ATargetThatMayNotBeWrittenIsRefused) {
    platform.operations.statuses[GetParam()] = {.exists = true, .isRegular = true};
    const auto result = exportSound(FileUrl(GetParam()));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().sentence, "The file cannot be written: Permission denied.");
    expectAllIsWell(false);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ExportFailure, testing::Values("/s/x.wav", "/s/x.flac"),
                         [](const auto& test) {
                             return std::string(test.param).substr(std::string("/s/x.").size());
                         });

} // namespace
} // namespace zemo::test
