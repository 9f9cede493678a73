#include "rescue/UnsavedWork.h"

#include <algorithm>
#include <memory>

#include "Rescues.h"
#include "dsp/Revert.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo::test {
namespace {

using namespace std::chrono_literals;
using rescue::RescueKeeper;
using rescue::SoundIdentity;
using rescue::UnsavedWork;

/// A person's steps, on the sound and as the work is told of them.
class UnsavedSounds : public RescueTest {
protected:
    UnsavedSounds() { work_.keepWith(*keeper_); }

    void open(float sample) {
        const SoundIdentity before = SoundIdentity::now();
        makeSound(100, sample);
        work_.opened(before);
    }
    void transform(float sample) {
        const SoundIdentity before = SoundIdentity::now();
        SampleBlock samples = allocateSamples(100);
        std::fill_n(samples.get(), 100, sample);
        std::int64_t count = 100;
        std::int64_t slack = kSlackSamples;
        swapBuffer(samples, count, slack);
        make_revert(undo_, std::move(samples), count);
        work_.changed(before, "bell.caf");
    }
    /// In the block itself, as where nobody else holds it.
    void scaleInPlace(float factor) {
        const SoundIdentity before = SoundIdentity::now();
        keeper_->finish(60s);
        std::transform(fBuffer.load(), fBuffer.load() + 100, fBuffer.load(),
                       [factor](float sample) { return sample * factor; });
        work_.scaled(before, "bell.caf");
    }
    void scaleInACopy(float factor) {
        const SoundIdentity before = SoundIdentity::now();
        makeSound(100, fBuffer.load()[0] * factor);
        work_.scaled(before, "bell.caf");
    }
    void takeBack() {
        const SoundIdentity before = SoundIdentity::now();
        revert(undo_);
        work_.changed(before, "bell.caf");
    }
    void save() { work_.saved(HeldSound::take()); }

    /// The sample that every one of the copy's is; 0 when there is no copy.
    float kept() {
        keeper_->finish(60s);
        const auto found = copies();
        EXPECT_LE(found.size(), 1U);
        if (found.empty()) {
            return 0.0F;
        }
        const HeldSound sound = HeldSound::take();
        const std::vector<float> samples = read(found[0]);
        std::int64_t count = sound.count();
        SampleBlock back = sound.block();
        replaceBuffer(std::move(back), count);
        return samples.at(0);
    }

