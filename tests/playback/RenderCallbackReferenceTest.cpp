// The callback beside an independent model, bit for bit, over random plays.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>

#include "ReferencePlayer.h"
#include "playback/OutputUnit.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

constexpr unsigned kMostFrames = 4096;
constexpr unsigned kLongestSound = 20000;

enum class Samples { Ordinary, Extreme };

class RenderCallbackBesideTheModel : public testing::Test {
protected:
    explicit RenderCallbackBesideTheModel(unsigned seed = 1) : random_(seed) {
        platform_.launch();
        renderDelegate = &recorder_;
    }

    unsigned below(unsigned limit) {
        return std::uniform_int_distribution<unsigned>(0, limit - 1)(random_);
    }
    bool oneIn(unsigned chances) { return below(chances) == 0; }

    unsigned frameCount(unsigned usual) {
        if (!oneIn(4)) {
            return usual;
        }
        return oneIn(2) ? 1 + below(kMostFrames) : 1 + below(70);
    }

    /// Many lengths lie close to a multiple of the usual frame count: there the endings differ.
    unsigned soundLength(unsigned usual) {
        if (oneIn(4)) {
            return below(kLongestSound + 1);
        }
        const int length = static_cast<int>(usual * below(7)) + static_cast<int>(below(7)) - 3;
        return static_cast<unsigned>(std::clamp(length, 0, static_cast<int>(kLongestSound)));
    }

    float sample(Samples kind) {
        static constexpr std::array kOdd{std::numeric_limits<float>::quiet_NaN(),
                                         -std::numeric_limits<float>::quiet_NaN(),
                                         std::numeric_limits<float>::infinity(),
                                         -std::numeric_limits<float>::infinity(),
                                         std::numeric_limits<float>::denorm_min(),
                                         -std::numeric_limits<float>::denorm_min(),
                                         std::numeric_limits<float>::min() / 3.0F,
                                         std::numeric_limits<float>::max(),
                                         std::numeric_limits<float>::lowest(),
                                         0.0F,
                                         -0.0F};
        if (kind == Samples::Extreme && oneIn(20)) {
            return kOdd[below(kOdd.size())];
        }
        // Coarse steps, so that equal magnitudes of either sign are common.
        return (static_cast<float>(below(401)) - 200.0F) / 160.0F;
    }

    void load(unsigned length, Samples kind) {
        model_.loaded = true;
        model_.sound.resize(length);
        for (float& each : model_.sound) {
            each = sample(kind);
        }
        loadSound(model_.sound);
    }

    void play() {
        std::vector<unsigned> early;
        while (oneIn(8)) {
            early.push_back(frameCount(64));
        }
        platform_.output.whileStarting = [&] {
            for (const unsigned frames : early) {
                theirs_.push_back(platform_.output.pump(frames, 0.25F));
            }
        };
        bufferPlay0(0);
        platform_.output.whileStarting = nullptr;
        model_.play([&] {
            for (const unsigned frames : early) {
                ours_.emplace_back(frames, 0.25F);
                model_.call(ours_.back());
            }
        });
    }

    void stop() {
        bufferStop0();
        model_.stop();
    }

    void setMode(std::uint8_t rms) {
        bufferPlayer.rmsMode = rms;
        model_.rmsMode = rms;
    }

    void setState(unsigned state) {
        bufferPlayer.rampState = state;
        model_.rampState = state;
    }

    void call(unsigned frames) {
        theirs_.push_back(platform_.output.pump(frames, 0.25F));
        ours_.emplace_back(frames, 0.25F);
        model_.call(ours_.back());
    }

    /// Takes what both sides have done since the last comparison.
    testing::AssertionResult agree() {
        const auto stopped =
            std::count(platform_.output.calls.begin(), platform_.output.calls.end(), "stop");
        const auto started =
            std::count(platform_.output.calls.begin(), platform_.output.calls.end(), "start");
        std::ostringstream wrong;
        if (theirs_.size() != ours_.size() ||
            !std::equal(theirs_.begin(), theirs_.end(), ours_.begin(), sameBits)) {
            wrong << " output frames;";
        }
        if (recorder_.sent != model_.sent) {
            wrong << " messages: " << texts(recorder_.sent) << " instead of " << texts(model_.sent)
                  << ";";
        }
        // The rules repeat the stop for every frame past the end; once a call is the same.
        expect(wrong, "stopped", stopped > 0, model_.stops > 0);
        expect(wrong, "started", started, static_cast<long>(model_.starts));
        if (!sameNumber(value.load(), model_.value)) {
            wrong << " value " << value.load() << " instead of " << model_.value << ";";
        }
        expect(wrong, "rampState", bufferPlayer.rampState.load(), model_.rampState);
        expect(wrong, "isPlaying", static_cast<int>(bufferPlayer.isPlaying), model_.isPlaying);
        expect(wrong, "idleCycles", bufferPlayer.idleCycles.load(), model_.idleCycles);
        expect(wrong, "readPosition", bufferPlayer.readPosition.load(), model_.readPosition);
        expect(wrong, "totalFrames", static_cast<long long>(totalFrames), model_.totalFrames);
        forget();
        return wrong.str().empty() ? testing::AssertionSuccess()
                                   : testing::AssertionFailure() << wrong.str();
    }

