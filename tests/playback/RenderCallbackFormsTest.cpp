// The callback, which works on whole runs of frames, beside the plain form, which takes one frame
// after the other: single calls from any state, at any place of the sound, of any length.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

#include "ReferencePlayer.h"
#include "playback/FrameRuns.h"
#include "playback/RenderCallback.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

constexpr unsigned kShortCall = 70;
constexpr unsigned kMostFrames = 700;
constexpr unsigned kLongCall = 4096;
constexpr std::array<std::uint32_t, 6> kStates{Silent, FadeIn, Steady, FadeOut, 4, 0xFFFFFFFFU};

using Limits = std::numeric_limits<float>;

struct Call {
    std::uint32_t state;
    unsigned frames;
    double position;
    bool rms;
};

class RenderCallbackForms : public testing::Test {
protected:
    RenderCallbackForms() {
        platform_.launch();
        renderDelegate = &recorder_;
    }

    unsigned below(unsigned limit) {
        return std::uniform_int_distribution<unsigned>(0, limit - 1)(random_);
    }

    /// Coarse, so that equal magnitudes of either sign are common.
    float ordinary() { return (static_cast<float>(below(401)) - 200.0F) / 160.0F; }

    float odd() {
        static constexpr std::array kOdd{Limits::quiet_NaN(),
                                         -Limits::quiet_NaN(),
                                         Limits::signaling_NaN(),
                                         Limits::infinity(),
                                         -Limits::infinity(),
                                         Limits::denorm_min(),
                                         -Limits::denorm_min(),
                                         Limits::min() / 3.0F,
                                         Limits::max(),
                                         Limits::lowest(),
                                         0.0F,
                                         -0.0F};
        return kOdd[below(kOdd.size())];
    }

    /// One sample in `chances` is an odd one.
    void load(std::size_t length, unsigned chances) {
        model_.loaded = true;
        model_.sound.resize(length);
        for (float& each : model_.sound) {
            each = below(chances) == 0 ? odd() : ordinary();
        }
        loadSound(model_.sound);
    }

    void place(const Call& call) {
        bufferPlayer.rampState = model_.rampState = call.state;
        bufferPlayer.rmsMode = call.rms ? 1 : 0;
        model_.rmsMode = call.rms ? 1 : 0;
        bufferPlayer.readPosition = model_.readPosition = call.position;
        model_.totalFrames = static_cast<long long>(call.position);
        totalFrames = model_.totalFrames;
        bufferPlayer.isPlaying = 1;
        model_.isPlaying = 1;
        const int idle = static_cast<int>(below(3));
        bufferPlayer.idleCycles = idle;
        model_.idleCycles = idle;
    }

    /// Both forms make the call from where they stand. What the output held before is odd too: in a
    /// state that is none of the four it is what gets measured.
    testing::AssertionResult agreeOn(unsigned frames) {
        before_.resize(frames);
        for (float& each : before_) {
            each = below(30) == 0 ? odd() : ordinary();
        }
        ours_ = before_;
        model_.call(ours_);
        std::vector<float> theirs = before_;
        render(theirs);
        const testing::AssertionResult result = compare(theirs);
        recorder_.sent.clear();
        model_.sent.clear();
        model_.stops = 0;
        platform_.output.calls.clear();
        return result;
    }

    testing::AssertionResult agree(const Call& call) {
        place(call);
        return agreeOn(call.frames)
               << "in state " << call.state << ", " << call.frames << " frames from "
               << call.position << " of " << model_.sound.size() << (call.rms ? ", RMS" : ", peak");
    }

    /// From the start, from the middle, to the last frame and around it, across the end at several
    /// points, in the slack, and far behind.
    std::vector<double> placesFor(unsigned frames) {
        const auto length = static_cast<double>(model_.sound.size());
        const double whole = std::max(length - frames, 1.0);
        return {0.0,         std::floor(whole / 2),
                whole - 1,   whole,
                whole + 1,   std::floor(whole + frames / 3.0),
                length - 1,  length,
                length + 1,  length + below(kSlackSamples),
                length + 1e9};
    }

    void everyCallFrom(double position, unsigned frames) {
        for (const std::uint32_t state : kStates) {
            for (const bool rms : {false, true}) {
                ASSERT_TRUE(agree({state, frames, position, rms}));
            }
        }
    }

    void everyCallOf(unsigned frames) {
        for (const double position : placesFor(frames)) {
            everyCallFrom(position, frames);
        }
    }

    static void render(std::vector<float>& output) {
        const auto frames = static_cast<std::uint32_t>(output.size());
        platform::RenderActionFlags flags = 0;
        const platform::AudioTimeStamp time{};
        platform::AudioBufferList data{1, {{1, 4 * frames, output.data()}}};
        FloatBufferRenderProc(&bufferPlayer, &flags, &time, 0, frames, &data);
    }

    FakePlatform platform_;
    SentRecorder recorder_;
    ReferencePlayer model_;
    std::mt19937 random_{4711};

private:
    testing::AssertionResult compare(const std::vector<float>& theirs) {
        if (!sameBits(theirs, ours_)) {
            return testing::AssertionFailure() << "other frames ";
        }
        if (recorder_.sent != model_.sent) {
            return testing::AssertionFailure() << "other messages: " << texts(recorder_.sent)
                                               << " instead of " << texts(model_.sent) << " ";
        }
        const auto stops =
            std::count(platform_.output.calls.begin(), platform_.output.calls.end(), "stop");
        const bool same = sameNumber(value, model_.value) &&
                          bufferPlayer.rampState == model_.rampState &&
                          bufferPlayer.isPlaying == model_.isPlaying &&
                          bufferPlayer.idleCycles == model_.idleCycles &&
                          bufferPlayer.readPosition == model_.readPosition &&
                          totalFrames == model_.totalFrames && (stops > 0) == (model_.stops > 0);
        return same ? testing::AssertionSuccess()
                    : testing::AssertionFailure() << "another state afterwards ";
    }

