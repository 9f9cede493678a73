// The exchange of the sound under a real audio thread. Worth most under the thread and address
// sanitizers; the samples prove the same without them.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <mutex>
#include <numeric>
#include <random>
#include <thread>

#include "platform/RealTime.h"
#include "platform_linux/LinuxServices.h"
#include "playback/OutputUnit.h"
#include "playback/RenderCallback.h"
#include "playback/RenderMessageQueue.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

constexpr std::uint32_t kMostFrames = 600;

/// The one sound that explains a call's frames, or why none does. Every sound is one constant, a
/// whole number, so that even one frame of a fade tells which sound it is from. 0: silence.
struct Heard {
    int sound = 0;
    bool explained = true;
};

float expectedFrame(RampState state, int sound, std::size_t i, std::size_t n) {
    const auto constant = static_cast<float>(sound);
    const auto count = static_cast<float>(n);
    if (state == FadeIn) {
        return constant * static_cast<float>(i) / count;
    }
    return state == Steady ? constant : constant * static_cast<float>(n - i) / count;
}

/// Whether the frames are this state of this sound, followed by nothing but silence.
bool isStateOf(RampState state, int sound, const float* frames, std::size_t n) {
    std::size_t i = 0;
    while (i < n && frames[i] == expectedFrame(state, sound, i, n)) {
        ++i;
    }
    return std::all_of(frames + i, frames + n, [](float frame) { return frame == 0.0F; });
}

Heard explain(const float* frames, std::size_t n) {
    if (std::all_of(frames, frames + n, [](float frame) { return frame == 0.0F; })) {
        return {};
    }
    const int steady = static_cast<int>(std::lround(frames[0]));
    const int rising =
        n > 1
            ? static_cast<int>(std::lround(static_cast<double>(frames[1]) * static_cast<double>(n)))
            : 0;
    if (isStateOf(Steady, steady, frames, n) || isStateOf(FadeOut, steady, frames, n)) {
        return {.sound = steady};
    }
    return {.sound = rising, .explained = isStateOf(FadeIn, rising, frames, n)};
}

TEST(ExplainedByOneSound, KnowsTheFourStatesAndNothingElse) {
    constexpr std::size_t n = 7;
    for (const RampState state : {FadeIn, Steady, FadeOut}) {
        std::array<float, n> frames{};
        for (std::size_t i = 0; i < n; ++i) {
            frames[i] = expectedFrame(state, 1003, i, n);
        }
        EXPECT_TRUE(explain(frames.data(), n).explained);
        EXPECT_EQ(explain(frames.data(), n).sound, 1003);
        frames[5] = expectedFrame(state, 1004, 5, n);
        EXPECT_FALSE(explain(frames.data(), n).explained) << "one frame of another sound";
    }
    const std::array<float, n> silence{};
    EXPECT_TRUE(explain(silence.data(), n).explained);
}

/// An audio thread without mercy: one render call after the other, of any length, for as long as
/// it is allowed to call.
class TightOutput final : public platform::AudioOutputUnit {
public:
    /// Rude: goes on calling after it was stopped and says that it does not run, though it is not
    /// at its end either, so that every exchange meets calls under way.
    enum class Manners { Polite, Rude };

    explicit TightOutput(Manners manners) : rude_(manners == Manners::Rude), running_(rude_) {
        bufferPlayer.outputUnit = this;
        thread_ = std::thread([this] { run(); });
    }
    ~TightOutput() override {
        ended_ = true;
        thread_.join();
        bufferPlayer.outputUnit = nullptr;
    }

    platform::Status setRenderCallback(platform::RenderCallback, void*) override { return 0; }
    platform::Status sampleRate(double&) override { return 0; }
    platform::Status setStreamFormat(const platform::AudioStreamBasicDescription&) override {
        return 0;
    }
    platform::Status initialize() override { return 0; }
    platform::Status start() override {
        running_ = true;
        return 0;
    }
    platform::Status stop() override {
        running_ = rude_;
        if (!platform::insideRealTime() && !rude_) {
            const std::uint64_t entered = entered_;
            while (left_ < entered) {
                std::this_thread::yield();
            }
        }
        return 0;
    }
    bool isRunning() const noexcept override { return running_ && !rude_; }
    bool attend() override { return running_; }
    bool takeFailure() override { return false; }
    std::string notice() const override { return {}; }

