#include "overview/OverviewBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/Progress.h"

namespace zemo::overview {
namespace {

/// A builder and everything that it told.
struct Listener {
    std::mutex mutex;
    std::vector<Overview> told;
    std::function<void()> beforeTaking; ///< runs on the builder's thread
    OverviewBuilder builder{[this](const Overview& overview) {
        if (beforeTaking) {
            beforeTaking();
        }
        const std::lock_guard lock(mutex);
        told.push_back(overview);
    }};
};

TEST(OverviewBuilder, TellsTheWaveFirstAndThenEverything) {
    Listener listener;
    const std::vector<float> samples(48000, 0.25F);
    const std::uint64_t number = listener.builder.rebuild(samples, 48000.0);
    listener.builder.finish();
    ASSERT_EQ(listener.told.size(), 2U);
    EXPECT_EQ(listener.told[0].build, number);
    EXPECT_EQ(listener.told[0].wave->peak(), 0.25F);
    EXPECT_EQ(listener.told[0].spectrogram, nullptr);
    EXPECT_FALSE(listener.told[0].isComplete);
    EXPECT_EQ(listener.told[1].wave, listener.told[0].wave);
    EXPECT_NE(listener.told[1].spectrogram, nullptr);
    EXPECT_TRUE(listener.told[1].isComplete);
}

/// What it tells is told only when the stop is asked for: so the build is always stopped in its
/// middle.
TEST(OverviewBuilder, AStoppedBuildHasLeftTheSoundAndTellsNothingMore) {
    Listener listener;
    listener.beforeTaking = [] {
        while (!platform::isStopRequested()) {
            std::this_thread::yield();
        }
    };
    for (int i = 0; i < 15; ++i) {
        std::vector<float> samples(2000000, 0.5F);
        listener.builder.rebuild(samples, 48000.0);
        listener.builder.stop();
        std::vector<float>().swap(samples); // a reader of it would be found by the sanitizers
    }
    EXPECT_LE(listener.told.size(), 15U); // the wave at most, which came before the stop
    EXPECT_TRUE(std::none_of(listener.told.begin(), listener.told.end(),
                             [](const Overview& overview) { return overview.isComplete; }));
}

TEST(OverviewBuilder, EveryBuildHasANumberOfItsOwn) {
    Listener listener;
    const std::vector<float> samples(1000, 0.5F);
    const std::uint64_t first = listener.builder.rebuild(samples, 48000.0);
    const std::uint64_t second = listener.builder.rebuild(samples, 48000.0);
    EXPECT_NE(first, second);
    listener.builder.finish();
    EXPECT_EQ(listener.told.back().build, second);
}

TEST(OverviewBuilder, StoppingWhatWasNeverBegunIsHarmless) {
    Listener listener;
    listener.builder.stop();
    listener.builder.finish();
    EXPECT_TRUE(listener.told.empty());
}

} // namespace
} // namespace zemo::overview