    std::vector<float> before_;
    std::vector<float> ours_;
};

TEST_F(RenderCallbackForms, AShortCallInAnyStateAtAnyPlaceIsTheSameBitForBit) {
    load(std::size_t{3} * kShortCall, 40);
    for (unsigned frames = 1; frames <= kShortCall && !HasFatalFailure(); ++frames) {
        everyCallOf(frames);
    }
}

/// Each length at two of the places, which change from one length to the next.
TEST_F(RenderCallbackForms, ACallOfAnyLengthInAnyStateIsTheSameBitForBit) {
    load(std::size_t{3} * kMostFrames, 40);
    for (unsigned frames = kShortCall; frames <= kMostFrames && !HasFatalFailure(); ++frames) {
        const std::vector<double> places = placesFor(frames);
        everyCallFrom(places[frames % places.size()], frames);
        everyCallFrom(places[(frames + places.size() / 2) % places.size()], frames);
    }
}

TEST_F(RenderCallbackForms, ALongCallIsTheSameBitForBit) {
    for (const std::size_t length : {100U, 4095U, 4096U, 4097U, 20000U}) {
        load(length, 100);
        everyCallOf(kLongCall);
    }
}

TEST_F(RenderCallbackForms, ACallOfNothingButOddSamplesIsTheSameBitForBit) {
    for (int i = 0; i < 200 && !HasFatalFailure(); ++i) {
        load(200, 1);
        everyCallOf(1 + below(60));
    }
}

TEST_F(RenderCallbackForms, RandomStatesAndJumpsOfTheIndexAreTheSameBitForBit) {
    for (int sound = 0; sound < 40 && !HasFatalFailure(); ++sound) {
        load(1 + below(5000), 1 + below(60));
        for (int i = 0; i < 100; ++i) {
            const unsigned frames = below(20) == 0 ? kLongCall : 1 + below(kMostFrames);
            const auto farthest = static_cast<unsigned>(model_.sound.size() + kSlackSamples);
            if (below(3) == 0) {
                const Call jump{kStates[below(kStates.size())], frames,
                                static_cast<double>(below(farthest)), below(2) == 0};
                ASSERT_TRUE(agree(jump));
            } else {
                ASSERT_TRUE(agreeOn(frames)) << "call " << i << " of sound " << sound;
            }
        }
    }
}

/// Nothing in the program makes one, but adding it up at once would give other bits.
TEST_F(RenderCallbackForms, AFractionalIndexAdvancesAsFrameByFrame) {
    load(2000, 40);
    for (int i = 0; i < 500; ++i) {
        const double position = 0.1 * below(25000);
        ASSERT_TRUE(agree({Steady, 1 + below(kMostFrames), position, false}));
    }
}

TEST_F(RenderCallbackForms, AnIndexBeyondWhatADoubleCountsStaysWhereItIs) {
    constexpr double kLastCounted = 9007199254740992.0; // 2 to the 53rd
    load(100, 40);
    for (const double before : {0.0, 1.0, 5.0, 63.0, 64.0, 65.0}) {
        place({Silent, 64, kLastCounted - before, false});
        std::vector<float> output(64);
        render(output);
        EXPECT_EQ(bufferPlayer.readPosition, kLastCounted - std::max(before - 64.0, 0.0));
    }
}

TEST(FrameRuns, ThePeakKeepsItsSignAndOfEqualMagnitudesTheLastWins) {
    const std::array a{0.5F, -0.8F, 0.8F, 0.1F};
    EXPECT_EQ(peakOfFrames(a.data(), 4), 0.8F);
    const std::array b{0.5F, 0.8F, -0.8F, 0.1F};
    EXPECT_EQ(peakOfFrames(b.data(), 4), -0.8F);
}

TEST(FrameRuns, ThePeakOfNoNumberIsZero) {
    const std::array none{Limits::quiet_NaN(), -Limits::quiet_NaN()};
    EXPECT_TRUE(sameNumber(peakOfFrames(none.data(), 2), 0.0F));
    EXPECT_TRUE(sameNumber(peakOfFrames(none.data(), 0), 0.0F));
    const std::array negativeZero{0.0F, -0.0F, Limits::quiet_NaN()};
    EXPECT_TRUE(sameNumber(peakOfFrames(negativeZero.data(), 3), -0.0F));
}

TEST(FrameRuns, AFadeOverMoreFramesThanAFloatCountsRoundsEachOfThem) {
    constexpr std::uint32_t kLength = 0xFFFFFFFF;
    const std::vector<float> ones(9, 1.0F);
    std::vector<float> faded(9);
    fadeOutFrames(faded.data(), ones.data(), 9, kLength);
    for (std::uint32_t i = 0; i < 9; ++i) {
        EXPECT_EQ(faded[i], static_cast<float>(kLength - i) / static_cast<float>(kLength));
    }
}

} // namespace
} // namespace zemo::test
