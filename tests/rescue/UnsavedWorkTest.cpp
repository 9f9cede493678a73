#include "rescue/UnsavedWork.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "Rescues.h"
#include "dsp/Revert.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo::test {
namespace {

using namespace std::chrono_literals;
using rescue::LostSound;
using rescue::RescueKeeper;
using rescue::SoundIdentity;
using rescue::UnsavedWork;
using Samples = std::vector<float>;

/// A person's steps, on the sound and as the work is told of them. A sound is known by its samples,
/// which are all alike.
class UnsavedSounds : public RescueTest {
protected:
    UnsavedSounds() { work_.keepWith(*keeper_); }

    SoundIdentity reverted() const { return SoundIdentity(undo_.buf); }

    void open(float sample, const std::string& name = "bell.caf") {
        const SoundIdentity before = SoundIdentity::now();
        makeSound(100, sample);
        work_.opened(before, reverted(), name);
    }
    void empty() {
        const SoundIdentity before = SoundIdentity::now();
        emptyBuffer();
        work_.opened(before, reverted(), "nothing");
    }
    void transform(float sample) {
        const SoundIdentity before = SoundIdentity::now();
        SampleBlock samples = allocateSamples(100);
        std::fill_n(samples.get(), 100, sample);
        std::int64_t count = 100;
        std::int64_t slack = kSlackSamples;
        swapBuffer(samples, count, slack);
        make_revert(undo_, std::move(samples), count);
        work_.transformed(before, reverted());
    }
    /// In the block itself, as where nobody else holds it.
    void scaleInPlace(float factor) {
        const SoundIdentity before = SoundIdentity::now();
        std::transform(fBuffer.load(), fBuffer.load() + 100, fBuffer.load(),
                       [factor](float sample) { return sample * factor; });
        work_.scaled(before, reverted());
    }
    void scaleInACopy(float factor) {
        const SoundIdentity before = SoundIdentity::now();
        makeSound(100, fBuffer.load()[0] * factor);
        work_.scaled(before, reverted());
    }
    void takeBack() {
        revert(undo_);
        work_.exchanged(reverted());
    }
    void save(const std::string& name = "saved.caf") { work_.saved(HeldSound::take(), name); }
    void restoreFirst() {
        const LostSound first = work_.lost().at(0);
        keeper_->finish(60s);
        const float sample = read(keeper_->find(first.copy).file.value()).at(0);
        work_.willRestore();
        open(sample, "the file's name");
        work_.restored(first, reverted());
    }
    void discardFirst() { work_.discard(work_.lost().at(0).copy); }

    /// As after a kill: another program, which finds what the one before it left.
    void startAgain() {
        keeper_ = nullptr;
        emptyBuffer();
        undo_ = {};
        work_ = {};
        keeper_ = std::make_unique<RescueKeeper>(root_, told_.events());
        keeper_->finish(60s);
        work_.keepWith(*keeper_);
        work_.found(told_.foundSoFar());
    }

    Samples kept() {
        keeper_->finish(60s);
        return firstSamples();
    }
    std::vector<std::string> lostNames() const {
        std::vector<std::string> names;
        for (const LostSound& lost : work_.lost()) {
            names.push_back(lost.name);
        }
        return names;
    }
    std::size_t lost() const { return work_.lost().size(); }