    std::atomic<int> surelyPublished{0}; ///< a call that begins now hears this sound or a later one
    std::atomic<int> maybePublished{0};  ///< a call that has ended heard this one or an earlier one

    std::uint64_t calls() const { return left_; }
    std::uint64_t callsWithSound() const { return callsWithSound_; }
    std::string firstWrong() const {
        const std::lock_guard lock(mutex_);
        return firstWrong_;
    }

private:
    void run() {
        std::mt19937 random(99);
        std::vector<float> frames(kMostFrames);
        while (!ended_) {
            ++entered_;
            if (running_) {
                // Mostly short calls, so that many begin and end during one exchange.
                const std::uint32_t most = random() % 4 == 0 ? kMostFrames : 40;
                call(frames.data(), 1 + static_cast<std::uint32_t>(random() % most));
            }
            ++left_;
            if (!running_) {
                std::this_thread::yield();
            }
        }
    }

    void call(float* frames, std::uint32_t n) {
        std::fill_n(frames, n, 0.0F); // as a device does: a call without a sound writes nothing
        const int earliest = surelyPublished;
        platform::RenderActionFlags flags = 0;
        const platform::AudioTimeStamp time{};
        platform::AudioBufferList data{1, {{1, n * 4, frames}}};
        FloatBufferRenderProc(&bufferPlayer, &flags, &time, 0, n, &data);
        const int latest = maybePublished;
        const Heard heard = explain(frames, n);
        callsWithSound_ += heard.sound != 0 ? 1 : 0;
        const bool current = heard.sound == 0 || (heard.sound >= earliest && heard.sound <= latest);
        if (!heard.explained || !current) {
            complain(heard, earliest, latest, frames, n);
        }
    }

    void complain(const Heard& heard, int earliest, int latest, const float* frames,
                  std::uint32_t n) {
        const std::lock_guard lock(mutex_);
        if (firstWrong_.empty()) {
            firstWrong_ = (heard.explained ? "a sound that is gone: " : "a mixture near ") +
                          std::to_string(heard.sound) + " in a call between " +
                          std::to_string(earliest) + " and " + std::to_string(latest) + ": ";
            for (std::uint32_t i = 0; i < std::min(n, 40U); ++i) {
                firstWrong_ += std::to_string(frames[i]) + " ";
            }
        }
    }

    const bool rude_;
    std::atomic<bool> running_;
    std::atomic<bool> ended_{false};
    std::atomic<std::uint64_t> entered_{0};
    std::atomic<std::uint64_t> left_{0};
    std::atomic<std::uint64_t> callsWithSound_{0};
    mutable std::mutex mutex_;
    std::string firstWrong_;
    std::thread thread_;
};

class SoundExchangeUnderThreads : public testing::Test {
protected:
    SoundExchangeUnderThreads() {
        platform::services().clock = &clock_;
        renderDelegate = &queue_;
    }

    void publish(TightOutput& output, int sound, std::int64_t count) {
        SampleBlock block = allocateSamples(count);
        std::fill_n(block.get(), count, static_cast<float>(sound));
        output.maybePublished = sound;
        replaceBuffer(std::move(block), count);
        output.surelyPublished = sound;
    }

    void awaitCalls(const TightOutput& output, std::uint64_t more) {
        const std::uint64_t enough = output.calls() + more;
        while (output.calls() < enough) {
            std::this_thread::yield();
        }
    }

    std::uint32_t below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(random_() % limit);
    }

    /// What a person and a timer do, in any order.
    void meddle() {
        switch (below(6)) {
        case 0:
        case 1:
        case 2:
            bufferPlay0(0);
            break;
        case 3:
            bufferStop0();
            break;
        case 4:
            bufferPlayer.rmsMode = static_cast<std::uint8_t>(below(2));
            break;
        default:
            break;
        }
        superviseOutputUnit();
        discardWhatWasSaid();
    }

    void discardWhatWasSaid() {
        struct Deaf final : RenderDelegate {
            void updateValue(float) override {}
            void resetMeter() override {}
            void resetPlayTitle() override {}
            void traceIdleCycle(std::int32_t) override {}
            void traceMissingBuffer() override {}
        } deaf;
        queue_.drain(deaf);
        platform_.trace.all.clear();
        platform_.trace.out.clear();
    }

    FakePlatform platform_;
    platform::SteadyClock clock_;
    RenderMessageQueue queue_;
    std::mt19937 random_{4711};
};

