#include "rescue/RescueKeeper.h"

#include <bit>
#include <chrono>
#include <cstring>

#include "Rescues.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using rescue::RescueKeeper;

class RescueKeepers : public RescueTest {
protected:
    Told told_;
};

TEST_F(RescueKeepers, KeepTheSoundToTheLastBit) {
    makeSound(1000, 0.25F);
    for (std::size_t i = 0; i < 8; ++i) { // among them NaNs of both signs, and subnormal values
        fBuffer.load()[i] = std::bit_cast<float>(static_cast<std::uint32_t>(
            0x7FC00001U ^ (0x10408001U * static_cast<std::uint32_t>(i))));
    }
    const std::vector<float> samples(fBuffer.load(), fBuffer.load() + 1000);
    {
        RescueKeeper keeper(root_, told_.events());
        keeper.keep(HeldSound::take(), "bell.caf");
        keeper.finish(60s);
    }
    ASSERT_EQ(copies().size(), 1U);
    EXPECT_EQ(copies()[0].filename(), "bell.caf");
    const std::vector<float> kept = read(copies()[0]);
    ASSERT_EQ(kept.size(), samples.size());
    EXPECT_EQ(std::memcmp(kept.data(), samples.data(), 4000), 0);
    EXPECT_EQ(told_.keptSoFar(), std::vector<bool>{true});
}

TEST_F(RescueKeepers, FinishWhatTheyWereToldBeforeTheyEnd) {
    makeSound(1000, 0.5F);
    { RescueKeeper(root_, told_.events()).keep(HeldSound::take(), "bell"); }
    EXPECT_EQ(copies().size(), 1U);
}

TEST_F(RescueKeepers, LetTheLatestOrderCount) {
    RescueKeeper keeper(root_, told_.events());
    for (int i = 1; i <= 50; ++i) {
        makeSound(20000, static_cast<float>(i));
        keeper.keep(HeldSound::take(), "bell");
    }
    keeper.finish(60s);
    ASSERT_EQ(copies().size(), 1U);
    EXPECT_EQ(read(copies()[0]), std::vector<float>(20000, 50.0F));
}

TEST_F(RescueKeepers, LeaveOffACopyThatIsNotWantedAnyMore) {
    constexpr std::int64_t kLarge = 50'000'000; // more than a disk takes in no time
    RescueKeeper keeper(root_, told_.events());
    makeSound(kLarge, 1.0F);
    std::weak_ptr<float> block = HeldSound::take().block();
    keeper.keep(HeldSound::take(), "large");
    makeSound(10, 2.0F);
    keeper.keep(HeldSound::take(), "small");
    keeper.finish(60s);
    EXPECT_TRUE(block.expired()) << "its memory is free again";
    ASSERT_EQ(copies().size(), 1U);
    EXPECT_EQ(copies()[0].filename(), "small.caf");
    EXPECT_EQ(told_.keptSoFar().back(), true);
}

TEST_F(RescueKeepers, HoldNoSoundThatTheyHaveWritten) {
    RescueKeeper keeper(root_, told_.events());
    makeSound(10, 1.0F);
    keeper.keep(HeldSound::take(), "bell");
    keeper.finish(60s);
    EXPECT_EQ(heldSound().use_count(), 2) << "the sound's own, and this question";
}

TEST_F(RescueKeepers, RemoveTheCopyThatIsDropped) {
    makeSound(1000, 0.5F);
    RescueKeeper keeper(root_, told_.events());
    keeper.keep(HeldSound::take(), "bell");
    keeper.finish(60s);
    keeper.drop();
    keeper.finish(60s);
    EXPECT_TRUE(isRootEmpty());
}

TEST_F(RescueKeepers, FindWhatOthersLeftAndRemoveWhatIsDeclined) {
    makeSound(1000, 0.5F);
    { RescueKeeper(root_, told_.events()).keep(HeldSound::take(), "bell"); }
    RescueKeeper keeper(root_, told_.events());
    keeper.finish(60s);
    auto found = told_.takeFound();
    ASSERT_EQ(found.size(), 1U);
    keeper.discard(std::move(found[0]));
    keeper.finish(60s);
    EXPECT_TRUE(isRootEmpty());
}

TEST_F(RescueKeepers, MakeAnAdoptedCopyTheirOwn) {
    makeSound(1000, 0.5F);
    { RescueKeeper(root_, told_.events()).keep(HeldSound::take(), "bell"); }
    RescueKeeper keeper(root_, told_.events());
    keeper.finish(60s);
    auto found = told_.takeFound();
    ASSERT_EQ(found.size(), 1U);
    keeper.adopt(std::move(found[0]));
    keeper.finish(60s);
    EXPECT_EQ(copies().size(), 1U);
    makeSound(1000, 0.75F);
    keeper.keep(HeldSound::take(), "bell");
    keeper.finish(60s);
    ASSERT_EQ(copies().size(), 1U) << "in the same place";
    EXPECT_EQ(read(copies()[0])[0], 0.75F);
    keeper.drop();
    keeper.finish(60s);
    EXPECT_TRUE(isRootEmpty());
}

TEST_F(RescueKeepers, LeaveTheirEarlierCopyToOthersWhenTheyAdoptOne) {
    makeSound(1000, 0.5F);
    { RescueKeeper(root_, told_.events()).keep(HeldSound::take(), "bell"); }
    {
        RescueKeeper keeper(root_, told_.events());
        keeper.finish(60s);
        keeper.keep(HeldSound::take(), "drum");
        keeper.finish(60s);
        auto found = told_.takeFound();
        keeper.adopt(std::move(found.at(0)));
    }
    EXPECT_EQ(rescue::RescueFolder::takeAbandoned(root_).size(), 2U);
}

TEST_F(RescueKeepers, TellWhenNoCopyCanBeKept) {
    fs::create_directories(folder_);
    std::FILE* const inTheWay = std::fopen((folder_ / "zemo").c_str(), "w");
    ASSERT_NE(inTheWay, nullptr);
    std::fclose(inTheWay);
    makeSound(10, 1.0F);
    RescueKeeper keeper(root_, told_.events());
    keeper.keep(HeldSound::take(), "bell");
    keeper.finish(60s);
    EXPECT_EQ(told_.keptSoFar(), std::vector<bool>{false});
}

/// Disks that take no byte more, one error for each step of a save.
class FailingOperations final : public platform::PosixFileOperations {
public:
    int sync(int descriptor) override {
        return isFull ? -ENOSPC : PosixFileOperations::sync(descriptor);
    }
    bool isFull = false;
};

TEST_F(RescueKeepers, LeaveTheEarlierCopyWhereTheDiskTakesNoMore) {
    FailingOperations operations;
    platform::services().fileOperations = &operations;
    RescueKeeper keeper(root_, told_.events());
    makeSound(10, 1.0F);
    keeper.keep(HeldSound::take(), "bell");
    keeper.finish(60s);
    operations.isFull = true;
    makeSound(10, 2.0F);
    keeper.keep(HeldSound::take(), "bell");
    keeper.finish(60s);
    EXPECT_EQ(told_.keptSoFar(), (std::vector<bool>{true, false}));
    ASSERT_EQ(copies().size(), 1U);
    EXPECT_EQ(read(copies()[0])[0], 1.0F);
}

} // namespace
} // namespace zemo::test
