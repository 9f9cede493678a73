#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "ForeignSounds.h"
#include "files_test/SoundChecks.h"
#include "interchange/Export.h"
#include "interchange/Import.h"
#include "platform/Progress.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

class Import : public testing::Test {
protected:
    Import() { platform.launch(48000.0); }

    platform::Result<Imported> import(const Bytes& file) {
        platform.files.files["/x"] = file;
        return importSound(FileUrl("/x"));
    }

    /// The sound of a file that is imported.
    std::vector<float> soundOf(const Bytes& file) {
        const auto result = import(file);
        EXPECT_TRUE(result) << (result ? "" : result.error().sentence);
        EXPECT_TRUE(slackIsZero());
        return currentSound();
    }

    FakePlatform platform;
};

TEST_F(Import, OneChannelOfFloatsAtTheOutputsRateComesBitForBit) {
    const std::vector<std::uint32_t> words{0x3F000000, 0xBF800000, 0x80000000, 0x00000001,
                                           0x7F800000, 0xFF800000, 0x7FC00001, 0xFFA00002,
                                           0x7F7FFFFF, 0x41200000};
    ASSERT_TRUE(import(wavOf(48000, words)));
    EXPECT_EQ(soundWords(), words);
    EXPECT_TRUE(slackIsZero());
}

TEST_F(Import, TwoChannelsBecomeTheirMean) {
    const CafDescription stereo{.bytesPerPacket = 8, .channels = 2};
    const Bytes file = cafFile(stereo, littleFloats({1.0F, 1.0F, -1.0F, 1.0F, 0.5F, 0.25F, //
                                                     -1.0F, -1.0F, 2.0F, 4.0F, 0x1p-24F, 1.0F}));
    EXPECT_EQ(soundOf(file), (std::vector<float>{1.0F, 0.0F, 0.375F, -1.0F, 3.0F, 0.5F}));
}

TEST_F(Import, TheMeanOfThreeChannelsIsRoundedOnce) {
    const CafDescription three{.bytesPerPacket = 12, .channels = 3};
    const Bytes file = cafFile(three, littleFloats({0.1F, 0.2F, 0.4F}));
    const double sum =
        static_cast<double>(0.1F) + static_cast<double>(0.2F) + static_cast<double>(0.4F);
    EXPECT_EQ(soundOf(file), std::vector<float>{static_cast<float>(sum / 3.0)});
}

TEST_F(Import, IntegersAreFractionsOfFullScale) {
    const CafDescription int16{.flags = 0, .bytesPerPacket = 2, .bits = 16};
    const Bytes file = cafFile(int16, join({big(0x8000, 2), big(0x4000, 2), big(1, 2)}));
    EXPECT_EQ(soundOf(file), (std::vector<float>{-1.0F, 0.5F, 1.0F / 32768.0F}));
}

TEST_F(Import, NothingIsScaledOrClipped) {
    const std::vector<float> loud{3.0F, -20.0F, 0.001F};
    EXPECT_EQ(soundOf(wavOf(48000, wordsOf(loud))), loud);
}

TEST_F(Import, AnotherRateIsConvertedWithoutDelay) {
    for (const std::uint32_t rate : {8000U, 22050U, 44100U, 96000U, 192000U}) {
        const auto sound = soundOf(wavOf(rate, wordsOf(sine(rate, 440.0, rate / 2))));
        ASSERT_NEAR(static_cast<double>(sound.size()), 24000.0, 1.0) << rate;
        const auto expected = sine(48000.0, 440.0, sound.size());
        for (std::size_t i = 4000; i + 4000 < sound.size(); ++i) {
            ASSERT_NEAR(sound[i], expected[i], 1e-6) << rate << " " << i;
        }
    }
}

TEST_F(Import, ARateThatIsNoWholeNumberIsConvertedTo) {
    R = 44100.5;
    const auto sound = soundOf(wavOf(44100, wordsOf(sine(44100, 440.0, 441000))));
    EXPECT_EQ(sound.size(), 441005U);
}

TEST_F(Import, WhatIsNoNumberCountsAsZeroWhereTheRateIsConverted) {
    auto samples = sine(44100, 440.0, 4410);
    samples[2000] = std::numeric_limits<float>::quiet_NaN();
    samples[2001] = std::numeric_limits<float>::infinity();
    const auto spoilt = soundOf(wavOf(44100, wordsOf(samples)));
    samples[2000] = samples[2001] = 0.0F;
    EXPECT_EQ(spoilt, soundOf(wavOf(44100, wordsOf(samples))));
}

