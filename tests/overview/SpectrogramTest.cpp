#include "overview/Spectrogram.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <random>

#include "platform/Progress.h"

namespace zemo::overview {
namespace {

constexpr double kRate = 48000.0;

std::vector<float> sine(std::size_t count, double frequency, double amplitude) {
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double phase = 2.0 * std::numbers::pi * frequency * static_cast<double>(i) / kRate;
        samples[i] = static_cast<float>(amplitude * std::sin(phase));
    }
    return samples;
}

std::size_t loudestRow(const Spectrogram& picture, std::size_t column) {
    std::size_t loudest = 0;
    for (std::size_t row = 0; row < picture.rows(); ++row) {
        if (picture.decibels(column, row) > picture.decibels(column, loudest)) {
            loudest = row;
        }
    }
    return loudest;
}

/// The power of one frequency of a frame under a Hann window, by the definition.
double plainDecibels(const std::vector<float>& samples, std::ptrdiff_t first, std::size_t frame,
                     std::size_t bin) {
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < frame; ++i) {
        const std::ptrdiff_t at = first + static_cast<std::ptrdiff_t>(i);
        if (at < 0 || at >= static_cast<std::ptrdiff_t>(samples.size())) {
            continue;
        }
        const double turn =
            2.0 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(frame);
        const double window = 0.5 - 0.5 * std::cos(turn);
        sum += static_cast<double>(samples[static_cast<std::size_t>(at)]) * window *
               std::polar(1.0, -turn * static_cast<double>(bin));
    }
    return 20.0 * std::log10(std::abs(sum) * 4.0 / static_cast<double>(frame));
}

TEST(Spectrogram, AgreesWithThePlainTransformWhereARowLiesOnItsLine) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> level(-1.0F, 1.0F);
    std::vector<float> samples(6000);
    for (float& x : samples) {
        x = level(random);
    }
    const auto picture = Spectrogram::build(samples, kRate);
    const std::size_t frame = Spectrogram::frameSamples(kRate);
    const std::size_t column = picture->columns() / 2;
    const double centre =
        (static_cast<double>(column) + 0.5) * 6000.0 / static_cast<double>(picture->columns());
    const auto first = static_cast<std::ptrdiff_t>(centre) - static_cast<std::ptrdiff_t>(frame / 2);
    int compared = 0;
    for (std::size_t row = 0; row < 250; row += 7) { // lower rows lie between two frequencies
        const double part = (static_cast<double>(row) + 0.5) / static_cast<double>(picture->rows());
        const double bin =
            picture->lowestFrequency() *
            std::pow(picture->highestFrequency() / picture->lowestFrequency(), part) / kRate *
            static_cast<double>(frame);
        const auto below = static_cast<std::size_t>(bin);
        const double low = plainDecibels(samples, first, frame, below);
        const double high = plainDecibels(samples, first, frame, below + 1);
        const double expected = low + (bin - std::floor(bin)) * (high - low);
        EXPECT_NEAR(static_cast<double>(picture->decibels(column, row)), expected, 0.01) << row;
        ++compared;
    }
    EXPECT_EQ(compared, 36);
}

TEST(Spectrogram, ASineStandsAtItsFrequencyWithItsLevel) {
    for (const double frequency : {110.0, 440.0, 3000.0, 15000.0}) {
        const auto picture = Spectrogram::build(sine(48000, frequency, 0.5), kRate);
        const std::size_t row = loudestRow(*picture, picture->columns() / 2);
        const double height = picture->heightOf(frequency) * static_cast<double>(picture->rows());
        EXPECT_NEAR(static_cast<double>(row) + 0.5, height, 8.0) << frequency;
        EXPECT_NEAR(picture->decibels(picture->columns() / 2, row), -6.02F, 1.5F) << frequency;
    }
}

TEST(Spectrogram, SilenceLiesOnTheFloor) {
    const auto picture = Spectrogram::build(std::vector<float>(48000), kRate);
    for (std::size_t row = 0; row < picture->rows(); ++row) {
        EXPECT_EQ(picture->decibels(0, row), kFloorDecibels);
    }
}

TEST(Spectrogram, NothingLiesBelowTheFloor) {
    const auto picture = Spectrogram::build(sine(48000, 1000.0, 1e-9), kRate);
    EXPECT_EQ(picture->decibels(10, loudestRow(*picture, 10)), kFloorDecibels);
}

TEST(Spectrogram, ASampleThatIsNotFiniteCountsAsZero) {
    std::vector<float> zeros = sine(20000, 440.0, 0.5);
    std::vector<float> others = zeros;
    zeros[7000] = zeros[7001] = zeros[12000] = 0.0F;
    others[7000] = std::numeric_limits<float>::quiet_NaN();
    others[7001] = std::numeric_limits<float>::infinity();
    others[12000] = -std::numeric_limits<float>::infinity();
    const auto expected = Spectrogram::build(zeros, kRate);
    const auto actual = Spectrogram::build(others, kRate);
    for (std::size_t column = 0; column < expected->columns(); ++column) {
        for (std::size_t row = 0; row < expected->rows(); ++row) {
            ASSERT_EQ(actual->decibels(column, row), expected->decibels(column, row));
        }
    }
}

TEST(Spectrogram, TheGreatestFloatsStayFinite) {
    const std::vector<float> samples(20000, std::numeric_limits<float>::max());
    const auto picture = Spectrogram::build(samples, kRate);
    for (std::size_t column = 0; column < picture->columns(); ++column) {
        for (std::size_t row = 0; row < picture->rows(); ++row) {
            ASSERT_TRUE(std::isfinite(picture->decibels(column, row)));
        }
    }
}

TEST(Spectrogram, IsNoLargerThanAskedForWhateverTheLength) {
    const auto small = Spectrogram::build(std::vector<float>(1000000), kRate, {90, 40});
    EXPECT_EQ(small->columns(), 90U);
    EXPECT_EQ(small->rows(), 40U);
    EXPECT_EQ(Spectrogram::build(std::vector<float>(3), kRate)->columns(), 1U);
}

TEST(Spectrogram, AnyRateGivesAPictureUpToHalfOfIt) {
    for (const double rate : {1e-300, 1.0, 8000.0, 192000.0, 1e300}) {
        const auto picture = Spectrogram::build(std::vector<float>(5000, 0.1F), rate);
        ASSERT_NE(picture, nullptr) << rate;
        EXPECT_EQ(picture->highestFrequency(), rate / 2.0);
        EXPECT_LT(picture->lowestFrequency(), picture->highestFrequency());
        EXPECT_DOUBLE_EQ(picture->heightOf(picture->highestFrequency()), 1.0);
    }
    for (const double rate : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(Spectrogram::build(std::vector<float>(5000), rate), nullptr);
    }
}

TEST(Spectrogram, AnEmptySoundHasNone) {
    EXPECT_EQ(Spectrogram::build({}, kRate), nullptr);
}

TEST(Spectrogram, ABuildThatIsAskedToStopGivesNothing) {
    platform::Progress progress;
    progress.requestStop();
    const platform::ProgressScope scope(&progress);
    EXPECT_EQ(Spectrogram::build(std::vector<float>(5000), kRate), nullptr);
}

} // namespace
} // namespace zemo::overview
