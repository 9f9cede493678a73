#include <gtest/gtest.h>

#include "ForeignSounds.h"
#include "files_test/SoundChecks.h"
#include "interchange/Export.h"
#include "interchange/Import.h"
#include "support/FailingAllocator.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

/// Blocks that hold samples, and not texts.
constexpr std::size_t kLarge = 4096;
/// They do not look whether they get their blocks.
constexpr const char* kLibraries = "libsoxr libsndfile libFLAC";

TEST(WithoutMemory, AnImportIsRefusedAndTheOldSoundStays) {
    FakePlatform platform;
    platform.launch(48000.0);
    const std::vector<float> old{0.5F, -0.25F};
    for (const std::uint32_t rate : {48000U, 44100U}) {
        platform.files.files["/x"] = wavOf(rate, wordsOf(sine(rate, 440.0, 100'000)));
        std::size_t refused = 0;
        bool done = false;
        for (; !done; ++refused) {
            loadSound(old);
            FailingMemory failing(
                {.after = refused, .atLeastBytes = kLarge, .sparing = kLibraries});
            const auto result = importSound(FileUrl("/x"));
            failing.end();
            done = static_cast<bool>(result);
            if (!done) {
                EXPECT_EQ(result.error().category, platform::ErrorCategory::OutOfMemory);
                EXPECT_EQ(result.error().sentence,
                          "The sound is too large for this computer's memory.");
                EXPECT_EQ(currentSound(), old);
                EXPECT_TRUE(slackIsZero());
            }
        }
        EXPECT_GE(refused, 4U) << "several blocks were asked for";
    }
}

TEST(WithoutMemory, AnExportIsRefusedAndTheOldFileStays) {
    FakePlatform platform;
    platform.launch(48000.0);
    loadSound(sine(48000, 440.0, 100'000));
    for (const std::string path : {"/x.wav", "/x.flac"}) {
        platform.files.files = {{path, counting(7)}};
        FailingMemory failing({.after = 0, .atLeastBytes = kLarge, .sparing = kLibraries});
        const auto result = exportSound(FileUrl(path));
        failing.end();
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().sentence, "The file cannot be written: Cannot allocate memory.");
        EXPECT_EQ(platform.files.files.at(path), counting(7));
        EXPECT_EQ(platform.files.files.size(), 1U);
    }
}

} // namespace
} // namespace zemo::test
