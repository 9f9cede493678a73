#include "playback/OutputUnit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "playback/RenderCallback.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

using Calls = std::vector<std::string>;

/// Lets a test see from outside, on standard error, what a process said before it ended.
class EchoTrace final : public platform::TraceLog {
public:
    void print(std::string_view text) override { echo("[out]", text); }
    void printError(std::string_view text) override { echo("[err]", text); }
    void log(std::string_view text) override { echo("[log]", text); }

private:
    static void echo(const char* stream, std::string_view text) {
        std::fprintf(stderr, "%s%.*s", stream, static_cast<int>(text.size()), text.data());
    }
};

class OutputUnit : public testing::Test {
protected:
    FakePlatform platform_;
};

// createOutputUnit --------------------------------------------------------------------------

TEST_F(OutputUnit, IsConfiguredInOrderAndNotStarted) {
    createOutputUnit(&bufferPlayer);
    EXPECT_EQ(platform_.output.calls, Calls({"findNext", "newInstance", "setRenderCallback",
                                             "sampleRate", "setStreamFormat", "initialize"}));
    EXPECT_EQ(bufferPlayer.outputUnit, &platform_.output);
}

TEST_F(OutputUnit, IsLookedForAsTheHardwareOutput) {
    createOutputUnit(&bufferPlayer);
    EXPECT_EQ(platform_.output.wanted.componentType, 0x61756F75U);         // "auou"
    EXPECT_EQ(platform_.output.wanted.componentSubType, 0x6168616CU);      // "ahal"
    EXPECT_EQ(platform_.output.wanted.componentManufacturer, 0x6170706CU); // "appl"
    EXPECT_EQ(platform_.output.wanted.componentFlags, 0U);
    EXPECT_EQ(platform_.output.wanted.componentFlagsMask, 0U);
}

TEST_F(OutputUnit, GetsTheRenderCallbackWithThePlayerAsItsContext) {
    createOutputUnit(&bufferPlayer);
    EXPECT_EQ(platform_.output.callback, &FloatBufferRenderProc);
    EXPECT_EQ(platform_.output.context, &bufferPlayer);
}

TEST_F(OutputUnit, ItsRateBecomesROfTheProgram) {
    for (const double rate : {44100.0, 96000.0, 44100.5}) {
        platform_.output.rate = rate;
        createOutputUnit(&bufferPlayer);
        EXPECT_EQ(R, rate);
        EXPECT_EQ(streamFormat.mSampleRate, rate);
    }
}

TEST_F(OutputUnit, ItsFormatIsMonoFloat) {
    for (const double rate : {44100.0, 96000.0}) {
        platform_.output.rate = rate;
        createOutputUnit(&bufferPlayer);
        for (const auto& format : {streamFormat, platform_.output.format}) {
            EXPECT_EQ(format.mSampleRate, rate);
            EXPECT_EQ(format.mFormatID, 0x6C70636DU); // "lpcm"
            EXPECT_EQ(format.mFormatFlags, 41U);
            EXPECT_EQ(format.mBytesPerPacket, 4U);
            EXPECT_EQ(format.mFramesPerPacket, 1U);
            EXPECT_EQ(format.mBytesPerFrame, 4U);
            EXPECT_EQ(format.mChannelsPerFrame, 1U);
            EXPECT_EQ(format.mBitsPerChannel, 32U);
            EXPECT_EQ(format.mReserved, 0U);
        }
    }
}

TEST_F(OutputUnit, ItsFormatStaysWhateverSoundIsLoaded) {
    platform_.launch(44100.0);
    loadSound(std::vector<float>(1000, 0.5F));
    emptyBuffer();
    EXPECT_EQ(streamFormat.mSampleRate, 44100.0);
    EXPECT_EQ(streamFormat.mFormatFlags, 41U);
    EXPECT_EQ(R, 44100.0);
}

TEST_F(OutputUnit, WithoutAComponentTheProgramEndsWithOneLineAndStatus255) {
    EchoTrace echo;
    platform::services().trace = &echo;
    platform_.output.hasComponent = false;
    EXPECT_EXIT(createOutputUnit(&bufferPlayer), testing::ExitedWithCode(255),
                "^\\[out\\]can't get output unit$");
}

struct FailingCall {
    const char* call;
    const char* text;
};

class OutputUnitFailure : public OutputUnit, public testing::WithParamInterface<FailingCall> {};

TEST_P(OutputUnitFailure, EndsTheProgramWithItsText) {
    EchoTrace echo;
    platform::services().trace = &echo;
    platform_.output.failures[GetParam().call] = -50;
    const std::string text = GetParam().text;
    EXPECT_EXIT(createOutputUnit(&bufferPlayer), testing::ExitedWithCode(1),
                "^\\[err\\]Error: " + text + " \\(-50\\)\n\\[out\\]" + text +
                    " \\(-50\\)\nApplication will quit\n$");
}

