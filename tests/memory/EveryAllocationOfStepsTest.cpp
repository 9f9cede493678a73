#include <algorithm>

#include "Faults.h"
#include "ForeignSounds.h"
#include "batch/StepRunner.h"
#include "dsp/HilbertTransformer.h"
#include "playback/OutputUnit.h"
#include "playback/SharedState.h"

/// Every request for memory of zemo-batch's steps.
namespace zemo::test {
namespace {

using namespace batch;

class EveryAllocationOfSteps : public EveryAllocation {
protected:
    EveryAllocationOfSteps() : output_(44100.0) {
        platform::services().audioOutput = &output_;
        platform::services().workers = &workers_;
        createOutputUnit(&bufferPlayer);
        sparing_ = "libsndfile libsoxr libogg libvorbis libFLAC libopus";
    }

    /// The copy for Revert is the runner's, so it is seen when it becomes the sound.
    State state() override {
        State now = EveryAllocation::state();
        runner_->run(RevertStep{});
        now.copy = EveryAllocation::state().sound;
        runner_->run(RevertStep{});
        return now;
    }

    /// The sound, and behind it one of other bits for Revert.
    void prepare() override {
        EveryAllocation::prepare();
        undo_ = {};
        runner_.emplace(output_);
        runner_->run(ResampleStep{0.5F});
        loadSound(sound_);
        hilbert_xv.fill(0.25);
        sentences_.said.clear();
    }

    void failStep(const Step& step, const Sayings& sayings) {
        failEach([&] { return runner_->run(step); }, sayings);
    }

    /// A refusal of the room, or of the step itself.
    void failTransformation(const Step& step, const std::string& name) {
        failStep(step,
                 {"zemo-batch: " + name + ": There is not enough memory for this transformation.\n",
                  "zemo-batch: " + name + ": there is not enough memory for it.\n"});
    }

    platform::ThreadWorkers workers_{2};
    OfflineOutput output_;
    std::optional<StepRunner> runner_;
};

TEST_F(EveryAllocationOfSteps, Transformations) {
    failTransformation(ResampleStep{1.25F}, "resample");
    failTransformation(AmStep{AmStep::Kind::Am, 440.0F, 1.0F}, "am");
    failTransformation(AmStep{AmStep::Kind::SsbLower, 440.0F, 1.0F}, "ssb-lower");
    failTransformation(AmStep{AmStep::Kind::SsbUpper, 440.0F, 1.0F}, "ssb-upper");
    failTransformation(FmStep{440.0F, 1.0F, 8.0F}, "fm");
    failTransformation(HdStep{}, "hd");
}

TEST_F(EveryAllocationOfSteps, OfRevertThereAreNone) {
    prepare();
    FailingMemory failing({.after = 0, .forGood = true});
    EXPECT_TRUE(runner_->run(RevertStep{}));
    failing.end();
    EXPECT_EQ(failing.asked(), 0U);
}

TEST_F(EveryAllocationOfSteps, Open) {
    for (const std::string name : {"x.caf", "x.raw"}) {
        keep(name, name == "x.caf" ? cafFile({.rate = 44100.0}, littleFloats({0.5F, 0.25F}))
                                   : littleFloats({0.5F, 0.25F}));
        const std::string step = "zemo-batch: open " + path(name) + ": ";
        const std::string alert = "The sound is too large for this computer's memory.\n";
        failStep(OpenStep{path(name)},
                 {alert + step + "the file was not opened (KO).\n",
                  alert + step + "the file was not opened (error).\n",
                  alert + step + "the file was not opened (Raw data file: error).\n",
                  step + "there is not enough memory for it.\n"});
    }
}

TEST_F(EveryAllocationOfSteps, Save) {
    for (const std::string name : {"x.caf", "x.aif"}) {
        keep(name, counting(77));
        const std::string step = "zemo-batch: save " + path(name) + ": ";
        failStep(SaveStep{path(name)}, {"There is not enough memory to save the sound.\n" + step +
                                            "the file was not saved.\n",
                                        step + "there is not enough memory for it.\n"});
    }
}

TEST_F(EveryAllocationOfSteps, Import) {
    keep("x.wav", wavOfZeros(2, 48000, 3000));
    const std::string step = "zemo-batch: import " + path("x.wav") + ": ";
    failStep(ImportStep{path("x.wav")},
             {step + "The sound is too large for this computer's memory.\n",
              step + "there is not enough memory for it.\n"});
}

TEST_F(EveryAllocationOfSteps, Export) {
    for (const std::string name : {"x.wav", "x.flac"}) {
        keep(name, counting(77));
        const std::string step = "zemo-batch: export " + path(name) + ": ";
        failStep(ExportStep{path(name)},
                 {step + "The file cannot be written: Cannot allocate memory.\n",
                  step + "there is not enough memory for it.\n"});
    }
}

TEST_F(EveryAllocationOfSteps, WhatOnlyReadsTheSound) {
    keep("x", counting(77));
    const std::string file = path("x");
    failStep(DumpStep{file},
             {"zemo-batch: dump " + file + ": there is not enough memory for it.\n"});
    failStep(InfoStep{}, {"zemo-batch: info: there is not enough memory for it.\n"});
}

} // namespace
} // namespace zemo::test
