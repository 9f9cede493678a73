#include "platform_linux/DeviceLead.h"

#include <gtest/gtest.h>

namespace zemo::platform {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t kRate = 48000;
constexpr std::uint32_t kMillisecond = 48; ///< frames

/// A server that holds 30 ms, and whose device takes 10 ms at a time.
class Lead : public testing::Test {
protected:
    void request(std::chrono::nanoseconds after, std::uint32_t frames) {
        now_ += after;
        lead_.request(now_, frames);
    }

    void begin() {
        request(0ms, 30 * kMillisecond);
        request(2ms, 10 * kMillisecond);
    }

    void play(int requests, std::chrono::nanoseconds every) {
        for (int i = 0; i < requests; ++i) {
            request(every, 10 * kMillisecond);
        }
    }

    DeviceLead lead_{kRate};
    std::chrono::nanoseconds now_ = 1h;
};

TEST_F(Lead, IsLostWhenARequestComesAfterAllWasTaken) {
    begin();
    request(10ms, 10 * kMillisecond);
    request(30ms, 30 * kMillisecond);
    EXPECT_FALSE(lead_.wasLost()) << "at the last moment";
    request(31ms, 30 * kMillisecond);
    EXPECT_TRUE(lead_.wasLost());
    play(1000, 10ms);
    EXPECT_TRUE(lead_.wasLost()) << "for good";
}

TEST_F(Lead, IsLostLittleByLittle) {
    begin();
    play(19, 11ms);
    EXPECT_FALSE(lead_.wasLost());
    play(2, 11ms);
    EXPECT_TRUE(lead_.wasLost());
}

TEST_F(Lead, IsMadeUpForByRequestsThatComeSoon) {
    begin();
    for (int i = 0; i < 100; ++i) {
        request(28ms, 10 * kMillisecond);
        request(1ms, 10 * kMillisecond);
        request(1ms, 10 * kMillisecond);
    }
    EXPECT_FALSE(lead_.wasLost());
}

TEST_F(Lead, IsNoMoreThanTheServerHolds) {
    begin();
    request(1ms, 1000 * kMillisecond);
    request(31ms, 10 * kMillisecond);
    EXPECT_TRUE(lead_.wasLost());
}

TEST_F(Lead, DoesNotCountTheTimeUntilTheDeviceBegins) {
    request(0ms, 30 * kMillisecond);
    request(2s, 10 * kMillisecond);
    play(100, 10ms);
    EXPECT_FALSE(lead_.wasLost());
}

TEST_F(Lead, IsNotKnownWhereEachRequestIsAllThatIsHeld) {
    for (int i = 0; i < 100; ++i) {
        request(i % 2 == 0 ? 5ms : 500ms, 10 * kMillisecond);
    }
    EXPECT_FALSE(lead_.wasLost());
}

TEST_F(Lead, IsNotLostOverTwoHoursToADeviceWhoseClockIsSlow) {
    begin();
    play(720'000, 10ms + 900ns);
    EXPECT_FALSE(lead_.wasLost());
}

TEST_F(Lead, IsLostEvenAfterTwoHours) {
    begin();
    play(720'000, 10ms);
    EXPECT_FALSE(lead_.wasLost());
    play(1, 31ms);
    EXPECT_TRUE(lead_.wasLost());
}

} // namespace
} // namespace zemo::platform
