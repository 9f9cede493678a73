#include "platform_linux/SilentOutput.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "platform/RealTime.h"
#include "platform_linux/LinuxAudioOutput.h"

namespace zemo::platform {
namespace {

using namespace std::chrono;
using namespace std::chrono_literals;

constexpr auto kPatience = 20s;

class Silence : public testing::Test {
protected:
    Silence() { output_.setRenderCallback(call, this); }
    ~Silence() override { output_.stop(); }

    static Status call(void* context, RenderActionFlags*, const AudioTimeStamp*, std::uint32_t,
                       std::uint32_t frames, AudioBufferList*) {
        const RealTimeScope inside;
        auto& self = *static_cast<Silence*>(context);
        self.running_ = true;
        self.frames_ += frames;
        if (self.stopAfter_ > 0 && --self.stopAfter_ == 0) {
            self.output_.stop();
        }
        self.running_ = false;
        ++self.calls_;
        return kNoError;
    }

    bool await(const std::function<bool()>& condition) {
        const auto deadline = steady_clock::now() + kPatience;
        while (!condition()) {
            if (steady_clock::now() > deadline) {
                return false;
            }
            output_.attend();
            std::this_thread::yield();
        }
        return true;
    }

    bool awaitCalls(long more) {
        const long enough = calls_ + more;
        return await([&] { return calls_ >= enough; });
    }

    SilentOutput output_;
    std::atomic<long> calls_{0};
    std::atomic<long> frames_{0};
    std::atomic<long> stopAfter_{0};
    std::atomic<bool> running_{false};
};

TEST_F(Silence, SaysThatNobodyHears) {
    EXPECT_EQ(output_.notice(), "No audio device: playing silently");
    EXPECT_FALSE(output_.takeFailure());
}

TEST_F(Silence, HasTheRateThatItWasGiven) {
    double rate = 0.0;
    EXPECT_EQ(output_.sampleRate(rate), kNoError);
    EXPECT_EQ(rate, 48000.0);
    output_.setRate(96000.0);
    output_.sampleRate(rate);
    EXPECT_EQ(rate, 96000.0);
}

TEST_F(Silence, MakesNoCallBeforeItIsStartedAndAttended) {
    EXPECT_FALSE(output_.attend());
    EXPECT_FALSE(output_.isRunning());
    output_.start();
    EXPECT_TRUE(output_.isRunning());
    EXPECT_EQ(calls_, 0);
    EXPECT_TRUE(awaitCalls(1));
}

TEST_F(Silence, KeepsThePaceOfItsRate) {
    output_.setRate(kFramesPerRenderCall * 500.0); // 500 calls a second
    const auto before = steady_clock::now();
    output_.start();
    ASSERT_TRUE(awaitCalls(101));
    EXPECT_GE(steady_clock::now() - before, 200ms); // never early; how late, the machine decides
}

TEST_F(Silence, AStopFromTheMainThreadReturnsWhenNoCallRunsAndNoneFollows) {
    output_.setRate(1e9);
    for (int i = 0; i < 200; ++i) {
        output_.start();
        ASSERT_TRUE(awaitCalls(1));
        output_.stop();
        EXPECT_FALSE(running_);
        EXPECT_FALSE(output_.isRunning());
        const long after = calls_;
        std::this_thread::yield();
        EXPECT_EQ(calls_, after);
    }
}

TEST_F(Silence, AStopFromInsideTheCallbackEndsTheCallsAfterThisOne) {
    output_.setRate(1e9);
    stopAfter_ = 5;
    output_.start();
    ASSERT_TRUE(await([&] { return calls_ > 0 && !output_.attend(); }));
    EXPECT_EQ(calls_, 5);
    EXPECT_FALSE(output_.isRunning());
}

TEST_F(Silence, StartsAgainAfterEitherStop) {
    output_.setRate(1e9);
    for (int i = 0; i < 100; ++i) {
        stopAfter_ = 3;
        output_.start();
        ASSERT_TRUE(await([&] { return !output_.isRunning(); }));
        output_.start(); // the thread of the run before may still be ending
        ASSERT_TRUE(awaitCalls(2));
        output_.stop();
    }
}

TEST_F(Silence, AStartWhileItRunsChangesNothing) {
    output_.start();
    ASSERT_TRUE(awaitCalls(1));
    EXPECT_EQ(output_.start(), kNoError);
    EXPECT_TRUE(awaitCalls(1));
}

TEST_F(Silence, AStopBeforeAnyCallLeavesItAtRest) {
    output_.start();
    output_.stop();
    EXPECT_FALSE(output_.attend());
    EXPECT_EQ(calls_, 0);
}

TEST_F(Silence, EveryCallHasTheSameLength) {
    output_.setRate(1e9);
    output_.start();
    ASSERT_TRUE(awaitCalls(20));
    output_.stop();
    EXPECT_EQ(frames_, calls_ * static_cast<long>(kFramesPerRenderCall));
}

TEST(LinuxOutput, OffersTheHardwareOutputAndNothingElse) {
    LinuxAudioOutput service;
    const AudioComponentDescription wanted{.componentType = kAudioUnitType_Output,
                                           .componentSubType = kAudioUnitSubType_HALOutput,
                                           .componentManufacturer = kAudioUnitManufacturer_Apple};
    EXPECT_NE(service.findNext(wanted), nullptr);
    AudioComponentDescription other = wanted;
    other.componentType = fourCharCode("aumu");
    EXPECT_EQ(service.findNext(other), nullptr);
}

} // namespace
} // namespace zemo::platform
