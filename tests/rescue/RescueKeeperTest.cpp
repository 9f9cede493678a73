#include "rescue/RescueKeeper.h"

#include <atomic>
#include <bit>
#include <chrono>
#include <cstring>
#include <fstream>
#include <memory>

#include "Rescues.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using rescue::CopyNumber;
using rescue::RescueKeeper;
using rescue::RescueLimits;

/// A disk that takes no byte more, or takes its time over each file.
class TroubledOperations final : public platform::PosixFileOperations {
public:
    int sync(int descriptor) override {
        while (isHeld && !platform::isStopRequested()) {
            std::this_thread::sleep_for(1ms);
        }
        return isFull ? -ENOSPC : PosixFileOperations::sync(descriptor);
    }
    std::atomic<bool> isFull{false};
    std::atomic<bool> isHeld{false};
};

class RescueKeepers : public RescueTest {
protected:
    RescueKeepers() { platform::services().fileOperations = &disk_; }

    void start(const RescueLimits& limits = {}) {
        keeper_ = nullptr;
        keeper_ = std::make_unique<RescueKeeper>(root_, told_.events(), limits);
        keeper_->finish(60s);
    }
    /// A sound of 1000 samples of that value.
    CopyNumber keep(float sample, const std::string& name = "bell.caf") {
        makeSound(1000, sample);
        return keeper_->keep(HeldSound::take(), name);
    }
    CopyNumber keepLost(float sample) {
        const CopyNumber number = keep(sample);
        keeper_->setLost(number, true);
        return number;
    }
    std::vector<float> kept() {
        keeper_->finish(60s);
        return firstSamples();
    }
    void finish() { keeper_->finish(60s); }

    TroubledOperations disk_;
    Told told_;
    std::unique_ptr<RescueKeeper> keeper_;
};

/// What a copy of 1000 samples takes up.
constexpr std::uint64_t kCopyBytes = 68 + 4000;

TEST_F(RescueKeepers, KeepTheSoundToTheLastBit) {
    start();
    makeSound(1000, 0.25F);
    for (std::size_t i = 0; i < 8; ++i) { // among them NaNs of both signs, and subnormal values
        fBuffer.load()[i] = std::bit_cast<float>(static_cast<std::uint32_t>(
            0x7FC00001U ^ (0x10408001U * static_cast<std::uint32_t>(i))));
    }
    const std::vector<float> samples(fBuffer.load(), fBuffer.load() + 1000);
    const CopyNumber number = keeper_->keep(HeldSound::take(), "bell.caf");
    finish();
    ASSERT_EQ(copies().size(), 1U);
    EXPECT_EQ(copies()[0].filename(), "bell.caf");
    EXPECT_EQ(keeper_->find(number).file, copies()[0]);
    EXPECT_TRUE(keeper_->isWritten(number));
    const std::vector<float> read = RescueTest::read(copies()[0]);
    ASSERT_EQ(read.size(), samples.size());
    EXPECT_EQ(std::memcmp(read.data(), samples.data(), 4000), 0);
    EXPECT_FALSE(told_.lastState().isFailing);
}

TEST_F(RescueKeepers, FinishWhatTheyWereToldBeforeTheyEnd) {
    start();
    keep(0.5F);
    keeper_ = nullptr;
    EXPECT_EQ(copies().size(), 1U);
}

TEST_F(RescueKeepers, KeepACopyOfEverySoundInOneFolder) {
    start();
    for (int i = 1; i <= 5; ++i) {
        keep(static_cast<float>(i));
    }
    EXPECT_EQ(kept(), (std::vector<float>{1, 2, 3, 4, 5}));
    for (const fs::path& copy : copies()) {
        EXPECT_EQ(copy.parent_path(), copies()[0].parent_path());
    }
}

