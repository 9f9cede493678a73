#include <cerrno>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "ForeignSounds.h"
#include "files_test/SoundChecks.h"
#include "interchange/Export.h"
#include "interchange/Import.h"
#include "support/FakePlatform.h"

/// The next large block that is asked for but this many is refused; small ones are not counted:
/// they hold texts, and the system gives those from what it has.
static constinit long largeBlocksLeft = -1;

static bool isRefused(std::size_t bytes) {
    constexpr std::size_t kLarge = 4096;
    return bytes >= kLarge && largeBlocksLeft >= 0 && largeBlocksLeft-- == 0;
}

extern "C" int __real_posix_memalign(void** block, std::size_t alignment, std::size_t bytes);
extern "C" int __wrap_posix_memalign(void** block, std::size_t alignment, std::size_t bytes) {
    return isRefused(bytes) ? ENOMEM : __real_posix_memalign(block, alignment, bytes);
}

void* operator new(std::size_t bytes) {
    void* const block = isRefused(bytes) ? nullptr : std::malloc(bytes);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t /*bytes*/) noexcept {
    std::free(block);
}

namespace zemo::test {
namespace {

TEST(WithoutMemory, AnImportIsRefusedAndTheOldSoundStays) {
    FakePlatform platform;
    platform.launch(48000.0);
    const std::vector<float> old{0.5F, -0.25F};
    for (const std::uint32_t rate : {48000U, 44100U}) {
        platform.files.files["/x"] = wavOf(rate, wordsOf(sine(rate, 440.0, 100'000)));
        long refused = 0;
        bool done = false;
        for (; !done; ++refused) {
            loadSound(old);
            largeBlocksLeft = refused;
            const auto result = importSound(FileUrl("/x"));
            largeBlocksLeft = -1;
            done = static_cast<bool>(result);
            if (!done) {
                EXPECT_EQ(result.error().category, platform::ErrorCategory::OutOfMemory);
                EXPECT_EQ(result.error().sentence,
                          "The sound is too large for this computer's memory.");
                EXPECT_EQ(currentSound(), old);
                EXPECT_TRUE(slackIsZero());
            }
        }
        EXPECT_GE(refused, 4) << "several blocks were asked for";
    }
}

TEST(WithoutMemory, AnExportIsRefusedAndTheOldFileStays) {
    FakePlatform platform;
    platform.launch(48000.0);
    loadSound(sine(48000, 440.0, 100'000));
    for (const std::string path : {"/x.wav", "/x.flac"}) {
        platform.files.files = {{path, counting(7)}};
        largeBlocksLeft = 0;
        const auto result = exportSound(FileUrl(path));
        largeBlocksLeft = -1;
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().sentence, "The file cannot be written: Cannot allocate memory.");
        EXPECT_EQ(platform.files.files.at(path), counting(7));
        EXPECT_EQ(platform.files.files.size(), 1U);
    }
}

} // namespace
} // namespace zemo::test
