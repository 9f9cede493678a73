#include "platform_linux/RenderFeed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

namespace zemo::platform {
namespace {

using Phase = RenderFeed::Phase;

/// What the callback was given, and what it does with it.
struct Calls {
    std::vector<std::uint32_t> frames;
    std::vector<double> times;
    std::function<void(float*, std::uint32_t)> render;
};

Status record(void* context, RenderActionFlags* flags, const AudioTimeStamp* time,
              std::uint32_t bus, std::uint32_t frames, AudioBufferList* data) {
    auto& calls = *static_cast<Calls*>(context);
    EXPECT_EQ(*flags, 0U);
    EXPECT_EQ(bus, 0U);
    EXPECT_EQ(data->mNumberBuffers, 1U);
    EXPECT_EQ(data->mBuffers[0].mNumberChannels, 1U);
    EXPECT_EQ(data->mBuffers[0].mDataByteSize, 4 * frames);
    calls.frames.push_back(frames);
    calls.times.push_back(time->mSampleTime);
    if (calls.render) {
        calls.render(static_cast<float*>(data->mBuffers[0].mData), frames);
    }
    return kNoError;
}

class Feed : public testing::Test {
protected:
    Feed() { feed_.setCallback(record, &calls_); }

    /// The frames that the device gets from one request; all of them marked before.
    std::vector<float> fill(std::uint32_t frames) {
        std::vector<float> output(frames, 9.0F);
        delivered_ = feed_.fill(output.data(), frames);
        return output;
    }

    void renderOnes() {
        calls_.render = [](float* output, std::uint32_t n) { std::fill_n(output, n, 1.0F); };
    }

