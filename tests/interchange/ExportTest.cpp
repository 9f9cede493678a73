#include "interchange/Export.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "ForeignSounds.h"
#include "files_test/SoundChecks.h"
#include "interchange/Import.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

class Export : public testing::Test {
protected:
    Export() { platform.launch(48000.0); }

    Bytes exported(const std::string& name) {
        const auto result = exportSound(FileUrl("/" + name));
        EXPECT_TRUE(result) << (result ? "" : result.error().sentence);
        EXPECT_EQ(platform.operations.openDescriptors(), 0U);
        return platform.files.files["/" + name];
    }

    std::vector<float> reimported(const std::string& name) {
        EXPECT_TRUE(importSound(FileUrl("/" + name)));
        return currentSound();
    }

    void expectRefusal(const std::string& name, const std::string& sentence) {
        const auto result = exportSound(FileUrl("/" + name));
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().sentence, sentence);
        EXPECT_TRUE(platform.operations.calls.empty());
    }

    FakePlatform platform;
};

TEST_F(Export, AsWavIsTheSoundBitForBitWithZerosForWhatIsNoNumber) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    loadSound({0.5F, nan, -0.0F, infinity, -3.0F, -nan, 1e-45F});
    const auto words = wordsOf({0.5F, 0.0F, -0.0F, infinity, -3.0F, 0.0F, 1e-45F});
    EXPECT_EQ(exported("x.wav"), wavOf(48000, words));
    EXPECT_EQ(exported("x.WAV"), wavOf(48000, words));
    EXPECT_TRUE(std::isnan(currentSound()[1]));
}

TEST_F(Export, AsFlacComesBackWhereTheSamplesHave24Bits) {
    std::vector<float> samples(300'000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto step = static_cast<std::int64_t>(i * 2'654'435'761U % (1U << 24)) - (1 << 23);
        samples[i] = static_cast<float>(step) / 0x1p23F;
    }
    samples[7] = std::numeric_limits<float>::quiet_NaN();
    loadSound(samples);
    samples[7] = 0.0F;
    for (const char* name : {"x.flac", "x.FLAC"}) {
        loadSound(samples);
        exported(name);
        EXPECT_TRUE(reimported(name) == samples);
    }
    const auto description = describeSoundFile("/x.flac");
    ASSERT_TRUE(description);
    EXPECT_EQ(description.value().frames, 300'000);
    EXPECT_EQ(description.value().rate, 48000.0);
}

TEST_F(Export, AsFlacRoundsToTheNearestStepOf24Bits) {
    loadSound({0.1F, -0.3F, 0x1p-24F, 0x1p-23F * 0.75F});
    exported("x.flac");
    EXPECT_EQ(reimported("x.flac"),
              (std::vector<float>{static_cast<float>(838861 / 8388608.0),
                                  static_cast<float>(-2516582 / 8388608.0), 0.0F, 0x1p-23F}));
}

TEST_F(Export, AsFlacClipsWhatIsBeyondFullScaleAndSaysHowMany) {
    const float infinity = std::numeric_limits<float>::infinity();
    loadSound({1.0F, -1.0F, 1.5F, -7.0F, infinity, -infinity, 0.5F});
    const auto result = exportSound(FileUrl("/x.flac"));
    ASSERT_TRUE(result);
    EXPECT_EQ(result.value().clipped, 4);
    EXPECT_EQ(result.value().format, "FLAC, 24-bit");
    const float most = 1.0F - 0x1p-23F;
    EXPECT_EQ(reimported("x.flac"),
              (std::vector<float>{most, -1.0F, most, -1.0F, most, -1.0F, 0.5F}));
}

TEST_F(Export, AsWavClipsNothing) {
    loadSound({1.5F, -7.0F});
    const auto result = exportSound(FileUrl("/x.wav"));
    ASSERT_TRUE(result);
    EXPECT_EQ(result.value().clipped, 0);
    EXPECT_EQ(result.value().format, "WAV, 32-bit float");
}

TEST_F(Export, TheSameSoundGivesTheSameBytes) {
    dirtyFreshMemory();
    loadSound(sine(48000, 440.0, 100'000));
    for (const std::string extension : {".wav", ".flac"}) {
        EXPECT_TRUE(exported("1" + extension) == exported("2" + extension));
    }
}

TEST_F(Export, OfAnotherExtensionIsRefused) {
    loadSound({0.5F});
    for (const char* name : {"x", "x.caf", "x.Wav", "x.flacc", ".wav", "x.mp3"}) {
        expectRefusal(name, "ZEMO exports .wav and .flac files: choose one of these extensions.");
    }
    EXPECT_TRUE(isExportedExtension("wav") && isExportedExtension("FLAC"));
}

TEST_F(Export, OfNoSoundIsRefused) {
    expectRefusal("x.wav", "There is no sound to export.");
}

TEST_F(Export, AtARateThatTheFileCannotHoldIsRefused) {
    loadSound({0.5F});
    R = 44100.5;
    expectRefusal("x.wav",
                  "WAV holds whole rates up to 4294967295 Hz, and the sound's is 44100.5 Hz.");
    expectRefusal("x.flac", "FLAC holds whole rates up to 65535 Hz, and tens up to 655350 Hz, and "
                            "the sound's is 44100.5 Hz.");
    R = 655351.0;
    expectRefusal("x.flac", "FLAC holds whole rates up to 65535 Hz, and tens up to 655350 Hz, and "
                            "the sound's is 655351 Hz.");
    R = 65537.0;
    expectRefusal("x.flac", "FLAC holds whole rates up to 65535 Hz, and tens up to 655350 Hz, and "
                            "the sound's is 65537 Hz.");
    R = 0.0;
    expectRefusal("x.wav", "WAV holds whole rates up to 4294967295 Hz, and the sound's is 0 Hz.");
}

TEST_F(Export, EveryOtherRateIsHeld) {
    for (const double rate :
         {1.0, 8000.0, 11025.0, 44100.0, 65535.0, 65540.0, 96000.0, 192000.0, 384000.0, 655350.0}) {
        R = rate;
        loadSound({0.5F, -0.5F});
        for (const char* name : {"x.wav", "x.flac"}) {
            exported(name);
            EXPECT_EQ(describeSoundFile(std::string("/") + name).value().rate, rate) << name;
        }
    }
}

} // namespace
} // namespace zemo::test
