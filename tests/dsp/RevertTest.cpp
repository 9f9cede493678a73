#include "dsp/Revert.h"

#include <functional>

#include "Sounds.h"
#include "dsp/AmplitudeModulation.h"
#include "dsp/HarmonicProcessor.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "dsp/SingleSideband.h"
#include "playback/SharedState.h"

namespace zemo::test {
namespace {

class Revert : public DspTest {
protected:
    Revert() { R = 44100.0; }

    void keep() { ASSERT_TRUE(make_revert(undo_, fBuffer.load(), fBuffersize.load())); }
    Sound kept() const { return {undo_.buf.get(), undo_.buf.get() + undo_.bufsize}; }

    undo_struct undo_;
};

TEST_F(Revert, BeforeAnyProcessingItChangesNothing) {
    const Sound sound = noise(100, 1);
    loadSound(sound);
    const float* const block = fBuffer.load();
    revert(undo_);
    EXPECT_EQ(currentSound(), sound);
    EXPECT_EQ(fBuffer.load(), block);
    EXPECT_EQ(undo_.bufsize, 0);
}

TEST_F(Revert, BringsBackTheSoundBeforeTheStep) {
    const Sound sound = noise(100, 2);
    loadSound(sound);
    keep();
    ASSERT_FALSE(amBuffer(440.0F, 1.0F).has_value());
    revert(undo_);
    EXPECT_TRUE(sameBits(currentSound(), sound));
}

/// Each hands over the very block that it replaces, as a copy would have it.
TEST_F(Revert, EveryTransformationLeavesTheSoundBeforeItAsTheCopy) {
    const std::vector<std::function<Refusal()>> transformations{
        [this] { return amBuffer(440.0F, 1.0F, &undo_); },
        [this] { return ssbmBuffer(true, 440.0F, 1.0F, &undo_); },
        [this] { return pmBuffer(440.0F, 1.0F, 8.0F, &undo_); },
        [this] { return hd(true, true, false, 100, true, 1, 0.9, 0.5F, 0.5F, 0.5F, &undo_); },
        [this] { return resampleBuffer(1.5F, &undo_); },
    };
    for (const auto& transformation : transformations) {
        const Sound sound = noise(8000, 5);
        loadSound(sound);
        const float* const block = fBuffer.load();
        ASSERT_FALSE(transformation().has_value());
        EXPECT_FALSE(sameBits(currentSound(), sound));
        EXPECT_EQ(undo_.buf.get(), block);
        EXPECT_TRUE(sameBits(kept(), sound));
        revert(undo_);
        EXPECT_TRUE(sameBits(currentSound(), sound));
    }
}

TEST_F(Revert, TwiceIsIdentity) {
    loadSound(noise(100, 3));
    keep();
    ASSERT_FALSE(amBuffer(440.0F, 1.0F).has_value());
    const Sound processed = currentSound();
    const Sound before = kept();
    revert(undo_);
    revert(undo_);
    EXPECT_TRUE(sameBits(currentSound(), processed));
    EXPECT_TRUE(sameBits(kept(), before));
}

TEST_F(Revert, ExchangesSoundsOfDifferentLength) {
    const Sound sound = noise(100, 4);
    loadSound(sound);
    keep();
    ASSERT_FALSE(resampleBuffer(3.0F).has_value());
    const Sound longer = currentSound();
    ASSERT_EQ(longer.size(), 297U);
    revert(undo_);
    EXPECT_EQ(fBuffersize.load(), 100);
    EXPECT_EQ(undo_.bufsize, 297);
    EXPECT_TRUE(sameBits(currentSound(), sound));
    EXPECT_TRUE(sameBits(kept(), longer));
    revert(undo_);
    EXPECT_TRUE(sameBits(currentSound(), longer));
}

TEST_F(Revert, AfterTwoStepsOnlyTheSecondIsUndone) {
    loadSound(noise(100, 5));
    keep();
    ASSERT_FALSE(resampleBuffer(2.0F).has_value());
    const Sound between = currentSound();
    keep();
    ASSERT_FALSE(amBuffer(440.0F, 1.0F).has_value());
    revert(undo_);
    EXPECT_TRUE(sameBits(currentSound(), between));
}

TEST_F(Revert, AnotherSoundOpenedMeanwhileIsExchangedForTheOldCopy) {
    const Sound first = noise(100, 6);
    const Sound second = noise(50, 7);
    loadSound(first);
    keep();
    loadSound(second);
    revert(undo_);
    EXPECT_TRUE(sameBits(currentSound(), first));
    EXPECT_TRUE(sameBits(kept(), second));
}

TEST_F(Revert, TheCopyIsNotTheSoundItself) {
    const Sound sound = noise(100, 8);
    loadSound(sound);
    keep();
    fBuffer.load()[10] = 42.0F;
    EXPECT_TRUE(sameBits(kept(), sound));
}

TEST_F(Revert, KeepsEveryBitOfWhatIsNoNumber) {
    const Sound sound{kNaN, -kNaN, kInfinity, -kInfinity, -0.0F, kTiniest};
    loadSound(sound);
    keep();
    loadSound({1.0F});
    revert(undo_);
    EXPECT_TRUE(sameBits(currentSound(), sound));
}

TEST_F(Revert, ANewCopyReplacesTheOldOne) {
    loadSound(noise(100, 9));
    keep();
    const Sound second = noise(30, 10);
    loadSound(second);
    keep();
    EXPECT_TRUE(sameBits(kept(), second));
}

TEST_F(Revert, LeavesTheRateAndThePlayedFramesAlone) {
    loadSound(noise(100, 11));
    keep();
    totalFrames = 77;
    revert(undo_);
    EXPECT_EQ(R, 44100.0);
    EXPECT_EQ(totalFrames.load(), 77);
}

TEST_F(Revert, ACopyOfNothingIsNoCopy) {
    ASSERT_TRUE(make_revert(undo_, nullptr, 0));
    const Sound sound = noise(10, 12);
    loadSound(sound);
    revert(undo_);
    EXPECT_EQ(currentSound(), sound);
}

TEST_F(Revert, ALengthThatCannotBeHadLeavesTheCopyAsItWas) {
    const Sound sound = noise(100, 13);
    loadSound(sound);
    keep();
    EXPECT_FALSE(make_revert(undo_, fBuffer.load(), INT64_MAX));
    EXPECT_FALSE(make_revert(undo_, fBuffer.load(), -1));
    EXPECT_TRUE(sameBits(kept(), sound));
}

} // namespace
} // namespace zemo::test
