#include <algorithm>
#include <array>
#include <cerrno>

#include <gtest/gtest.h>

#include "files/AtomicFile.h"
#include "files/AudioFile.h"
#include "files/AudioFileLayout.h"
#include "files/FixFlags.h"
#include "files_test/SoundFiles.h"
#include "platform/Progress.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

using Files = std::map<std::string, Bytes>;

constexpr std::size_t kBlock = std::size_t{1} << 22; ///< what is given to the disk at once

// The steps of a save, one by one -----------------------------------------------------------

class AtomicFileSteps : public testing::Test {
protected:
    AtomicFileSteps() { platform.files.files[kTarget] = old; }

    WriteOutcome write(std::size_t bytes) {
        const std::vector<std::byte> body(bytes);
        return writeAtomically(kTarget, {}, body);
    }

    bool isAsItWas() const {
        return platform.files.files == Files{{kTarget, old}} &&
               platform.operations.openDescriptors() == 0;
    }

    /// The call of that name with that number (from 0 on) gives the answer.
    void inject(const std::string& name, long number, long answer) {
        platform.operations.inject = [=, left = number](const std::string& call,
                                                        std::size_t) mutable -> long {
            return call == name && left-- == 0 ? answer : 0;
        };
    }

    long called(const std::string& name) const {
        const auto& calls = platform.operations.calls;
        return std::count(calls.begin(), calls.end(), name);
    }

    static constexpr const char* kTarget = "/s/x";
    const Bytes old = counting(77);
    FakePlatform platform;
};

/// A target that is a stream.
class StreamSteps : public AtomicFileSteps {
protected:
    StreamSteps() {
        platform.operations.statuses[kTarget] = {
            .exists = true, .isStream = true, .isWritable = true};
    }

    /// Writes five bytes and then a hundred over and behind them, as a library does that goes back.
    int writeInAnyOrder() {
        AtomicFile file;
        int error = file.create(kTarget, AtomicFile::Order::Any);
        error = error != 0 ? error : file.write(zeros(5).data(), 5);
        error = error != 0 ? error : file.write(counting(100).data(), 100);
        error = error != 0 ? error : file.writeAt(1, counting(3).data(), 3);
        EXPECT_TRUE(platform.operations.streamed[kTarget].empty());
        error = error != 0 ? error : file.flush();
        error = error != 0 ? error : file.close();
        return error != 0 ? error : file.replaceTarget();
    }

    const Bytes& streamed() { return platform.operations.streamed[kTarget]; }

    const Bytes expected = join({zeros(1), counting(3), zeros(1), counting(100)});
};

TEST_F(AtomicFileSteps, APathWithoutAFolderIsWrittenInTheCurrentOne) {
    platform.operations.hasNamelessFiles = false;
    std::vector<std::string> names;
    platform.operations.inject = [&](const std::string& call, std::size_t) {
        if (call == "write") {
            names.push_back(platform.files.files.begin()->first);
        }
        return 0L;
    };
    EXPECT_TRUE(writeAtomically("plain", counting(5), {}).done());
    EXPECT_EQ(names, std::vector<std::string>{"./.zemo-0000000000000001"});
    EXPECT_EQ(platform.files.files.at("plain"), counting(5));
}

TEST_F(AtomicFileSteps, ADiskThatFailsWhileTheRestIsAwaitedLeavesTheOldFile) {
    ASSERT_TRUE(write(6 * kBlock + 1).done());
    const long awaited = called("finishSync");
    ASSERT_EQ(awaited, 6);
    for (long number = 0; number < awaited; ++number) {
        platform.files.files = {{kTarget, old}};
        inject("finishSync", number, -EIO);
        EXPECT_EQ(write(6 * kBlock + 1).writeError, EIO);
        EXPECT_TRUE(isAsItWas()) << number;
    }
}

TEST_F(AtomicFileSteps, EveryWholeBlockIsGivenToTheDiskBeforeTheNextIsWritten) {
    long written = 0;
    platform.operations.inject = [&](const std::string& call, std::size_t) {
        if (call == "write") {
            EXPECT_EQ(platform.operations.begun, static_cast<std::size_t>(written) * kBlock);
            ++written;
        }
        return 0L;
    };
    EXPECT_TRUE(write(6 * kBlock + 1).done());
    EXPECT_EQ(written, 7);
    EXPECT_EQ(platform.operations.begun, 6 * kBlock);
}

TEST_F(AtomicFileSteps, TheProgressIsThatOfAllTheBytesAndNotOfOnePart) {
    const std::vector<std::byte> body(3 * kBlock);
    for (const std::size_t split : {std::size_t{0}, kBlock, 3 * kBlock}) {
        platform::Progress progress;
        const platform::ProgressScope scope(&progress);
        std::vector<double> seen;
        platform.operations.inject = [&](const std::string& call, std::size_t) {
            if (call == "write") {
                seen.push_back(progress.fraction());
            }
            return 0L;
        };
        const std::span all(body);
        EXPECT_TRUE(writeAtomically(kTarget, {}, all.first(split), all.subspan(split)).done());
        EXPECT_EQ(seen, (std::vector<double>{0.0, 1.0 / 3.0, 2.0 / 3.0}));
        EXPECT_EQ(progress.fraction(), 1.0);
    }
}

