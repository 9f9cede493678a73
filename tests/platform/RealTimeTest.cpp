#include "platform/RealTime.h"

#include <gtest/gtest.h>

#include <thread>

namespace zemo::platform {
namespace {

TEST(RealTimeScope, MarksTheThreadWhileItLives) {
    EXPECT_FALSE(insideRealTime());
    {
        const RealTimeScope scope;
        EXPECT_TRUE(insideRealTime());
    }
    EXPECT_FALSE(insideRealTime());
}

TEST(RealTimeScope, Nests) {
    const RealTimeScope outer;
    { const RealTimeScope inner; }
    EXPECT_TRUE(insideRealTime());
}

TEST(RealTimeScope, MarksNoOtherThread) {
    const RealTimeScope scope;
    bool insideThere = true;
    std::thread([&] { insideThere = insideRealTime(); }).join();
    EXPECT_FALSE(insideThere);
}

TEST(RealTimeAssertion, HoldsOutsideACall) {
    assertNotRealTime();
}

#ifndef NDEBUG
TEST(RealTimeAssertion, EndsADebugBuildInsideACall) {
    EXPECT_DEATH(
        {
            const RealTimeScope scope;
            assertNotRealTime();
        },
        "insideRealTime");
}
#endif

} // namespace
} // namespace zemo::platform
