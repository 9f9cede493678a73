#include "playback/RenderCallback.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <thread>
#include <utility>

#include "ReferencePlayer.h"
#include "playback/OutputUnit.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

using Frames = std::vector<float>;
using Messages = std::vector<std::string>;

class RenderCallback : public testing::Test {
protected:
    RenderCallback() { platform_.launch(); }

    Frames call(std::uint32_t frames, float before = 0.0F) {
        platform_.output.calls.clear();
        platform_.delegate.messages.clear();
        return platform_.output.pump(frames, before);
    }

    bool stoppedTheUnit() const {
        const auto& calls = platform_.output.calls;
        return std::find(calls.begin(), calls.end(), "stop") != calls.end();
    }

    bool sent(const std::string& message) const {
        const auto& all = messages();
        return std::find(all.begin(), all.end(), message) != all.end();
    }

    const Messages& messages() const { return platform_.delegate.messages; }

    /// 1, 2, 3, ... so that every sample tells its place.
    static Frames counting(std::size_t count) {
        Frames samples(count);
        std::iota(samples.begin(), samples.end(), 1.0F);
        return samples;
    }

    static void playOnAnotherThread() {
        std::thread([] { bufferPlay0(0); }).join();
    }

    void startPlaying(const Frames& sound) {
        loadSound(sound);
        bufferPlay0(0);
    }

    FakePlatform platform_;
};

TEST_F(RenderCallback, TheFirstCallRisesFromSilence) {
    startPlaying(Frames(100, 0.5F));
    const Frames output = call(8);
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(output[i], 0.5F * static_cast<float>(i) / 8.0F);
    }
    EXPECT_EQ(bufferPlayer.rampState, Steady);
}

TEST_F(RenderCallback, ASteadyCallCopiesTheSamples) {
    startPlaying(counting(100));
    call(8);
    EXPECT_EQ(call(8), Frames({9, 10, 11, 12, 13, 14, 15, 16}));
    EXPECT_EQ(bufferPlayer.rampState, Steady);
}

TEST_F(RenderCallback, TheLastCallFallsToSilence) {
    startPlaying(Frames(12, 0.5F));
    call(4);
    call(4);
    ASSERT_EQ(bufferPlayer.rampState, FadeOut);
    EXPECT_EQ(call(4), Frames({0.5F, 0.5F * 3 / 4, 0.5F * 2 / 4, 0.5F * 1 / 4}));
    EXPECT_EQ(bufferPlayer.rampState, Silent);
    EXPECT_EQ(bufferPlayer.isPlaying, 0);
}

TEST_F(RenderCallback, TheFadeOutBeginsWhenFewerThanTwoCallsAreLeft) {
    startPlaying(Frames(16, 0.5F));
    call(4);
    call(4);
    EXPECT_EQ(bufferPlayer.rampState, Steady) << "eight are left: two calls";
    loadSound({});
    bufferPlayer.rampState = Silent;
    bufferPlayer.isPlaying = 0;

    startPlaying(Frames(15, 0.5F));
    call(4);
    call(4);
    EXPECT_EQ(bufferPlayer.rampState, FadeOut) << "seven are left";
}

TEST_F(RenderCallback, PositionAndTotalAdvanceByOneAFrame) {
    startPlaying(Frames(1000, 0.5F));
    double frames = 0;
    for (const std::uint32_t n : {1U, 17U, 64U, 3U}) {
        call(n);
        frames += n;
        EXPECT_EQ(bufferPlayer.readPosition, frames);
        EXPECT_EQ(static_cast<double>(totalFrames), frames);
    }
}

TEST_F(RenderCallback, ASoundShorterThanACallFadesInAndStopsTheUnitInThatCall) {
    startPlaying({1.0F, 1.0F, 1.0F});
    EXPECT_EQ(call(8), Frames({0.0F, 1.0F / 8, 2.0F / 8, 0, 0, 0, 0, 0}));
    EXPECT_TRUE(stoppedTheUnit());
    EXPECT_EQ(bufferPlayer.rampState, Silent);
    EXPECT_EQ(bufferPlayer.isPlaying, 0);
    EXPECT_EQ(value, 0.0F);
    EXPECT_EQ(messages(), Messages({"updateValue 0", "updateValue 0", "updateValue 0",
                                    "updateValue 0", "updateValue 0", "updateValue 0.25",
                                    "IdleCycle 1", "resetMeter", "updateValue 0"}))
        << "one update for each of the five frames past the end, then the call's own";
}

