#include "Faults.h"
#include "Sounds.h"
#include "dsp/AmplitudeModulation.h"
#include "dsp/HarmonicProcessor.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "dsp/SingleSideband.h"
#include "overview/OverviewBuilder.h"
#include "playback/SharedState.h"

/// Every request for memory of the transformations, of Revert and of the pictures.
namespace zemo::test {
namespace {

/// What a transformation runs beside.
enum class Beside : std::uint8_t { Nothing, AnotherThread, Workers };

struct Transformation {
    const char* name;
    std::size_t samples;
    Refusal (*function)(undo_struct* undo);
};

Refusal hdWith(bool two, bool four, bool scale, std::int32_t highPass, undo_struct* undo) {
    return hd(two, four, false, 100, scale, highPass, 0.9, 0.5F, 0.5F, 0.5F, undo);
}

constexpr Transformation kTransformations[]{
    {"Resample", 30000, [](undo_struct* undo) { return resampleBuffer(1.5F, undo); }},
    {"ResamplePlainly", 200, [](undo_struct* undo) { return resampleBuffer(0.5F, undo); }},
    {"Am", 30000, [](undo_struct* undo) { return amBuffer(440.0F, 1.0F, undo); }},
    {"LowerSideband", 30000,
     [](undo_struct* undo) { return ssbmBuffer(false, 440.0F, 1.0F, undo); }},
    {"UpperSideband", 30000,
     [](undo_struct* undo) { return ssbmBuffer(true, 440.0F, 0.5F, undo); }},
    {"Fm", 30000, [](undo_struct* undo) { return pmBuffer(440.0F, 1.0F, 32.0F, undo); }},
    {"HdSecond", 300000, [](undo_struct* undo) { return hdWith(true, false, false, 0, undo); }},
    {"HdBoth", 300000, [](undo_struct* undo) { return hdWith(true, true, true, 0, undo); }},
    {"HdHighPass", 300000, [](undo_struct* undo) { return hdWith(true, true, true, 1, undo); }},
    {"HdShort", 500, [](undo_struct* undo) { return hdWith(false, true, true, 2, undo); }},
};

class EveryAllocationOf : public EveryAllocation,
                          public testing::WithParamInterface<std::tuple<Transformation, Beside>> {
protected:
    EveryAllocationOf() {
        sound_ = noise(std::get<0>(GetParam()).samples, 1);
        const Beside beside = std::get<1>(GetParam());
        platform::services().longWork = beside == Beside::AnotherThread ? &work_ : nullptr;
        platform::services().workers = beside == Beside::Workers ? &workers_ : nullptr;
    }

    WorkOnAnotherThread work_;
    platform::ThreadWorkers workers_{2};
};

TEST_P(EveryAllocationOf, LeavesTheSoundAndTheCopyForRevertAndSaysSo) {
    const auto function = std::get<0>(GetParam()).function;
    failEach(
        [&] {
            const Refusal refusal = function(&undo_);
            if (refusal) {
                EXPECT_EQ(refusal->category, platform::ErrorCategory::OutOfMemory);
                sentences_.add(refusal->sentence);
            }
            return !refusal;
        },
        {"There is not enough memory for this transformation.\n"});
}

std::string nameOf(const testing::TestParamInfo<EveryAllocationOf::ParamType>& test) {
    constexpr std::array kBeside{"", "OnAnotherThread", "WithWorkers"};
    return std::string(std::get<0>(test.param).name) +
           kBeside.at(static_cast<std::size_t>(std::get<1>(test.param)));
}

INSTANTIATE_TEST_SUITE_P(All, EveryAllocationOf,
                         testing::Combine(testing::ValuesIn(kTransformations),
                                          testing::Values(Beside::Nothing, Beside::AnotherThread,
                                                          Beside::Workers)),
                         nameOf);

using EveryAllocationHere = EveryAllocation;

TEST_F(EveryAllocationHere, OfRevertThereAreNone) {
    prepare();
    FailingMemory failing({.after = 0, .forGood = true});
    revert(undo_);
    failing.end();
    EXPECT_EQ(failing.asked(), 0U);
    EXPECT_EQ(fBuffersize.load(), 100);
}

TEST_F(EveryAllocationHere, OfACopyForRevertLeavesTheOldCopy) {
    failEach(
        [&] {
            const bool done = make_revert(undo_, fBuffer.load(), fBuffersize.load());
            if (!done) {
                sentences_.add("no");
            }
            return done;
        },
        {"no\n"});
}

/// What the builder has told last.
struct Told {
    bool complete = false;
    bool wave = false;
    bool spectrogram = false;
};

TEST_F(EveryAllocationHere, OfThePicturesEndsWithWhatCouldBeMade) {
    prepare();
    Told told;
    overview::OverviewBuilder builder([&](const overview::Overview& made) {
        told = {made.isComplete, made.wave != nullptr, made.spectrogram != nullptr};
    });
    const auto build = [&] {
        builder.rebuild({fBuffer.load(), static_cast<std::size_t>(fBuffersize.load())}, R);
        builder.finish();
    };
    build();
    ASSERT_TRUE(told.complete && told.wave && told.spectrogram);
    FailingMemory counting({});
    build();
    counting.end();
    const std::size_t requests = counting.asked();
    ASSERT_GT(requests, 10U);
    const State before = state();
    for (const bool forGood : {false, true}) {
        for (std::size_t n = 0; n < requests; ++n) {
            SCOPED_TRACE(n);
            builder.stop();
            told = {};
            FailingMemory failing({.after = n, .forGood = forGood});
            build();
            failing.end();
            EXPECT_TRUE(told.complete);
            EXPECT_FALSE(told.spectrogram && !told.wave);
            EXPECT_FALSE(forGood && told.spectrogram);
        }
    }
    EXPECT_TRUE(state() == before);
}

} // namespace
} // namespace zemo::test