    Told told_;
    std::unique_ptr<RescueKeeper> keeper_ = std::make_unique<RescueKeeper>(root_, told_.events());
    UnsavedWork work_;
    undo_struct undo_;
};

// What is kept ------------------------------------------------------------------------------------

TEST_F(UnsavedSounds, NothingIsKeptOfASoundThatOnlyWasOpened) {
    open(1);
    open(2);
    EXPECT_EQ(kept(), Samples());
    EXPECT_EQ(lost(), 0U);
    EXPECT_FALSE(work_.isUnsaved());
}

TEST_F(UnsavedSounds, EveryTransformationIsKept) {
    open(1);
    transform(2);
    EXPECT_EQ(kept(), Samples({2}));
    transform(3);
    EXPECT_EQ(kept(), Samples({2, 3}));
    EXPECT_EQ(lost(), 0U) << "Revert brings the first back";
    transform(4);
    EXPECT_EQ(kept(), Samples({2, 3, 4}));
    EXPECT_EQ(lost(), 1U);
}

TEST_F(UnsavedSounds, ATransformationThatWasRefusedChangesNothing) {
    open(1);
    work_.transformed(SoundIdentity::now(), reverted());
    EXPECT_EQ(kept(), Samples());
    EXPECT_FALSE(work_.isUnsaved());
}

TEST_F(UnsavedSounds, ASaveEndsIt) {
    open(1);
    transform(2);
    EXPECT_TRUE(work_.isUnsaved());
    save();
    EXPECT_EQ(kept(), Samples());
    EXPECT_FALSE(work_.isUnsaved());
    open(3);
    EXPECT_EQ(lost(), 0U);
}

TEST_F(UnsavedSounds, AnExactExportEndsItAndLeavesTheName) {
    open(1, "harp.caf");
    transform(2);
    work_.exported(HeldSound::take());
    EXPECT_EQ(kept(), Samples());
    EXPECT_FALSE(work_.isUnsaved());
    EXPECT_EQ(work_.name(), "harp.caf");
}

TEST_F(UnsavedSounds, ASaveOfWhatTheSoundWasBeforeEndsThat) {
    open(1);
    transform(2);
    const HeldSound asked = HeldSound::take();
    transform(3);
    work_.saved(asked, "saved.caf");
    EXPECT_EQ(kept(), Samples({3}));
    open(4);
    EXPECT_EQ(kept(), Samples({3}));
    EXPECT_EQ(lost(), 1U);
}

TEST_F(UnsavedSounds, ASaveOfALostSoundEndsItsOffer) {
    open(1);
    transform(2);
    const HeldSound asked = HeldSound::take();
    open(3);
    EXPECT_EQ(lost(), 1U);
    work_.saved(asked, "saved.caf");
    EXPECT_EQ(lost(), 0U);
    EXPECT_EQ(kept(), Samples());
}

TEST_F(UnsavedSounds, WhatRevertTookBackIsKept) {
    open(1);
    transform(2);
    takeBack();
    EXPECT_EQ(kept(), Samples({2})) << "a kill would lose it";
    EXPECT_FALSE(work_.isUnsaved());
    takeBack();
    EXPECT_TRUE(work_.isUnsaved());
    EXPECT_EQ(kept(), Samples({2}));
    EXPECT_EQ(lost(), 0U);
}

TEST_F(UnsavedSounds, WhatRevertTookBackIsLostWithTheNextTransformation) {
    open(1);
    transform(2);
    takeBack();
    transform(3);
    EXPECT_EQ(kept(), Samples({2, 3}));
    EXPECT_EQ(lost(), 1U);
}

TEST_F(UnsavedSounds, AnotherFileLosesTheWorkAndRevertsDoNoHarmToIt) {
    open(1, "harp.caf");
    transform(2);
    open(3, "bell.caf");
    EXPECT_EQ(lostNames(), std::vector<std::string>{"harp.caf"});
    takeBack();
    takeBack();
    EXPECT_EQ(kept(), Samples({2}));
    EXPECT_EQ(lost(), 1U);
}

TEST_F(UnsavedSounds, EveryLostSoundIsOfferedTheLastOneFirst) {
    open(1, "a.caf");
    transform(2);
    open(3, "b.caf");
    transform(4);
    empty();
    EXPECT_EQ(kept(), Samples({2, 4}));
    EXPECT_EQ(lostNames(), (std::vector<std::string>{"b.caf", "a.caf"}));
}

TEST_F(UnsavedSounds, AFileThatIsRefusedLeavesTheSoundUnsaved) {
    open(1);
    transform(2);
    work_.opened(SoundIdentity::now(), reverted(), "refused.caf");
    EXPECT_TRUE(work_.isUnsaved());
    EXPECT_EQ(work_.name(), "bell.caf");
    EXPECT_EQ(kept(), Samples({2}));
}

TEST_F(UnsavedSounds, UnsavedWorkThatIsScaledIsAnotherSound) {
    open(1, "harp.caf");
    transform(2);
    scaleInACopy(0.25F);
    EXPECT_EQ(kept(), Samples({0.5F, 2}));
    EXPECT_EQ(lostNames(), std::vector<std::string>{"harp.caf"});
    EXPECT_EQ(work_.name(), "harp.caf");
    EXPECT_TRUE(work_.isUnsaved());
}

TEST_F(UnsavedSounds, AnOpenedSoundThatIsScaledIsNoWorkYet) {
    open(2, "harp.caf");
    scaleInPlace(0.5F);
    EXPECT_FALSE(work_.isUnsaved());
    scaleInACopy(0.5F);
    EXPECT_FALSE(work_.isUnsaved());
    EXPECT_EQ(work_.name(), "harp.caf");
    EXPECT_EQ(kept(), Samples());
}

TEST_F(UnsavedSounds, ScalingASoundThatWasSavedNeedsNoCopy) {
    open(1);
    transform(2);
    save();
    scaleInACopy(0.5F);
    EXPECT_EQ(kept(), Samples());
    EXPECT_EQ(work_.name(), "saved.caf");
}

// Names -------------------------------------------------------------------------------------------

TEST_F(UnsavedSounds, ANameGoesWithItsSound) {
    EXPECT_EQ(work_.name(), "");
    open(1, "harp.caf");
    EXPECT_EQ(work_.name(), "harp.caf");
    transform(2);
    EXPECT_EQ(work_.name(), "harp.caf");
    open(3, "bell.caf");
    takeBack();
    EXPECT_EQ(work_.name(), "harp.caf");
    takeBack();
    EXPECT_EQ(work_.name(), "bell.caf");
    empty();
    EXPECT_EQ(work_.name(), "");
    takeBack();
    EXPECT_EQ(work_.name(), "harp.caf");
}

TEST_F(UnsavedSounds, ASaveGivesTheSoundItsFilesNameAndNoOtherSound) {
    open(1, "harp.caf");
    transform(2);
    save("glass.caf");
    EXPECT_EQ(work_.name(), "glass.caf");
    takeBack();
    EXPECT_EQ(work_.name(), "harp.caf");
    takeBack();
    transform(3);
    EXPECT_EQ(work_.name(), "glass.caf");
}

// Restore, discard --------------------------------------------------------------------------------

TEST_F(UnsavedSounds, ARestoredSoundHasItsNameAndItsCopyAgain) {
    open(1, "harp.caf");
    transform(2);
    open(3, "bell.caf");
    restoreFirst();
    EXPECT_EQ(work_.name(), "harp.caf");
    EXPECT_TRUE(work_.isUnsaved());
    EXPECT_EQ(lost(), 0U);
    EXPECT_EQ(kept(), Samples({2})) << "and no second one";
    save();
    EXPECT_EQ(kept(), Samples());
}

TEST_F(UnsavedSounds, WhatARestoredSoundTakesThePlaceOfIsOfferedInItsTurn) {
    open(1, "a.caf");
    transform(2);
    open(3, "b.caf");
    transform(4);
    EXPECT_EQ(lost(), 1U);
    restoreFirst();
    EXPECT_EQ(lostNames(), std::vector<std::string>{"b.caf"});
    EXPECT_EQ(kept(), Samples({2, 4}));
    restoreFirst();
    EXPECT_EQ(lostNames(), std::vector<std::string>{"a.caf"});
    EXPECT_EQ(work_.name(), "b.caf");
}

TEST_F(UnsavedSounds, RestoringOneAfterTheOtherComesToAllOfThem) {
    open(1, "left.caf");
    transform(2);
    kept();
    startAgain();
    for (const char* const name : {"a.caf", "b.caf", "c.caf"}) {
        open(1, name);
        transform(2);
    }
    open(3, "d.caf");
    EXPECT_EQ(lostNames(), (std::vector<std::string>{"c.caf", "b.caf", "a.caf", "left.caf"}));
    std::vector<std::string> restored;
    for (int i = 0; i < 5; ++i) {
        restoreFirst();
        restored.push_back(work_.name());
    }
    EXPECT_EQ(restored, (std::vector<std::string>{"c.caf", "b.caf", "a.caf", "left.caf", "c.caf"}));
    work_.willRestore();
    work_.notRestored();
    open(4, "e.caf");
    EXPECT_EQ(lostNames().front(), "c.caf") << "which no restoring took the place of";
}

TEST_F(UnsavedSounds, ALostSoundThatIsPutBackFromMemoryIsLostNoMore) {
    open(1, "harp.caf");
    transform(2);
    const HeldSound sound = HeldSound::take();
    open(3, "bell.caf");
    const LostSound offer = work_.lost().at(0);
    work_.willRestore();
    replaceBuffer(sound.block(), sound.count());
    work_.exchanged(reverted());
    work_.restored(offer, reverted());
    EXPECT_EQ(lost(), 0U);
    EXPECT_EQ(work_.name(), "harp.caf");
    EXPECT_TRUE(work_.isUnsaved());
    EXPECT_EQ(kept(), Samples({2}));
    open(4, "drum.caf");
    EXPECT_EQ(lostNames(), std::vector<std::string>{"harp.caf"});
}

TEST_F(UnsavedSounds, DiscardRemovesOnlyTheCopyThatWasOffered) {
    open(1, "a.caf");
    transform(2);
    open(3, "b.caf");
    transform(4);
    open(5, "c.caf");
    discardFirst();
    EXPECT_EQ(lostNames(), std::vector<std::string>{"a.caf"});
    EXPECT_EQ(kept(), Samples({2}));
    discardFirst();
    EXPECT_EQ(kept(), Samples());
    EXPECT_EQ(lost(), 0U);
}

TEST_F(UnsavedSounds, AfterAKillEverythingUnsavedIsOffered) {
    open(1, "harp.wav");
    transform(2);
    transform(3);
    transform(4);
    EXPECT_EQ(kept(), Samples({2, 3, 4}));
    startAgain();
    EXPECT_EQ(lostNames(), std::vector<std::string>(3, "harp.wav"));
    EXPECT_TRUE(work_.lost().at(0).leftAt);
    restoreFirst();
    EXPECT_EQ(work_.name(), "harp.wav");
    EXPECT_EQ(lost(), 2U);
    discardFirst();
    save();
    EXPECT_EQ(kept().size(), 1U);
    startAgain();
    EXPECT_EQ(lost(), 1U);
}

TEST_F(UnsavedSounds, AnOfferIsGoneWithItsCopy) {
    open(1);
    transform(2);
    open(3);
    work_.forget(work_.lost().at(0).copy);
    EXPECT_EQ(lost(), 0U);
    takeBack();
    takeBack();
    EXPECT_EQ(lost(), 0U);
}

// What is not kept --------------------------------------------------------------------------------

TEST_F(UnsavedSounds, WithoutAKeeperNothingIsWrittenOrOfferedButNamesAreKnown) {
    work_ = {};
    open(1, "harp.caf");
    transform(2);
    EXPECT_EQ(work_.name(), "harp.caf");
    EXPECT_TRUE(work_.isUnsaved());
    EXPECT_FALSE(work_.unkept());
    open(3);
    save();
    takeBack();
    EXPECT_EQ(kept(), Samples());
    EXPECT_EQ(lost(), 0U);
}

/// Takes no byte more.
class FullDisk final : public platform::PosixFileOperations {
public:
    int sync(int /*descriptor*/) override { return -ENOSPC; }
};

TEST_F(UnsavedSounds, WhatCannotBeKeptIsNamedTheSoundItselfFirst) {
    FullDisk disk;
    platform::services().fileOperations = &disk;
    open(1, "a.caf");
    EXPECT_FALSE(work_.unkept());
    transform(2);
    open(3, "b.caf");
    transform(4);
    keeper_->finish(60s);
    auto unkept = work_.unkept();
    ASSERT_TRUE(unkept);
    EXPECT_EQ(unkept->name, "b.caf");
    EXPECT_EQ(unkept->sound.samples()[0], 4.0F);
    save();
    unkept = work_.unkept();
    ASSERT_TRUE(unkept);
    EXPECT_EQ(unkept->name, "a.caf") << "lost, and in memory only";
    EXPECT_EQ(unkept->sound.samples()[0], 2.0F);
    work_.saved(unkept->sound, "a2.caf");
    EXPECT_FALSE(work_.unkept());
    EXPECT_EQ(lost(), 0U);
    platform::services().fileOperations = &operations_;
}

TEST_F(UnsavedSounds, OfWhatNobodyToldAreNamelessAndStillKept) {
    makeSound(100, 1);
    save();
    EXPECT_EQ(work_.name(), "") << "it is not known by that";
    scaleInACopy(2);
    EXPECT_FALSE(work_.isUnsaved());
    transform(3);
    EXPECT_EQ(work_.name(), "");
    EXPECT_TRUE(work_.isUnsaved());
    EXPECT_EQ(kept(), Samples({3}));
    EXPECT_EQ(copies().at(0).filename(), "sound.caf");
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
