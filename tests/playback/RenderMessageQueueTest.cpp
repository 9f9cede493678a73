#include "playback/RenderMessageQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <random>
#include <thread>

#include "ReferencePlayer.h"

namespace zemo::test {
namespace {

constexpr std::size_t kCapacity = RenderMessageQueue::kCapacity;
constexpr std::size_t kRedraws = kCapacity - RenderMessageQueue::kReserved;

class MessageQueue : public testing::Test {
protected:
    std::vector<Sent> drained() {
        SentRecorder recorder;
        queue_.drain(recorder);
        return recorder.sent;
    }

    RenderMessageQueue queue_;
};

TEST_F(MessageQueue, DeliversEveryKindInItsOrder) {
    queue_.updateValue(0.25F);
    queue_.traceIdleCycle(1);
    queue_.resetMeter();
    queue_.resetPlayTitle();
    queue_.traceMissingBuffer();
    queue_.updateValue(-0.5F);
    const std::vector<Sent> expected{{.kind = Sent::UpdateValue, .level = 0.25F},
                                     {.kind = Sent::IdleCycle, .count = 1},
                                     {.kind = Sent::ResetMeter},
                                     {.kind = Sent::ResetPlayTitle},
                                     {.kind = Sent::MissingBuffer},
                                     {.kind = Sent::UpdateValue, .level = -0.5F}};
    EXPECT_EQ(drained(), expected);
}

TEST_F(MessageQueue, ARepeatedRedrawRequestTakesOnePlaceAndArrivesAsOftenAsItWasSent) {
    queue_.updateValue(0.25F);
    queue_.repeatUpdateValue(0.0F, 3);
    queue_.resetMeter();
    SentRecorder recorder;
    EXPECT_EQ(queue_.drain(recorder), 3U);
    const Sent silent{.kind = Sent::UpdateValue, .level = 0.0F};
    const std::vector<Sent> expected{{.kind = Sent::UpdateValue, .level = 0.25F},
                                     silent,
                                     silent,
                                     silent,
                                     {.kind = Sent::ResetMeter}};
    EXPECT_EQ(recorder.sent, expected);
}

TEST_F(MessageQueue, IsEmptyAtFirstAndAfterADrain) {
    SentRecorder recorder;
    EXPECT_EQ(queue_.drain(recorder), 0U);
    queue_.resetMeter();
    EXPECT_EQ(queue_.drain(recorder), 1U);
    EXPECT_EQ(queue_.drain(recorder), 0U);
}

TEST_F(MessageQueue, HoldsItsCapacityOfImportantMessages) {
    for (std::size_t i = 0; i < kCapacity; ++i) {
        queue_.traceIdleCycle(static_cast<std::int32_t>(i));
    }
    EXPECT_EQ(queue_.dropped(), 0U);
    const std::vector<Sent> all = drained();
    ASSERT_EQ(all.size(), kCapacity);
    for (std::size_t i = 0; i < kCapacity; ++i) {
        ASSERT_EQ(all[i].count, static_cast<int>(i));
    }
}

TEST_F(MessageQueue, CountsTheImportantMessagesThatFoundNoRoom) {
    for (std::size_t i = 0; i < kCapacity + 5; ++i) {
        queue_.resetMeter();
    }
    EXPECT_EQ(queue_.dropped(), 5U);
    EXPECT_EQ(drained().size(), kCapacity);
}

TEST_F(MessageQueue, RedrawRequestsLeaveTheReservedPlacesToTheOthers) {
    for (std::size_t i = 0; i < 2 * kCapacity; ++i) {
        queue_.updateValue(static_cast<float>(i));
    }
    for (std::size_t i = 0; i < RenderMessageQueue::kReserved; ++i) {
        queue_.resetPlayTitle();
    }
    EXPECT_EQ(queue_.dropped(), 0U) << "a redraw request that is dropped is no loss";
    const std::vector<Sent> all = drained();
    ASSERT_EQ(all.size(), kCapacity);
    EXPECT_EQ(all[kRedraws - 1].level, static_cast<float>(kRedraws - 1));
    EXPECT_EQ(all[kRedraws].kind, Sent::ResetPlayTitle);
    EXPECT_EQ(all.back().kind, Sent::ResetPlayTitle);
}

TEST_F(MessageQueue, TakesMessagesAgainOnceItWasDrained) {
    for (int round = 0; round < 5; ++round) {
        for (std::size_t i = 0; i < kCapacity + 10; ++i) {
            queue_.updateValue(1.0F);
        }
        EXPECT_EQ(drained().size(), kRedraws);
    }
}

TEST_F(MessageQueue, ADrainHandsOverOnlyWhatWaited) {
    SentRecorder recorder;
    recorder.duringUpdateValue = [&] { queue_.updateValue(0.5F); }; // each brings another
    queue_.updateValue(0.25F);
    queue_.updateValue(0.25F);
    EXPECT_EQ(queue_.drain(recorder), 2U);
    EXPECT_EQ(recorder.sent.size(), 2U);
}

TEST_F(MessageQueue, APlaceIsFreeBeforeItsMessageIsHandedOver) {
    for (std::size_t i = 0; i < kCapacity; ++i) {
        queue_.resetMeter();
    }
    struct PushesBack final : RenderDelegate {
        RenderMessageQueue* queue = nullptr;
        void updateValue(float) override {}
        void resetMeter() override { queue->resetMeter(); }
        void resetPlayTitle() override {}
        void traceIdleCycle(std::int32_t) override {}
        void traceMissingBuffer() override {}
    } receiver;
    receiver.queue = &queue_;
    EXPECT_EQ(queue_.drain(receiver), kCapacity);
    EXPECT_EQ(queue_.dropped(), 0U);
}

/// Checks on the receiving thread that nothing is lost, doubled or out of order.
class OrderKeeper final : public RenderDelegate {
public:
    void updateValue(float level) override {
        redrawsInOrder = redrawsInOrder && level > lastRedraw;
        lastRedraw = level;
        ++redraws;
    }
    void resetMeter() override {}
    void resetPlayTitle() override {}
    void traceIdleCycle(std::int32_t left) override {
        importantInOrder = importantInOrder && left == important;
        ++important;
    }
    void traceMissingBuffer() override {}

