#include "meter/LevelMeterGeometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <ostream>
#include <random>
#include <vector>

namespace zemo {

bool operator==(const MeterColour& a, const MeterColour& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool operator==(const MeterQuad& a, const MeterQuad& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

std::ostream& operator<<(std::ostream& out, const MeterColour& c) {
    return out << "(" << c.red << " " << c.green << " " << c.blue << " " << c.alpha << ")";
}

std::ostream& operator<<(std::ostream& out, const MeterQuad& q) {
    return out << q.foot << " " << q.footColour << " to " << q.top << " " << q.topColour;
}

namespace test {
namespace {

using Quads = std::vector<MeterQuad>;

constexpr float kT = 0.70710677F;
constexpr float kFoot = -0.98F;
constexpr MeterColour kFootColour{0.0F, 0.3F, 0.3F, 1.0F};
constexpr MeterColour kBoundary{0.7F, 0.5F, 0.2F, 1.0F};
constexpr MeterColour kLowEnd{0.70710677F, 0.606066F, 0.087867975F, 1.0F};
constexpr MeterMemory kReset{-0.98F, 0.0F};
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

float positionOf(float level) {
    return static_cast<float>(-0.98 + 1.96 * std::fabs(static_cast<double>(level)));
}

MeterColour ghostly(MeterColour colour) {
    colour.alpha = 0.6F;
    return colour;
}

MeterColour low(float c) {
    return {c, 0.5F + 0.15F * c, 0.3F - 0.3F * c, 1.0F};
}

MeterColour high(float c) {
    return {0.6F + 0.4F * c, 0.5F - 0.5F * c, 0.2F + 0.1F * c, 1.0F};
}

Quads quadsOf(const MeterFrame& frame) {
    return {frame.begin(), frame.end()};
}

/// The frame after one that drew `before` and left no ghost of its own to consider.
MeterFrame frameAfter(float before, float level) {
    return meterFrame(level, meterFrame(before, kReset).memory);
}

// Positions ---------------------------------------------------------------------------------

TEST(ScaleLinear, MapsZeroToTheFootAndOneToItsMirrorImage) {
    float level = 0.0F;
    EXPECT_EQ(*scaleLinear(&level), -0.98F);
    level = 1.0F;
    EXPECT_EQ(*scaleLinear(&level), 0.98F);
}

TEST(ScaleLinear, ReplacesTheLevelAndReturnsItsAddress) {
    float level = 0.5F;
    EXPECT_EQ(scaleLinear(&level), &level);
    EXPECT_EQ(level, 0.0F);
}

TEST(ScaleLinear, IgnoresTheSign) {
    for (const float each : {0.1F, 0.5F, 0.8F, 1.0F, 3.0F}) {
        float positive = each;
        float negative = -each;
        EXPECT_EQ(*scaleLinear(&positive), *scaleLinear(&negative));
    }
}

TEST(ScaleLinear, DoesNotClamp) {
    float level = 2.0F;
    EXPECT_EQ(*scaleLinear(&level), static_cast<float>(-0.98 + 1.96 * 2.0));
}

// The bar -----------------------------------------------------------------------------------

TEST(MeterFrame, SpansTheMiddleHalfOfTheView) {
    EXPECT_EQ(MeterQuad::kLeft, -0.5F);
    EXPECT_EQ(MeterQuad::kRight, 0.5F);
}

/// Which the arithmetic of doubles would miss by one bit of the blue.
TEST(MeterFrame, HasTheLowRampsEndAtTheThreshold) {
    for (const float level : {kT, 0.9F, 1.0F}) {
        EXPECT_EQ(meterFrame(level, kReset).quads[0].topColour, kLowEnd) << level;
    }
    EXPECT_EQ(meterFrame(0.0F, kReset).quads[0].topColour, (MeterColour{0.0F, 0.5F, 0.3F, 1.0F}));
    EXPECT_EQ(meterFrame(1.0F, kReset).quads[1].topColour, (MeterColour{1.0F, 0.0F, 0.3F, 1.0F}));
}

TEST(MeterFrame, OfZeroAfterAResetIsTheFootLineAlone) {
    EXPECT_EQ(quadsOf(meterFrame(0.0F, kReset)), Quads({{kFoot, kFoot, kFootColour, low(0.0F)}}));
}

TEST(MeterFrame, OfALowLevelIsOneQuad) {
    EXPECT_EQ(quadsOf(meterFrame(0.25F, kReset)),
              Quads({{kFoot, positionOf(0.25F), kFootColour, low(0.25F)}}));
}

TEST(MeterFrame, OfOneReachesTheTopInRed) {
    EXPECT_EQ(quadsOf(meterFrame(1.0F, kReset)),
              Quads({{kFoot, 0.70710677F, kFootColour, low(kT)},
                     {0.70710677F, 0.98F, kBoundary, {1.0F, 0.0F, 0.3F, 1.0F}}}));
}

TEST(MeterFrame, OfANegativeLevelIsThatOfItsMagnitude) {
    for (const float each : {0.0F, 0.2F, 0.5F, 0.75F, 0.9F, 1.0F, 2.0F}) {
        EXPECT_EQ(quadsOf(meterFrame(-each, kReset)), quadsOf(meterFrame(each, kReset)));
    }
}

TEST(MeterFrame, OfALevelAboveOneGoesPastTheTop) {
    const Quads quads = quadsOf(meterFrame(2.0F, kReset));
    ASSERT_EQ(quads.size(), 2U);
    EXPECT_EQ(quads[1].top, positionOf(2.0F));
    EXPECT_EQ(quads[1].topColour, high(2.0F));
}

TEST(MeterFrame, TheUpperZoneGoesByTheMagnitudeAndHasNoHeightWhileThePositionIsBelow) {
    const float top = positionOf(0.8F); // 0.588
    ASSERT_LT(top, kT);
    EXPECT_EQ(quadsOf(meterFrame(0.8F, kReset)),
              Quads({{kFoot, top, kFootColour, low(kT)}, {top, top, kBoundary, high(0.8F)}}));
}

TEST(MeterFrame, TheUpperZoneBeginsStrictlyAboveTheThreshold) {
    EXPECT_EQ(meterFrame(kT, kReset).count, 1U);
    EXPECT_EQ(meterFrame(std::nextafter(kT, 1.0F), kReset).count, 2U);
}

TEST(MeterFrame, TheUpperZoneHasHeightOnceThePositionIsAboveTheThreshold) {
    const float level = (kT + 0.98F) / 1.96F; // where position and threshold meet
    const Quads below = quadsOf(meterFrame(level - 0.001F, kReset));
    const Quads above = quadsOf(meterFrame(level + 0.001F, kReset));
    ASSERT_EQ(below.size(), 2U);
    ASSERT_EQ(above.size(), 2U);
    EXPECT_EQ(below[1].foot, below[1].top);
    EXPECT_LT(above[1].foot, above[1].top);
    EXPECT_EQ(above[1].foot, kT);
}

// The ghost ---------------------------------------------------------------------------------

TEST(MeterGhost, ARisingOrSteadyLevelHasNone) {
    EXPECT_EQ(frameAfter(0.2F, 0.2F).count, 1U);
    EXPECT_EQ(frameAfter(0.2F, 0.3F).count, 1U);
    EXPECT_EQ(frameAfter(0.9F, 1.0F).count, 2U);
}

TEST(MeterGhost, BelowTheThresholdIsOneQuadOfTheLowRamp) {
    const Quads quads = quadsOf(frameAfter(0.5F, 0.25F));
    ASSERT_EQ(quads.size(), 2U);
    EXPECT_EQ(quads[1],
              (MeterQuad{positionOf(0.25F), 0.0F, ghostly(low(0.25F)), ghostly(low(0.5F))}));
}

TEST(MeterGhost, AcrossTheThresholdIsTwoQuads) {
    const Quads quads = quadsOf(frameAfter(1.0F, 0.2F));
    ASSERT_EQ(quads.size(), 3U);
    EXPECT_EQ(quads[1], (MeterQuad{positionOf(0.2F), kT, ghostly(low(0.2F)), ghostly(kLowEnd)}));
    EXPECT_EQ(quads[2], (MeterQuad{kT, 0.98F, ghostly(kBoundary), ghostly(high(1.0F))}));
    EXPECT_NEAR(static_cast<double>(quads[1].foot), -0.588, 1e-6);
}

TEST(MeterGhost, AboveTheThresholdIsOneQuadOfTheHighRamp) {
    const Quads quads = quadsOf(frameAfter(1.0F, 0.9F));
    ASSERT_EQ(quads.size(), 3U);
    EXPECT_EQ(quads[2],
              (MeterQuad{positionOf(0.9F), 0.98F, ghostly(high(0.9F)), ghostly(high(1.0F))}));
}

TEST(MeterGhost, GoesByPositionsWhereTheUpperZoneGoesByMagnitudes) {
    // 0.8 is above the threshold as a magnitude and below it as a position.
    const Quads quads = quadsOf(frameAfter(0.8F, 0.75F));
    ASSERT_EQ(quads.size(), 3U) << "lower zone, an upper zone without height, one ghost";
    EXPECT_EQ(quads[2], (MeterQuad{positionOf(0.75F), positionOf(0.8F), ghostly(low(0.75F)),
                                   ghostly(low(0.8F))}));
}

TEST(MeterGhost, CanCrossTheThresholdOverAnUpperZoneWithoutHeight) {
    const MeterFrame frame = frameAfter(1.0F, 0.8F);
    ASSERT_EQ(frame.count, 4U) << "the most that a frame can have";
    EXPECT_EQ(frame.quads[2].top, kT);
    EXPECT_EQ(frame.quads[3].foot, kT);
}

TEST(MeterGhost, LastsOneFrame) {
    const MeterFrame fallen = frameAfter(1.0F, 0.2F);
    EXPECT_EQ(meterFrame(0.2F, fallen.memory).count, 1U);
}

TEST(MeterGhost, AFreshMeterDrawsOneUpToTheMiddle) {
    const Quads quads = quadsOf(meterFrame(0.0F, MeterMemory{}));
    ASSERT_EQ(quads.size(), 2U);
    EXPECT_EQ(quads[1], (MeterQuad{kFoot, 0.0F, ghostly(low(0.0F)), ghostly(low(0.0F))}));
}

TEST(MeterMemory, IsTheTopAndTheMagnitudeOfTheFrameJustDrawn) {
    for (const float level : {0.0F, -0.3F, 0.8F, 5.0F}) {
        const MeterMemory memory = meterFrame(level, kReset).memory;
        EXPECT_EQ(memory.prev_v, positionOf(level));
        EXPECT_EQ(memory.prev_cv, std::fabs(level));
    }
}

// What no level may do ----------------------------------------------------------------------

TEST(MeterFrame, NoSequenceOfNaNsAndInfinitiesGivesANaNCoordinate) {
    const std::vector<float> levels{0.0F, 0.5F, 1.0F, kNaN, kInfinity, -kInfinity, -kNaN};
    for (const float first : levels) {
        for (const float second : levels) {
            for (const float third : levels) {
                MeterMemory memory;
                for (const float level : {first, second, third}) {
                    const MeterFrame frame = meterFrame(level, memory);
                    for (const MeterQuad& quad : frame) {
                        EXPECT_FALSE(std::isnan(quad.foot) || std::isnan(quad.top))
                            << first << " " << second << " " << third;
                    }
                    memory = frame.memory;
                }
            }
        }
    }
}

/// One frame as the rules put it, on plain variables.
Quads drawnByTheRules(float value, float& prevV, float& prevCv) {
    Quads drawn;
    const float c = value < 0.0F ? -value : value;
    const float y = positionOf(c);
    const float yl = y <= kT ? y : static_cast<float>(0.7071067811865476);
    drawn.push_back({kFoot, yl, kFootColour, low(std::min(c, kT))});
    if (c > kT) {
        drawn.push_back({yl, y, kBoundary, high(c)});
    }
    const float before = prevCv;
    if (prevV > y && prevV <= kT) {
        drawn.push_back({y, prevV, ghostly(low(c)), ghostly(low(before))});
    } else if (prevV > y && y <= kT) {
        drawn.push_back({y, kT, ghostly(low(c)), ghostly(kLowEnd)});
        drawn.push_back({kT, prevV, ghostly(kBoundary), ghostly(high(before))});
    } else if (prevV > y) {
        drawn.push_back({y, prevV, ghostly(high(c)), ghostly(high(before))});
    }
    prevV = y;
    prevCv = c;
    return drawn;
}

TEST(MeterFrame, AHundredThousandRandomLevelsAreDrawnAsTheRulesSay) {
    std::mt19937 random(31);
    MeterMemory memory;
    float prevV = 0.0F;
    float prevCv = 0.0F;
    for (int i = 0; i < 100000; ++i) {
        const float level = (static_cast<float>(random() % 48001U) - 24000.0F) / 20000.0F;
        const MeterFrame frame = meterFrame(level, memory);
        ASSERT_EQ(quadsOf(frame), drawnByTheRules(level, prevV, prevCv)) << level;
        memory = random() % 50 == 0 ? kReset : frame.memory;
        prevV = memory.prev_v;
        prevCv = memory.prev_cv;
    }
}

} // namespace
} // namespace test
} // namespace zemo