TEST_F(RescueKeepers, RemoveTheCopyThatIsDroppedAndNoOther) {
    start();
    const CopyNumber one = keep(1);
    const CopyNumber two = keep(2);
    finish();
    keeper_->drop(one);
    EXPECT_EQ(kept(), std::vector<float>{2});
    keeper_->drop(one);
    keeper_->drop(two);
    finish();
    EXPECT_TRUE(isRootEmpty());
    keep(3);
    EXPECT_EQ(kept(), std::vector<float>{3}) << "in another folder";
}

TEST_F(RescueKeepers, LeaveOffACopyThatIsDropped) {
    constexpr std::int64_t kLarge = 50'000'000; // more than a disk takes in no time
    start();
    makeSound(kLarge, 1.0F);
    const std::weak_ptr<float> block = HeldSound::take().block();
    const CopyNumber large = keeper_->keep(HeldSound::take(), "large.caf");
    keep(2, "small.caf");
    keeper_->drop(large);
    finish();
    EXPECT_TRUE(block.expired()) << "its memory is free again";
    ASSERT_EQ(copies().size(), 1U);
    EXPECT_EQ(copies()[0].filename(), "small.caf");
}

TEST_F(RescueKeepers, HoldASoundUntilItIsWritten) {
    disk_.isHeld = true;
    start();
    const CopyNumber number = keep(1);
    EXPECT_EQ(keeper_->find(number).sound.count(), 1000);
    EXPECT_FALSE(keeper_->isWritten(number));
    disk_.isHeld = false;
    finish();
    EXPECT_TRUE(keeper_->find(number).sound.empty());
    EXPECT_EQ(heldSound().use_count(), 2) << "the sound's own, and this question";
}

TEST_F(RescueKeepers, WriteInTheOrderOfTheirOrders) {
    disk_.isHeld = true;
    start();
    const CopyNumber one = keep(1);
    const CopyNumber two = keep(2);
    EXPECT_LT(one, two);
    disk_.isHeld = false;
    finish();
    EXPECT_LE(fs::last_write_time(*keeper_->find(one).file),
              fs::last_write_time(*keeper_->find(two).file));
}

// What others left --------------------------------------------------------------------------------

TEST_F(RescueKeepers, FindWhatOthersLeftTheLatestFirst) {
    start();
    keep(1, "one.caf");
    keep(2, "two.wav");
    finish();
    fs::last_write_time(copies()[0].parent_path() / "one.caf",
                        fs::file_time_type::clock::now() - 1h);
    start();
    const auto found = told_.foundSoFar();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].soundName, "two.wav");
    EXPECT_EQ(found[1].soundName, "one.caf");
    EXPECT_TRUE(keeper_->isWritten(found[0].number));
    EXPECT_EQ(keeper_->find(found[1].number).file->filename(), "one.caf");
}

TEST_F(RescueKeepers, RemoveOfWhatTheyFoundOnlyWhatIsDropped) {
    start();
    keep(1);
    keep(2);
    start();
    const auto found = told_.foundSoFar();
    ASSERT_EQ(found.size(), 2U);
    keeper_->drop(found[1].number);
    finish();
    EXPECT_EQ(copies().size(), 1U);
    keep(3);
    keeper_->drop(found[0].number);
    EXPECT_EQ(kept(), std::vector<float>{3});
    EXPECT_EQ(std::distance(fs::directory_iterator(root_), {}), 1) << "the other folder is gone";
}

TEST_F(RescueKeepers, LeaveToTheNextProgramWhatNobodyAnswered) {
    start();
    keep(1);
    start();
    start();
    EXPECT_EQ(told_.foundSoFar().size(), 1U);
}

// Failures ----------------------------------------------------------------------------------------

TEST_F(RescueKeepers, TellWhenNoCopyCanBeKept) {
    std::ofstream(folder_ / "zemo") << "in the way";
    start();
    const CopyNumber number = keep(1);
    finish();
    EXPECT_TRUE(told_.lastState().isFailing);
    EXPECT_FALSE(keeper_->isWritten(number));
    EXPECT_EQ(keeper_->find(number).sound.count(), 1000) << "it is still there";
}

