#include "dsp/SineTerms.h"

#include <random>

#include "PlainForms.h"

namespace zemo::test {
namespace {

/// The error of sineOf in units in the last place of the true sine.
double errorInUlps(float phase) {
    const long double exact = std::sin(static_cast<long double>(phase));
    const int exponent = std::max(std::ilogb(static_cast<double>(exact)), -126);
    const long double ulp = std::ldexp(1.0L, exponent - 23);
    return static_cast<double>(std::fabs(static_cast<long double>(dsp::sineOf(phase)) - exact) /
                               ulp);
}

double worstError(double from, double to, int count) {
    std::mt19937 bits(5);
    double worst = 0.0;
    for (int i = 0; i < count; ++i) {
        const double share = static_cast<double>(bits()) / 4294967296.0;
        const auto phase = static_cast<float>(from + share * (to - from));
        worst = std::max({worst, errorInUlps(phase), errorInUlps(-phase)});
    }
    return worst;
}

const double kPromised = 0.5 + std::ldexp(1.0, -20);

TEST(SineOf, IsRightToHalfAnUlpWithinATurn) {
    EXPECT_LE(worstError(0.0, 2.0 * kPi, 200000), kPromised);
}

TEST(SineOf, IsRightToHalfAnUlpOnTheWholeRangeOfThePhases) {
    for (const double end : {1e3, 1e5, 1e7, 1e9, 1e15, 3e38}) {
        EXPECT_LE(worstError(end / 10.0, end, 50000), kPromised) << end;
    }
}

TEST(SineOf, IsRightToHalfAnUlpNextToEveryMultipleOfPi) {
    double worst = 0.0;
    for (int k = 1; k < 20000; ++k) {
        const auto phase = static_cast<float>(kPi * k);
        worst = std::max({worst, errorInUlps(phase), errorInUlps(std::nextafter(phase, 0.0F))});
    }
    EXPECT_LE(worst, kPromised);
}

TEST(SineOf, IsRightToHalfAnUlpForTheSmallestPhases) {
    for (float phase = kTiniest; phase < 1.0F; phase *= 3.7F) {
        EXPECT_LE(errorInUlps(phase), kPromised) << phase;
    }
}

TEST(SineOf, OfWhatIsNoNumberIsNone) {
    EXPECT_TRUE(std::isnan(dsp::sineOf(kNaN)));
    EXPECT_TRUE(std::isnan(dsp::sineOf(kInfinity)));
    EXPECT_TRUE(std::isnan(dsp::sineOf(-kInfinity)));
}

TEST(WrappedOnce, APhaseUpToTwoPiStays) {
    const float below = std::nextafter(static_cast<float>(2.0 * kPi), 0.0F);
    EXPECT_EQ(dsp::wrappedOnce(below), below);
    EXPECT_EQ(dsp::wrappedOnce(-100.0F), -100.0F);
}

TEST(WrappedOnce, TheFloatNextToTwoPiIsAboveTheDouble) {
    const auto twoPi = static_cast<float>(6.283185307179586);
    EXPECT_EQ(dsp::wrappedOnce(twoPi),
              static_cast<float>(static_cast<double>(twoPi) - 6.283185307179586));
    EXPECT_LT(dsp::wrappedOnce(twoPi), 1e-6F);
}

TEST(WrappedOnce, AHigherPhaseLosesOneTurn) {
    EXPECT_EQ(dsp::wrappedOnce(100.0F), static_cast<float>(100.0 - 6.283185307179586));
}

} // namespace
} // namespace zemo::test
