#include "platform_linux/RenderFeed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <numeric>
#include <random>
#include <thread>
#include <vector>

namespace zemo::platform {
namespace {

using Phase = RenderFeed::Phase;

constexpr std::uint32_t kCall = kFramesPerRenderCall;

/// What the callback was given, and what it does with it.
struct Calls {
    std::vector<std::uint32_t> frames;
    std::vector<double> times;
    std::function<void(float*, std::uint32_t)> render;
};

/// The numbers from `first` on.
std::vector<float> counted(float first, std::size_t count) {
    std::vector<float> numbers(count);
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

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

    /// Every frame has a number of its own, from 1 on.
    void renderCounting() {
        calls_.render = [this](float* output, std::uint32_t n) {
            std::iota(output, output + n, next_);
            next_ += static_cast<float>(n);
        };
    }

    RenderFeed feed_;
    Calls calls_;
    float next_ = 1.0F;
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

TEST_F(Feed, LeavesTheFirstRequestSilentWhereItMayBeLost) {
    renderCounting();
    feed_.begin();
    feed_.leaveFirstRequestSilent();
    EXPECT_EQ(fill(700), std::vector<float>(700, 0.0F));
    EXPECT_EQ(delivered_, 700U);
    EXPECT_TRUE(calls_.frames.empty());
    EXPECT_EQ(fill(700), counted(1.0F, 700));
    EXPECT_EQ(fill(700), counted(701.0F, 700));
}

TEST_F(Feed, EveryCallIsOf512FramesWhateverTheDeviceAsksFor) {
    feed_.begin();
    std::uint32_t asked = 0;
    for (const std::uint32_t frames : {1U, 900U, 0U, 123U, 511U, 512U, 513U, 4096U}) {
        fill(frames);
        EXPECT_EQ(delivered_, frames);
        asked += frames;
        EXPECT_EQ(calls_.frames.size(), (asked + kCall - 1) / kCall) << "no call before its time";
    }
    EXPECT_EQ(calls_.frames, std::vector<std::uint32_t>(calls_.frames.size(), 512U));
}

TEST_F(Feed, DeliversTheCallsOneAfterTheOtherWhateverTheDeviceAsksFor) {
    std::mt19937 random(1);
    const std::vector<std::uint32_t> lengths{0, 1, 511, 512, 513, 4096};
    for (int run = 0; run < 50; ++run) {
        renderCounting();
        next_ = 1.0F;
        feed_.begin();
        std::vector<float> heard;
        while (heard.size() < 20'000) {
            const bool odd = random() % 2 == 0;
            const auto frames = odd ? static_cast<std::uint32_t>(random() % 1500)
                                    : lengths[random() % lengths.size()];
            const auto got = fill(frames);
            ASSERT_EQ(delivered_, frames);
            heard.insert(heard.end(), got.begin(), got.end());
        }
        ASSERT_EQ(heard, counted(1.0F, heard.size()));
        feed_.end();
    }
}

TEST_F(Feed, TheTimeStampCountsTheFramesOfTheRun) {
    feed_.begin();
    fill(10);
    fill(1014);
    fill(1);
    EXPECT_EQ(calls_.times, std::vector<double>({0, 512, 1024}));
    feed_.askStop();
    fill(1);
    feed_.end();
    feed_.begin();
    fill(1);
    EXPECT_EQ(calls_.times.back(), 0.0);
}

TEST_F(Feed, AFrameThatTheCallbackLeavesAloneIsSilent) {
    calls_.render = [this](float* output, std::uint32_t) {
        EXPECT_EQ(output[0], 0.0F) << "before the callback, too";
        output[calls_.frames.size()] = 0.5F;
    };
    feed_.begin();
    EXPECT_EQ(fill(3), std::vector<float>({0.0F, 0.5F, 0.0F}));
    fill(kCall - 3);
    EXPECT_EQ(fill(3), std::vector<float>({0.0F, 0.0F, 0.5F})) << "nothing of the call before";
}

TEST_F(Feed, AfterTheStopTheCallbackIsCalledNoMore) {
    renderOnes();
    feed_.setTail(100);
    feed_.begin();
    fill(kCall);
    feed_.askStop();
    EXPECT_EQ(feed_.phase(), Phase::Tail);
    EXPECT_EQ(fill(8), std::vector<float>(8, 0.0F));
    EXPECT_EQ(delivered_, 8U);
    EXPECT_EQ(calls_.frames.size(), 1U);
}

TEST_F(Feed, WhatWasRenderedIsDeliveredAfterTheStop) {
    renderCounting();
    feed_.setTail(100);
    feed_.begin();
    fill(8);
    feed_.askStop();
    std::vector<float> expected = counted(9.0F, kCall - 8);
    expected.resize(kCall, 0.0F);
    EXPECT_EQ(fill(kCall), expected) << "and then the tail begins";
    EXPECT_EQ(delivered_, kCall);
    EXPECT_EQ(fill(200), std::vector<float>(200, 0.0F));
    EXPECT_EQ(delivered_, 100U - 8U) << "all of it";
    EXPECT_EQ(calls_.frames.size(), 1U);
}

TEST_F(Feed, ATailOfNothingCutsNothingOff) {
    renderCounting();
    for (const std::uint32_t request : {kCall - 8, kCall - 7, 4096U}) {
        next_ = 1.0F;
        feed_.begin();
        fill(8);
        feed_.askStop();
        std::vector<float> heard = fill(request);
        EXPECT_EQ(delivered_, kCall - 8) << request;
        heard.resize(delivered_);
        EXPECT_EQ(heard, counted(9.0F, kCall - 8));
        fill(1);
        EXPECT_EQ(delivered_, 0U);
        EXPECT_EQ(feed_.phase(), Phase::Drained);
        feed_.end();
    }
}

TEST_F(Feed, AStopFromInsideTheCallbackEndsTheCallsAfterThisOne) {
    feed_.setTail(100);
    calls_.render = [this](float* output, std::uint32_t n) {
        std::iota(output, output + n, 1.0F);
        feed_.askStop();
    };
    feed_.begin();
    EXPECT_EQ(fill(4), counted(1.0F, 4));
    std::vector<float> rest = counted(5.0F, kCall - 4);
    rest.resize(kCall, 0.0F);
    EXPECT_EQ(fill(kCall), rest) << "but its own frames are delivered";
    EXPECT_EQ(calls_.frames.size(), 1U);
}

TEST_F(Feed, TheTailIsAsLongAsAskedToAFrame) {
    renderOnes();
    for (const std::uint32_t tail : {0U, 1U, 7U, 8U, 9U, 63U, 64U, 65U, 2880U}) {
        for (const std::uint32_t request : {1U, 8U, 64U, 900U}) {
            feed_.setTail(tail);
            feed_.begin();
            fill(5);
            feed_.askStop();
            std::vector<float> heard;
            do {
                const auto got = fill(request);
                heard.insert(heard.end(), got.begin(), got.begin() + delivered_);
            } while (delivered_ == request);
            std::vector<float> expected(kCall - 5, 1.0F);
            expected.resize(expected.size() + tail, 0.0F);
            // The end is told by a short request, so a tail up to a request's end lacks one frame.
            const bool whole = tail > 0 && expected.size() % request == 0;
            expected.resize(expected.size() - (whole ? 1U : 0U));
            EXPECT_EQ(heard, expected) << tail << " by " << request;
            EXPECT_EQ(feed_.phase(), Phase::Drained);
            feed_.end();
        }
    }
}

TEST_F(Feed, OnlyTheEndIsShort) {
    feed_.setTail(30);
    feed_.begin();
    for (int i = 0; i < 64; ++i) {
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
    fill(kCall);
    feed_.askStop();
    fill(8);
    EXPECT_TRUE(feed_.resume());
    EXPECT_EQ(feed_.phase(), Phase::Rendering);
    EXPECT_EQ(fill(8), std::vector<float>(8, 1.0F));
    EXPECT_EQ(delivered_, 8U);
}

TEST_F(Feed, ResumedBeforeItsTailItDeliversWhatIsLeftAndRendersOn) {
    renderCounting();
    feed_.setTail(20);
    feed_.begin();
    fill(8);
    feed_.askStop();
    fill(8);
    EXPECT_TRUE(feed_.resume());
    const auto heard = fill(1024);
    EXPECT_EQ(heard, counted(17.0F, 1024));
}

TEST_F(Feed, TheTailAfterAResumedRunIsWholeAgain) {
    feed_.setTail(20);
    feed_.begin();
    fill(kCall);
    feed_.askStop();
    fill(16);
    feed_.resume();
    fill(kCall);
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
    EXPECT_EQ(fill(8), std::vector<float>(8, 0.0F)) << "nor delivers what is left of one";
    EXPECT_EQ(calls_.frames.size(), 1U);
}

TEST_F(Feed, ARunBeginsWithNothingOfAnEarlierOne) {
    renderCounting();
    feed_.setTail(100);
    feed_.begin();
    fill(8);
    feed_.halt();
    next_ = 1001.0F;
    feed_.begin();
    EXPECT_EQ(fill(8), counted(1001.0F, 8));
}

TEST_F(Feed, ADeviceThatIsGoneGetsNothingMore) {
    renderCounting();
    feed_.begin();
    fill(8);
    feed_.drained();
    fill(8);
    EXPECT_EQ(delivered_, 0U);
}

TEST_F(Feed, AHaltInsideARequestEndsItsCalls) {
    calls_.render = [this](float* output, std::uint32_t n) {
        std::fill_n(output, n, 1.0F);
        feed_.end(); // the mark of a halt, which itself would wait for this call
    };
    feed_.setTail(kCall);
    feed_.begin();
    const auto heard = fill(3 * kCall);
    EXPECT_EQ(calls_.frames.size(), 1U);
    EXPECT_EQ(heard[kCall], 0.0F);
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