TEST_F(RescueKeepers, TryAgainWithTheNextOrderOrWhenTheyAreTold) {
    start();
    keep(1);
    finish();
    disk_.isFull = true;
    keep(2);
    EXPECT_EQ(kept(), std::vector<float>{1}) << "what was there stays";
    EXPECT_TRUE(told_.lastState().isFailing);
    disk_.isFull = false;
    keep(3);
    EXPECT_EQ(kept(), (std::vector<float>{1, 2, 3}));
    EXPECT_FALSE(told_.lastState().isFailing);
    disk_.isFull = true;
    keep(4);
    finish();
    disk_.isFull = false;
    keeper_->retry();
    EXPECT_EQ(kept(), (std::vector<float>{1, 2, 3, 4}));
}

TEST_F(RescueKeepers, ForgetAFailureThatIsDropped) {
    disk_.isFull = true;
    start();
    const CopyNumber number = keep(1);
    finish();
    keeper_->drop(number);
    finish();
    EXPECT_FALSE(told_.lastState().isFailing);
    EXPECT_TRUE(isRootEmpty());
}

TEST_F(RescueKeepers, FindNothingWhereTheCopyIsGoneOrALink) {
    start();
    const CopyNumber number = keep(1);
    finish();
    const fs::path file = *keeper_->find(number).file;
    fs::rename(file, folder_ / "moved.caf");
    EXPECT_EQ(keeper_->find(number).file, std::nullopt);
    fs::create_symlink(folder_ / "moved.caf", file);
    EXPECT_EQ(keeper_->find(number).file, std::nullopt);
    EXPECT_TRUE(keeper_->find(number).sound.empty());
    EXPECT_EQ(keeper_->find(12345).file, std::nullopt);
    EXPECT_FALSE(keeper_->isWritten(12345));
    keeper_->drop(12345);
    keeper_->setLost(12345, true);
    finish();
    EXPECT_TRUE(fs::exists(folder_ / "moved.caf"));
}

TEST_F(RescueKeepers, MakeAnotherFolderWhereTheirsWasMovedAway) {
    start();
    keep(1);
    finish();
    fs::rename(copies()[0].parent_path(), folder_ / "moved");
    keep(2);
    EXPECT_EQ(kept(), std::vector<float>{2});
}

// Bounds ------------------------------------------------------------------------------------------

TEST_F(RescueKeepers, RemoveTheOldestLostCopyOnceTheyHaveSaidSo) {
    start({.mostBytes = 2 * kCopyBytes});
    const CopyNumber one = keepLost(1);
    keepLost(2);
    finish();
    EXPECT_EQ(told_.lastState().firstToGo, "");
    keepLost(3);
    EXPECT_EQ(kept(), (std::vector<float>{1, 2, 3})) << "nobody has been told yet";
    EXPECT_EQ(told_.lastState().firstToGo, "bell.caf");
    keepLost(4);
    EXPECT_EQ(kept(), (std::vector<float>{1, 2, 3, 4})) << "nor has the window said it";
    keeper_->allowRemoval();
    finish();
    EXPECT_EQ(firstSamples(), (std::vector<float>{1, 2, 3, 4})) << "and not without need";
    keepLost(5);
    EXPECT_EQ(kept(), (std::vector<float>{3, 4, 5}));
    EXPECT_EQ(told_.goneSoFar().at(0), one);
}

TEST_F(RescueKeepers, RemoveNoCopyOfASoundThatCanBeReached) {
    start({.mostBytes = 1});
    keep(1);
    const CopyNumber two = keepLost(2);
    finish();
    keeper_->allowRemoval();
    keep(3);
    EXPECT_EQ(kept(), (std::vector<float>{1, 3}));
    EXPECT_EQ(told_.goneSoFar(), std::vector<CopyNumber>{two});
    EXPECT_EQ(told_.lastState().firstToGo, "") << "none of them goes";
    const CopyNumber four = keepLost(4);
    finish();
    keeper_->allowRemoval();
    keeper_->setLost(four, false);
    keep(5);
    EXPECT_EQ(kept(), (std::vector<float>{1, 3, 4, 5}));
}

