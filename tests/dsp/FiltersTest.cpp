#include "dsp/Filters.h"

#include <algorithm>
#include <cmath>

#include "PlainForms.h"

namespace zemo::test {
namespace {

using TwoPoleHighPass = DspTest;
using Fir = DspTest;

Sound highPassed(const Sound& in, int selector) {
    Sound out(in.size());
    two_pole_iir(in.data(), out.data(), static_cast<std::int64_t>(in.size()),
                 static_cast<std::uint8_t>(selector));
    return out;
}

Sound alternating(std::size_t count) {
    Sound sound(count);
    for (std::size_t i = 0; i < count; ++i) {
        sound[i] = i % 2 == 0 ? 1.0F : -1.0F;
    }
    return sound;
}

/// The gain at `frequency` (of the rate), on a tone that has settled.
double gainAt(double frequency, int selector) {
    forgetRuns();
    const Sound out = highPassed(tone(20000, frequency, 1.0), selector);
    return amplitudeAt(out, frequency, 4000, 16000);
}

TEST_F(TwoPoleHighPass, AConstantSettlesToZero) {
    for (const int selector : {0, 1}) {
        forgetRuns();
        const Sound out = highPassed(Sound(5000, 1.0F), selector);
        EXPECT_GT(out.front(), 0.9F);
        EXPECT_NEAR(out.back(), 0.0F, 1e-4F);
    }
}

TEST_F(TwoPoleHighPass, AnAlternationSettlesToItself) {
    for (const int selector : {0, 1}) {
        const Sound out = highPassed(alternating(5000), selector);
        EXPECT_NEAR(out[4998], 1.0F, 1e-4F);
        EXPECT_NEAR(out[4999], -1.0F, 1e-4F);
    }
}

TEST_F(TwoPoleHighPass, ItsCornersAreAtTheSharesOfTheRateThatItPromises) {
    EXPECT_NEAR(gainAt(0.0113379, 0), std::sqrt(0.5), 1e-3);
    EXPECT_NEAR(gainAt(0.0226757, 1), std::sqrt(0.5), 1e-3);
}

TEST_F(TwoPoleHighPass, OnlySelectorOneChoosesTheHigherCorner) {
    const Sound sound = noise(500, 1);
    forgetRuns();
    const Sound lower = highPassed(sound, 0);
    forgetRuns();
    EXPECT_FALSE(sameBits(highPassed(sound, 1), lower));
    for (const int selector : {2, 3, 128, 255}) {
        forgetRuns();
        EXPECT_TRUE(sameBits(highPassed(sound, selector), lower)) << selector;
    }
}

TEST_F(TwoPoleHighPass, TheFirstOutputStillHearsTheEndOfTheCallBefore) {
    const Sound sound = noise(100, 2);
    const Sound first = highPassed(sound, 0);
    const float lastIn = xv[2];
    const float lastOut = yv[2];
    EXPECT_EQ(lastOut, first.back());
    const Sound second = highPassed(sound, 0);
    EXPECT_NE(second.front(), first.front());
    EXPECT_EQ(second.front(), sound[0] / 1.051663921F - 2.0F * lastIn + 1.8993334201F * lastOut);
}

TEST_F(TwoPoleHighPass, AfterACallThatEndedOnZerosTheSameComesOutAgain) {
    const Sound sound = noise(100, 3);
    const Sound first = highPassed(sound, 1);
    highPassed(Sound(5000, 0.0F), 1);
    yv[2] = 0.0F; // what is left of it after 5000 samples is next to nothing
    EXPECT_TRUE(sameBits(highPassed(sound, 1), first));
}

TEST_F(TwoPoleHighPass, OnlyTheNewestOfTheHistoryComesOver) {
    const Sound sound = noise(100, 4);
    xv = {5.0F, 6.0F, 0.25F};
    yv = {7.0F, 8.0F, -0.5F};
    const Sound result = highPassed(sound, 0);
    plain::HighPass reference{0.25F, -0.5F};
    EXPECT_TRUE(sameBits(result, reference(sound, 0)));
}

TEST_F(TwoPoleHighPass, WhatIsNotFiniteDoesNotComeOver) {
    const Sound sound = noise(100, 5);
    const Sound fresh = highPassed(sound, 0);
    for (const float bad : {kNaN, kInfinity, -kInfinity}) {
        forgetRuns();
        highPassed(withSample(sound, 99, bad), 0);
        ASSERT_FALSE(std::isfinite(yv[2]));
        EXPECT_TRUE(sameBits(highPassed(sound, 0), fresh));
    }
}

TEST_F(TwoPoleHighPass, AFiniteNeighbourOfWhatIsClearedStays) {
    const Sound sound = noise(100, 6);
    xv[2] = 0.5F;
    yv[2] = kNaN;
    const Sound result = highPassed(sound, 1);
    plain::HighPass reference{0.5F, 0.0F};
    EXPECT_TRUE(sameBits(result, reference(sound, 1)));
}

TEST_F(TwoPoleHighPass, AnEmptyCallStillForgetsTheOlderHistory) {
    xv = {1.0F, 2.0F, 3.0F};
    yv = {4.0F, 5.0F, 6.0F};
    two_pole_iir(nullptr, nullptr, 0, 0);
    EXPECT_EQ(xv, (std::array<float, 3>{0.0F, 0.0F, 3.0F}));
    EXPECT_EQ(yv, (std::array<float, 3>{0.0F, 0.0F, 6.0F}));
}

TEST_F(TwoPoleHighPass, AgreesWithThePlainFormToTheBitCallAfterCall) {
    plain::HighPass reference;
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        const Sound sound = noise(1 + 331 * seed, seed, seed % 3 == 0 ? 1e-30F : 2.0F);
        const auto selector = static_cast<int>(seed % 2);
        EXPECT_TRUE(sameBits(highPassed(sound, selector), reference(sound, selector))) << seed;
    }
}

TEST_F(TwoPoleHighPass, MayWriteOverItsInput) {
    Sound sound = noise(1000, 7);
    const Sound apart = highPassed(sound, 0);
    forgetRuns();
    two_pole_iir(sound.data(), sound.data(), 1000, 0);
    EXPECT_TRUE(sameBits(sound, apart));
}

TEST(DcFilter, AConstantDecaysByThePoleAtEveryStep) {
    double prevIn = 0.0;
    double prevOut = 0.0;
    double expected = 0.75;
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(dcFilter(&prevIn, &prevOut, 0.75, 0.9), expected);
        expected *= 0.9;
    }
}