TEST_F(RenderCallback, ASoundOfOneToTwoCallsIsCutWithoutAFadeOut) {
    for (std::size_t length = 8; length < 16; ++length) {
        startPlaying(counting(length));
        call(8);
        ASSERT_EQ(bufferPlayer.rampState, Steady);
        Frames expected(8, 0.0F);
        for (std::size_t i = 8; i < length; ++i) {
            expected[i - 8] = static_cast<float>(i + 1);
        }
        EXPECT_EQ(call(8), expected) << length;
        EXPECT_TRUE(stoppedTheUnit());
        EXPECT_FALSE(sent("resetPlayTitle"));
        EXPECT_EQ(bufferPlayer.rampState, Silent);
    }
}

TEST_F(RenderCallback, AFadeOutThatReachesTheEndKeepsThePlayTitle) {
    startPlaying(Frames(11, 0.5F));
    call(4);
    call(4);
    ASSERT_EQ(bufferPlayer.rampState, FadeOut);
    EXPECT_EQ(call(4), Frames({0.5F, 0.5F * 3 / 4, 0.5F * 2 / 4, 0.0F}));
    EXPECT_FALSE(sent("resetPlayTitle"));
    EXPECT_TRUE(sent("resetMeter"));
    EXPECT_TRUE(stoppedTheUnit());
}

TEST_F(RenderCallback, AFadeOutWithOneWholeCallLeftResetsThePlayTitleThenTheMeter) {
    startPlaying(Frames(12, 0.5F));
    call(4);
    call(4);
    call(4);
    EXPECT_EQ(messages(), Messages({"updateValue 0.5", "resetPlayTitle", "resetMeter"}));
    EXPECT_FALSE(stoppedTheUnit());
}

TEST_F(RenderCallback, AStopDuringTheFadeInFadesTheNextCallFromWhereItIs) {
    startPlaying(counting(100));
    bufferStop0();
    EXPECT_EQ(bufferPlayer.rampState, FadeOut);
    EXPECT_EQ(call(4), Frames({1.0F, 2.0F * 3 / 4, 3.0F * 2 / 4, 4.0F * 1 / 4}));
    EXPECT_EQ(bufferPlayer.rampState, Silent);
}

TEST_F(RenderCallback, AStopInsideTheFadeInCallFadesTheWholeOfTheNext) {
    SentRecorder recorder;
    renderDelegate = &recorder;
    startPlaying(counting(100));
    recorder.duringUpdateValue = [] { bufferStop0(); };
    EXPECT_EQ(call(4), Frames({0.0F, 2.0F * 1 / 4, 3.0F * 2 / 4, 4.0F * 3 / 4}));
    recorder.duringUpdateValue = nullptr;
    EXPECT_EQ(bufferPlayer.rampState, FadeOut);
    EXPECT_EQ(call(4), Frames({5.0F, 6.0F * 3 / 4, 7.0F * 2 / 4, 8.0F * 1 / 4}));
}

TEST_F(RenderCallback, AStopInMidPlayResetsThePlayTitle) {
    startPlaying(Frames(1000, 0.5F));
    call(8);
    call(8);
    bufferStop0();
    call(8);
    EXPECT_TRUE(sent("resetPlayTitle"));
    EXPECT_EQ(bufferPlayer.isPlaying, 0);
}

