#include <functional>

#include "Sounds.h"
#include "dsp/AmplitudeModulation.h"
#include "dsp/Filters.h"
#include "dsp/HarmonicProcessor.h"
#include "dsp/HilbertTransformer.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "dsp/SingleSideband.h"
#include "platform_linux/LinuxServices.h"
#include "support/CancellingWork.h"

namespace zemo::test {
namespace {

using Function = std::function<Refusal(undo_struct&)>;

struct Named {
    const char* name;
    Function function;
};

const std::vector<Named> kTransformations{
    {"am", [](undo_struct& undo) { return amBuffer(440.0F, 0.5F, &undo); }},
    {"ssb", [](undo_struct& undo) { return ssbmBuffer(true, 440.0F, 1.0F, &undo); }},
    {"pm", [](undo_struct& undo) { return pmBuffer(440.0F, 2.0F, 100.0F, &undo); }},
    {"hd",
     [](undo_struct& undo) {
         return hd(true, true, false, 100, true, 1, 0.9, 0.5F, 0.1F, 0.5F, &undo);
     }},
    {"resample", [](undo_struct& undo) { return resampleBuffer(1.5F, &undo); }},
};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kLong = 150'000; // all is slower there
#else
constexpr std::size_t kLong = 1'500'000;
#endif

class Cancel : public DspTest {
protected:
    Cancel() {
        platform::services().workers = &workers_;
        R = 48000.0;
        loadSound(sound_);
        undo_.buf = allocateSamples(3);
        undo_.buf.get()[1] = 0.25F;
        undo_.bufsize = 3;
        copy_ = undo_.buf;
        // Histories that are not zero, so that a change in them shows.
        EXPECT_FALSE(ssbmBuffer(false, 100.0F, 1.0F).has_value());
        EXPECT_FALSE(hd(true, true, false, 100, true, 2, 0.9, 0.5F, 0.1F, 0.5F).has_value());
    }
    ~Cancel() override { platform::services().workers = nullptr; }

    /// What the transformation says when it is cancelled there.
    Refusal cancelledAt(double at, const Function& function) {
        const CancellingWork work(at);
        return function(undo_);
    }

    void expectCopyUntouched() const {
        EXPECT_EQ(undo_.buf, copy_);
        EXPECT_EQ(undo_.bufsize, 3);
        EXPECT_EQ(copy_.get()[1], 0.25F);
    }

    platform::ThreadWorkers workers_{3};
    const Sound sound_ = noise(kLong, 7, 1.5F);
    undo_struct undo_;
    SampleBlock copy_;
};

/// Whatever place it is cancelled at: the same sound, the same copy, the same histories; and what
/// is done next is what it would have been.
TEST_F(Cancel, LeavesTheSoundTheCopyAndTheHistoriesBitIdentical) {
    for (const auto& [name, function] : kTransformations) {
        SCOPED_TRACE(name);
        for (const double at : {0.0, 0.1, 0.4, 0.7}) {
            const Sound before = currentSound();
            const float* const block = fBuffer.load();
            const auto hilbert = hilbert_xv;
            const auto inputs = xv;
            const auto outputs = yv;
            const Refusal refusal = cancelledAt(at, function);
            ASSERT_TRUE(refusal.has_value()) << at;
            EXPECT_EQ(refusal->category, platform::ErrorCategory::Cancelled);
            EXPECT_EQ(fBuffer.load(), block);
            EXPECT_TRUE(sameBits(currentSound(), before));
            EXPECT_EQ(hilbert_xv, hilbert);
            EXPECT_EQ(xv, inputs);
            EXPECT_EQ(yv, outputs);
            expectCopyUntouched();
        }
    }
}

TEST_F(Cancel, LeavesTheNextTransformationAsItWouldHaveBeen) {
    for (const auto& [name, function] : kTransformations) {
        SCOPED_TRACE(name);
        const auto hilbert = hilbert_xv;
        const auto inputs = xv;
        const auto outputs = yv;
        loadSound(sound_);
        undo_struct undo;
        ASSERT_FALSE(function(undo).has_value());
        const Sound expected = currentSound();
        hilbert_xv = hilbert;
        xv = inputs;
        yv = outputs;
        loadSound(sound_);
        ASSERT_TRUE(cancelledAt(0.3, function).has_value());
        ASSERT_FALSE(function(undo).has_value());
        EXPECT_TRUE(sameBits(currentSound(), expected));
    }
}

/// The states of noise at -180 dB never meet those that were guessed, so nearly all of it is done
/// once more, one sample after the other.
TEST_F(Cancel, AlsoEndsTheHdProcessorsSecondRun) {
    loadSound(noise(2 * kLong, 3, 1e-9F));
    const auto refusal = cancelledAt(0.9, kTransformations[3].function);
    ASSERT_TRUE(refusal.has_value());
    EXPECT_EQ(refusal->category, platform::ErrorCategory::Cancelled);
    expectCopyUntouched();
}

TEST_F(Cancel, WorkThatIsNotCancelledIsDone) {
    for (const auto& [name, function] : kTransformations) {
        SCOPED_TRACE(name);
        CancellingWork work(2.0);
        EXPECT_FALSE(function(undo_).has_value());
    }
}

} // namespace
} // namespace zemo::test