TEST_F(SoundExchangeUnderThreads, NoCallEverHearsTwoSoundsOrOneThatIsGone) {
    TightOutput output(TightOutput::Manners::Rude);
    for (int sound = 1; sound <= 20000 && output.firstWrong().empty(); ++sound) {
        publish(output, sound, below(3000));
        for (std::uint32_t i = below(4); i > 0; --i) {
            meddle();
        }
        if (below(4) == 0) {
            awaitCalls(output, below(4));
        }
    }
    EXPECT_EQ(output.firstWrong(), "");
    EXPECT_GT(output.callsWithSound(), 1000U) << "otherwise nothing was tried";
}

TEST_F(SoundExchangeUnderThreads, EmptyingTheBufferUnderCallsReadsNothingFreed) {
    TightOutput output(TightOutput::Manners::Rude);
    for (int sound = 1; sound <= 5000 && output.firstWrong().empty(); ++sound) {
        publish(output, sound, 1 + below(3000));
        bufferPlay0(0);
        awaitCalls(output, below(3));
        emptyBuffer();
        meddle();
    }
    EXPECT_EQ(output.firstWrong(), "");
}

TEST_F(SoundExchangeUnderThreads, ThePlayerIsNeverLeftStuck) {
    TightOutput output(TightOutput::Manners::Polite);
    for (int sound = 1; sound <= 3000 && output.firstWrong().empty(); ++sound) {
        publish(output, sound, below(2000));
        for (std::uint32_t i = below(8); i > 0; --i) {
            meddle();
        }
        // However the threads met: asked to stop, the player comes to rest, and a play goes.
        if (below(10) == 0) {
            bufferStop0();
            const auto deadline = clock_.now() + std::chrono::seconds(20);
            while (superviseOutputUnit() && clock_.now() < deadline) {
                std::this_thread::yield();
            }
            ASSERT_EQ(bufferPlayer.isPlaying, 0) << sound;
            ASSERT_EQ(bufferPlayer.rampState, Silent) << sound;
            const std::uint64_t before = output.callsWithSound();
            publish(output, sound, 100000);
            bufferPlay0(0);
            while (output.callsWithSound() == before && clock_.now() < deadline) {
                superviseOutputUnit();
            }
            ASSERT_GT(output.callsWithSound(), before) << sound;
        }
    }
    EXPECT_EQ(output.firstWrong(), "");
    fallIdle();
}

TEST_F(SoundExchangeUnderThreads, ASoundThatAnotherThreadHeldIsWrittenToOnlyBehindItsLastRead) {
    for (int i = 0; i < 100; ++i) {
        loadSound({1.0F, 2.0F, 3.0F});
        const float* const before = fBuffer.load();
        float sum = 0.0F;
        std::atomic<bool> isGivenBack{false};
        std::thread holder([&, held = heldSound()]() mutable {
            sum = std::accumulate(held.get(), held.get() + 3, 0.0F);
            held.reset();
            isGivenBack.store(true, std::memory_order_relaxed); // tells when, and orders nothing
        });
        while (!isGivenBack.load(std::memory_order_relaxed)) {
        }
        ASSERT_TRUE(ensureSoundIsWritable());
        fBuffer.load()[1] = -2.0F;
        holder.join();
        EXPECT_EQ(sum, 6.0F);
        EXPECT_EQ(fBuffer.load(), before) << "nobody held it any more";
    }
}

TEST_F(SoundExchangeUnderThreads, APlayIsWholeHoweverOftenItIsBegunInTheSilenceAfterAnother) {
    // Plays that are begun while the last one's silent calls still run: each yields every sample
    // from the first to the last, whatever call met the start.
    TightOutput output(TightOutput::Manners::Polite);
    publish(output, 1, 5000);
    const auto deadline = clock_.now() + std::chrono::seconds(60);
    for (int play = 0; play < 3000; ++play) {
        bufferPlay0(0);
        while ((bufferPlayer.rampState != Silent || bufferPlayer.isPlaying != 0) &&
               clock_.now() < deadline) {
            superviseOutputUnit();
        }
        ASSERT_EQ(bufferPlayer.rampState, Silent);
        ASSERT_EQ(bufferPlayer.isPlaying, 0);
        const auto position = static_cast<std::int64_t>(bufferPlayer.readPosition.load());
        ASSERT_GE(position, 5000 - 2 * static_cast<std::int64_t>(kMostFrames)) << play;
        discardWhatWasSaid();
    }
    fallIdle();
}

} // namespace
} // namespace zemo::test