INSTANTIATE_TEST_SUITE_P(
    EachCall, OutputUnitFailure,
    testing::Values(FailingCall{"newInstance", "Couldn't open component for outputUnit"},
                    FailingCall{"setRenderCallback", "AudioUnitSetProperty failed"},
                    FailingCall{"sampleRate", "AudioUnitGetProperty failed"},
                    FailingCall{"setStreamFormat",
                                "Couldn't set StreamFormat on input scope / bus 0"},
                    FailingCall{"initialize", "Couldn't initialize output unit"}),
    [](const auto& each) { return each.param.call; });

// Play and stop -----------------------------------------------------------------------------

class Transport : public OutputUnit {
protected:
    Transport() { platform_.launch(); }

    long starts() const {
        const auto& calls = platform_.output.calls;
        return std::count(calls.begin(), calls.end(), "start");
    }
};

TEST_F(Transport, APlayPrintsTheLengthAndFortyFiveUnderscores) {
    loadSound(std::vector<float>(1234, 0.5F));
    bufferPlay0(0);
    EXPECT_EQ(platform_.trace.out,
              "1234 frames\n_____________________________________________\n\n");
    EXPECT_TRUE(platform_.trace.err.empty());
    EXPECT_TRUE(platform_.trace.logged.empty());
}

TEST_F(Transport, TheUnderscoresComeAfterTheStart) {
    loadSound({0.5F});
    std::string before;
    platform_.output.whileStarting = [&] { before = platform_.trace.out; };
    bufferPlay0(0);
    EXPECT_EQ(before, "1 frames\n");
}

TEST_F(Transport, APlayWithoutASoundPrintsTwoLinesAndStartsNothing) {
    EXPECT_EQ(bufferPlay0(0), 0);
    EXPECT_EQ(platform_.trace.out, "0 frames\nNULL Buffer!\n");
    EXPECT_EQ(starts(), 0);
    EXPECT_EQ(bufferPlayer.isPlaying, 0);
    EXPECT_EQ(bufferPlayer.rampState, Silent);
}

TEST_F(Transport, APlayBeginsAtTheFirstSampleWithTwoIdleCycles) {
    loadSound(std::vector<float>(100, 0.5F));
    totalFrames = 77;
    bufferPlayer.readPosition = 55.0;
    EXPECT_EQ(bufferPlay0(0), 0);
    EXPECT_EQ(totalFrames, 0);
    EXPECT_EQ(bufferPlayer.readPosition, 0.0);
    EXPECT_EQ(bufferPlayer.idleCycles, 2);
    EXPECT_EQ(bufferPlayer.rampState, FadeIn);
    EXPECT_EQ(bufferPlayer.isPlaying, 1);
    EXPECT_EQ(bufferPlayer.buffer, fBuffer.load());
    EXPECT_EQ(N, 2000.0F);
}

TEST_F(Transport, TheArgumentOfAPlayIsIgnored) {
    loadSound({0.5F});
    EXPECT_EQ(bufferPlay0(INT64_MIN), 0);
    EXPECT_EQ(bufferPlayer.rampState, FadeIn);
    EXPECT_EQ(bufferPlayer.readPosition, 0.0);
}

TEST_F(Transport, ASecondPlayIsRefusedWhileOneIsUnderWay) {
    loadSound(std::vector<float>(100, 0.5F));
    bufferPlay0(0);
    platform_.output.pump(10);
    const std::string printed = platform_.trace.out;
    EXPECT_EQ(bufferPlay0(0), 0);
    EXPECT_EQ(starts(), 1);
    EXPECT_EQ(platform_.trace.out, printed);
    EXPECT_EQ(bufferPlayer.readPosition, 10.0);
    EXPECT_EQ(bufferPlayer.rampState, Steady);
}

TEST_F(Transport, APlayIsRefusedFromItsStartUntilItsFadeOutCallHasEnded) {
    loadSound(std::vector<float>(12, 0.5F));
    bufferPlay0(0);
    for (int i = 0; i < 3; ++i) {
        bufferPlay0(0);
        EXPECT_EQ(starts(), 1) << "before call " << i;
        platform_.output.pump(4);
    }
    bufferPlay0(0);
    EXPECT_EQ(starts(), 2);
}

TEST_F(Transport, AFailedStartEndsTheProgramWithItsText) {
    EchoTrace echo;
    platform::services().trace = &echo;
    loadSound({0.5F});
    platform_.output.failures["start"] = -66681;
    EXPECT_EXIT(bufferPlay0(0), testing::ExitedWithCode(1),
                "Error: Couldn't start output unit \\(-66681\\)\n");
}

