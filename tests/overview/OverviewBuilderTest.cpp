#include "overview/OverviewBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <vector>

namespace zemo::overview {
namespace {

using namespace std::chrono_literals;

/// A builder and everything that it told.
struct Listener {
    std::mutex mutex;
    std::vector<Overview> told;
    OverviewBuilder builder{[this](const Overview& overview) {
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

TEST(OverviewBuilder, AStoppedBuildHasLeftTheSoundWithinMilliseconds) {
    Listener listener;
    std::vector<std::chrono::steady_clock::duration> waits;
    for (int i = 0; i < 15; ++i) {
        std::vector<float> samples(20000000, 0.5F);
        listener.builder.rebuild(samples, 48000.0);
        std::this_thread::sleep_for(std::chrono::milliseconds(i));
        const auto start = std::chrono::steady_clock::now();
        listener.builder.stop();
        waits.push_back(std::chrono::steady_clock::now() - start);
        std::vector<float>().swap(samples); // a reader of it would be found by the sanitizers
    }
    std::nth_element(waits.begin(), waits.begin() + 7, waits.end());
    EXPECT_LT(waits[7], 5ms); // the middle one: the machine may be busy
}

TEST(OverviewBuilder, AStoppedBuildTellsNothingMore) {
    Listener listener;
    const std::vector<float> samples(20000000, 0.5F);
    listener.builder.rebuild(samples, 48000.0);
    listener.builder.stop();
    const std::size_t before = listener.told.size();
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(listener.told.size(), before);
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
