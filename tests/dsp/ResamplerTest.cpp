#include "dsp/Resampler.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <random>

#include "PlainForms.h"
#include "playback/SoundExchange.h"

namespace zemo::test {
namespace {

using Resampler = DspTest;

constexpr std::int64_t kMost = INT32_MAX;
const std::vector<double> kRates{44100.0, 48000.0, 88200.0, 96000.0, 22050.0};

Sound resampled(const Sound& sound, float ratio, double rate = 44100.0) {
    return run(sound, rate, [&] { return resampleBuffer(ratio); });
}

void expectRefused(const Sound& sound, float ratio, const std::string& sentence) {
    FakePlatform platform;
    R = 44100.0;
    loadSound(sound);
    const float* const block = fBuffer.load();
    const Refusal refusal = resampleBuffer(ratio);
    ASSERT_TRUE(refusal.has_value()) << ratio;
    EXPECT_EQ(refusal->sentence, sentence);
    EXPECT_EQ(fBuffer.load(), block);
    EXPECT_TRUE(sameBits(currentSound(), sound));
    EXPECT_TRUE(platform.trace.all.empty());
}

/// The length by its own words, before any lowering.
std::int64_t wordedLength(std::int64_t count, float ratio) {
    const auto intervals = static_cast<float>(static_cast<std::int32_t>(count - 1));
    const float product = intervals * ratio;
    return static_cast<std::int64_t>(product);
}

bool liesInside(std::int64_t length, std::int64_t count, float ratio, double rate) {
    return static_cast<double>(length - 1) / (rate * static_cast<double>(ratio)) <=
           static_cast<double>(count - 1) / rate;
}

TEST_F(Resampler, ARatioThatIsNoPositiveNumberIsRefused) {
    for (const float ratio : {kNaN, kInfinity, -kInfinity, 0.0F, -0.0F, -1.0F, -kTiniest}) {
        expectRefused(noise(100, 1), ratio, "The resampling ratio must be a number above 0.");
    }
}

TEST_F(Resampler, FewerThanThreeSamplesAreRefused) {
    for (const std::size_t count : {1UL, 2UL}) {
        expectRefused(noise(count, 1), 2.0F,
                      "Only a sound of 3 to 2147483647 samples can be resampled.");
    }
}

TEST_F(Resampler, MoreSamplesThanA32BitCountAreRefused) {
    for (const std::int64_t beyond : {1, 2}) {
        fBuffersize = INT32_MAX + beyond;
        const Refusal refusal = resampleRefusal(0.5F);
        ASSERT_TRUE(refusal);
        EXPECT_EQ(refusal->sentence, "Only a sound of 3 to 2147483647 samples can be resampled.");
    }
    fBuffersize = INT32_MAX;
    EXPECT_FALSE(resampleRefusal(0.5F));
    fBuffersize = 0;
}

TEST_F(Resampler, ALengthThatCannotBeIsRefused) {
    for (const float ratio : {0.01F, kTiniest, 1e-30F, 2.2e7F, 1e30F, kLargest}) {
        expectRefused(noise(100, 1), ratio,
                      "With this ratio the sound would have no sample, or more than 2147483647.");
    }
}

TEST_F(Resampler, WithoutASoundItOnlyLogs) {
    R = 44100.0;
    for (const float ratio : {2.0F, -1.0F, kNaN}) {
        EXPECT_FALSE(resampleRefusal(ratio).has_value());
        EXPECT_FALSE(resampleBuffer(ratio).has_value());
    }
    EXPECT_EQ(platform_.trace.all, std::vector<std::string>(3, "log: Nothing to resample"));
    EXPECT_EQ(fBuffersize.load(), 0);
}

TEST_F(Resampler, TracesItsLengthsAndTheEndsOfItsGrids) {
    resampled(noise(1001, 2), 2.0F, 48000.0);
    EXPECT_EQ(platform_.trace.all,
              (std::vector<std::string>{"out: len1 = 1001\tlen2 = 2000\n",
                                        "out: X1[0] = 0.000000\tX1[0] = 0.020833\n",
                                        "out: X2[0] = 0.000000\tX2[0] = 0.020823\n"}));
}

TEST_F(Resampler, AtRatioOneTheSoundLosesItsLastSampleOnly) {
    for (const double rate : kRates) {
        const Sound sound = noise(1000, 3);
        EXPECT_EQ(resampled(sound, 1.0F, rate), Sound(sound.begin(), sound.end() - 1)) << rate;
    }
}

TEST_F(Resampler, EverySecondSampleOfADoubledSoundIsAnOldOne) {
    for (const double rate : kRates) {
        const Sound sound = noise(1001, 4);
        const Sound result = resampled(sound, 2.0F, rate);
        ASSERT_EQ(result.size(), 2000U);
        for (std::size_t i = 0; i < 1000; ++i) {
            ASSERT_EQ(result[2 * i], sound[i]) << rate << " " << i;
        }
    }
}

TEST_F(Resampler, ANewSampleOnAnOldZeroIsZeroToTheLastBitsOfADouble) {
    Sound sound = noise(1001, 5);
    for (std::size_t i = 0; i < sound.size(); i += 3) {
        sound[i] = 0.0F;
    }
    const Sound result = resampled(sound, 2.0F);
    for (std::size_t i = 0; i < 1000; i += 3) {
        EXPECT_NEAR(result[2 * i], 0.0F, 2e-15F) << i;
    }
}

TEST_F(Resampler, HalvingKeepsEverySecondSample) {
    const Sound sound = noise(1001, 6);
    const Sound result = resampled(sound, 0.5F);
    ASSERT_EQ(result.size(), 500U);
    for (std::size_t i = 0; i < result.size(); ++i) {
        EXPECT_EQ(result[i], sound[2 * i]);
    }
}

TEST_F(Resampler, ASlowSineStaysASineOfLowerPitch) {
    const Sound result = resampled(tone(4000, 300.0, 44100.0), 1.5F);
    for (std::size_t j = 50; j + 50 < result.size(); ++j) {
        const double angle = 2.0 * kPi * 300.0 * static_cast<double>(j) / (1.5 * 44100.0);
        ASSERT_NEAR(static_cast<double>(result[j]), std::cos(angle), 1e-6);
    }
}

TEST_F(Resampler, AConstantStaysTheSameConstant) {
    EXPECT_EQ(resampled(Sound(500, 0.7F), 1.37F), Sound(683, 0.7F));
}

TEST_F(Resampler, IsLinearInTheSound) {
    const Sound a = noise(500, 7, 0.5F);
    const Sound b = noise(500, 8, 0.25F);
    Sound sum;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum.push_back(a[i] + b[i]);
    }
    const Sound fromA = resampled(a, 1.7F);
    const Sound fromB = resampled(b, 1.7F);
    const Sound fromSum = resampled(sum, 1.7F);
    for (std::size_t j = 0; j < fromSum.size(); ++j) {
        EXPECT_NEAR(fromSum[j], fromA[j] + fromB[j], 3e-7F);
    }
}

TEST_F(Resampler, ThreeSamplesGiveTheParabolaThroughThem) {
    for (const double rate : kRates) {
        for (const float ratio : {0.5F, 1.0F, 2.0F, 3.3F, 100.0F}) {
            const Sound y{0.3F, -0.9F, 0.55F};
            const Sound result = resampled(y, ratio, rate);
            ASSERT_EQ(result.size(), static_cast<std::size_t>(2.0F * ratio));
            for (std::size_t j = 0; j < result.size(); ++j) {
                // Lagrange's form.
                const double u = static_cast<double>(j) / static_cast<double>(ratio);
                const double value = static_cast<double>(y[0]) * (u - 1.0) * (u - 2.0) / 2.0 -
                                     static_cast<double>(y[1]) * u * (u - 2.0) +
                                     static_cast<double>(y[2]) * u * (u - 1.0) / 2.0;
                EXPECT_NEAR(static_cast<double>(result[j]), value, 6e-8) << ratio << " " << j;
            }
        }
    }
}

TEST_F(Resampler, FourSamplesGiveTheCubicThroughThem) {
    const Sound y{0.3F, -0.9F, 0.55F, 0.1F};
    const Sound result = resampled(y, 10.0F);
    ASSERT_EQ(result.size(), 30U);
    for (std::size_t j = 0; j < result.size(); ++j) {
        const double u = static_cast<double>(j) / 10.0;
        double value = 0.0;
        for (std::size_t i = 0; i < 4; ++i) {
            double term = static_cast<double>(y[i]);
            for (std::size_t k = 0; k < 4; ++k) {
                const double distance = static_cast<double>(i) - static_cast<double>(k);
                term *= k == i ? 1.0 : (u - static_cast<double>(k)) / distance;
            }
            value += term;
        }
        EXPECT_NEAR(static_cast<double>(result[j]), value, 1e-7) << j;
    }
}

TEST_F(Resampler, TheRateAndTheOldSoundsBlockAreNotKept) {
    resampled(noise(100, 9), 3.0F, 48000.0);
    EXPECT_EQ(R, 48000.0);
    EXPECT_EQ(fBuffersize.load(), 297);
    EXPECT_EQ(slackSamples(), 0);
}

TEST_F(Resampler, AgreesWithThePlainFormToTheBit) {
    std::uint32_t seed = 30;
    for (const double rate : kRates) {
        for (const float ratio : {0.011F, 0.5F, 0.99999F, 1.0F, 1.1F, 2.0F, 3.14159F, 17.0F}) {
            const Sound sound = noise(200 + 57 * (seed % 5), seed, seed % 2 == 0 ? 1.0F : 1e30F);
            const auto length =
                static_cast<std::size_t>(static_cast<float>(sound.size() - 1) * ratio);
            EXPECT_TRUE(sameBits(resampled(sound, ratio, rate),
                                 plain::resampled(sound, length, ratio, rate)))
                << rate << " " << ratio;
            ++seed;
        }
    }
}

TEST_F(Resampler, AnOrdinaryRateHasNoSingularSystemWhateverTheLength) {
    for (const double rate : {1.0, 8000.0, 11025.0, 22050.0, 44100.0, 47999.9, 48000.0, 88200.0,
                              96000.0, 176400.0, 192000.0, 1e6}) {
        for (std::size_t count = 3; count < 300; ++count) {
            ASSERT_TRUE(allFinite(resampled(noise(count, 10), 1.5F, rate)));
        }
    }
}

TEST(ResampledLength, IsOneLessThanTheOldTimesTheRatioTruncated) {
    EXPECT_EQ(dsp::resampledLength(1001, 2.0F, 44100.0), 2000);
    EXPECT_EQ(dsp::resampledLength(1001, 1.0F, 44100.0), 1000);
    EXPECT_EQ(dsp::resampledLength(1001, 0.9999F, 44100.0), 999);
    EXPECT_EQ(dsp::resampledLength(3, 0.5F, 44100.0), 1);
    EXPECT_EQ(dsp::resampledLength(3, 0.49F, 44100.0), 0);
    EXPECT_EQ(dsp::resampledLength(11, 0.1F, 44100.0), 1);
}

TEST(ResampledLength, IsComputedInFloats) {
    // 0.1F is above 0.1, but 32-bit rounding of the product brings it back to the whole number.
    EXPECT_EQ(dsp::resampledLength(100001, 0.7F, 44100.0), wordedLength(100001, 0.7F));
    EXPECT_EQ(dsp::resampledLength(16777218, 0.5F, 44100.0), 8388608);
}

TEST(ResampledLength, IsNotLoweredBelow2To24) {
    std::mt19937 bits(40);
    for (int i = 0; i < 300000; ++i) {
        const auto count = static_cast<std::int64_t>(3 + bits() % 1000000);
        const float ratio = std::ldexp(1.0F + static_cast<float>(bits() % 8388608U) / 8388608.0F,
                                       static_cast<int>(bits() % 10U) - 6);
        const std::int64_t worded = wordedLength(count, ratio);
        if (worded >= 1 && worded < 16777216) {
            ASSERT_EQ(dsp::resampledLength(count, ratio, 44100.0), worded) << count << " " << ratio;
        }
    }
}

TEST(ResampledLength, FromTwoTo24OnItIsLoweredByNoMoreThanNeeded) {
    std::mt19937 bits(41);
    int lowered = 0;
    for (int i = 0; i < 20000; ++i) {
        const auto count = static_cast<std::int64_t>(3 + bits() % 0x7ffffffcU);
        const float ratio = std::ldexp(1.0F + static_cast<float>(bits() % 8388608U) / 8388608.0F,
                                       static_cast<int>(bits() % 4U) - 3);
        const double rate = kRates[bits() % kRates.size()];
        const float product = static_cast<float>(static_cast<std::int32_t>(count - 1)) * ratio;
        if (product >= 2147483648.0F) {
            ASSERT_EQ(dsp::resampledLength(count, ratio, rate), 0);
            continue;
        }
        const std::int64_t worded = wordedLength(count, ratio);
        const std::int64_t length = dsp::resampledLength(count, ratio, rate);
        ASSERT_TRUE(liesInside(length, count, ratio, rate)) << count << " " << ratio;
        ASSERT_TRUE(length == worded || !liesInside(length + 1, count, ratio, rate));
        ASSERT_GE(length, worded - 512);
        lowered += length < worded ? 1 : 0;
    }
    EXPECT_GT(lowered, 1000);
}

TEST(ResampledLength, ALastPointPastTheLastKnotIsTakenAway) {
    // 2^24 + 1 intervals round down to 2^24, 2^24 + 3 round up to 2^24 + 4: one new sample too many
    // at ratio 1, whose point would be where a sample number 2^24 + 4 is.
    EXPECT_EQ(dsp::resampledLength(16777216 + 2, 1.0F, 48000.0), 16777216);
    EXPECT_EQ(wordedLength(16777216 + 4, 1.0F), 16777220);
    EXPECT_EQ(dsp::resampledLength(16777216 + 4, 1.0F, 48000.0), 16777220);
    EXPECT_EQ(wordedLength(33554432 + 8, 1.0F), 33554440);
    EXPECT_EQ(dsp::resampledLength(33554432 + 8, 1.0F, 48000.0), 33554440);
    EXPECT_EQ(wordedLength(67108864 + 14, 1.0F), 67108880);
    EXPECT_EQ(dsp::resampledLength(67108864 + 14, 1.0F, 48000.0), 67108878);
}

TEST(ResampledLength, TheLastPointMayLieOnTheLastKnot) {
    EXPECT_EQ(dsp::resampledLength(16777216 + 4, 1.0F, 1.0), 16777216 + 4);
    EXPECT_EQ(dsp::pointTime(16777216 + 3, 1.0, 1.0F), dsp::knotTime(16777216 + 3, 1.0));
}

TEST(ResampledLength, TheLongestSoundHasOne) {
    // 2^31 - 2 intervals round up to 2^31: at ratio 1 too long for a 32-bit count.
    EXPECT_EQ(dsp::resampledLength(kMost, 1.0F, 44100.0), 0);
    const float below = std::nextafter(1.0F, 0.0F);
    EXPECT_EQ(wordedLength(kMost, below), 2147483520);
    EXPECT_EQ(dsp::resampledLength(kMost, below, 44100.0), 2147483519);
    EXPECT_EQ(dsp::resampledLength(kMost, 0.5F, 44100.0), 1073741824);
}

TEST(ResampledLength, ASoundTooLongForA32BitCountHasNone) {
    EXPECT_EQ(dsp::resampledLength(kMost + 1, 0.5F, 44100.0), 0);
    EXPECT_EQ(dsp::resampledLength((std::int64_t{1} << 32) + 1001, 2.0F, 44100.0), 0);
}

TEST(ResampledLength, ARatioThatIsNoPositiveNumberHasNone) {
    for (const float ratio : {kNaN, kInfinity, -kInfinity, 0.0F, -1.0F}) {
        EXPECT_EQ(dsp::resampledLength(1001, ratio, 44100.0), 0);
    }
}

} // namespace
} // namespace zemo::test