TEST_F(Import, TellsWhatItDid) {
    const auto result = import(foreignFiles().at("wav-int24-stereo"));
    ASSERT_TRUE(result);
    EXPECT_EQ(result.value().source.channels, 2);
    EXPECT_EQ(result.value().source.rate, 8000.0);
    EXPECT_EQ(result.value().source.format, "WAVEX (Microsoft), Signed 24 bit PCM");
    EXPECT_EQ(result.value().frames, 24);
    EXPECT_FALSE(result.value().incomplete);
    EXPECT_EQ(currentSound().size(), 144U);
}

TEST_F(Import, OfAFileThatIsCutOffIsWhatItsDecoderGivesAndSaysSo) {
    const auto whole = sine(48000, 440.0, 40000);
    loadSound(whole);
    ASSERT_TRUE(exportSound(FileUrl("/whole.flac")));
    Bytes file = platform.files.files.at("/whole.flac");
    ASSERT_TRUE(import(file));
    EXPECT_FALSE(import(file).value().incomplete);
    const auto sound = currentSound();
    for (const std::size_t percent : {30U, 50U, 55U, 70U, 90U}) {
        const auto cut = static_cast<std::ptrdiff_t>(file.size() * percent / 100);
        const auto result = import({file.begin(), file.begin() + cut});
        ASSERT_TRUE(result) << percent;
        EXPECT_TRUE(result.value().incomplete);
        const auto beginning = currentSound();
        EXPECT_EQ(result.value().frames, static_cast<std::int64_t>(beginning.size()));
        EXPECT_GE(beginning.size(), 40000 * percent / 100 - 8192);
        EXPECT_LT(beginning.size(), 40000U);
        EXPECT_TRUE(std::equal(beginning.begin(), beginning.end(), sound.begin())) << percent;
    }
}

TEST_F(Import, EveryKindOfFileIsKnownByItsContent) {
    ASSERT_GE(foreignFiles().size(), 12U);
    for (const auto& [name, bytes] : foreignFiles()) {
        platform.files.files["/no.extension"] = bytes;
        EXPECT_TRUE(isKnownSoundFile("/no.extension")) << name;
        const auto description = describeSoundFile("/no.extension");
        ASSERT_TRUE(description) << name;
        EXPECT_EQ(description.value().rate, 8000.0) << name;
        EXPECT_FALSE(soundOf(bytes).empty()) << name;
    }
    platform.files.files["/song.wav"] = text("These are words, whatever the name says.");
    EXPECT_FALSE(isKnownSoundFile("/song.wav"));
    EXPECT_FALSE(isKnownSoundFile("/absent"));
}

TEST_F(Import, TheSameFileGivesTheSameSound) {
    for (const auto& [name, bytes] : foreignFiles()) {
        const auto first = soundOf(bytes);
        EXPECT_EQ(first, soundOf(bytes)) << name;
    }
}

TEST_F(Import, AFileThatSaysItHasMoreThanItHasGivesWhatIsThere) {
    NoMemory memory;
    platform::services().memory = &memory;
    Bytes wav = wavOf(48000, {0x3F000000, 0xBF000000});
    const std::size_t dataSize = wav.size() - 8 - 4;
    std::fill_n(wav.begin() + static_cast<std::ptrdiff_t>(dataSize), 4, 0xF0);
    EXPECT_EQ(soundOf(wav), (std::vector<float>{0.5F, -0.5F}));
    Bytes caf = join({cafHeader(), cafDescriptionChunk({}),
                      cafChunk("data", INT64_MAX / 2, join({zeros(4), littleFloats({0.5F})}))});
    const auto result = import(caf);
    EXPECT_TRUE(!result || currentSound() == std::vector<float>{0.5F});
    EXPECT_EQ(memory.asked, 0U);
}

TEST_F(Import, ALongSoundIsPutTogetherFromItsBlocks) {
    for (const std::size_t count : {16383UL, 16384UL, 16385UL, 1000003UL, 9000001UL}) {
        std::vector<std::uint32_t> words(count);
        std::uint32_t next = 0x3F000000;
        std::generate(words.begin(), words.end(), [&next] { return next++; });
        ASSERT_TRUE(import(wavOf(48000, words)));
        EXPECT_TRUE(soundWords() == words) << count;
    }
}

TEST_F(Import, ProgressNeverFallsAndReachesTheEnd) {
    platform::Progress progress;
    const platform::ProgressScope scope(&progress);
    OneFile file(wavOf(44100, wordsOf(sine(44100, 440.0, 200000))));
    platform::services().fileSystem = &file;
    double last = 0.0;
    std::size_t steps = 0;
    file.mayRead = [&](std::size_t) {
        EXPECT_GE(progress.fraction(), last);
        steps += progress.fraction() > last ? 1U : 0U;
        last = progress.fraction();
        return true;
    };
    ASSERT_TRUE(importSound(FileUrl("/x")));
    EXPECT_GE(steps, 10U);
    EXPECT_DOUBLE_EQ(progress.fraction(), 1.0);
}

} // namespace
} // namespace zemo::test
