#include <array>
#include <cstdint>
#include <random>

#include "Faults.h"
#include "Sounds.h"
#include "dsp/AmplitudeModulation.h"
#include "dsp/HarmonicProcessor.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "dsp/SingleSideband.h"
#include "playback/SharedState.h"

namespace zemo::test {
namespace {

/// Every sound of these runs has between half and twice as many samples.
constexpr std::size_t kSamples = 20000;
constexpr int kTransformations = 1000;

class NoGrowth : public EveryAllocation {
protected:
    NoGrowth() { platform::services().workers = &workers_; }

    /// One at random, with parameters at random; the sound stays in bounds.
    void transform() {
        const auto part = [&](float low, float high) {
            return std::uniform_real_distribution<float>(low, high)(random_);
        };
        switch (std::uniform_int_distribution<int>(0, 6)(random_)) {
        case 0:
            return did(resampleBuffer(part(0.9F, 1.1F) * sizeRatio(), &undo_));
        case 1:
            return did(amBuffer(part(1.0F, 9000.0F), part(0.0F, 1.5F), &undo_));
        case 2:
            return did(ssbmBuffer(false, part(1.0F, 9000.0F), part(0.0F, 1.5F), &undo_));
        case 3:
            return did(ssbmBuffer(true, part(1.0F, 9000.0F), part(0.0F, 1.5F), &undo_));
        case 4:
            return did(pmBuffer(part(1.0F, 9000.0F), part(0.0F, 9.0F), part(4.0F, 32.0F), &undo_));
        case 5:
            return did(hd(true, part(0, 1) > 0.5F, false, 500, true, part(0, 1) > 0.5F ? 1 : 0, 0.9,
                          part(0.0F, 1.0F), 0.5F, 0.5F, &undo_));
        default:
            revert(undo_);
        }
    }

    static void did(const Refusal& refusal) { ASSERT_FALSE(refusal.has_value()); }

    /// Brings the sound back towards its first length.
    static float sizeRatio() {
        return static_cast<float>(kSamples) / static_cast<float>(fBuffersize.load());
    }

    platform::ThreadWorkers workers_{2};
    std::mt19937 random_{1};
};

TEST_F(NoGrowth, AThousandTransformationsHoldNoMoreThanTheFirstFifty) {
    sound_ = noise(kSamples, 1);
    prepare();
    long blocks = 0;
    long bytes = 0;
    for (int i = 0; i < kTransformations + 50; ++i) {
        if (i == 50) { // the threads and the library have their own memory by now
            loadSound(sound_);
            make_revert(undo_, sound_.data(), 1);
            blocks = heldBlocks();
            bytes = heldBytes();
        }
        transform();
        ASSERT_GT(fBuffersize.load(), 0);
        ASSERT_LT(fBuffersize.load(), std::int64_t{2} * kSamples);
    }
    loadSound(sound_);
    make_revert(undo_, sound_.data(), 1);
    EXPECT_EQ(heldBlocks(), blocks);
    EXPECT_EQ(heldBytes(), bytes);
}

} // namespace
} // namespace zemo::test