TEST_F(RenderCallback, TheUnitIsStoppedOnTheThirdSilentCall) {
    startPlaying(Frames(1000, 0.5F));
    call(8);
    bufferStop0();
    call(8);
    ASSERT_EQ(bufferPlayer.rampState, Silent);

    EXPECT_EQ(call(8, 0.75F), Frames(8, 0.0F));
    EXPECT_EQ(messages(),
              Messages({"updateValue 0", "IdleCycle 1", "resetMeter", "updateValue 0"}));
    EXPECT_FALSE(stoppedTheUnit());
    EXPECT_EQ(call(8, 0.75F), Frames(8, 0.0F));
    EXPECT_EQ(messages(),
              Messages({"updateValue 0", "IdleCycle 0", "resetMeter", "updateValue 0"}));
    EXPECT_FALSE(stoppedTheUnit());
    EXPECT_EQ(call(8, 0.75F), Frames(8, 0.0F));
    EXPECT_EQ(messages(), Messages({"updateValue 0", "resetMeter", "updateValue 0"}));
    EXPECT_TRUE(stoppedTheUnit());
}

TEST_F(RenderCallback, AReplayDuringTheSilentCallsBeginsAnewAtTheFirstSample) {
    startPlaying(counting(1000));
    call(8);
    bufferStop0();
    call(8);
    call(8);
    ASSERT_EQ(bufferPlayer.idleCycles, 1);
    bufferPlay0(0);
    EXPECT_EQ(bufferPlayer.idleCycles, 2);
    EXPECT_EQ(call(4), Frames({0.0F, 2.0F * 1 / 4, 3.0F * 2 / 4, 4.0F * 3 / 4}));
    EXPECT_EQ(totalFrames, 4);
}

TEST_F(RenderCallback, APlayBegunInsideASilentCallPastTheEndStands) {
    SentRecorder recorder;
    renderDelegate = &recorder;
    startPlaying(counting(12));
    call(4);
    call(4);
    call(4);
    ASSERT_EQ(bufferPlayer.rampState, Silent);
    recorder.duringUpdateValue = [begun = false]() mutable {
        if (!begun) {
            begun = true;
            playOnAnotherThread();
        }
    };
    call(4);
    recorder.duringUpdateValue = nullptr;
    EXPECT_EQ(bufferPlayer.isPlaying, 1);
    EXPECT_EQ(bufferPlayer.rampState, FadeIn);
    EXPECT_EQ(bufferPlayer.readPosition, 0.0);
    EXPECT_EQ(totalFrames, 0);
    EXPECT_TRUE(superviseOutputUnit()) << "the silent call had asked for the stop";
    EXPECT_EQ(call(4), Frames({0.0F, 2.0F * 1 / 4, 3.0F * 2 / 4, 4.0F * 3 / 4}));
}

TEST_F(RenderCallback, APlayBegunInsideTheLastCallOfAnotherBeginsAtTheFirstSample) {
    SentRecorder recorder;
    renderDelegate = &recorder;
    startPlaying(counting(3));
    int messagesSoFar = 0;
    recorder.duringUpdateValue = [&] {
        if (++messagesSoFar == 6) { // five frames past the end, then the call's own
            playOnAnotherThread();
        }
    };
    call(8);
    recorder.duringUpdateValue = nullptr;
    EXPECT_EQ(bufferPlayer.isPlaying, 1);
    EXPECT_EQ(bufferPlayer.rampState, FadeIn);
    EXPECT_EQ(bufferPlayer.readPosition, 0.0);
    EXPECT_EQ(totalFrames, 0);
}

TEST_F(RenderCallback, ACallBetweenTheStartAndTheFadeInIsSilentAndSpendsAnIdleCycle) {
    loadSound(counting(1000));
    Frames heard;
    std::uint32_t stateInside = FadeOut;
    int playingInside = 1;
    platform_.output.whileStarting = [&] {
        stateInside = bufferPlayer.rampState;
        playingInside = bufferPlayer.isPlaying;
        heard = platform_.output.pump(4, 0.75F);
    };
    bufferPlay0(0);
    EXPECT_EQ(stateInside, Silent);
    EXPECT_EQ(playingInside, 0);
    EXPECT_EQ(heard, Frames(4, 0.0F));
    EXPECT_EQ(bufferPlayer.idleCycles, 1);
    EXPECT_EQ(bufferPlayer.rampState, FadeIn);
    EXPECT_EQ(bufferPlayer.isPlaying, 1);
}