TEST_F(Transport, AStopOnlyAsksForTheFadeOut) {
    loadSound(std::vector<float>(100, 0.5F));
    bufferPlay0(0);
    platform_.output.pump(10);
    platform_.output.calls.clear();
    EXPECT_EQ(bufferStop0(), 0);
    EXPECT_EQ(bufferPlayer.rampState, FadeOut);
    EXPECT_EQ(bufferPlayer.isPlaying, 1);
    EXPECT_EQ(bufferPlayer.readPosition, 10.0);
    EXPECT_EQ(platform_.output.calls, Calls());
}

TEST_F(Transport, AStopWithoutAPlayChangesNothing) {
    EXPECT_EQ(bufferStop0(), 0);
    EXPECT_EQ(bufferPlayer.rampState, Silent);
}

TEST_F(Transport, AStopWithoutAUnitChangesNothing) {
    bufferPlayer.outputUnit = nullptr;
    bufferPlayer.isPlaying = 1;
    bufferPlayer.rampState = Steady;
    EXPECT_EQ(bufferStop0(), 0);
    EXPECT_EQ(bufferPlayer.rampState, Steady);
}

// Supervision -------------------------------------------------------------------------------

class Supervision : public Transport {};

TEST_F(Supervision, WithoutAUnitThereIsNothingToAttend) {
    bufferPlayer.outputUnit = nullptr;
    EXPECT_FALSE(superviseOutputUnit());
}

TEST_F(Supervision, GoesOnWhileTheUnitRuns) {
    loadSound(std::vector<float>(100, 0.5F));
    EXPECT_FALSE(superviseOutputUnit());
    bufferPlay0(0);
    EXPECT_TRUE(superviseOutputUnit());
}

TEST_F(Supervision, ADeviceThatGoesAwayPutsThePlayerToRest) {
    loadSound(std::vector<float>(100, 0.5F));
    bufferPlay0(0);
    platform_.output.pump(10);
    platform_.delegate.messages.clear();
    platform_.output.running = false;
    platform_.output.failed = true;
    superviseOutputUnit();
    EXPECT_EQ(bufferPlayer.rampState, Silent);
    EXPECT_EQ(bufferPlayer.isPlaying, 0);
    EXPECT_EQ(bufferPlayer.idleCycles, 0);
    EXPECT_EQ(value, 0.0F);
    EXPECT_EQ(platform_.delegate.messages, Calls({"resetPlayTitle", "resetMeter"}));
    EXPECT_EQ(starts(), 1) << "a play that failed is not begun again by itself";
}

TEST_F(Supervision, ADeviceThatGoesAwayUnheardPutsThePlayerToRestToo) {
    loadSound(std::vector<float>(100, 0.5F));
    bufferPlay0(0);
    platform_.output.pump(10);
    renderDelegate = nullptr;
    platform_.output.running = false;
    platform_.output.failed = true;
    EXPECT_FALSE(superviseOutputUnit());
    EXPECT_EQ(bufferPlayer.rampState, Silent);
    EXPECT_EQ(bufferPlayer.isPlaying, 0);
    EXPECT_EQ(value, 0.0F);
}

TEST_F(Supervision, APlayCanBeBegunAfterTheDeviceWentAway) {
    loadSound(std::vector<float>(100, 0.5F));
    bufferPlay0(0);
    platform_.output.running = false;
    platform_.output.failed = true;
    superviseOutputUnit();
    bufferPlay0(0);
    EXPECT_EQ(starts(), 2);
    EXPECT_EQ(bufferPlayer.rampState, FadeIn);
}

TEST_F(Supervision, APlayBegunInTheMomentOfTheStopIsStartedAgain) {
    loadSound(std::vector<float>(100, 0.5F));
    bufferPlay0(0);
    platform_.output.stop(); // asked for by a call that saw the play before
    ASSERT_FALSE(platform_.output.running);
    EXPECT_TRUE(superviseOutputUnit());
    EXPECT_TRUE(platform_.output.running);
    EXPECT_EQ(bufferPlayer.rampState, FadeIn);
    EXPECT_EQ(bufferPlayer.readPosition, 0.0);
}

TEST_F(Supervision, APlayWhoseMarkWasTakenByTheCallBeforeIsStartedAgain) {
    loadSound(std::vector<float>(100, 0.5F));
    bufferPlay0(0);
    platform_.output.stop();
    bufferPlayer.isPlaying = 0; // a silent call took it for the mark of the play before
    EXPECT_TRUE(superviseOutputUnit());
    EXPECT_TRUE(platform_.output.running);
    EXPECT_EQ(bufferPlayer.isPlaying, 1);
    EXPECT_EQ(bufferPlayer.rampState, FadeIn);
}

