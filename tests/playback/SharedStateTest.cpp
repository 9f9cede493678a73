#include "playback/SharedState.h"

#include <gtest/gtest.h>

#include <cstddef>

#include "playback/Delegate.h"
#include "playback/SoundExchange.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

// Read before any test has run.
const float nAtStart = N;
const float* const soundAtStart = fBuffer;
const std::int64_t countAtStart = fBuffersize;
const double rateAtStart = R;
const std::uint32_t stateAtStart = bufferPlayer.rampState;
const bool omniAtStart = omni;

TEST(SharedState, BeforeAnyLoadThereIsNoSound) {
    EXPECT_EQ(soundAtStart, nullptr);
    EXPECT_EQ(countAtStart, 0);
}

TEST(SharedState, StartsZeroed) {
    EXPECT_EQ(rateAtStart, 0.0);
    EXPECT_EQ(stateAtStart, Silent);
    EXPECT_FALSE(omniAtStart);
    EXPECT_EQ(nAtStart, 1000.0F);
}

TEST(SharedState, TheRampStatesHaveTheirNumbers) {
    EXPECT_EQ(Silent, 0);
    EXPECT_EQ(FadeIn, 1);
    EXPECT_EQ(Steady, 2);
    EXPECT_EQ(FadeOut, 3);
}

TEST(SharedState, ThePlayersFieldsHaveTheirWidthsAndOrder) {
    EXPECT_EQ(sizeof(bufferPlayer.outputUnit), sizeof(void*));
    EXPECT_EQ(sizeof(bufferPlayer.readPosition), 8U);
    EXPECT_EQ(sizeof(bufferPlayer.rampState), 4U);
    EXPECT_EQ(sizeof(bufferPlayer.isPlaying), 1U);
    EXPECT_EQ(sizeof(bufferPlayer.buffer), sizeof(void*));
    EXPECT_EQ(sizeof(bufferPlayer.rmsMode), 1U);
    EXPECT_EQ(sizeof(bufferPlayer.idleCycles), 4U);
    EXPECT_EQ(sizeof(bufferPlayer.midiClient), 4U);
    EXPECT_EQ(sizeof(bufferPlayer.midiInPort), 4U);
    EXPECT_EQ(offsetof(BufferPlayer, outputUnit), 0U);
    EXPECT_EQ(offsetof(BufferPlayer, readPosition), 8U);
    EXPECT_EQ(offsetof(BufferPlayer, rampState), 16U);
    EXPECT_EQ(offsetof(BufferPlayer, isPlaying), 20U);
    EXPECT_EQ(offsetof(BufferPlayer, buffer), 24U);
    EXPECT_EQ(offsetof(BufferPlayer, rmsMode), 32U);
    EXPECT_EQ(offsetof(BufferPlayer, idleCycles), 36U);
    EXPECT_EQ(offsetof(BufferPlayer, midiClient), 40U);
    EXPECT_EQ(offsetof(BufferPlayer, midiInPort), 44U);
}

TEST(SharedState, ALoadedSoundIsFollowedByZeroedSlack) {
    const FakePlatform platform;
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}, std::size_t{5000}}) {
        loadSound(std::vector<float>(count, 0.5F));
        ASSERT_EQ(fBuffersize, static_cast<std::int64_t>(count));
        for (std::size_t i = 0; i < 1024; ++i) {
            ASSERT_EQ(fBuffer.load()[count + i], 0.0F);
        }
    }
}

TEST(SharedState, CleanForgetsTheLengthButNotTheAddress) {
    const FakePlatform platform;
    loadSound({0.5F, 0.25F});
    const float* const before = fBuffer;
    clean();
    EXPECT_EQ(fBuffersize, 0);
    EXPECT_EQ(fBuffer, before);
}

TEST(SharedState, RedrawChangesNothing) {
    const FakePlatform platform;
    redraw();
    EXPECT_TRUE(platform.trace.all.empty());
    EXPECT_EQ(value, 0.0F);
}

} // namespace
} // namespace zemo::test