TEST_F(RescueKeepers, SayAgainWhichIsTheFirstToGoBeforeTheyRemoveAnother) {
    start({.mostBytes = 2 * kCopyBytes});
    const CopyNumber one = keepLost(1);
    keepLost(2);
    const CopyNumber three = keepLost(3);
    finish();
    keeper_->allowRemoval();
    keeper_->drop(one);
    finish();
    EXPECT_EQ(told_.lastState().firstToGo, "") << "there is room again";
    keepLost(4);
    finish();
    EXPECT_EQ(told_.lastState().firstToGo, "bell.caf");
    keepLost(5);
    EXPECT_EQ(kept(), (std::vector<float>{2, 3, 4, 5})) << "that was said of another time";
    EXPECT_TRUE(keeper_->isWritten(three));
}

TEST_F(RescueKeepers, CountWhatOthersLeftByItsAge) {
    start();
    keep(1, "one.caf");
    start({.mostBytes = 1});
    EXPECT_EQ(told_.lastState().firstToGo, "one.caf");
    keeper_->allowRemoval();
    keep(2);
    EXPECT_EQ(kept(), std::vector<float>{2});
    EXPECT_EQ(told_.goneSoFar(), std::vector<CopyNumber>{told_.foundSoFar().at(0).number});
}

TEST_F(RescueKeepers, TakeUpNoMoreThanTheirPartOfTheFreeDisk) {
    start({.partsOfFree = UINT64_MAX}); // which is no byte
    keepLost(1);
    finish();
    EXPECT_EQ(told_.lastState().firstToGo, "bell.caf");
}

TEST_F(RescueKeepers, AreBehindWhileTooMuchThatIsLostIsYetToBeWritten) {
    disk_.isHeld = true;
    start({.mostHeldBytes = 4000});
    keepLost(1);
    EXPECT_FALSE(keeper_->isBehind());
    keep(2);
    EXPECT_FALSE(keeper_->isBehind()) << "that one is the sound";
    keepLost(3);
    EXPECT_TRUE(keeper_->isBehind());
    platform::Progress impatient;
    impatient.requestStop();
    {
        const platform::ProgressScope scope(&impatient);
        keeper_->awaitRoom();
        keeper_->awaitCopies();
    }
    EXPECT_TRUE(keeper_->isBehind()) << "who does not want to wait does not";
    disk_.isHeld = false;
    keeper_->awaitRoom();
    EXPECT_FALSE(keeper_->isBehind());
    keeper_->awaitCopies();
    EXPECT_EQ(firstSamples(), (std::vector<float>{1, 2, 3}));
}

TEST_F(RescueKeepers, HoldOfWhatCannotBeWrittenTheLatest) {
    disk_.isFull = true;
    start({.mostHeldBytes = 8000});
    const CopyNumber one = keepLost(1);
    const CopyNumber two = keepLost(2);
    finish();
    EXPECT_TRUE(told_.goneSoFar().empty());
    keepLost(3);
    finish();
    EXPECT_EQ(told_.goneSoFar(), std::vector<CopyNumber>{one});
    EXPECT_TRUE(keeper_->find(one).sound.empty());
    EXPECT_EQ(keeper_->find(two).sound.samples()[0], 2.0F);
    disk_.isFull = false;
    keeper_->retry();
    EXPECT_EQ(kept(), (std::vector<float>{2, 3}));
}

TEST_F(RescueKeepers, HoldTheOnlyOneThatCannotBeWrittenHoweverLargeItIs) {
    disk_.isFull = true;
    start({.mostHeldBytes = 1});
    keepLost(1);
    finish();
    EXPECT_TRUE(told_.goneSoFar().empty());
}

} // namespace
} // namespace zemo::test
