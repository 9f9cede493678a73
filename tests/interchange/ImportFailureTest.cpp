#include <cerrno>

#include <gtest/gtest.h>

#include "ForeignSounds.h"
#include "files_test/SoundChecks.h"
#include "interchange/Import.h"
#include "platform/Progress.h"
#include "playback/OutputUnit.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

/// Whatever goes wrong: one sentence, and the old sound as it was.
namespace zemo::test {
namespace {

using platform::ErrorCategory;

/// Asks the work to stop at its large block of that number.
class StopAfterBlocks final : public platform::Memory {
public:
    StopAfterBlocks(platform::Progress& progress, std::size_t last)
        : progress_(progress), last_(last) {}
    void preferLargePages(void* /*block*/, std::size_t /*bytes*/) override {
        if (++blocks == last_) {
            progress_.requestStop();
        }
    }

    std::size_t blocks = 0;

private:
    platform::Progress& progress_;
    std::size_t last_;
};

class ImportFailure : public testing::Test {
protected:
    ImportFailure() {
        platform.launch(8000.0);
        loadSound(old);
        block = fBuffer.load();
    }

    platform::Result<Imported> import(const Bytes& bytes) {
        platform.files.files["/x"] = bytes;
        return importSound(FileUrl("/x"));
    }

    void expectRefusal(const platform::Result<Imported>& result, ErrorCategory category,
                       const std::string& sentence) {
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().category, category);
        EXPECT_EQ(result.error().sentence, sentence);
        expectTheOldSound();
    }

    void expectTheOldSound() {
        EXPECT_EQ(fBuffer.load(), block);
        EXPECT_EQ(currentSound(), old);
        EXPECT_TRUE(slackIsZero());
        EXPECT_TRUE(platform.alert.shown.empty());
    }

    const std::vector<float> old{0.5F, -0.25F, 0.125F};
    const float* block = nullptr;
    FakePlatform platform;
};

TEST_F(ImportFailure, AFileThatCannotBeOpenedIsRefused) {
    expectRefusal(importSound(FileUrl("/absent")), ErrorCategory::CannotOpen,
                  "The file cannot be opened: No such file or directory.");
    platform.files.openErrors["/x"] = EACCES;
    expectRefusal(import({}), ErrorCategory::CannotOpen,
                  "The file cannot be opened: Permission denied.");
}

TEST_F(ImportFailure, AFileOfNoKnownKindIsRefused) {
    for (const Bytes& bytes :
         {Bytes(), text("x"), text("No sound, but some words."), zeros(5000)}) {
        const auto result = import(bytes);
        ASSERT_FALSE(result);
        EXPECT_FALSE(result.error().sentence.empty());
        expectTheOldSound();
    }
    expectRefusal(import(text("No sound, but some words in a row.")), ErrorCategory::NotSupported,
                  "The file is not of a kind of sound file that is known.");
}

TEST_F(ImportFailure, AFileWithoutFramesIsRefused) {
    expectRefusal(import(wavOf(8000, {})), ErrorCategory::Malformed,
                  "There is no sound in the file.");
    expectRefusal(import(wavOf(44100, {})), ErrorCategory::Malformed,
                  "There is no sound in the file.");
}

TEST_F(ImportFailure, TooManyChannelsAreRefused) {
    EXPECT_TRUE(import(wavOfZeros(256, 8000, 3)));
    loadSound(old);
    block = fBuffer.load();
    expectRefusal(import(wavOfZeros(257, 8000, 3)), ErrorCategory::NotSupported,
                  "The sound file has 257 channels: 1 to 256 can be imported.");
}

TEST_F(ImportFailure, RatesThatCannotBeAreRefused) {
    expectRefusal(import(wavOfZeros(1, 999, 3)), ErrorCategory::NotSupported,
                  "The sound file's rate of 999 Hz cannot be converted to 8000 Hz.");
    expectRefusal(import(wavOfZeros(1, 1000001, 3)), ErrorCategory::NotSupported,
                  "The sound file's rate of 1000001 Hz cannot be converted to 8000 Hz.");
    R = 20.0;
    expectRefusal(import(wavOfZeros(1, 48000, 3)), ErrorCategory::NotSupported,
                  "The sound file's rate of 48000 Hz cannot be converted to 20 Hz.");
}

TEST_F(ImportFailure, TheGreatestChangesOfRateAreMade) {
    R = 1e6;
    EXPECT_TRUE(import(wavOfZeros(1, 1000, 100)));
    EXPECT_EQ(currentSound().size(), 100000U);
    R = 1000.0;
    EXPECT_TRUE(import(wavOfZeros(1, 1000000, 100000)));
    EXPECT_EQ(currentSound().size(), 100U);
}

TEST_F(ImportFailure, ASoundForWhichTheSystemHasNoMemoryIsRefused) {
    NoMemory memory;
    platform::services().memory = &memory;
    const Bytes file = wavOf(8000, std::vector<std::uint32_t>(9'000'000));
    expectRefusal(import(file), ErrorCategory::OutOfMemory,
                  "The sound is too large for this computer's memory.");
    memory.available = UINT64_MAX;
    EXPECT_TRUE(import(file));
}

TEST_F(ImportFailure, AReadThatFailsIsARefusalWhicheverItIs) {
    for (const auto& [name, bytes] : foreignFiles()) {
        OneFile file(bytes);
        platform::services().fileSystem = &file;
        ASSERT_TRUE(importSound(FileUrl("/x"))) << name;
        const std::size_t reads = file.reads;
        ASSERT_GE(reads, 2U) << name;
        loadSound(old);
        block = fBuffer.load();
        for (std::size_t failing = 0; failing < reads; ++failing) {
            for (const bool forGood : {false, true}) {
                file.reads = 0;
                file.mayRead = [&](std::size_t index) {
                    return forGood ? index < failing : index != failing;
                };
                const auto result = importSound(FileUrl("/x"));
                ASSERT_FALSE(result) << name << " " << failing;
                EXPECT_EQ(result.error().category, ErrorCategory::DeviceFailed) << name;
                EXPECT_FALSE(result.error().sentence.empty());
                expectTheOldSound();
            }
        }
    }
}

TEST_F(ImportFailure, AFileThatIsCutOffAnywhereGivesItsBeginningOrIsRefused) {
    for (const auto& [name, bytes] : foreignFiles()) {
        ASSERT_TRUE(import(bytes));
        const std::size_t whole = currentSound().size();
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            SCOPED_TRACE(name + " cut to " + std::to_string(length));
            loadSound(old);
            block = fBuffer.load();
            const auto result =
                import({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)});
            if (result) {
                EXPECT_LE(currentSound().size(), whole);
                EXPECT_TRUE(slackIsZero());
            } else {
                EXPECT_FALSE(result.error().sentence.empty());
                expectTheOldSound();
            }
        }
    }
}

