#include "playback/SoundExchange.h"

#include <memory>

#include <gtest/gtest.h>

#include "playback/OutputUnit.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

using namespace std::chrono_literals;

class SoundExchange : public testing::Test {
protected:
    SoundExchange() { platform_.launch(); }

    void startPlaying(std::size_t samples) {
        loadSound(std::vector<float>(samples, 0.5F));
        bufferPlay0(0);
        platform_.output.pump(8);
    }

    FakePlatform platform_;
};

TEST_F(SoundExchange, ReplacesTheSound) {
    loadSound({1, 2, 3});
    EXPECT_EQ(currentSound(), std::vector<float>({1, 2, 3}));
    loadSound({4});
    EXPECT_EQ(currentSound(), std::vector<float>({4}));
}

TEST_F(SoundExchange, AnEmptiedBufferIsNull) {
    loadSound({1, 2, 3});
    emptyBuffer();
    EXPECT_EQ(fBuffer, nullptr);
    EXPECT_EQ(fBuffersize, 0);
}

TEST_F(SoundExchange, ASwapHandsTheOldSoundBack) {
    loadSound({1, 2, 3});
    const float* const old = fBuffer;
    SampleBlock samples = allocateSamples(2);
    const float* const fresh = samples.get();
    std::int64_t count = 2;
    std::int64_t slack = 7;
    swapBuffer(samples, count, slack);
    EXPECT_EQ(samples.get(), old);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(slack, kSlackSamples);
    EXPECT_EQ(fBuffer, fresh);
    EXPECT_EQ(fBuffersize, 2);
    EXPECT_EQ(slackSamples(), 7);
}

TEST_F(SoundExchange, NoMemoryGivesNull) {
    EXPECT_EQ(allocateSamples(-1), nullptr);
    EXPECT_EQ(allocateSamples(INT64_MAX), nullptr);
    EXPECT_EQ(allocateSamples(INT64_MAX / 4), nullptr);
}

TEST_F(SoundExchange, ASoundThatNobodyElseHoldsIsWritableInItsPlace) {
    loadSound({1, 2, 3});
    const float* const before = fBuffer;
    EXPECT_TRUE(ensureSoundIsWritable());
    EXPECT_EQ(fBuffer, before);
}

TEST_F(SoundExchange, ASoundThatSomebodyElseHoldsIsWritableAsACopy) {
    loadSound({1, 2, 3});
    const SampleBlock held = heldSound();
    EXPECT_TRUE(ensureSoundIsWritable());
    EXPECT_NE(fBuffer, held.get());
    EXPECT_EQ(currentSound(), std::vector<float>({1, 2, 3}));
    EXPECT_EQ(slackSamples(), kSlackSamples);
    *fBuffer = 7;
    EXPECT_EQ(*held, 1);
}

TEST_F(SoundExchange, WithoutMemoryForACopyAHeldSoundStaysAsItIs) {
    loadSound({1, 2, 3});
    const SampleBlock held = heldSound();
    fBuffersize = INT64_MAX / 4; // more than any computer has
    EXPECT_FALSE(ensureSoundIsWritable());
    EXPECT_EQ(fBuffer, held.get());
    fBuffersize = 3;
}

TEST_F(SoundExchange, NewSamplesAreZeroSlackIncluded) {
    const SampleBlock block = allocateSamples(100);
    ASSERT_NE(block, nullptr);
    for (std::size_t i = 0; i < 100 + 1024; ++i) {
        ASSERT_EQ(block.get()[i], 0.0F);
    }
}

TEST_F(SoundExchange, AtRestItDoesNotWait) {
    loadSound({1, 2, 3});
    loadSound({4});
    EXPECT_EQ(platform_.clock.time, 0ns);
}

