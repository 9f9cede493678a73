#include "dsp/HarmonicProcessor.h"

#include <algorithm>
#include <cmath>

#include "PlainForms.h"
#include "dsp/Filters.h"

namespace zemo::test {
namespace {

using HarmonicProcessor = DspTest;
using plain::Hd;

Sound processed(const Sound& sound, const Hd& s, double rate = 44100.0) {
    return run(sound, rate, [&] {
        return hd(s.two, s.four, false, s.attack, s.scale, s.hpSelect, s.slope, s.mix, s.knee,
                  s.comp);
    });
}

Sound expected(const Sound& sound, const Hd& s) {
    plain::HighPass fresh;
    return plain::harmonics(sound, s, fresh);
}

/// A tone of 1/32 of the rate, and the amplitudes of its harmonics after the fade-in.
std::vector<double> harmonicsOf(const Hd& settings) {
    const Sound result = processed(tone(20000, 1.0, 32.0), settings);
    std::vector<double> amplitudes;
    for (int n = 1; n <= 8; ++n) {
        amplitudes.push_back(amplitudeAt(result, n / 32.0, 3000, 16000));
    }
    return amplitudes;
}

/// What the DC blocker passes of `frequency` (of the rate).
double blockerGain(double frequency, double slope) {
    const std::complex<double> z = std::polar(1.0, -2.0 * kPi * frequency);
    return std::abs((1.0 - z) / (1.0 - slope * z));
}

TEST(Chebyshev, H2IsTheSecondPolynomial) {
    for (double angle = 0.0; angle < 3.2; angle += 0.1) {
        EXPECT_NEAR(h2(std::cos(angle)), std::cos(2.0 * angle), 1e-15);
    }
}

TEST(Chebyshev, H2OfH2IsTheFourthPolynomial) {
    for (double x = -1.5; x <= 1.5; x += 0.01) {
        EXPECT_NEAR(h2(h2(x)), 8.0 * x * x * x * x - 8.0 * x * x + 1.0, 1e-13);
    }
}

TEST(Chebyshev, H4HasEightXInItsMiddle) {
    EXPECT_EQ(h4(1.0), 1.0);
    EXPECT_EQ(h4(-1.0), 17.0);
    EXPECT_EQ(h4(0.5), 8.0 * 0.0625 - 4.0 + 1.0);
    EXPECT_EQ(h4(0.0), 1.0);
}

TEST(Chebyshev, H6IsTheSixthPolynomial) {
    for (double angle = 0.0; angle < 3.2; angle += 0.1) {
        EXPECT_NEAR(h6(std::cos(angle)), std::cos(6.0 * angle), 1e-13);
    }
}

TEST(Decibels, OfNothingAndLessAreMinus140) {
    EXPECT_EQ(amp2db(0.0), -140.0);
    EXPECT_EQ(amp2db(-0.0), -140.0);
    EXPECT_EQ(amp2db(-3.0), -140.0);
}

TEST(Decibels, AreTwentyForEveryPowerOfTen) {
    EXPECT_EQ(amp2db(1.0), 0.0);
    EXPECT_DOUBLE_EQ(amp2db(10.0), 20.0);
    EXPECT_DOUBLE_EQ(amp2db(1e-9), -180.0); // only what is not above 0 is limited
}

TEST(Decibels, BelowMinus140GiveItsAmplitude) {
    EXPECT_DOUBLE_EQ(db2amp(-200.0), 1e-7);
    EXPECT_EQ(db2amp(-200.0), db2amp(-140.0));
    EXPECT_GT(db2amp(-139.0), db2amp(-140.0));
}

TEST(Decibels, ThereAndBackIsTheSame) {
    for (double d = -140.0; d <= 40.0; d += 0.5) {
        EXPECT_NEAR(amp2db(db2amp(d)), d, 1e-12);
    }
}

TEST(Compression, UpToTheKneeNothingChanges) {
    for (const float s : {0.0F, 0.25F, -0.25F, 0.5F, -0.5F}) {
        EXPECT_EQ(dsp::compressed(s, 0.5F, 0.25F), s);
    }
}

TEST(Compression, AboveTheKneeTheCurveGoesOnWithItsSlope) {
    EXPECT_EQ(dsp::compressed(1.0F, 0.5F, 0.25F), 0.625F);
    EXPECT_EQ(dsp::compressed(0.75F, 0.5F, 0.25F), 0.5625F);
}

TEST(Compression, BelowTheNegativeKneeItFoldsBackTowardsZero) {
    // -knee - comp (s + knee): -0.5 - 0.25 (-0.5), not the mirror image's -0.625.
    EXPECT_EQ(dsp::compressed(-1.0F, 0.5F, 0.25F), -0.375F);
    EXPECT_EQ(dsp::compressed(-0.75F, 0.5F, 0.25F), -0.4375F);
    EXPECT_EQ(dsp::compressed(-1.0F, 0.5F, 1.0F), 0.0F);
}

TEST(Compression, WhatIsNoNumberStaysNone) {
    EXPECT_TRUE(std::isnan(dsp::compressed(kNaN, 0.5F, 0.25F)));
}

TEST(PeakMagnitude, IsTheLargestOfEitherSign) {
    EXPECT_EQ(dsp::peakMagnitude(Sound{0.5F, -0.75F, 0.6F}), 0.75F);
    EXPECT_EQ(dsp::peakMagnitude(Sound{}), 0.0F);
    EXPECT_EQ(dsp::peakMagnitude(Sound{kNaN, -0.25F, kNaN}), 0.25F);
    EXPECT_EQ(dsp::peakMagnitude(Sound{1.0F, -kInfinity}), kInfinity);
}

TEST_F(HarmonicProcessor, TracesTheHarmonicsThatAreAskedFor) {
    R = 44100.0;
    loadSound(noise(10, 1));
    hd(true, true, true, 100, false, 0, 0.9, 0.5F, 0.5F, 0.5F);
    EXPECT_EQ(platform_.trace.all,
              (std::vector<std::string>{"out: TWO\n", "out: FOUR\n", "out: SIX\n"}));
}

TEST_F(HarmonicProcessor, TracesNothingForWhatIsOff) {
    R = 44100.0;
    loadSound(noise(10, 1));
    hd(false, true, false, 100, false, 0, 0.9, 0.5F, 0.5F, 0.5F);
    EXPECT_EQ(platform_.trace.out, "FOUR\n");
}

TEST_F(HarmonicProcessor, TheSixthIsNamedAndNothingElse) {
    const Sound sound = noise(1000, 2);
    const Sound without = processed(sound, {.two = true});
    R = 44100.0;
    loadSound(sound);
    hd(true, false, true, 100, false, 0, 0.9, 1.0F, 1.0F, 1.0F);
    EXPECT_TRUE(sameBits(currentSound(), without));
}

TEST_F(HarmonicProcessor, TheSecondAloneIsTwiceTheFrequencyAtHalfTheLevel) {
    const auto amplitudes = harmonicsOf({.two = true, .slope = 0.6});
    EXPECT_NEAR(amplitudes[1], 0.5 * blockerGain(2.0 / 32.0, 0.6), 1e-5);
    for (const int n : {1, 3, 4, 5, 6, 7, 8}) {
        EXPECT_LT(amplitudes[static_cast<std::size_t>(n - 1)], 1e-6) << n;
    }
}

TEST_F(HarmonicProcessor, TheFourthAloneIsFourTimesTheFrequency) {
    const auto amplitudes = harmonicsOf({.two = false, .four = true, .slope = 0.6});
    // h2 of a sine of amplitude a has its double frequency with amplitude a^2.
    const double second = 0.5 * blockerGain(2.0 / 32.0, 0.6);
    EXPECT_NEAR(amplitudes[3], second * second * blockerGain(4.0 / 32.0, 0.6), 1e-5);
    for (const int n : {1, 2, 3, 5, 6, 7, 8}) {
        EXPECT_LT(amplitudes[static_cast<std::size_t>(n - 1)], 1e-6) << n;
    }
}

TEST_F(HarmonicProcessor, BothTogetherAreTheSumOfEach) {
    const Hd two{.two = true, .four = false};
    const Hd four{.two = false, .four = true};
    const Hd both{.two = true, .four = true};
    const Sound sound = noise(3000, 3);
    const Sound a = processed(sound, two);
    const Sound b = processed(sound, four);
    const Sound c = processed(sound, both);
    for (std::size_t i = 0; i < sound.size(); ++i) {
        EXPECT_EQ(c[i], a[i] + b[i]);
    }
}

TEST_F(HarmonicProcessor, MixZeroLeavesTheSoundAsItIs) {
    const Sound sound = noise(3000, 4);
    EXPECT_EQ(processed(sound, {.two = true, .four = true, .mix = 0.0F}), sound);
}

TEST_F(HarmonicProcessor, TheFirstSampleOfBothPathsIsZero) {
    const Sound sound = noise(300, 5);
    const Sound wet = processed(sound, {.two = true, .four = true, .mix = 1.0F});
    EXPECT_EQ(wet[0], 0.0F);
    const Sound mixed = processed(sound, {.two = true, .four = true, .mix = 0.25F});
    EXPECT_EQ(mixed[0], 0.75F * sound[0]);
}

TEST_F(HarmonicProcessor, TheHarmonicsFadeInOverTheAttack) {
    const Sound sound = noise(2000, 6);
    const Sound quick = processed(sound, {.two = true, .attack = 0});
    const Sound slow = processed(sound, {.two = true, .attack = 1000});
    for (std::size_t i = 0; i < 2000; ++i) {
        const float share = i < 1000 ? static_cast<float>(i) / 1000.0F : 1.0F;
        EXPECT_NEAR(slow[i], quick[i] * share, 1e-7F) << i;
    }
    EXPECT_TRUE(
        sameBits(Sound(slow.begin() + 1000, slow.end()), Sound(quick.begin() + 1000, quick.end())));
}

TEST_F(HarmonicProcessor, WheneverThePeakExceedsTheKneeTheDriversPeakIsOne) {
    // The loudest sample is positive; its harmonic is h2(1) = 1, whatever knee and compression.
    const Sound sound = withSample(noise(2000, 7, 0.5F), 1500, 0.875F);
    for (const float knee : {0.0F, 0.25F, 0.75F}) {
        for (const float comp : {0.25F, 0.5F, 1.0F}) {
            const Hd settings{.two = true, .attack = 0, .slope = 0.0, .knee = knee, .comp = comp};
            const Sound result = processed(sound, settings);
            // With pole 0 the blocker is a difference: undo it by summing from the first on.
            double h = 0.0;
            for (std::size_t i = 0; i <= 1500; ++i) {
                h += 2.0 * static_cast<double>(result[i]);
            }
            EXPECT_NEAR(h, 1.0, 1e-4) << knee << " " << comp;
        }
    }
}

TEST_F(HarmonicProcessor, WithAHighPassKneeAndCompressionAreWithoutEffect) {
    const Sound sound = noise(2000, 8);
    for (const std::int32_t hpSelect : {1, 2}) {
        forgetRuns();
        const Sound one = processed(sound, {.two = true,
                                            .four = true,
                                            .scale = true,
                                            .hpSelect = hpSelect,
                                            .mix = 0.5F,
                                            .knee = 1.0F});
        forgetRuns();
        const Sound other = processed(sound, {.two = true,
                                              .four = true,
                                              .scale = true,
                                              .hpSelect = hpSelect,
                                              .mix = 0.5F,
                                              .knee = 0.1F,
                                              .comp = 0.2F});
        EXPECT_TRUE(sameBits(one, other));
    }
}

TEST_F(HarmonicProcessor, WithAHighPassTheInputsPeakStillScales) {
    const Sound result =
        processed(noise(2000, 9, 0.625F), {.two = true, .scale = true, .hpSelect = 1, .mix = 0.5F});
    const float inPeak = dsp::peakMagnitude(noise(2000, 9, 0.625F));
    EXPECT_NEAR(*std::max_element(result.begin(), result.end()), inPeak, 1e-6F);
}

TEST_F(HarmonicProcessor, TheTwoHighPassesDiffer) {
    const Sound sound = noise(2000, 10);
    const Sound lower = processed(sound, {.two = true, .hpSelect = 1});
    forgetRuns();
    EXPECT_FALSE(sameBits(processed(sound, {.two = true, .hpSelect = 2}), lower));
}

TEST_F(HarmonicProcessor, TheHighPassHearsTheRunBefore) {
    const Sound sound = noise(2000, 11);
    const Hd settings{.two = true, .attack = 0, .hpSelect = 1};
    plain::HighPass filter;
    for (int run = 0; run < 3; ++run) {
        EXPECT_TRUE(
            sameBits(processed(sound, settings), plain::harmonics(sound, settings, filter)));
    }
}

TEST_F(HarmonicProcessor, WithoutAHighPassNoRunHearsAnother) {
    const Sound sound = noise(2000, 12);
    const Sound first = processed(sound, {.two = true, .four = true});
    EXPECT_TRUE(sameBits(processed(sound, {.two = true, .four = true}), first));
    EXPECT_EQ(xv, (std::array<float, 3>{}));
    EXPECT_EQ(yv, (std::array<float, 3>{}));
}

TEST_F(HarmonicProcessor, ScalingBringsTheHighestSampleToTheInputsPeak) {
    const Sound sound = withSample(noise(2000, 13, 0.5F), 1000, -0.75F);
    const Sound result = processed(sound, {.two = true, .scale = true, .mix = 0.5F});
    EXPECT_NEAR(*std::max_element(result.begin(), result.end()), 0.75F, 1e-6F);
}

TEST_F(HarmonicProcessor, ANegativePeakDoesNotCountForTheScaling) {
    // The dry sound alone: highest 0.25, deepest -0.5. Scaled by 0.5 / 0.25.
    const Sound result =
        processed({0.25F, -0.5F, 0.125F}, {.two = true, .scale = true, .mix = 0.0F});
    EXPECT_EQ(result, (Sound{0.5F, -1.0F, 0.25F}));
}

TEST_F(HarmonicProcessor, AResultWithoutAPositiveSampleIsScaledToInfinityAndNaN) {
    const Sound result =
        processed({-0.25F, 0.0F, -0.5F}, {.two = true, .scale = true, .mix = 0.0F});
    EXPECT_TRUE(sameBits(result, {-kInfinity, kNaN, -kInfinity}));
}

TEST_F(HarmonicProcessor, SilenceWithKneeZeroIsNaN) {
    for (const float x : processed(Sound(50, 0.0F), {.two = true, .mix = 0.5F, .knee = 0.0F})) {
        EXPECT_TRUE(std::isnan(x));
    }
}

TEST_F(HarmonicProcessor, SilenceWithCompressionOneIsNaN) {
    // The divisor is knee + (0 - knee) 1.
    for (const float x : processed(Sound(50, 0.0F), {.two = true, .mix = 0.5F, .knee = 0.5F})) {
        EXPECT_TRUE(std::isnan(x));
    }
}

TEST_F(HarmonicProcessor, SilenceWithAKneeIsTheDecayOfTheBlockersStep) {
    const Hd settings{.two = true, .attack = 0, .slope = 0.5, .comp = 0.5F};
    const Sound result = processed(Sound(10, 0.0F), settings);
    double decay = -0.5; // half of h2(0)
    for (const float x : result) {
        EXPECT_EQ(x, static_cast<float>(decay));
        decay *= 0.5;
    }
}

TEST_F(HarmonicProcessor, TheFourthGoesOnFromTheStateThatTheSecondLeft) {
    // The last value into the second's blocker is h2(1) = 1, then the fourth begins with
    // h2(0.5 * y[0]); a cleared state would give that value itself.
    const Sound sound(400, 1.0F);
    const Hd settings{.two = false, .four = true, .attack = 0, .slope = 0.5};
    const double lastOut = std::pow(0.5, 399.0);
    const double first = 2.0 * 0.5 * 0.5 - 1.0; // h2 of half the blocker's first output, 1
    EXPECT_EQ(processed(sound, settings)[0], static_cast<float>(first - 1.0 + 0.5 * lastOut));
}

TEST_F(HarmonicProcessor, AgreesWithThePlainFormToTheBit) {
    std::uint32_t seed = 100;
    for (const std::int32_t hpSelect : {0, 1, 2}) {
        for (const float knee : {0.0F, 0.3F, 1.0F}) {
            for (const float comp : {0.2F, 0.7F, 1.0F}) {
                for (const unsigned flags : {1U, 2U, 3U, 5U, 6U, 7U}) {
                    const Hd settings{.two = (flags & 1U) != 0,
                                      .four = (flags & 2U) != 0,
                                      .attack = seed % 2 == 0 ? 100 : 1000,
                                      .scale = (flags & 4U) != 0,
                                      .hpSelect = hpSelect,
                                      .slope = seed % 3 == 0 ? 0.998 : 0.6,
                                      .mix = static_cast<float>(seed % 5) * 0.25F,
                                      .knee = knee,
                                      .comp = comp};
                    const Sound sound = noise(1200, seed, seed % 7 == 0 ? 4.0F : 0.8F);
                    forgetRuns();
                    EXPECT_TRUE(sameBits(processed(sound, settings), expected(sound, settings)))
                        << hpSelect << " " << knee << " " << comp << " " << flags;
                    ++seed;
                }
            }
        }
    }
}

} // namespace
} // namespace zemo::test
