#include <gtest/gtest.h>

#include "files/SoundLoader.h"
#include "files_test/SoundChecks.h"
#include "files_test/SoundFiles.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

class OpenDispatch : public testing::Test {
protected:
    OpenDispatch() { platform.launch(48000.0); }

    OpenResult open(const std::string& path, const Bytes& bytes, bool swap = false) {
        platform.files.files[path] = bytes;
        return openByExtension(FileUrl(path), swap);
    }

    float finish(bool force, const std::string& path = "/x") {
        float maxval = 99.0F;
        finishOpening(path, &maxval, force);
        return maxval;
    }

    FakePlatform platform;
};

const Bytes kRefused = cafFile({.rate = 1.0}, zeros(4));

/// A sample as normalize leaves it when the peak is `peak`.
float scaled(float sample, float peak) {
    return sample / static_cast<float>(static_cast<double>(peak) * 1.1);
}

// Which reader ------------------------------------------------------------------------------

TEST_F(OpenDispatch, FourExtensionsGoToTheAudioReader) {
    for (const char* extension : {"caf", "CAF", "aif", "AIF"}) {
        EXPECT_TRUE(isAudioFileExtension(extension)) << extension;
        const auto result = open(std::string("/x.") + extension, cafFile({}, zeros(4)));
        EXPECT_TRUE(result.isAudioFile);
        EXPECT_EQ(result.status, "OK");
    }
}

TEST_F(OpenDispatch, EveryOtherExtensionGoesToTheRawReader) {
    for (const char* extension : {"Caf", "cAF", "Aif", "aIF", "aiff", "AIFF", "aifc", "AIFC", "wav",
                                  "txt", "raw", "caf ", " caf", "cafe", "ca", ""}) {
        EXPECT_FALSE(isAudioFileExtension(extension)) << extension;
    }
}

TEST_F(OpenDispatch, AnAiffExtensionGoesToTheRawReaderHeaderIncluded) {
    const Bytes file = aiffFile({.frames = 1}, bigFloats({0.5F}));
    const auto result = open("/x.aiff", file);
    EXPECT_FALSE(result.isAudioFile);
    EXPECT_EQ(soundWords(), wordsOf(file, file.size() / 4));
}

TEST_F(OpenDispatch, TheSameFileNamedAifGoesToTheAudioReader) {
    open("/x.aif", aiffFile({.frames = 1}, bigFloats({0.5F})));
    EXPECT_EQ(currentSound(), (std::vector<float>{0.5F}));
}

TEST_F(OpenDispatch, AFileWithoutAnExtensionGoesToTheRawReader) {
    EXPECT_FALSE(open("/caf", zeros(8)).isAudioFile);
    EXPECT_EQ(fBuffersize, 2);
}

TEST_F(OpenDispatch, ANameThatIsNothingButAnExtensionGoesToTheRawReader) {
    EXPECT_FALSE(open("/.caf", zeros(8)).isAudioFile);
}

TEST_F(OpenDispatch, TheSwapBoxReversesRawData) {
    open("/x.raw", bigFloats({0.5F}), true);
    EXPECT_EQ(currentSound(), (std::vector<float>{0.5F}));
}

TEST_F(OpenDispatch, TheSwapBoxMeansNothingToASoundFile) {
    open("/x.caf", cafFile({}, littleFloats({0.5F})), true);
    EXPECT_EQ(currentSound(), (std::vector<float>{0.5F}));
}

// Status and trace --------------------------------------------------------------------------

TEST_F(OpenDispatch, TheStatusOfASoundFileIsTheReadersResult) {
    EXPECT_EQ(open("/x.caf", cafFile({}, zeros(4))).status, "OK");
    EXPECT_EQ(open("/x.caf", kRefused).status, "KO");
}

TEST_F(OpenDispatch, TheStatusOfRawDataIsItsFirstLine) {
    EXPECT_EQ(open("/x.txt", text("hello\nworld")).status, "Raw data file: hello\n");
}

TEST_F(OpenDispatch, TheStatusOfFailedRawDataIsTheReadersResult) {
    EXPECT_EQ(open("/x.txt", text("abc")).status, "Raw data file: size_error");
    EXPECT_EQ(openByExtension(FileUrl("/absent"), false).status, "Raw data file: error");
    platform.files.readableBytes = 0;
    EXPECT_EQ(open("/x.txt", text("hello")).status, "Raw data file: No text");
}

TEST_F(OpenDispatch, RawDataOfOneSampleIsASound) {
    EXPECT_TRUE(open("/x", zeros(4)).loaded);
    EXPECT_EQ(currentSound(), std::vector<float>{0.0F});
}

TEST_F(OpenDispatch, RawDataWithoutAnySampleLeavesNoSoundAndIsNotLoaded) {
    loadSound({0.5F});
    const OpenResult result = open("/x", zeros(3));
    EXPECT_FALSE(result.loaded);
    EXPECT_EQ(result.status, "Raw data file: size_error");
    EXPECT_TRUE(currentSound().empty());
}

