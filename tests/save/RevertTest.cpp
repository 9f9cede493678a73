#include "dsp/Revert.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "files_test/SoundChecks.h"
#include "playback/OutputUnit.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

using Sound = std::vector<float>;

class Revert : public testing::Test {
protected:
    /// What a transformation does: it keeps the sound and puts another in its place.
    void transformInto(const Sound& result) {
        ASSERT_TRUE(make_revert(undo, fBuffer.load(), fBuffersize.load()));
        loadSound(result);
    }

    Sound copy() const { return {undo.buf.get(), undo.buf.get() + undo.bufsize}; }

    FakePlatform platform;
    undo_struct undo;
};

TEST_F(Revert, BeforeAnyTransformationItChangesNothing) {
    loadSound({1.0F, 2.0F});
    const float* const place = fBuffer.load();
    revert(undo);
    EXPECT_EQ(currentSound(), (Sound{1.0F, 2.0F}));
    EXPECT_EQ(fBuffer.load(), place);
    EXPECT_EQ(slackSamples(), kSlackSamples);
    EXPECT_EQ(undo.bufsize, 0);
}

TEST_F(Revert, WithoutASoundAndWithoutACopyItChangesNothing) {
    revert(undo);
    EXPECT_EQ(fBuffer.load(), nullptr);
    EXPECT_EQ(fBuffersize.load(), 0);
}

TEST_F(Revert, ItBringsBackWhatWasBeforeTheTransformation) {
    loadSound({1.0F, 2.0F, 3.0F});
    transformInto({-1.0F, -2.0F, -3.0F});
    revert(undo);
    EXPECT_EQ(currentSound(), (Sound{1.0F, 2.0F, 3.0F}));
}

TEST_F(Revert, ASecondOneBringsTheTransformedSoundBack) {
    loadSound({1.0F, 2.0F, 3.0F});
    transformInto({-1.0F, -2.0F, -3.0F});
    revert(undo);
    revert(undo);
    EXPECT_EQ(currentSound(), (Sound{-1.0F, -2.0F, -3.0F}));
    EXPECT_EQ(copy(), (Sound{1.0F, 2.0F, 3.0F}));
}

TEST_F(Revert, TheCountsChangePlacesWithTheSamples) {
    loadSound({1.0F, 2.0F});
    transformInto({5.0F, 6.0F, 7.0F, 8.0F, 9.0F});
    revert(undo);
    EXPECT_EQ(fBuffersize.load(), 2);
    EXPECT_EQ(undo.bufsize, 5);
    EXPECT_EQ(copy(), (Sound{5.0F, 6.0F, 7.0F, 8.0F, 9.0F}));
    revert(undo);
    EXPECT_EQ(currentSound(), (Sound{5.0F, 6.0F, 7.0F, 8.0F, 9.0F}));
}

TEST_F(Revert, OnlyTheStateBeforeTheLastTransformationComesBack) {
    loadSound({1.0F});
    transformInto({2.0F, 2.0F});
    transformInto({3.0F, 3.0F, 3.0F});
    revert(undo);
    EXPECT_EQ(currentSound(), (Sound{2.0F, 2.0F}));
    revert(undo);
    EXPECT_EQ(currentSound(), (Sound{3.0F, 3.0F, 3.0F}));
}

TEST_F(Revert, OpeningAnotherSoundKeepsTheOldCopy) {
    loadSound({1.0F, 2.0F});
    transformInto({3.0F, 4.0F});
    loadSound({5.0F, 6.0F, 7.0F});
    revert(undo);
    EXPECT_EQ(currentSound(), (Sound{1.0F, 2.0F}));
    EXPECT_EQ(copy(), (Sound{5.0F, 6.0F, 7.0F}));
}

TEST_F(Revert, AnyNumberOfThemEndsWhereItsParitySays) {
    loadSound({1.0F});
    transformInto({2.0F, 3.0F});
    for (int i = 1; i <= 1001; ++i) {
        revert(undo);
        EXPECT_EQ(currentSound(), i % 2 == 1 ? (Sound{1.0F}) : (Sound{2.0F, 3.0F}));
    }
}

TEST_F(Revert, EveryBitOfEverySampleComesBack) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    loadSound({std::nanf("1"), -std::nanf("77"), kInfinity, -kInfinity, -0.0F,
               std::numeric_limits<float>::denorm_min()});
    const auto before = soundWords();
    transformInto({0.0F});
    revert(undo);
    EXPECT_EQ(soundWords(), before);
}

TEST_F(Revert, WhatComesBackHasNoSlackThatMayBeRead) {
    loadSound({1.0F});
    transformInto({2.0F});
    revert(undo);
    EXPECT_EQ(slackSamples(), 0);
}

TEST_F(Revert, NeitherTheRateNorThePositionChanges) {
    platform.launch(48000.0);
    loadSound({1.0F, 2.0F});
    transformInto({3.0F});
    totalFrames = 17;
    revert(undo);
    EXPECT_EQ(R, 48000.0);
    EXPECT_EQ(streamFormat.mSampleRate, 48000.0);
    EXPECT_EQ(totalFrames.load(), 17);
}

TEST_F(Revert, APlayUnderWayIsAskedToStopFirst) {
    platform.launch(48000.0);
    loadSound(Sound(10000, 0.5F));
    transformInto(Sound(10000, 0.25F));
    bufferPlay0(0);
    platform.output.pump(64);
    std::vector<Sound> heard;
    platform.clock.whileSleeping = [&] { heard.push_back(platform.output.pump(64)); };
    revert(undo);
    ASSERT_FALSE(heard.empty());
    EXPECT_EQ(heard.front().front(), 0.25F); // the fade-out starts from the transformed sound
    EXPECT_LT(heard.front().back(), 0.25F);
    EXPECT_FALSE(platform.output.running);
    EXPECT_EQ(currentSound(), Sound(10000, 0.5F));
}

TEST_F(Revert, ACopyIsOfItsOwn) {
    Sound samples{1.0F, 2.0F};
    ASSERT_TRUE(make_revert(undo, samples.data(), 2));
    samples[0] = 9.0F;
    EXPECT_EQ(copy(), (Sound{1.0F, 2.0F}));
}

TEST_F(Revert, ALaterCopyTakesThePlaceOfTheEarlierOneWhateverItsLength) {
    const Sound samples{1.0F, 2.0F, 3.0F, 4.0F};
    for (const std::int64_t count : {4, 1, 3}) {
        ASSERT_TRUE(make_revert(undo, samples.data(), count));
        EXPECT_EQ(undo.bufsize, count);
        EXPECT_EQ(copy(), Sound(samples.begin(), samples.begin() + count));
    }
}

TEST_F(Revert, ACopyOfNothingIsNone) {
    loadSound({1.0F});
    ASSERT_TRUE(make_revert(undo, fBuffer.load(), 0));
    revert(undo);
    EXPECT_EQ(currentSound(), (Sound{1.0F}));
}

TEST_F(Revert, WithoutMemoryTheEarlierCopyStays) {
    const Sound samples{1.0F, 2.0F};
    ASSERT_TRUE(make_revert(undo, samples.data(), 2));
    EXPECT_FALSE(make_revert(undo, samples.data(), INT64_MAX));
    EXPECT_EQ(copy(), samples);
}

} // namespace
} // namespace zemo::test