    RenderFeed feed_;
    Calls calls_;
    std::uint32_t delivered_ = 0;
};

TEST_F(Feed, IsIdleAtFirst) {
    EXPECT_EQ(feed_.phase(), Phase::Idle);
    fill(8);
    EXPECT_TRUE(calls_.frames.empty());
}

TEST_F(Feed, RendersFromItsBeginning) {
    renderOnes();
    feed_.begin();
    EXPECT_EQ(feed_.phase(), Phase::Rendering);
    EXPECT_EQ(fill(8), std::vector<float>(8, 1.0F));
    EXPECT_EQ(delivered_, 8U);
}

TEST_F(Feed, EveryRequestIsOneCallOfAsManyFrames) {
    feed_.begin();
    for (const std::uint32_t frames : {1U, 900U, 300U, 4096U}) {
        fill(frames);
    }
    EXPECT_EQ(calls_.frames, std::vector<std::uint32_t>({1, 900, 300, 4096}));
}

TEST_F(Feed, TheTimeStampCountsTheFramesOfTheRun) {
    feed_.begin();
    fill(10);
    fill(5);
    fill(1);
    EXPECT_EQ(calls_.times, std::vector<double>({0, 10, 15}));
    feed_.askStop();
    fill(1);
    feed_.end();
    feed_.begin();
    fill(1);
    EXPECT_EQ(calls_.times.back(), 0.0);
}

TEST_F(Feed, AFrameThatTheCallbackLeavesAloneIsSilent) {
    calls_.render = [](float* output, std::uint32_t) {
        EXPECT_EQ(output[0], 0.0F) << "before the callback, too";
        output[1] = 0.5F;
    };
    feed_.begin();
    EXPECT_EQ(fill(3), std::vector<float>({0.0F, 0.5F, 0.0F}));
}

TEST_F(Feed, AfterTheStopTheCallbackIsCalledNoMore) {
    renderOnes();
    feed_.setTail(100);
    feed_.begin();
    fill(8);
    feed_.askStop();
    EXPECT_EQ(feed_.phase(), Phase::Tail);
    EXPECT_EQ(fill(8), std::vector<float>(8, 0.0F));
    EXPECT_EQ(delivered_, 8U);
    EXPECT_EQ(calls_.frames.size(), 1U);
}

TEST_F(Feed, AStopFromInsideTheCallbackEndsTheCallsAfterThisOne) {
    feed_.setTail(100);
    calls_.render = [this](float* output, std::uint32_t n) {
        std::fill_n(output, n, 0.5F);
        feed_.askStop();
    };
    feed_.begin();
    EXPECT_EQ(fill(4), std::vector<float>(4, 0.5F));
    fill(4);
    EXPECT_EQ(calls_.frames.size(), 1U);
}

TEST_F(Feed, TheTailIsAsLongAsAskedToAFrame) {
    for (const std::uint32_t tail : {0U, 1U, 7U, 8U, 9U, 63U, 64U, 65U, 2880U}) {
        for (const std::uint32_t request : {1U, 8U, 64U, 900U}) {
            feed_.setTail(tail);
            feed_.begin();
            fill(5);
            feed_.askStop();
            std::uint32_t total = 0;
            do {
                fill(request);
                total += delivered_;
            } while (delivered_ == request);
            // The end is told by a short request, so a tail of whole requests lacks one frame.
            const bool whole = tail > 0 && tail % request == 0;
            EXPECT_EQ(total, tail - (whole ? 1U : 0U)) << tail << " by " << request;
            EXPECT_EQ(feed_.phase(), Phase::Drained);
            feed_.end();
        }
    }
}

TEST_F(Feed, OnlyTheEndIsShort) {
    feed_.setTail(30);
    feed_.begin();
    for (int i = 0; i < 5; ++i) {
        fill(8);
        EXPECT_EQ(delivered_, 8U);
    }
    feed_.askStop();
    for (int i = 0; i < 3; ++i) {
        fill(8);
        EXPECT_EQ(delivered_, 8U) << "in the tail";
        EXPECT_EQ(feed_.phase(), Phase::Tail);
    }
    fill(8);
    EXPECT_EQ(delivered_, 6U);
    EXPECT_EQ(feed_.phase(), Phase::Drained);
}

TEST_F(Feed, AfterTheEndNothingComes) {
    feed_.begin();
    feed_.askStop();
    fill(8);
    fill(8);
    EXPECT_EQ(delivered_, 0U);
    EXPECT_EQ(feed_.phase(), Phase::Drained);
}

TEST_F(Feed, ResumedInItsTailItRendersOn) {
    renderOnes();
    feed_.setTail(20);
    feed_.begin();
    fill(8);
    feed_.askStop();
    fill(8);
    EXPECT_TRUE(feed_.resume());
    EXPECT_EQ(feed_.phase(), Phase::Rendering);
    EXPECT_EQ(fill(8), std::vector<float>(8, 1.0F));
    EXPECT_EQ(delivered_, 8U);
}

TEST_F(Feed, TheTailAfterAResumedRunIsWholeAgain) {
    feed_.setTail(20);
    feed_.begin();
    feed_.askStop();
    fill(16);
    feed_.resume();
    fill(8);
    feed_.askStop();
    fill(16);
    EXPECT_EQ(delivered_, 16U);
    fill(16);
    EXPECT_EQ(delivered_, 4U);
}

TEST_F(Feed, ARunThatRendersNeedsNoOtherStart) {
    feed_.begin();
    EXPECT_TRUE(feed_.resume());
}

TEST_F(Feed, ARunThatHasEndedCannotBeResumed) {
    EXPECT_FALSE(feed_.resume());
    feed_.begin();
    feed_.askStop();
    fill(8);
    ASSERT_EQ(feed_.phase(), Phase::Drained);
    EXPECT_FALSE(feed_.resume());
    EXPECT_EQ(feed_.phase(), Phase::Drained);
}

TEST_F(Feed, AStopChangesOnlyARunThatRenders) {
    feed_.askStop();
    EXPECT_EQ(feed_.phase(), Phase::Idle);
    feed_.begin();
    feed_.drained();
    feed_.askStop();
    EXPECT_EQ(feed_.phase(), Phase::Drained);
}

TEST_F(Feed, ARequestForNoFramesEndsNothing) {
    feed_.setTail(8);
    feed_.begin();
    feed_.askStop();
    fill(0);
    EXPECT_EQ(feed_.phase(), Phase::Tail);
}

TEST_F(Feed, HaltedItMakesNoCallWhateverTheDeviceAsksFor) {
    renderOnes();
    feed_.setTail(100);
    feed_.begin();
    fill(8);
    feed_.halt();
    EXPECT_EQ(feed_.phase(), Phase::Idle);
    EXPECT_EQ(fill(8), std::vector<float>(8, 0.0F));
    EXPECT_EQ(calls_.frames.size(), 1U);
}

TEST_F(Feed, AHaltWaitsForTheCallThatIsRunning) {
    std::atomic<bool> entered{false};
    std::atomic<bool> left{false};
    calls_.render = [&](float*, std::uint32_t) {
        entered = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        left = true;
    };
    feed_.begin();
    std::thread device([&] { fill(8); });
    while (!entered) {
        std::this_thread::yield();
    }
    feed_.halt();
    EXPECT_TRUE(left);
    device.join();
}

TEST_F(Feed, CountsTheRequestsOfTheDevice) {
    EXPECT_EQ(feed_.requests(), 0U);
    feed_.begin();
    fill(8);
    feed_.askStop();
    fill(8);
    EXPECT_EQ(feed_.requests(), 2U);
}

} // namespace
} // namespace zemo::platform
