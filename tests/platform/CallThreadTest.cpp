#include "platform_linux/CallThread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace zemo::platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 20s;

/// A call that hangs until it is let go.
struct Hang {
    std::promise<void> end;
    std::shared_future<void> ended = end.get_future().share();

    std::function<void()> call() const {
        return [waited = ended] { waited.wait(); };
    }
};

class Calls : public testing::Test {
protected:
    ~Calls() override { EXPECT_TRUE(CallThread::awaitAll(kPatience)); }
};

TEST_F(Calls, AreMadeInTheirOrder) {
    std::vector<int> made;
    {
        CallThread thread;
        for (int i = 0; i < 100; ++i) {
            thread.post([&made, i] { made.push_back(i); });
        }
    }
    ASSERT_TRUE(CallThread::awaitAll(kPatience))
        << "what was posted is done before the thread ends";
    ASSERT_EQ(made.size(), 100U);
    EXPECT_TRUE(std::is_sorted(made.begin(), made.end()));
}

TEST_F(Calls, AnswerAQuestion) {
    CallThread thread;
    std::future<int> answer = thread.ask<int>([] { return 7; });
    ASSERT_EQ(answer.wait_for(kPatience), std::future_status::ready);
    EXPECT_EQ(answer.get(), 7);
}

TEST_F(Calls, AHungOneHoldsNobody) {
    Hang hang;
    {
        CallThread thread;
        thread.post(hang.call());
        EXPECT_EQ(thread.ask<int>([] { return 1; }).wait_for(1ms), std::future_status::timeout);
    }
    EXPECT_FALSE(CallThread::awaitAll(1ms));
    EXPECT_EQ(CallThread::alive(), 1);
    hang.end.set_value();
}

TEST_F(Calls, WhatAHungOneHoldsIsReleasedWhenItReturns) {
    Hang hang;
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    {
        CallThread thread;
        thread.post([held = std::move(held), waited = hang.ended] { waited.wait(); });
    }
    EXPECT_FALSE(watched.expired());
    hang.end.set_value();
    ASSERT_TRUE(CallThread::awaitAll(kPatience));
    EXPECT_TRUE(watched.expired());
}

TEST_F(Calls, AProgramWithoutAHungOneEndsInTheOrdinaryWay) {
    EXPECT_EQ(leaveHungCallsBehind(3), 3);
}

TEST(CallsDeathTest, AProgramEndsAtOnceWhileOneHangsWithItsStatusAndItsWords) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            const Hang hang;
            CallThread thread;
            thread.post(hang.call());
            std::fputs("last words", stderr);
            leaveHungCallsBehind(5);
        },
        testing::ExitedWithCode(5), "last words");
}

} // namespace
} // namespace zemo::platform
