#include "meter/SpokenLevel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace zemo::test {
namespace {

using Time = SpokenLevel::Time;

/// The times at which a level that is offered 60 times a second is told.
template <typename Level> std::vector<Time> toldTimes(int seconds, const Level& levelAt) {
    SpokenLevel speech;
    std::vector<Time> times;
    for (int frame = 0; frame < 60 * seconds; ++frame) {
        const Time now{1000 * frame / 60};
        if (speech.offer(levelAt(frame), now)) {
            times.push_back(now);
        }
    }
    return times;
}

float restless(int frame) {
    return 0.1F + 0.01F * static_cast<float>(frame % 50);
}

TEST(SpokenLevel, IsToldTwiceASecondWhileItChanges) {
    const auto times = toldTimes(10, restless);
    EXPECT_GE(times.size(), 19U);
    EXPECT_LE(times.size(), 20U);
}

TEST(SpokenLevel, IsNeverToldSoonerThanHalfASecondAfterTheLastTime) {
    const auto times = toldTimes(10, restless);
    for (std::size_t i = 1; i < times.size(); ++i) {
        EXPECT_GE(times[i] - times[i - 1], Time{500});
    }
}

TEST(SpokenLevel, IsToldOnceWhenItStays) {
    EXPECT_EQ(toldTimes(10, [](int) { return 0.25F; }), std::vector{Time{0}});
}

TEST(SpokenLevel, IsNotToldForLessThanATenthOfADecibel) {
    EXPECT_EQ(toldTimes(10, [](int frame) { return frame % 2 == 0 ? 0.5F : 0.5001F; }).size(), 1U);
}

TEST(SpokenLevel, SilenceAtTheStartIsNotTold) {
    EXPECT_TRUE(toldTimes(10, [](int) { return 0.0F; }).empty());
}

TEST(SpokenLevel, ALevelThatCameTooSoonIsDueWhenTheIntervalIsOver) {
    SpokenLevel speech;
    EXPECT_TRUE(speech.offer(0.5F, Time{1000}));
    EXPECT_FALSE(speech.due(Time{1000}));
    EXPECT_FALSE(speech.offer(0.0F, Time{1200}));
    EXPECT_EQ(speech.due(Time{1200}), Time{300});
    EXPECT_EQ(speech.due(Time{1700}), Time{0});
    EXPECT_TRUE(speech.offer(0.0F, Time{1500}));
    EXPECT_FALSE(speech.due(Time{1500}));
}

TEST(SpokenLevel, ALevelThatCameBackIsNotDue) {
    SpokenLevel speech;
    EXPECT_TRUE(speech.offer(0.5F, Time{0}));
    EXPECT_FALSE(speech.offer(0.9F, Time{100}));
    EXPECT_FALSE(speech.offer(0.5F, Time{200}));
    EXPECT_FALSE(speech.due(Time{200}));
}

TEST(SpokenLevel, DecibelsAreThoseOfTheMagnitudeToATenth) {
    EXPECT_EQ(levelInDecibels(1.0F), 0.0);
    EXPECT_EQ(levelInDecibels(-0.5F), -6.0);
    EXPECT_EQ(levelInDecibels(1.5F), 3.5);
    EXPECT_EQ(levelInDecibels(0.0F), -std::numeric_limits<double>::infinity());
}

TEST(SpokenLevel, TheScaleHoldsEveryFloat) {
    EXPECT_EQ(spokenDecibels(0.0F), kSpokenFloor);
    EXPECT_EQ(spokenDecibels(1e-30F), kSpokenFloor);
    EXPECT_EQ(spokenDecibels(NAN), kSpokenFloor);
    EXPECT_EQ(spokenDecibels(7.0F), kSpokenCeiling);
    EXPECT_EQ(spokenDecibels(HUGE_VALF), kSpokenCeiling);
}

} // namespace
} // namespace zemo::test
