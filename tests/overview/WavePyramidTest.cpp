#include "overview/WavePyramid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "platform/Progress.h"

namespace zemo::overview {
namespace {

constexpr float kInfinite = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// The plain form: every sample, one by one.
WaveColumn plainly(const std::vector<float>& sound, std::int64_t first, std::int64_t end) {
    WaveColumn column;
    long double squares = 0.0L;
    for (std::int64_t i = first; i < end; ++i) {
        const float x = sound[static_cast<std::size_t>(i)];
        if (!std::isfinite(x)) {
            column.notFinite = true;
            continue;
        }
        column.low = std::min(column.low, x);
        column.high = std::max(column.high, x);
        column.beyond = column.beyond || std::fabs(x) > 1.0F;
        squares += static_cast<long double>(x) * static_cast<long double>(x);
    }
    if (end > first) {
        column.rms = static_cast<float>(std::sqrt(squares / static_cast<long double>(end - first)));
    }
    return column;
}

void expectSame(const WaveColumn& actual, const WaveColumn& expected, std::int64_t where) {
    EXPECT_EQ(actual.low, expected.low) << where;
    EXPECT_EQ(actual.high, expected.high) << where;
    EXPECT_EQ(actual.beyond, expected.beyond) << where;
    EXPECT_EQ(actual.notFinite, expected.notFinite) << where;
    EXPECT_NEAR(actual.rms, expected.rms, 1e-6F * expected.rms) << where;
}

/// Noise, now and then beyond 1 or not finite.
std::vector<float> sound(std::size_t count, std::uint32_t seed, bool isClean = false) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> level(-1.0F, 1.0F);
    std::vector<float> samples(count);
    for (float& x : samples) {
        x = level(random);
        const auto chance = isClean ? 1 : random() % 5000;
        if (chance == 0) {
            x = kNaN;
        } else if (chance == 2) {
            x = random() % 2 == 0 ? kInfinite : -kInfinite;
        } else if (chance == 3) {
            x = 3.0F * x;
        }
    }
    return samples;
}

std::shared_ptr<const WavePyramid> pyramidOf(const std::vector<float>& samples) {
    return WavePyramid::build(samples);
}

TEST(WavePyramid, AnyStretchOfAShortSoundIsThatOfItsSamples) {
    const std::vector<float> samples = sound(30000, 1);
    const auto pyramid = pyramidOf(samples);
    ASSERT_EQ(pyramid->bucketSamples(), 1);
    std::mt19937 random(2);
    for (int i = 0; i < 2000; ++i) {
        const auto first = static_cast<std::int64_t>(random() % samples.size());
        const auto end = first + 1 + static_cast<std::int64_t>(random() % 700);
        const auto last = std::min(end, pyramid->count());
        expectSame(pyramid->stretch(first, end), plainly(samples, first, last), first);
    }
}

TEST(WavePyramid, AStretchOfALongSoundIsThatOfTheWholeBucketsThatItTouches) {
    for (const std::size_t count : {200001U, 1000003U, 17000001U}) {
        const std::vector<float> samples = sound(count, 3);
        const auto pyramid = pyramidOf(samples);
        const std::int64_t bucket = pyramid->bucketSamples();
        ASSERT_GT(bucket, 1);
        std::mt19937 random(4);
        for (int i = 0; i < 300; ++i) {
            const auto first = static_cast<std::int64_t>(random() % count);
            const auto end =
                std::min(first + 1 + static_cast<std::int64_t>(random() % 90000), pyramid->count());
            const std::int64_t wideFirst = first / bucket * bucket;
            const std::int64_t wideEnd =
                std::min((end + bucket - 1) / bucket * bucket, pyramid->count());
            expectSame(pyramid->stretch(first, end), plainly(samples, wideFirst, wideEnd), first);
        }
    }
}

TEST(WavePyramid, ColumnsFollowOneAnotherWithoutGapOrOverlap) {
    const std::vector<float> samples = sound(10007, 5);
    const auto columns = pyramidOf(samples)->columns(0.0, 10007.0 / 613.0, 613);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const auto bound = [](std::size_t column) {
            return static_cast<std::int64_t>(static_cast<double>(column) * (10007.0 / 613.0));
        };
        const std::int64_t end = i + 1 == columns.size() ? 10007 : bound(i + 1);
        expectSame(columns[i], plainly(samples, bound(i), end), bound(i));
    }
}

TEST(WavePyramid, AColumnNarrowerThanASampleShowsThatSample) {
    const auto columns = pyramidOf({0.25F, -0.5F, 0.75F})->columns(0.0, 0.5, 6);
    const std::vector<float> expected{0.25F, 0.25F, -0.5F, -0.5F, 0.75F, 0.75F};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(columns[i].low, expected[i]);
        EXPECT_EQ(columns[i].high, expected[i]);
    }
}

TEST(WavePyramid, OutsideTheSoundColumnsAreEmpty) {
    for (const WaveColumn& column : pyramidOf({0.5F, 0.5F})->columns(-1e300, 1.0, 3)) {
        EXPECT_FALSE(column.hasFinite());
    }
    for (const WaveColumn& column : pyramidOf({0.5F, 0.5F})->columns(2.0, 1e300, 3)) {
        EXPECT_FALSE(column.hasFinite());
    }
}

TEST(WavePyramid, AnEmptySoundHasAnEmptyPicture) {
    const auto pyramid = pyramidOf({});
    EXPECT_EQ(pyramid->count(), 0);
    EXPECT_EQ(pyramid->peak(), 0.0F);
    EXPECT_FALSE(pyramid->columns(0.0, 1.0, 4)[2].hasFinite());
}