    /// One play of one sound: until the unit is stopped and a little beyond.
    void playThrough(Samples kind) {
        const unsigned usual = oneIn(2) ? 1 + below(64) : 1 + below(kMostFrames);
        while (platform_.output.running) { // a play begun at the end of the one before
            call(usual);
        }
        ASSERT_TRUE(agree());
        load(soundLength(usual), kind);
        setMode(static_cast<std::uint8_t>(below(2)));
        // Some sounds are stopped half-way, some in their first call, some never.
        const unsigned stopChance = oneIn(2) ? 0 : 1 + below(12);
        play();
        unsigned callsAfterStop = below(6);
        while (callsAfterStop > 0) {
            if (stopChance > 0 && oneIn(stopChance)) {
                stop();
            }
            if (oneIn(40)) {
                setMode(static_cast<std::uint8_t>(below(2)));
            }
            if (oneIn(20)) {
                play();
            }
            const unsigned frames = frameCount(usual);
            call(frames);
            callsAfterStop -= model_.stops > 0 ? 1 : 0;
            ASSERT_TRUE(agree()) << model_.sound.size() << " samples, call of " << frames
                                 << " frames, usually " << usual;
        }
    }

    FakePlatform platform_;
    SentRecorder recorder_;
    ReferencePlayer model_;
    std::mt19937 random_;

private:
    template <typename T>
    static void expect(std::ostringstream& wrong, const char* name, T found, T wanted) {
        if (found != wanted) {
            wrong << " " << name << " " << found << " instead of " << wanted << ";";
        }
    }

    void forget() {
        theirs_.clear();
        ours_.clear();
        recorder_.sent.clear();
        model_.sent.clear();
        model_.starts = 0;
        model_.stops = 0;
        platform_.output.calls.clear();
    }

    std::vector<std::vector<float>> theirs_;
    std::vector<std::vector<float>> ours_;
};

TEST_F(RenderCallbackBesideTheModel, ThreeThousandPlaysAreTheSameBitForBit) {
    random_.seed(20240501);
    for (int i = 0; i < 3000 && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        playThrough(Samples::Ordinary);
    }
}

TEST_F(RenderCallbackBesideTheModel, PlaysOfNaNsInfinitiesAndDenormalsAreTheSameBitForBit) {
    random_.seed(77);
    for (int i = 0; i < 1500 && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        playThrough(Samples::Extreme);
    }
}

TEST_F(RenderCallbackBesideTheModel, EveryLengthUpToFourCallsEndsTheSame) {
    for (unsigned frames = 1; frames <= 12 && !HasFatalFailure(); ++frames) {
        for (unsigned length = 0; length <= 4 * frames + 2; ++length) {
            load(length, Samples::Ordinary);
            play();
            for (int i = 0; i < 9; ++i) {
                call(frames);
                ASSERT_TRUE(agree()) << length << " samples by " << frames << ", call " << i;
            }
        }
    }
}

TEST_F(RenderCallbackBesideTheModel, AStopBeforeAnyCallOfAnyPlayEndsTheSame) {
    for (unsigned length = 0; length <= 30 && !HasFatalFailure(); ++length) {
        for (int stopBefore = 0; stopBefore < 8; ++stopBefore) {
            load(length, Samples::Ordinary);
            play();
            for (int i = 0; i < 12; ++i) {
                if (i == stopBefore) {
                    stop();
                }
                call(5);
                ASSERT_TRUE(agree()) << length << " samples, stopped before call " << stopBefore;
            }
        }
    }
}

TEST_F(RenderCallbackBesideTheModel, AStateThatIsNoneOfTheFourIsTreatedTheSame) {
    random_.seed(5);
    for (int i = 0; i < 300 && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        load(below(200), Samples::Ordinary);
        setMode(static_cast<std::uint8_t>(below(2)));
        play();
        for (int j = 0; j < 12; ++j) {
            if (oneIn(3)) {
                setState(oneIn(2) ? 4 + below(3) : 0xFFFFFFFFU - below(2));
            }
            call(1 + below(40));
            ASSERT_TRUE(agree());
        }
        setState(Silent);
        call(1);
        call(1);
        call(1);
        ASSERT_TRUE(agree());
    }
}

} // namespace
} // namespace zemo::test