TEST(DcFilter, KeepsTheLastInputAndOutputForTheCaller) {
    double prevIn = 3.0;
    double prevOut = 5.0;
    EXPECT_EQ(dcFilter(&prevIn, &prevOut, 10.0, 0.5), 10.0 - 3.0 + 0.5 * 5.0);
    EXPECT_EQ(prevIn, 10.0);
    EXPECT_EQ(prevOut, 9.5);
}

/// The zero-phase response of the FIR at `frequency` (of the rate).
double firResponse(double frequency) {
    double sum = static_cast<double>(firxcoeffs[256]);
    for (std::size_t k = 1; k <= 256; ++k) {
        sum +=
            (static_cast<double>(firxcoeffs[256 - k]) + static_cast<double>(firxcoeffs[256 + k])) *
            std::cos(2.0 * kPi * frequency * static_cast<double>(k));
    }
    return sum / 49.99849746;
}

TEST(FirTable, HasItsPrintedCentreAndEnds) {
    EXPECT_EQ(firxcoeffs[256], 0.9999997F);
    EXPECT_NEAR(firxcoeffs[0], -1.33008e-05F, 5e-11F);
    EXPECT_NEAR(firxcoeffs[512], -1.33008e-05F, 5e-11F);
}

TEST(FirTable, IsSymmetric) {
    for (std::size_t k = 0; k < 513; ++k) {
        EXPECT_EQ(firxcoeffs[k], firxcoeffs[512 - k]) << k;
    }
}

TEST(FirTable, SumsTo49Point9985) {
    double sum = 0.0;
    for (const float tap : firxcoeffs) {
        sum += static_cast<double>(tap);
    }
    EXPECT_NEAR(sum, 49.99849746, 5e-6);
}

TEST(FirTable, PassesAConstant) {
    EXPECT_NEAR(firResponse(0.0), 1.0, 1e-7);
}

TEST(FirTable, PassesNinetyEightHundredthsAtOneTwoHundredthOfTheRate) {
    EXPECT_NEAR(firResponse(0.005), 0.98, 5e-3);
}

TEST(FirTable, PassesOneHalfAtOneHundredthOfTheRate) {
    EXPECT_NEAR(firResponse(0.01), 0.5, 1e-3);
}

TEST(FirTable, StopsEverythingFromOneFiftiethOfTheRateOn) {
    double worst = 0.0;
    for (int i = 0; i <= 20000; ++i) {
        worst = std::max(worst, std::fabs(firResponse(0.02 + 0.48 * i / 20000.0)));
    }
    EXPECT_LT(worst, 2e-5);
}

TEST_F(Fir, AConstantOneReachesOneAfter513Samples) {
    float y = 0.0F;
    for (int i = 0; i < 512; ++i) {
        y = firhp(1.0F);
    }
    EXPECT_NEAR(y, 1.0F, 1e-5F);
    EXPECT_NEAR(firhp(1.0F), 1.0F, 1e-6F);
}

TEST_F(Fir, AStepClimbsToOneHalfAtTheCentre) {
    float y = 0.0F;
    for (int i = 0; i < 257; ++i) {
        y = firhp(1.0F);
    }
    EXPECT_NEAR(y, 0.5F + 0.5F / 49.9985F, 1e-5F); // half the taps and half the centre tap more
}

TEST_F(Fir, AgreesWithAConvolutionOverTheWholePastToTheBit) {
    const Sound in = noise(1200, 8);
    Sound past(512, 0.0F);
    for (const float x : in) {
        past.push_back(static_cast<float>(static_cast<double>(x) / 49.99849746));
        float sum = 0.0F;
        for (std::size_t k = 0; k < 513; ++k) {
            const float product = firxcoeffs[k] * past[past.size() - 513 + k];
            sum = sum + product;
        }
        ASSERT_EQ(firhp(x), sum);
    }
}

TEST_F(Fir, ItsLineIsNotClearedBetweenUses) {
    firhp(1.0F);
    EXPECT_EQ(firxv[512], static_cast<float>(1.0 / 49.99849746));
    firhp(0.0F);
    EXPECT_EQ(firxv[511], static_cast<float>(1.0 / 49.99849746));
}

} // namespace
} // namespace zemo::test
