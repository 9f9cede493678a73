#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "files/Normalize.h"

namespace zemo::test {
namespace {

struct Normalized {
    std::vector<float> samples;
    float peak;
};

Normalized normalized(std::vector<float> samples, bool force) {
    float peak = 99.0F;
    normalize(samples.data(), static_cast<std::int64_t>(samples.size()), &peak, force);
    return {samples, peak};
}

/// Every sample over the peak times 1.1, that rounded to a float first.
std::vector<float> divided(std::vector<float> samples, float peak) {
    const auto divisor = static_cast<float>(static_cast<double>(peak) * 1.1);
    for (float& sample : samples) {
        sample /= divisor;
    }
    return samples;
}

constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(Normalize, ANegativeRecordIsReplacedByTheVeryNextSample) {
    const std::vector<float> before{-0.9F, 0.1F, 0.2F};
    const auto result = normalized(before, true);
    EXPECT_EQ(result.peak, 0.2F);
    EXPECT_EQ(result.samples, divided(before, 0.2F));
    EXPECT_NEAR(result.samples[0], -4.0909F, 1e-4F);
    EXPECT_NEAR(result.samples[1], 0.4545F, 1e-4F);
    EXPECT_NEAR(result.samples[2], 0.9091F, 1e-4F);
}

TEST(Normalize, ALastNegativeRecordIsBelowOneAndScalesNothing) {
    const auto result = normalized({0.5F, -0.9F}, false);
    EXPECT_EQ(result.peak, -0.9F);
    EXPECT_EQ(result.samples, (std::vector<float>{0.5F, -0.9F}));
}

TEST(Normalize, ALargeNegativeRecordScalesNothingEither) {
    const auto result = normalized({0.5F, -3.0F}, false);
    EXPECT_EQ(result.peak, -3.0F);
    EXPECT_EQ(result.samples, (std::vector<float>{0.5F, -3.0F}));
}

TEST(Normalize, ForcedWithANegativeRecordEverySignTurns) {
    const auto result = normalized({0.5F, -0.9F}, true);
    EXPECT_EQ(result.samples, divided({0.5F, -0.9F}, -0.9F));
    EXPECT_LT(result.samples[0], 0.0F);
    EXPECT_GT(result.samples[1], 0.0F);
}

TEST(Normalize, APeakOfOneOrMoreScalesUnasked) {
    const std::vector<float> before{0.3F, 2.0F, 0.1F};
    const auto result = normalized(before, false);
    EXPECT_EQ(result.peak, 2.0F);
    EXPECT_EQ(result.samples, divided(before, 2.0F));
}

TEST(Normalize, APeakOfExactlyOneScales) {
    EXPECT_EQ(normalized({1.0F}, false).samples, (std::vector<float>{1.0F / 1.1F}));
}

TEST(Normalize, APeakJustBelowOneDoesNotScale) {
    const float below = std::nextafter(1.0F, 0.0F);
    EXPECT_EQ(normalized({below}, false).samples, (std::vector<float>{below}));
}

TEST(Normalize, ForcedOnSilenceEverySampleBecomesNoNumber) {
    const auto result = normalized({0.0F, -0.0F, 0.0F}, true);
    EXPECT_EQ(result.peak, 0.0F);
    for (const float sample : result.samples) {
        EXPECT_TRUE(std::isnan(sample));
    }
}

TEST(Normalize, OfNoSamplesThePeakIsZero) {
    float peak = 99.0F;
    normalize(nullptr, 0, &peak, true);
    EXPECT_EQ(peak, 0.0F);
}

TEST(Normalize, ANaNIsNeverThePeak) {
    EXPECT_EQ(normalized({NAN, 0.25F, NAN}, false).peak, 0.25F);
    EXPECT_EQ(normalized({-0.5F, NAN}, false).peak, -0.5F);
    EXPECT_EQ(normalized({NAN, -NAN}, false).peak, 0.0F);
}

TEST(Normalize, ANaNStaysOneWhenTheOthersAreScaled) {
    const auto result = normalized({NAN, 2.0F}, false);
    EXPECT_TRUE(std::isnan(result.samples[0]));
    EXPECT_EQ(result.samples[1], divided({2.0F}, 2.0F)[0]);
}

TEST(Normalize, AnEqualMagnitudeReplacesNoPositiveRecord) {
    EXPECT_EQ(normalized({0.5F, -0.5F}, false).peak, 0.5F);
    EXPECT_EQ(normalized({-0.5F, 0.5F}, false).peak, 0.5F) << "but any a negative one";
}

TEST(Normalize, EvenZeroReplacesANegativeRecord) {
    const auto zero = normalized({-0.5F, 0.0F}, false).peak;
    EXPECT_EQ(std::bit_cast<std::uint32_t>(zero), 0U);
    const auto negativeZero = normalized({-0.5F, -0.0F}, false).peak;
    EXPECT_EQ(std::bit_cast<std::uint32_t>(negativeZero), 0x80000000U);
}

TEST(Normalize, AnInfinitePeakLeavesZerosAndNoNumber) {
    const auto result = normalized({kInfinity, 1.0F, -2.0F}, false);
    EXPECT_EQ(result.peak, kInfinity);
    EXPECT_TRUE(std::isnan(result.samples[0]));
    EXPECT_EQ(std::bit_cast<std::uint32_t>(result.samples[1]), 0U);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(result.samples[2]), 0x80000000U);
}

TEST(Normalize, ADivisorPastTheLargestFloatIsInfinite) {
    const float largest = std::numeric_limits<float>::max();
    EXPECT_EQ(normalized({largest}, false).samples, (std::vector<float>{0.0F}));
}

TEST(Normalize, TheSmallestFloatIsDividedByItself) {
    const float tiniest = std::numeric_limits<float>::denorm_min(); // times 1.1 it rounds to itself
    EXPECT_EQ(normalized({tiniest}, true).samples, (std::vector<float>{1.0F}));
}

TEST(Normalize, TheDivisorIsRoundedToAFloatBeforeTheDivision) {
    // Of these peaks, for some the quotient by the unrounded divisor would be another float.
    std::mt19937 random(11);
    std::uniform_real_distribution<float> level(1.0F, 100.0F);
    int different = 0;
    for (int i = 0; i < 1000; ++i) {
        const float peak = level(random);
        const float result = normalized({peak}, false).samples[0];
        EXPECT_EQ(result, divided({peak}, peak)[0]);
        const double unrounded = static_cast<double>(peak) / (static_cast<double>(peak) * 1.1);
        different += result != static_cast<float>(unrounded) ? 1 : 0;
    }
    EXPECT_GT(different, 0);
}

TEST(Normalize, WhatLiesBehindTheCountIsNotTouched) {
    std::vector<float> samples{2.0F, 4.0F, 8.0F};
    float peak = 0.0F;
    normalize(samples.data(), 2, &peak, true);
    EXPECT_EQ(peak, 4.0F);
    EXPECT_EQ(samples[2], 8.0F);
}

/// The rule as it is told: the last sample that was larger than the record when its turn came.
float recordByRule(const std::vector<float>& samples) {
    float record = 0.0F;
    for (const float sample : samples) {
        const float magnitude = std::signbit(sample) ? -sample : sample;
        record = magnitude > record ? sample : record;
    }
    return record;
}

TEST(SignedPeak, OneRecordIsFoundWhereverItStands) {
    for (const float record : {0.5F, -0.5F}) {
        for (std::size_t at = 0; at < 400; ++at) {
            std::vector<float> samples(400, NAN); // that replace no record, not even a negative one
            samples[at] = record;
            EXPECT_EQ(signedPeak(samples.data(), 400), record) << at;
        }
    }
}

TEST(SignedPeak, ANegativeRecordIsReplacedHoweverFarTheNextSampleIs) {
    for (std::size_t gap = 1; gap < 300; ++gap) {
        std::vector<float> samples(400, NAN);
        samples[50] = -0.5F;
        samples[50 + gap] = 0.25F;
        EXPECT_EQ(signedPeak(samples.data(), 400), 0.25F) << gap;
    }
}

TEST(SignedPeak, FollowsTheRuleOnQuietSamplesOfBothSigns) {
    std::mt19937 random(6);
    std::uniform_real_distribution<float> level(-1.0F, 1.0F);
    for (int round = 0; round < 2000; ++round) {
        std::vector<float> samples(random() % 300);
        std::generate(samples.begin(), samples.end(), [&] { return level(random); });
        const float peak = signedPeak(samples.data(), static_cast<std::int64_t>(samples.size()));
        EXPECT_EQ(peak, recordByRule(samples));
    }
}

TEST(SignedPeak, FollowsTheRuleOnAnySamples) {
    std::mt19937 random(5);
    for (int round = 0; round < 2000; ++round) {
        std::vector<float> samples(random() % 300);
        for (float& sample : samples) {
            sample = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        }
        const float peak = signedPeak(samples.data(), static_cast<std::int64_t>(samples.size()));
        EXPECT_EQ(peak, recordByRule(samples));
    }
}

} // namespace
} // namespace zemo::test