    Told told_;
    std::unique_ptr<RescueKeeper> keeper_ = std::make_unique<RescueKeeper>(root_, told_.events());
    UnsavedWork work_;
    undo_struct undo_;
};

TEST_F(UnsavedSounds, NothingIsKeptOfASoundThatOnlyWasOpened) {
    open(1);
    EXPECT_EQ(kept(), 0.0F);
}

TEST_F(UnsavedSounds, EveryTransformationIsKeptInThePlaceOfTheOneBefore) {
    open(1);
    transform(2);
    EXPECT_EQ(kept(), 2.0F);
    transform(3);
    EXPECT_EQ(kept(), 3.0F);
}

TEST_F(UnsavedSounds, ATransformationThatWasRefusedChangesNothing) {
    open(1);
    work_.changed(SoundIdentity::now(), "bell.caf");
    EXPECT_EQ(kept(), 0.0F);
}

TEST_F(UnsavedSounds, ASaveEndsIt) {
    open(1);
    transform(2);
    save();
    EXPECT_EQ(kept(), 0.0F);
}

TEST_F(UnsavedSounds, ASaveOfWhatTheSoundWasBeforeDoesNot) {
    open(1);
    const HeldSound asked = HeldSound::take();
    transform(2);
    work_.saved(asked);
    EXPECT_EQ(kept(), 2.0F);
}

TEST_F(UnsavedSounds, RevertToWhatStandsInAFileEndsIt) {
    open(1);
    transform(2);
    takeBack();
    EXPECT_EQ(kept(), 0.0F);
    takeBack();
    EXPECT_EQ(kept(), 2.0F) << "there and back again";
}

TEST_F(UnsavedSounds, RevertToASoundThatWasSavedEndsIt) {
    open(1);
    transform(2);
    save();
    transform(3);
    takeBack();
    EXPECT_EQ(kept(), 0.0F);
}

TEST_F(UnsavedSounds, RevertToUnsavedWorkKeepsThat) {
    open(1);
    transform(2);
    transform(3);
    takeBack();
    EXPECT_EQ(kept(), 2.0F);
}

TEST_F(UnsavedSounds, AnotherFileLeavesTheCopyOfTheWorkBeforeIt) {
    open(1);
    transform(2);
    open(3);
    EXPECT_EQ(kept(), 2.0F);
    save();
    EXPECT_EQ(kept(), 2.0F) << "that was the other sound";
    transform(4);
    EXPECT_EQ(kept(), 4.0F) << "until there is more to lose";
}

TEST_F(UnsavedSounds, AFileThatIsRefusedLeavesTheSoundUnsaved) {
    open(1);
    transform(2);
    work_.opened(SoundIdentity::now());
    save();
    transform(3);
    takeBack();
    EXPECT_EQ(kept(), 0.0F) << "2 was saved";
    open(1);
    transform(5);
    work_.opened(SoundIdentity::now());
    transform(6);
    takeBack();
    EXPECT_EQ(kept(), 5.0F) << "5 was never in a file";
}

TEST_F(UnsavedSounds, UnsavedWorkThatIsScaledIsKeptAsItIsThen) {
    open(1);
    transform(2);
    scaleInPlace(0.25F);
    EXPECT_EQ(kept(), 0.5F);
    scaleInACopy(0.5F);
    EXPECT_EQ(kept(), 0.25F);
    save();
    EXPECT_EQ(kept(), 0.0F);
}

TEST_F(UnsavedSounds, AnOpenedSoundThatIsScaledIsNoWorkYet) {
    open(2);
    scaleInPlace(0.5F);
    EXPECT_EQ(kept(), 0.0F);
    scaleInACopy(0.5F);
    transform(3);
    takeBack();
    EXPECT_EQ(kept(), 0.0F);
}

TEST_F(UnsavedSounds, ScalingASoundThatWasSavedNeedsNoCopy) {
    open(1);
    transform(2);
    save();
    scaleInACopy(0.5F);
    EXPECT_EQ(kept(), 0.0F);
    transform(3);
    takeBack();
    EXPECT_EQ(kept(), 0.0F);
}

TEST_F(UnsavedSounds, TheCopyOfARestoredSoundStaysUntilThatIsSaved) {
    open(1);
    transform(2);
    keeper_ = nullptr;
    keeper_ = std::make_unique<RescueKeeper>(root_, told_.events());
    work_ = {};
    work_.keepWith(*keeper_);
    keeper_->finish(60s);
    auto found = told_.takeFound();
    ASSERT_EQ(found.size(), 1U);
    open(2);
    work_.restored(std::move(found[0]));
    EXPECT_EQ(kept(), 2.0F);
    transform(3);
    takeBack();
    EXPECT_EQ(kept(), 2.0F) << "it stands in no file of the user's";
    save();
    EXPECT_EQ(kept(), 0.0F);
}

TEST_F(UnsavedSounds, WithoutAKeeperNothingIsWritten) {
    work_ = {};
    open(1);
    transform(2);
    save();
    takeBack();
    EXPECT_EQ(kept(), 0.0F);
}

TEST_F(UnsavedSounds, AreToldFromEachOtherAlsoAtTheSameAddress) {
    makeSound(100, 1.0F);
    const float* const address = fBuffer.load();
    const SoundIdentity first = SoundIdentity::now();
    EXPECT_EQ(first, SoundIdentity::now());
    EXPECT_NE(first, SoundIdentity());
    bool cameAgain = false;
    for (int i = 0; i < 100 && !cameAgain; ++i) { // the allocator's first choice, mostly
        emptyBuffer();
        makeSound(100, 2.0F);
        cameAgain = fBuffer.load() == address;
        EXPECT_NE(first, SoundIdentity::now());
    }
}

} // namespace
} // namespace zemo::test