TEST_F(ImportFailure, AskedToStopAtAnyReadItStopsThere) {
    for (const auto& [name, bytes] : foreignFiles()) {
        OneFile file(bytes);
        platform::services().fileSystem = &file;
        ASSERT_TRUE(importSound(FileUrl("/x"))) << name;
        const std::size_t reads = file.reads;
        loadSound(old);
        block = fBuffer.load();
        for (std::size_t last = 0; last < reads; ++last) {
            platform::Progress progress;
            const platform::ProgressScope scope(&progress);
            file.reads = 0;
            file.mayRead = [&](std::size_t index) {
                if (index == last) {
                    progress.requestStop();
                }
                return true;
            };
            expectRefusal(importSound(FileUrl("/x")), ErrorCategory::Cancelled,
                          "The import was cancelled.");
            EXPECT_EQ(file.reads, last + 1) << name;
        }
    }
}

/// A block of the file becomes a thousand blocks of the sound.
TEST_F(ImportFailure, AskedToStopInTheMiddleOfALongConversionItStopsThere) {
    R = 1e6;
    const Bytes bytes = wavOfZeros(1, 1000, 16000);
    platform::Progress progress;
    const platform::ProgressScope scope(&progress);
    StopAfterBlocks memory(progress, 2);
    platform::services().memory = &memory;
    expectRefusal(import(bytes), ErrorCategory::Cancelled, "The import was cancelled.");
    EXPECT_EQ(memory.blocks, 2U);
}

TEST_F(ImportFailure, CancelledAtTheLastMomentItChangesNothing) {
    CancelledWork work;
    platform::services().longWork = &work;
    expectRefusal(import(wavOf(8000, {0x3F000000})), ErrorCategory::Cancelled,
                  "The import was cancelled.");
}

TEST_F(ImportFailure, ARefusedFileDoesNotInterruptWhatPlays) {
    bufferPlay0(0);
    ASSERT_TRUE(platform.output.running);
    EXPECT_FALSE(import(text("nothing of the kind")));
    EXPECT_TRUE(platform.output.running);
    EXPECT_TRUE(import(wavOf(8000, {0x3F000000})));
    EXPECT_FALSE(platform.output.running);
}

} // namespace
} // namespace zemo::test