TEST_F(AtomicFileSteps, ADiskThatSaysCancelledByItselfHasFailed) {
    for (const char* const step : {"write", "sync"}) {
        inject(step, 0, -ECANCELED);
        const WriteOutcome outcome = write(10);
        EXPECT_EQ(outcome.writeError, ECANCELED);
        EXPECT_FALSE(outcome.cancelled);
        EXPECT_TRUE(isAsItWas());
    }
}

TEST_F(AtomicFileSteps, AStopAskedForAfterTheLastByteIsInTimeUntilTheFlush) {
    for (const std::size_t bytes : {std::size_t{10}, kBlock}) {
        platform::Progress progress;
        const platform::ProgressScope scope(&progress);
        platform.operations.inject = [&](const std::string& call, std::size_t) {
            if (call == "write") {
                progress.requestStop();
            }
            return 0L;
        };
        EXPECT_TRUE(write(bytes).cancelled);
        EXPECT_EQ(called("sync"), 0);
        EXPECT_TRUE(isAsItWas());
    }
}

// Streams -----------------------------------------------------------------------------------

TEST_F(StreamSteps, BytesGoOutAsTheyCome) {
    EXPECT_TRUE(writeAtomically(kTarget, counting(5), std::as_bytes(std::span(old))).done());
    EXPECT_EQ(streamed(), join({counting(5), old}));
    EXPECT_TRUE(isAsItWas());
}

TEST_F(StreamSteps, WhatIsWrittenInAnyOrderGoesOutAtTheEnd) {
    EXPECT_EQ(writeInAnyOrder(), 0);
    EXPECT_EQ(streamed(), expected);
}

TEST_F(StreamSteps, APipeThatNobodyReadsIsWaitedFor) {
    platform.operations.inject = [left = 5](const std::string& call, std::size_t) mutable -> long {
        return call == "openStream" && left-- > 0 ? -EAGAIN : 0;
    };
    EXPECT_EQ(writeInAnyOrder(), 0);
    EXPECT_EQ(streamed(), expected);
    EXPECT_EQ(called("awaitStream"), 5);
}

TEST_F(StreamSteps, AFullPipeIsWaitedFor) {
    platform.operations.inject = [turn = 0](const std::string& call, std::size_t) mutable -> long {
        constexpr std::array<long, 4> kAnswers{-EAGAIN, 7, -EINTR, 1};
        return call == "write" ? kAnswers.at(static_cast<std::size_t>(turn++ % 4)) : 0;
    };
    EXPECT_EQ(writeInAnyOrder(), 0);
    EXPECT_EQ(streamed(), expected);
    EXPECT_GT(called("awaitStream"), 5);
}

TEST_F(StreamSteps, WaitingEndsWhenTheWorkIsToStop) {
    for (const char* const call : {"openStream", "write"}) {
        platform::Progress progress;
        const platform::ProgressScope scope(&progress);
        long waited = 0;
        platform.operations.inject = [&](const std::string& made, std::size_t) -> long {
            if (made == "awaitStream" && ++waited == 3) {
                progress.requestStop();
            }
            return made == call ? -EAGAIN : 0;
        };
        EXPECT_TRUE(write(10).cancelled) << call;
        EXPECT_EQ(waited, 3);
        EXPECT_EQ(platform.operations.openDescriptors(), 0U);
    }
}

TEST_F(StreamSteps, AFailureIsTheStreams) {
    inject("openStream", 0, -EACCES);
    EXPECT_EQ(write(10).createError, EACCES);
    inject("write", 0, -EPIPE);
    EXPECT_EQ(write(10).writeError, EPIPE);
    inject("close", 0, -EIO);
    EXPECT_EQ(write(10).closeError, EIO);
    EXPECT_TRUE(isAsItWas());
}

/// Nothing waits for bytes to reach a disk that is not there.
TEST_F(StreamSteps, ManyBlocksAreNotFlushed) {
    ASSERT_TRUE(write(6 * kBlock + 1).done());
    EXPECT_EQ(called("finishSync") + called("sync") + called("syncFolder"), 0);
    EXPECT_EQ(platform.operations.begun, 0U);
}

TEST(WriteOutcomes, AFileIsDoneWhenNothingWentWrong) {
    EXPECT_TRUE(WriteOutcome().done());
    EXPECT_FALSE(WriteOutcome{.createError = EIO}.done());
    EXPECT_FALSE(WriteOutcome{.writeError = EIO}.done());
    EXPECT_FALSE(WriteOutcome{.closeError = EIO}.done());
    EXPECT_FALSE(WriteOutcome{.cancelled = true}.done());
}

// The header --------------------------------------------------------------------------------

TEST(CafHeader, SaysWhatTheSamplesAre) {
    MemoryFileSystem files;
    for (const bool isFloat : {true, false}) {
        for (const bool isBigEndian : {true, false}) {
            platform::AudioStreamBasicDescription format;
            std::uint32_t fileType = 0;
            setFormat(&format, &fileType, "caf", 44100.0);
            format.mFormatFlags = CalculateLPCMFlags(32, 32, isFloat, isBigEndian, false);
            files.files["/x"] = join({zemo::cafHeader(format, 8), zeros(8)});
            int error = 0;
            const auto read = describeContainer(*files.openForReading("/x", error));
            ASSERT_TRUE(read);
            EXPECT_EQ(read.value().format.mFormatFlags, format.mFormatFlags);
            EXPECT_EQ(read.value().packetCount, 2U);
        }
    }
}

} // namespace
} // namespace zemo::test