TEST_F(OpenDispatch, ASoundFileIsAnnouncedBeforeItsReaderBegins) {
    open("/x.caf", kRefused);
    ASSERT_GE(platform.trace.all.size(), 2U);
    EXPECT_EQ(platform.trace.all[0],
              "log: \nHere we have a Audio File, we need a special opening routine for that\n");
    EXPECT_EQ(platform.trace.all[1], "log: \nthePath = /x.caf\n");
}

TEST_F(OpenDispatch, TheStatusOfRawDataIsLoggedAfterItsReaderHasEnded) {
    open("/x.txt", text("%s%n"));
    EXPECT_EQ(platform.trace.all, (std::vector<std::string>{
                                      "out: File /x.txt: 1\t values\n\n",
                                      "out: Buffer read!\n",
                                      "out: S = %s%n\n",
                                      "log: Raw data file: %s%n",
                                  }));
}

TEST_F(OpenDispatch, AnOpeningEndsWithThePathAndTheSoundsLength) {
    loadSound({0.1F, 0.2F, 0.3F});
    finish(false, "/last %d.caf");
    EXPECT_EQ(platform.trace.all, (std::vector<std::string>{"log: /last %d.caf", "log: 3 floats"}));
}

// Normalizing -------------------------------------------------------------------------------

TEST_F(OpenDispatch, WithoutTheBoxASoundBelowOneIsLeftAsItIs) {
    open("/x.raw", littleFloats({0.5F, 0.75F}));
    EXPECT_EQ(finish(false), 0.75F);
    EXPECT_EQ(currentSound(), (std::vector<float>{0.5F, 0.75F}));
}

TEST_F(OpenDispatch, WithTheBoxASoundBelowOneIsScaled) {
    open("/x.raw", littleFloats({0.5F, 0.75F}));
    EXPECT_EQ(finish(true), 0.75F);
    EXPECT_EQ(currentSound(), (std::vector<float>{scaled(0.5F, 0.75F), scaled(0.75F, 0.75F)}));
}

TEST_F(OpenDispatch, APeakOfOneScalesWithoutTheBox) {
    open("/x.raw", littleFloats({0.5F, 1.0F}));
    finish(false);
    EXPECT_EQ(currentSound(), (std::vector<float>{scaled(0.5F, 1.0F), scaled(1.0F, 1.0F)}));
}

TEST_F(OpenDispatch, ARefusedFilesOldSoundIsNormalizedAgainWithTheBox) {
    loadSound({0.5F});
    open("/x.caf", kRefused);
    finish(true);
    EXPECT_EQ(currentSound(), (std::vector<float>{scaled(0.5F, 0.5F)}));
    const float once = currentSound()[0];
    open("/x.caf", kRefused);
    finish(true);
    EXPECT_EQ(currentSound(), (std::vector<float>{scaled(once, once)}));
}

TEST_F(OpenDispatch, ARefusedFilesOldSoundIsNormalizedAgainWhenItsPeakIsOneOrMore) {
    loadSound({2.0F});
    open("/x.caf", kRefused);
    finish(false);
    EXPECT_EQ(currentSound(), (std::vector<float>{scaled(2.0F, 2.0F)}));
}

TEST_F(OpenDispatch, ARefusedFilesOldSoundBelowOneIsLeftAsItIsWithoutTheBox) {
    loadSound({0.5F});
    open("/x.caf", kRefused);
    finish(false);
    EXPECT_EQ(currentSound(), (std::vector<float>{0.5F}));
}

TEST_F(OpenDispatch, WithNoSoundThePeakIsZero) {
    openByExtension(FileUrl("/absent"), false);
    EXPECT_EQ(finish(true), 0.0F);
    EXPECT_EQ(platform.trace.all.back(), "log: 0 floats");
}

TEST_F(OpenDispatch, ASoundThatIsHeldIsScaledAsACopy) {
    loadSound({2.0F});
    const SampleBlock held = heldSound();
    finish(true);
    EXPECT_EQ(currentSound(), (std::vector<float>{scaled(2.0F, 2.0F)}));
    EXPECT_EQ(*held, 2.0F);
}

TEST_F(OpenDispatch, AHeldSoundForWhoseCopyThereIsNoMemoryIsNotScaled) {
    loadSound({2.0F});
    const SampleBlock held = heldSound();
    fBuffersize = INT64_MAX / 4; // more than any computer has
    finish(true);
    fBuffersize = 1;
    EXPECT_EQ(currentSound(), (std::vector<float>{2.0F}));
    ASSERT_EQ(platform.alert.shown.size(), 1U);
    EXPECT_EQ(platform.alert.shown[0].message,
              "The sound is too large for this computer's memory.");
}

TEST_F(OpenDispatch, TheSlackIsNotScaled) {
    open("/x.raw", littleFloats({2.0F}));
    finish(true);
    EXPECT_TRUE(slackIsZero());
}

} // namespace
} // namespace zemo::test