TEST_F(Supervision, AStopThatMetTheEndOfTheSoundLeavesThePlayerAtRest) {
    loadSound({0.5F});
    bufferPlay0(0);
    platform_.output.pump(8);
    ASSERT_EQ(bufferPlayer.isPlaying, 0);
    bufferPlayer.rampState = FadeOut; // the store of a stop that saw the play one moment ago
    superviseOutputUnit();
    EXPECT_EQ(bufferPlayer.rampState, Silent);
    EXPECT_EQ(starts(), 1);
}

class APlayThatLostItsSound : public Supervision {
protected:
    APlayThatLostItsSound() {
        loadSound(std::vector<float>(100, 0.5F));
        bufferPlay0(0);
        platform_.output.stop(); // asked for by a call that saw the play before
        emptyBuffer();
        platform_.delegate.messages.clear();
    }
};

TEST_F(APlayThatLostItsSound, ComesToRestInsteadOfRunningForEver) {
    EXPECT_FALSE(superviseOutputUnit());
    EXPECT_EQ(starts(), 1);
    EXPECT_EQ(bufferPlayer.rampState, Silent);
    EXPECT_EQ(bufferPlayer.isPlaying, 0);
    EXPECT_EQ(platform_.delegate.messages, Calls({"resetPlayTitle", "resetMeter"}));
}

TEST_F(APlayThatLostItsSound, WaitsForACallUnderWayBecauseTheMessagesAreItsOwnUntilThen) {
    platform_.output.inUse = true;
    EXPECT_TRUE(superviseOutputUnit());
    EXPECT_EQ(starts(), 1);
    EXPECT_EQ(platform_.delegate.messages, Calls());
    platform_.output.inUse = false;
    EXPECT_FALSE(superviseOutputUnit());
    EXPECT_EQ(platform_.delegate.messages, Calls({"resetPlayTitle", "resetMeter"}));
}

TEST_F(APlayThatLostItsSound, PlaysTheNextOneIfThatComesFirst) {
    loadSound(std::vector<float>(100, 0.25F));
    EXPECT_TRUE(superviseOutputUnit());
    EXPECT_EQ(starts(), 2);
    EXPECT_EQ(bufferPlayer.rampState, FadeIn);
    EXPECT_EQ(platform_.delegate.messages, Calls());
}

TEST_F(APlayThatLostItsSound, DoesNotKeepTheNextPlayFromBeginning) {
    superviseOutputUnit();
    loadSound(std::vector<float>(100, 0.25F));
    EXPECT_FALSE(superviseOutputUnit());
    bufferPlay0(0);
    EXPECT_EQ(starts(), 2);
    EXPECT_EQ(bufferPlayer.rampState, FadeIn);
}

TEST_F(Supervision, AFinishedPlayIsNotStartedAgain) {
    loadSound({0.5F});
    bufferPlay0(0);
    platform_.output.pump(8);
    ASSERT_FALSE(platform_.output.running);
    EXPECT_FALSE(superviseOutputUnit());
    EXPECT_EQ(starts(), 1);
}

TEST_F(Supervision, AHaltPutsThePlayerToRestWithoutAFade) {
    loadSound(std::vector<float>(100, 0.5F));
    bufferPlay0(0);
    platform_.output.pump(10);
    platform_.delegate.messages.clear();
    haltOutputUnit();
    EXPECT_FALSE(platform_.output.running);
    EXPECT_EQ(bufferPlayer.rampState, Silent);
    EXPECT_EQ(bufferPlayer.isPlaying, 0);
    EXPECT_EQ(value, 0.0F);
    EXPECT_EQ(platform_.delegate.messages, Calls({"resetPlayTitle", "resetMeter"}));
}

// kramp -------------------------------------------------------------------------------------

TEST(Kramp, IsZeroUpToZeroAndOneFromAThousandOn) {
    for (const float x : {-INFINITY, -1.0F, -0.0F, 0.0F}) {
        EXPECT_EQ(kramp(x), 0.0F);
    }
    for (const float x : {1000.0F, 1000.5F, INFINITY}) {
        EXPECT_EQ(kramp(x), 1.0F);
    }
}

TEST(Kramp, IsAThousandthOfXBetweenComputedInDouble) {
    for (int i = 1; i < 8000; ++i) {
        const float x = static_cast<float>(i) / 8.0F;
        EXPECT_EQ(kramp(x), static_cast<float>(0.001 * static_cast<double>(x)));
    }
}

} // namespace
} // namespace zemo::test