TEST_F(SoundExchange, APlayUnderWayFadesOutOfTheOldSoundFirst) {
    startPlaying(1000);
    std::vector<std::vector<float>> heard;
    platform_.clock.whileSleeping = [&] {
        if (platform_.output.running) {
            heard.push_back(platform_.output.pump(2));
        }
    };
    loadSound(std::vector<float>(10, 0.75F));
    ASSERT_EQ(heard.size(), 4U) << "one fade-out call and three silent ones";
    EXPECT_EQ(heard[0], std::vector<float>({0.5F, 0.25F}));
    EXPECT_EQ(heard[1], std::vector<float>({0.0F, 0.0F}));
    EXPECT_EQ(currentSound(), std::vector<float>(10, 0.75F));
    EXPECT_FALSE(platform_.output.running);
    EXPECT_EQ(bufferPlayer.rampState, Silent);
}

TEST_F(SoundExchange, ADeviceThatMakesNoCallsIsHaltedAfterABoundedWait) {
    startPlaying(1000);
    loadSound({4});
    EXPECT_GE(platform_.clock.time, kIdleWait);
    EXPECT_LT(platform_.clock.time, kIdleWait + 10ms);
    EXPECT_FALSE(platform_.output.running);
    EXPECT_EQ(bufferPlayer.rampState, Silent);
    EXPECT_EQ(bufferPlayer.isPlaying, 0);
    EXPECT_EQ(currentSound(), std::vector<float>({4}));
}

TEST_F(SoundExchange, AHaltedPlayGivesThePlayTitleBack) {
    startPlaying(1000);
    platform_.delegate.messages.clear();
    loadSound({4});
    EXPECT_EQ(platform_.delegate.messages,
              std::vector<std::string>({"resetPlayTitle", "resetMeter"}));
}

TEST_F(SoundExchange, APlayAfterItIsOfTheNewSound) {
    startPlaying(1000);
    loadSound(std::vector<float>(100, 0.75F));
    bufferPlay0(0);
    platform_.output.pump(4);
    EXPECT_EQ(platform_.output.pump(4), std::vector<float>(4, 0.75F));
}

TEST_F(SoundExchange, ACallInTheMomentOfTheExchangeIsSilent) {
    loadSound(std::vector<float>(100, 0.5F));
    bufferPlayer.rampState = Steady;
    bufferPlayer.isPlaying = 1;
    fBuffersize = 0; // as the callback finds it while the blocks are exchanged
    EXPECT_EQ(platform_.output.pump(4, 0.75F), std::vector<float>(4, 0.0F));
}

TEST_F(SoundExchange, LooksAfterADeviceThatMakesNoCallYet) {
    loadSound(std::vector<float>(100, 0.5F));
    bufferPlay0(0);
    platform_.clock.whileSleeping = [this] {
        if (platform_.output.attended == 3) {
            platform_.output.running = false; // as it is after its last call
        }
    };
    fallIdle();
    EXPECT_EQ(platform_.output.attended, 3);
}

TEST_F(SoundExchange, WaitsForACallThatStillReadsTheOldSound) {
    loadSound({0.5F, 0.25F});
    platform_.output.pump(4); // a call that has ended counts for none that has not
    auto call = std::make_unique<RenderPassage>();
    const SampleBlock held = heldSound();
    int slept = 0;
    platform_.clock.whileSleeping = [&] {
        EXPECT_EQ(heldSound(), held); // not yet
        if (++slept == 3) {
            call.reset();
        }
    };
    loadSound({0.75F});
    EXPECT_EQ(slept, 3);
    EXPECT_EQ(currentSound(), std::vector<float>{0.75F});
}

TEST(CleanedSound, IsFreedUnlessSomebodyElseHoldsIt) {
    const FakePlatform platform;
    loadSound({0.5F, 0.25F});
    const SampleBlock held = heldSound();
    ASSERT_EQ(held.use_count(), 2);
    clean();
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(fBuffersize.load(), 0);
    EXPECT_EQ(slackSamples(), 0);
}

} // namespace
} // namespace zemo::test