    float lastRedraw = -1.0F;
    bool redrawsInOrder = true;
    bool importantInOrder = true;
    std::int32_t important = 0;
    std::int32_t redraws = 0;
};

TEST_F(MessageQueue, BetweenTwoThreadsNothingImportantIsLostDoubledOrOutOfOrder) {
    constexpr std::int32_t kRounds = 200000;
    std::atomic<std::int32_t> delivered{0};
    std::thread producer([&] {
        std::mt19937 random(3);
        float redraw = 0.0F;
        for (std::int32_t i = 0; i < kRounds; ++i) {
            // The consumer is behind by fewer than the reserved places, or the test would be of
            // its speed.
            while (i - delivered.load() >=
                   static_cast<std::int32_t>(RenderMessageQueue::kReserved)) {
                std::this_thread::yield();
            }
            queue_.traceIdleCycle(i);
            for (unsigned extra = random() % 8; extra > 0; --extra) {
                queue_.updateValue(redraw);
                redraw += 1.0F;
            }
        }
    });
    OrderKeeper keeper;
    while (keeper.important < kRounds) {
        if (queue_.drain(keeper) == 0) {
            std::this_thread::yield();
        }
        delivered = keeper.important;
    }
    producer.join();
    EXPECT_TRUE(keeper.importantInOrder);
    EXPECT_TRUE(keeper.redrawsInOrder);
    EXPECT_GT(keeper.redraws, 0);
    EXPECT_EQ(queue_.dropped(), 0U);
}

} // namespace
} // namespace zemo::test