/// Stops the play at the first message that it gets.
class StoppingDelegate final : public RenderDelegate {
public:
    void updateValue(float /*level*/) override {
        if (!std::exchange(stopped, true)) {
            bufferPlayer.rampState = FadeOut;
        }
    }
    void resetMeter() override {}
    void resetPlayTitle() override {}
    void traceIdleCycle(std::int32_t /*left*/) override {}
    void traceMissingBuffer() override {}

    bool stopped = false;
};

TEST_F(RenderCallback, AStopDuringTheCallThatEndsThePlayHasNothingMoreToEnd) {
    startPlaying(counting(4));
    bufferPlayer.rampState = Steady;
    StoppingDelegate delegate;
    renderDelegate = &delegate;
    call(8);
    renderDelegate = &platform_.delegate;
    EXPECT_TRUE(delegate.stopped);
    EXPECT_EQ(bufferPlayer.rampState, Silent);
    EXPECT_EQ(bufferPlayer.isPlaying, 0);
}

TEST_F(RenderCallback, AStateAboveFadeOutLeavesTheFramesUnwritten) {
    for (const std::uint32_t state : {4U, 5U, 0xFFFFFFFFU}) {
        loadSound(counting(100));
        bufferPlayer.readPosition = 0.0;
        totalFrames = 0;
        bufferPlayer.rampState = state;
        EXPECT_EQ(call(6, 0.25F), Frames(6, 0.25F));
        EXPECT_EQ(bufferPlayer.rampState, state);
        EXPECT_EQ(value, 0.25F) << "what stands there is measured";
        EXPECT_EQ(bufferPlayer.readPosition, 6.0);
    }
}

TEST_F(RenderCallback, WithoutASoundTheOutputIsUntouchedAndTheLineIsSent) {
    ASSERT_EQ(fBuffer, nullptr);
    bufferPlayer.idleCycles = 2;
    EXPECT_EQ(call(5, 0.75F), Frames(5, 0.75F));
    EXPECT_EQ(messages(), Messages({"missing buffer"}));
    EXPECT_EQ(bufferPlayer.idleCycles, 2);
}

TEST_F(RenderCallback, TheResultIsAlwaysZero) {
    Frames output(4);
    platform::AudioBufferList data{1, {{1, 16, output.data()}}};
    platform::RenderActionFlags flags = 0;
    const platform::AudioTimeStamp time{};
    EXPECT_EQ(FloatBufferRenderProc(&bufferPlayer, &flags, &time, 0, 4, &data), 0);
    startPlaying(counting(10));
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(FloatBufferRenderProc(&bufferPlayer, &flags, &time, 0, 4, &data), 0);
    }
}

TEST_F(RenderCallback, WithoutADelegateThePlayGoesOnAllTheSame) {
    renderDelegate = nullptr;
    startPlaying(counting(100));
    call(4);
    EXPECT_EQ(call(4), Frames({5, 6, 7, 8}));
}

TEST_F(RenderCallback, APlayThatNobodyListensToComesToItsEnd) {
    renderDelegate = nullptr;
    startPlaying(counting(10));
    for (int i = 0; i < 8 && platform_.output.running; ++i) {
        call(4);
    }
    EXPECT_FALSE(platform_.output.running);
    EXPECT_EQ(bufferPlayer.isPlaying, 0);
    EXPECT_EQ(value, 0.0F);
    emptyBuffer();
    EXPECT_EQ(call(4, 0.75F), Frames(4, 0.75F));
}

TEST_F(RenderCallback, AStoppedPlayThatNobodyListensToFadesOut) {
    renderDelegate = nullptr;
    startPlaying(counting(100));
    call(4);
    bufferStop0();
    EXPECT_EQ(call(4), Frames({5.0F, 6.0F * 3 / 4, 7.0F * 2 / 4, 8.0F / 4}));
    EXPECT_EQ(call(4), Frames(4, 0.0F));
    EXPECT_EQ(value, 0.0F);
}

// The level ---------------------------------------------------------------------------------