TEST(WavePyramid, SamplesThatAreNotFinitePoisonNothing) {
    std::vector<float> samples(100000, 0.5F);
    for (std::size_t i = 0; i < samples.size(); i += 2) {
        samples[i] = i % 4 == 0 ? kNaN : -kInfinite;
    }
    const WaveColumn all = pyramidOf(samples)->stretch(0, 100000);
    EXPECT_EQ(all.low, 0.5F);
    EXPECT_EQ(all.high, 0.5F);
    EXPECT_NEAR(all.rms, std::sqrt(0.125F), 1e-6F);
}

TEST(WavePyramid, ASoundOfNothingFiniteHasPeakZeroAndAllItsMarks) {
    const auto pyramid = pyramidOf(std::vector<float>(70000, kNaN));
    EXPECT_EQ(pyramid->peak(), 0.0F);
    EXPECT_EQ(pyramid->notFiniteCount(), 70000);
    const WaveColumn all = pyramid->stretch(0, 70000);
    EXPECT_FALSE(all.hasFinite());
    EXPECT_TRUE(all.notFinite);
    EXPECT_EQ(all.rms, 0.0F);
}

TEST(WavePyramid, CountsAndPeakAreThoseOfThePlainForm) {
    for (const std::size_t count : {9U, 5000U, 300000U, 2000000U}) {
        const std::vector<float> samples = sound(count, 7);
        const auto pyramid = pyramidOf(samples);
        const auto finite = [](float x) { return std::isfinite(x); };
        float peak = 0.0F;
        for (const float x : samples) {
            peak = finite(x) ? std::max(peak, std::fabs(x)) : peak;
        }
        EXPECT_EQ(pyramid->peak(), peak);
        EXPECT_EQ(pyramid->notFiniteCount(), std::count_if(samples.begin(), samples.end(),
                                                           [&](float x) { return !finite(x); }));
        EXPECT_EQ(pyramid->beyondCount(),
                  std::count_if(samples.begin(), samples.end(),
                                [&](float x) { return finite(x) && std::fabs(x) > 1.0F; }));
    }
}

TEST(WavePyramid, FullScaleItselfIsNotBeyondIt) {
    const float above = std::nextafter(1.0F, 2.0F);
    const auto pyramid = pyramidOf({1.0F, -1.0F, above, -above});
    EXPECT_EQ(pyramid->beyondCount(), 2);
    EXPECT_FALSE(pyramid->stretch(0, 2).beyond);
    EXPECT_TRUE(pyramid->stretch(3, 4).beyond);
}

TEST(WavePyramid, TheGreatestFloatsHaveAFiniteRms) {
    const float most = std::numeric_limits<float>::max();
    const WaveColumn all = pyramidOf(std::vector<float>(300000, -most))->stretch(0, 300000);
    EXPECT_EQ(all.low, -most);
    EXPECT_NEAR(all.rms / most, 1.0F, 1e-6F);
}

TEST(WavePyramid, TakesLessThanATwentiethOfALongSoundAndLittleOfAnyOther) {
    const std::vector<float> longSound(17000000, 0.1F);
    EXPECT_LT(pyramidOf(longSound)->bytes(), longSound.size() * sizeof(float) / 45);
    for (const std::size_t count : {1U, 65536U, 65537U, 131073U, 16000000U}) {
        EXPECT_LE(pyramidOf(std::vector<float>(count))->bytes(), std::size_t{2800000}) << count;
    }
}

std::size_t bucketsOfAPicture(const WavePyramid& pyramid) {
    constexpr std::int64_t kColumns = 1200;
    std::size_t read = 0;
    for (std::int64_t i = 0; i < kColumns; ++i) {
        read += pyramid.bucketsRead(i * pyramid.count() / kColumns,
                                    (i + 1) * pyramid.count() / kColumns);
    }
    return read;
}

TEST(WavePyramid, APictureOfALongSoundReadsNoMoreThanTwoOfAShortOne) {
    const std::size_t shortOne = bucketsOfAPicture(*pyramidOf(std::vector<float>(96007)));
    const std::size_t longOne = bucketsOfAPicture(*pyramidOf(std::vector<float>(48000007)));
    EXPECT_GE(shortOne, 1200U);
    EXPECT_LT(longOne, 2 * shortOne) << "of " << shortOne << ", and it is 500 times as long";
}

TEST(WavePyramid, AStretchReadsAtMostSixBucketsOfEachLevel) {
    const auto pyramid = pyramidOf(std::vector<float>(65536)); // 4^8: nine levels
    std::mt19937 random(5);
    std::size_t most = 0;
    for (int i = 0; i < 100000; ++i) {
        const auto [first, end] = std::minmax({static_cast<std::int64_t>(random() % 65537),
                                               static_cast<std::int64_t>(random() % 65537)});
        most = std::max(most, pyramid->bucketsRead(first, end));
    }
    constexpr std::size_t kMost = 6 * 7 + 2; // of the level of four not the first and the last
    EXPECT_LE(most, kMost);
    EXPECT_GT(most, kMost / 2) << "otherwise nothing was tried";
    EXPECT_EQ(pyramid->bucketsRead(0, 65536), 1U);
    EXPECT_EQ(pyramid->bucketsRead(1, 65535), kMost);
    EXPECT_EQ(pyramid->bucketsRead(7, 7), 0U);
    EXPECT_EQ(pyramid->bucketsRead(-5, 0), 0U);
}

TEST(WavePyramid, ABuildThatIsAskedToStopGivesNothing) {
    platform::Progress progress;
    progress.requestStop();
    const platform::ProgressScope scope(&progress);
    EXPECT_EQ(pyramidOf(std::vector<float>(10)), nullptr);
}

} // namespace
} // namespace zemo::overview
