#include <algorithm>

#include <gtest/gtest.h>

#include "files/AudioFileReader.h"
#include "files/RawFileReader.h"
#include "files/SoundLoader.h"
#include "files_test/SoundFiles.h"
#include "platform/LongWork.h"
#include "playback/OutputUnit.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

constexpr std::uint32_t kFrames = 8; ///< of one render call
constexpr float kLevel = 0.5F;
const std::vector<float> kNew{0.25F, -0.125F};
const Bytes kNewFile = cafFile({}, littleFloats(kNew));
const Bytes kRefused = cafFile({.rate = 1.0}, zeros(4));

/// A long sound in mid-play: the first call has faded in, the second was steady.
class OpenDuringPlay : public testing::Test {
protected:
    OpenDuringPlay() {
        platform.launch(48000.0);
        loadSound(std::vector<float>(100000, kLevel));
        platform.files.files["/new.caf"] = kNewFile;
        platform.files.files["/new.raw"] = littleFloats(kNew);
        platform.files.files["/refused.caf"] = kRefused;
        bufferPlay0(0);
        platform.output.pump(kFrames);
        platform.output.pump(kFrames);
        EXPECT_EQ(bufferPlayer.rampState, Steady);
        platform.delegate.messages.clear();
    }

    /// From now on the device calls back whenever the program waits.
    void letTheDeviceRun() {
        platform.clock.whileSleeping = [this] {
            if (platform.output.running) {
                calls.push_back(platform.output.pump(kFrames));
            }
        };
    }

    long countOf(const std::string& message) const {
        const auto& messages = platform.delegate.messages;
        return std::count(messages.begin(), messages.end(), message);
    }

    void expectAtRest() const {
        EXPECT_FALSE(platform.output.running);
        EXPECT_EQ(bufferPlayer.isPlaying, 0);
        EXPECT_EQ(bufferPlayer.rampState, Silent);
    }

    FakePlatform platform;
    std::vector<std::vector<float>> calls;
};

std::vector<float> fadeOut() {
    std::vector<float> call(kFrames);
    for (std::uint32_t i = 0; i < kFrames; ++i) {
        call[i] = kLevel * static_cast<float>(kFrames - i) / static_cast<float>(kFrames);
    }
    return call;
}

TEST_F(OpenDuringPlay, TheOldSoundFadesOutOverOneCallAndThenIsSilent) {
    letTheDeviceRun();
    EXPECT_STREQ(openSoundFile(FileUrl("/new.caf")), "OK");
    ASSERT_GE(calls.size(), 2U);
    EXPECT_EQ(calls[0], fadeOut());
    for (std::size_t i = 1; i < calls.size(); ++i) {
        EXPECT_EQ(calls[i], std::vector<float>(kFrames, 0.0F));
    }
}

TEST_F(OpenDuringPlay, TheSoundIsExchangedOnceThePlayIsAtRest) {
    letTheDeviceRun();
    openSoundFile(FileUrl("/new.caf"));
    expectAtRest();
    EXPECT_EQ(currentSound(), kNew);
}

TEST_F(OpenDuringPlay, TheButtonIsToldOnceThatThePlayHasEnded) {
    letTheDeviceRun();
    openSoundFile(FileUrl("/new.caf"));
    EXPECT_EQ(countOf("resetPlayTitle"), 1);
    EXPECT_GE(countOf("resetMeter"), 1);
}

TEST_F(OpenDuringPlay, TheIdleCallsAreMadeBeforeTheUnitIsStopped) {
    letTheDeviceRun();
    openSoundFile(FileUrl("/new.caf"));
    EXPECT_EQ(calls.size(), 4U) << "one that fades, two idle ones, one that stops";
    EXPECT_EQ(countOf("IdleCycle 1"), 1);
    EXPECT_EQ(countOf("IdleCycle 0"), 1);
    EXPECT_EQ(platform.output.calls.back(), "stop");
}

TEST_F(OpenDuringPlay, TheNewSoundPlaysFromItsStart) {
    letTheDeviceRun();
    openSoundFile(FileUrl("/new.caf"));
    bufferPlay0(0);
    const auto heard = platform.output.pump(1);
    EXPECT_EQ(heard, (std::vector<float>{kNew[0] * 0.0F})) << "the first frame of a fade";
    EXPECT_EQ(platform.output.pump(1), (std::vector<float>{kNew[1]}));
}