class Level : public RenderCallback {
protected:
    float ofSteadyCall(const Frames& samples, bool rms) {
        const std::size_t n = samples.size();
        Frames sound(n, 0.0F);
        sound.insert(sound.end(), samples.begin(), samples.end());
        sound.resize(8 * n, 0.0F);
        bufferPlayer.isPlaying = 0;
        bufferPlayer.rmsMode = rms ? 1 : 0;
        startPlaying(sound);
        call(static_cast<std::uint32_t>(n));
        call(static_cast<std::uint32_t>(n));
        return value;
    }
};

TEST_F(Level, PeakKeepsItsSign) {
    EXPECT_EQ(ofSteadyCall({0.1F, -0.9F, 0.5F}, false), -0.9F);
}

TEST_F(Level, TheLaterOfTwoEqualMagnitudesIsThePeak) {
    EXPECT_EQ(ofSteadyCall({-0.8F, 0.8F}, false), 0.8F);
    EXPECT_EQ(ofSteadyCall({0.8F, -0.8F}, false), -0.8F);
    EXPECT_EQ(ofSteadyCall({-0.8F, 0.8F, -0.9F}, false), -0.9F);
}

TEST_F(Level, RmsOfAConstantHalfIs0707) {
    EXPECT_EQ(ofSteadyCall(Frames(512, 0.5F), true), static_cast<float>(1.414 * 0.5));
}

TEST_F(Level, RmsOfAFullScaleSineIsAboutOne) {
    Frames sine(512);
    for (std::size_t i = 0; i < sine.size(); ++i) {
        sine[i] = static_cast<float>(
            std::sin(2.0 * std::numbers::pi * 8.0 * static_cast<double>(i) / 512.0));
    }
    EXPECT_NEAR(ofSteadyCall(sine, true), 1.414 * std::numbers::sqrt2 / 2.0, 1e-5);
}

TEST_F(Level, ANaNIsNeverThePeak) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(ofSteadyCall({0.25F, nan, 0.125F}, false), 0.25F);
    EXPECT_EQ(ofSteadyCall({nan, nan}, false), 0.0F);
}

TEST_F(Level, ANaNMakesTheRmsNaN) {
    EXPECT_TRUE(
        std::isnan(ofSteadyCall({0.25F, std::numeric_limits<float>::quiet_NaN(), 0.125F}, true)));
}

TEST_F(Level, BelongsToOneCallOnly) {
    loadSound({0.9F, 0.9F, 0.9F, 0.9F, 0.1F, 0.1F, 0.1F, 0.1F, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    bufferPlay0(0);
    call(4);
    call(4);
    EXPECT_EQ(value, 0.1F);
}

TEST_F(Level, IsSentWithEveryCall) {
    startPlaying(Frames(100, 0.5F));
    call(4);
    EXPECT_EQ(messages(), Messages({"updateValue 0.375"}));
    call(4);
    EXPECT_EQ(messages(), Messages({"updateValue 0.5"}));
}

/// Has another thread begin a play in the middle of a call that has come to the sound's end.
struct PlaysAtTheEnd final : RenderDelegate {
    void updateValue(float) override {}
    void repeatUpdateValue(float, std::uint32_t) override {
        std::thread([] { bufferPlay0(0); }).join();
    }
    void resetMeter() override {}
    void resetPlayTitle() override {}
    void traceIdleCycle(std::int32_t) override {}
    void traceMissingBuffer() override {}
};

TEST_F(RenderCallback, APlayThatIsBegunWhileALateStopRunsOutIsNotLost) {
    startPlaying(Frames(8, 0.5F));
    bufferPlayer.isPlaying = 0; // the play has ended, and only then the stop was stored
    bufferPlayer.rampState = FadeOut;
    bufferPlayer.readPosition = 8.0;
    PlaysAtTheEnd delegate;
    renderDelegate = &delegate;
    call(4);
    EXPECT_EQ(bufferPlayer.rampState, FadeIn);
    EXPECT_EQ(bufferPlayer.isPlaying, 1);
    renderDelegate = &platform_.delegate;
    superviseOutputUnit();
    EXPECT_TRUE(platform_.output.running);
    EXPECT_NE(call(4)[1], 0.0F);
}

} // namespace
} // namespace zemo::test
