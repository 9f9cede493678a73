#include <cstdlib>
#include <functional>

#include <sys/resource.h>
#include <unistd.h>

#include "Sounds.h"
#include "dsp/AmplitudeModulation.h"
#include "dsp/Filters.h"
#include "dsp/HarmonicProcessor.h"
#include "dsp/HilbertTransformer.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "dsp/Revert.h"
#include "dsp/SingleSideband.h"
#include "support/FailingAllocator.h"

namespace zemo::test {
namespace {

constexpr const char* kSentence = "There is not enough memory for this transformation.";

/// Blocks that hold samples, and not texts.
constexpr std::size_t kLarge = 4096;

/// What must be as it was after a refusal.
struct Everything {
    Sound sound = currentSound();
    float* block = fBuffer.load();
    std::array<double, 514> hilbert = hilbert_xv;
    std::array<float, 3> inputs = xv;
    std::array<float, 3> outputs = yv;

    void expectUnchanged() const {
        EXPECT_EQ(fBuffer.load(), block);
        EXPECT_TRUE(sameBits(currentSound(), sound));
        EXPECT_EQ(hilbert_xv, hilbert);
        EXPECT_EQ(xv, inputs);
        EXPECT_EQ(yv, outputs);
    }
};

/// Refuses every large block in turn; returns how many the function asks for.
int refuseEachBlockInTurn(const std::function<Refusal()>& function) {
    for (long n = 0; n < 100; ++n) {
        const Everything before;
        FailingMemory failing({.after = static_cast<std::size_t>(n), .atLeastBytes = kLarge});
        const Refusal refusal = function();
        failing.end();
        if (!failing.hasFailed()) {
            EXPECT_FALSE(refusal.has_value());
            return static_cast<int>(n);
        }
        EXPECT_TRUE(refusal.has_value()) << n;
        if (refusal) {
            EXPECT_EQ(refusal->sentence, kSentence);
            EXPECT_EQ(refusal->category, platform::ErrorCategory::OutOfMemory);
        }
        before.expectUnchanged();
    }
    return -1;
}

class OutOfMemory : public DspTest {
protected:
    OutOfMemory() {
        R = 44100.0;
        hilbert_xv.fill(0.25);
        xv.fill(0.5F);
        yv.fill(0.125F);
        loadSound(noise(30000, 1));
    }
};

TEST_F(OutOfMemory, AmIsRefusedAndTheSoundStays) {
    EXPECT_EQ(refuseEachBlockInTurn([] { return amBuffer(440.0F, 1.0F); }), 1);
}

TEST_F(OutOfMemory, SsbIsRefusedAndTheSoundAndTheDelayLineStay) {
    // The result and the chunk.
    EXPECT_EQ(refuseEachBlockInTurn([] { return ssbmBuffer(true, 440.0F, 1.0F); }), 2);
}

TEST_F(OutOfMemory, PmIsRefusedAndTheSoundStays) {
    R = 400.0; // so that the envelope and its segments are large
    EXPECT_EQ(refuseEachBlockInTurn([] { return pmBuffer(44.0F, 1.0F, 32.0F); }), 3);
}

TEST_F(OutOfMemory, HdIsRefusedAndTheSoundAndTheHighPassStay) {
    // The result alone: the harmonics need no arrays beside it.
    EXPECT_EQ(refuseEachBlockInTurn(
                  [] { return hd(true, true, false, 100, true, 1, 0.9, 0.5F, 0.5F, 0.5F); }),
              1);
}

TEST_F(OutOfMemory, ResamplingIsRefusedAndTheSoundStays) {
    // The result and the workers' rows.
    EXPECT_EQ(refuseEachBlockInTurn([] { return resampleBuffer(1.5F); }), 2);
}

TEST_F(OutOfMemory, ARefusedTransformationLeavesTheCopyForRevert) {
    undo_struct undo;
    ASSERT_TRUE(make_revert(undo, fBuffer.load(), 100));
    const float* const block = undo.buf.get();
    const FailingMemory failing({.after = 0, .atLeastBytes = kLarge});
    EXPECT_TRUE(amBuffer(440.0F, 1.0F, &undo).has_value());
    EXPECT_TRUE(resampleBuffer(-1.0F, &undo).has_value());
    EXPECT_EQ(undo.buf.get(), block);
    EXPECT_EQ(undo.bufsize, 100);
}

TEST_F(OutOfMemory, ACopyForRevertIsNotTakenAndTheOldOneStays) {
    undo_struct undo;
    ASSERT_TRUE(make_revert(undo, fBuffer.load(), 100));
    const Sound kept(undo.buf.get(), undo.buf.get() + 100);
    FailingMemory failing({.after = 0, .atLeastBytes = kLarge});
    EXPECT_FALSE(make_revert(undo, fBuffer.load(), fBuffersize.load()));
    failing.end();
    EXPECT_EQ(undo.bufsize, 100);
    EXPECT_TRUE(sameBits(Sound(undo.buf.get(), undo.buf.get() + 100), kept));
}

/// In a process of its own whose address space cannot grow: 0 when the sound is refused and stays.
int underALimit() {
    constexpr rlim_t kRoom = 512UL << 20U;
    const Sound before = currentSound();
    const rlimit limit{kRoom, kRoom};
    if (setrlimit(RLIMIT_AS, &limit) != 0) {
        return 2;
    }
    const Refusal refusal = resampleBuffer(60000.0F); // 1.8e9 samples: 7 GB
    const bool refused = refusal.has_value() && refusal->sentence == kSentence;
    return refused && sameBits(currentSound(), before) ? 0 : 1;
}

TEST_F(OutOfMemory, ARealLackOfMemoryIsRefusedJustSo) {
    EXPECT_EXIT(std::_Exit(underALimit()), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace zemo::test