TEST_F(OpenDuringPlay, RawDataIsExchangedInTheSameWay) {
    letTheDeviceRun();
    openFile("/new.raw", false);
    EXPECT_EQ(calls.at(0), fadeOut());
    expectAtRest();
    EXPECT_EQ(countOf("resetPlayTitle"), 1);
    EXPECT_EQ(currentSound(), kNew);
}

TEST_F(OpenDuringPlay, RawDataThatCannotBeOpenedStopsThePlayAndEmptiesTheSound) {
    letTheDeviceRun();
    openFile("/absent", false);
    expectAtRest();
    EXPECT_EQ(fBuffer.load(), nullptr);
}

TEST_F(OpenDuringPlay, ADeviceThatNeverCallsBackIsStoppedOutrightAndTheSoundIsExchanged) {
    openSoundFile(FileUrl("/new.caf"));
    expectAtRest();
    EXPECT_EQ(currentSound(), kNew);
    EXPECT_EQ(countOf("resetPlayTitle"), 1);
    EXPECT_GE(platform.clock.time, kIdleWait);
    EXPECT_LT(platform.clock.time, kIdleWait + std::chrono::milliseconds(50));
}

TEST_F(OpenDuringPlay, WithoutAPlayNothingIsWaitedForAndNothingIsStopped) {
    letTheDeviceRun();
    openSoundFile(FileUrl("/new.caf"));
    const auto before = platform.clock.time;
    platform.output.calls.clear();
    openSoundFile(FileUrl("/new.caf"));
    EXPECT_EQ(platform.clock.time, before);
    EXPECT_TRUE(platform.output.calls.empty());
}

TEST_F(OpenDuringPlay, ARefusedFileDoesNotStopThePlay) {
    letTheDeviceRun();
    const float* const block = fBuffer;
    float maxval = 0.0F;
    EXPECT_EQ(openByExtension(FileUrl("/refused.caf"), false).status, "KO");
    finishOpening("/refused.caf", &maxval, false);
    EXPECT_TRUE(platform.output.running);
    EXPECT_EQ(bufferPlayer.isPlaying, 1);
    EXPECT_EQ(fBuffer.load(), block);
    EXPECT_EQ(platform.output.pump(kFrames), std::vector<float>(kFrames, kLevel));
}

TEST_F(OpenDuringPlay, ARefusedFilesOldSoundIsScaledOnlyWhenThePlayIsAtRest) {
    letTheDeviceRun();
    float maxval = 0.0F;
    openByExtension(FileUrl("/refused.caf"), false);
    EXPECT_EQ(bufferPlayer.isPlaying, 1);
    finishOpening("/refused.caf", &maxval, true);
    EXPECT_EQ(calls.at(0), fadeOut()) << "of the sound as it was";
    expectAtRest();
    EXPECT_NE(currentSound()[0], kLevel);
}

/// Long work in the middle of which a person presses Play.
class PlayDuringWork final : public platform::LongWork {
public:
    explicit PlayDuringWork(FakePlatform& platform) : platform_(platform) {
        platform::services().longWork = this;
    }
    bool run(const Work& work, platform::Cancel /*cancel*/) override {
        bufferPlay0(0);
        heard = platform_.output.pump(kFrames);
        work();
        return true;
    }
    void pause(std::chrono::microseconds duration) override { platform_.clock.sleepFor(duration); }

    std::vector<float> heard;

private:
    FakePlatform& platform_;
};

TEST_F(OpenDuringPlay, APlayThatIsBegunWhileTheSoundIsScaledHearsNothingOfIt) {
    letTheDeviceRun();
    PlayDuringWork work(platform);
    float maxval = 0.0F;
    finishOpening("/new.caf", &maxval, true);
    EXPECT_EQ(work.heard, std::vector<float>(kFrames, 0.0F));
    EXPECT_EQ(currentSound(), std::vector<float>(100000, kLevel / (kLevel * 1.1F)));
    EXPECT_FALSE(platform.output.running) << "it ended at once";
    bufferPlay0(0);
    EXPECT_NE(platform.output.pump(kFrames)[1], 0.0F);
}

} // namespace
} // namespace zemo::test
