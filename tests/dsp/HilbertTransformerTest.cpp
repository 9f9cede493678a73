#include "dsp/HilbertTransformer.h"

#include <bit>
#include <cmath>
#include <cstdlib>
#include <string>

#include "PlainForms.h"

namespace zemo::test {
namespace {

using HilbertTransformer = DspTest;

std::string tenDecimals(double x) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.10f", x);
    return text.data();
}

/// One after the other through the function that keeps the program's one delay line.
Series transformed(const Series& input) {
    Series output;
    for (const double x : input) {
        output.push_back(hilbertTransform(x));
    }
    return output;
}

Series impulse(std::size_t count) {
    Series series(count, 0.0);
    series[0] = 1.0;
    return series;
}

Series wide(const Sound& sound) {
    return {sound.begin(), sound.end()};
}

TEST(HilbertTable, HoldsItsPrintedValuesToTenDecimals) {
    EXPECT_EQ(tenDecimals(hilbert_xcoeffs[255]), "0.9999653629");
    EXPECT_EQ(tenDecimals(hilbert_xcoeffs[253]), "0.3332294323");
    EXPECT_EQ(tenDecimals(hilbert_xcoeffs[251]), "0.1998268664");
    EXPECT_EQ(tenDecimals(hilbert_xcoeffs[1]), "0.0003138613");
}

TEST(HilbertTable, EveryTapIsTheFormulaToTenDecimals) {
    for (int k = 1; k <= 255; k += 2) {
        EXPECT_EQ(hilbert_xcoeffs[static_cast<std::size_t>(256 - k)], plain::hilbertTap(k)) << k;
    }
}

TEST(HilbertTable, IsAntisymmetricAboutItsCentre) {
    for (std::size_t k = 1; k <= 256; ++k) {
        EXPECT_EQ(hilbert_xcoeffs[256 - k], -hilbert_xcoeffs[256 + k]) << k;
    }
}

TEST(HilbertTable, IsZeroAtEvenOffsetsAndNowhereElse) {
    int filled = 0;
    for (std::size_t j = 0; j < 513; ++j) {
        EXPECT_EQ(hilbert_xcoeffs[j] == 0.0, j % 2 == 0) << j;
        filled += hilbert_xcoeffs[j] != 0.0 ? 1 : 0;
    }
    EXPECT_EQ(filled, 256);
}

TEST(HilbertTable, SumsToZero) {
    double pairs = 0.0;
    for (std::size_t j = 0; j < 256; ++j) {
        pairs += hilbert_xcoeffs[j] + hilbert_xcoeffs[512 - j];
    }
    EXPECT_EQ(pairs, 0.0);
}

TEST(HilbertTable, EndsInZeros) {
    EXPECT_EQ(hilbert_xcoeffs[513], 0.0);
    for (const auto* table : {&hilbert_xcoeffs48, &hilbert_xcoeffs88, &hilbert_xcoeffs96}) {
        EXPECT_EQ((*table)[513], 0.0F);
        EXPECT_EQ((*table)[514], 0.0F);
        EXPECT_EQ((*table)[515], 0.0F);
    }
}

TEST(HilbertTable, TheFloatTablesHoldTheNearestFloatsOfTheSameNumbers) {
    for (std::size_t j = 0; j < 513; ++j) {
        // From the decimals straight to a float, with no double between them.
        const float nearest = std::strtof(tenDecimals(hilbert_xcoeffs[j]).c_str(), nullptr);
        EXPECT_EQ(hilbert_xcoeffs48[j], nearest) << j;
        EXPECT_EQ(hilbert_xcoeffs88[j], nearest) << j;
        EXPECT_EQ(hilbert_xcoeffs96[j], nearest) << j;
    }
}

TEST_F(HilbertTransformer, AnImpulseGivesTheTableFromItsEndToItsStart) {
    R = 44100.0;
    const Series response = transformed(impulse(513));
    for (std::size_t i = 0; i < 513; ++i) {
        EXPECT_EQ(response[i], hilbert_xcoeffs[512 - i] * (1.0 / HILBERT_GAIN)) << i;
    }
}

TEST_F(HilbertTransformer, TheNewestSampleStandsLastInItsLineDividedByTheGain) {
    R = 44100.0;
    transformed({1.0, 2.0, 3.0});
    EXPECT_EQ(hilbert_xv[512], 3.0 / 1.570483967);
    EXPECT_EQ(hilbert_xv[511], 2.0 / 1.570483967);
    EXPECT_EQ(hilbert_xv[510], 1.0 / 1.570483967);
    EXPECT_EQ(hilbert_xv[509], 0.0);
    EXPECT_EQ(hilbert_xv[513], 0.0);
}

TEST_F(HilbertTransformer, ACosineComesOutAsTheSineOf256SamplesBefore) {
    for (const double rate : {44100.0, 48000.0}) {
        R = rate;
        forgetRuns();
        const Series response = transformed(wide(tone(2000, 1000.0, rate)));
        for (std::size_t i = 512; i < response.size(); ++i) {
            const double angle = 2.0 * kPi * 1000.0 * (static_cast<double>(i) - 256.0) / rate;
            ASSERT_NEAR(response[i], std::sin(angle), 1e-3) << rate << " " << i;
        }
    }
}

TEST_F(HilbertTransformer, At88200ItIsTwiceTheTransform) {
    const Series input = wide(noise(1500, 4));
    R = 48000.0; // the same float table, once
    const Series once = transformed(input);
    forgetRuns();
    R = 88200.0;
    const Series twice = transformed(input);
    for (std::size_t i = 0; i < input.size(); ++i) {
        EXPECT_NEAR(twice[i], 2.0 * once[i], 1e-14);
    }
}

TEST_F(HilbertTransformer, At96000AndEveryOtherRateItIsSilent) {
    for (const double rate : {96000.0, 22050.0, 44099.999, 48001.0, 0.0}) {
        R = rate;
        for (const double y : transformed(wide(noise(600, 5)))) {
            ASSERT_EQ(y, 0.0) << rate;
        }
    }
}

TEST_F(HilbertTransformer, ItsLineIsFilledAtASilentRateToo) {
    R = 96000.0;
    transformed({1.0});
    EXPECT_EQ(hilbert_xv[512], 1.0 / HILBERT_GAIN);
}

TEST_F(HilbertTransformer, AgreesWithAShiftRegisterToTheBit) {
    for (const double rate : {44100.0, 48000.0, 88200.0, 96000.0, 22050.0}) {
        forgetRuns();
        R = rate;
        plain::Hilbert reference;
        for (const double x : wide(noise(2000, 6, 3.0F))) {
            ASSERT_EQ(hilbertTransform(x), reference(x, rate)) << rate;
        }
    }
}

/// The transfer function of the 44.1 kHz table, freed from the delay of 256 samples.
std::complex<double> transfer(double frequency) {
    std::complex<double> sum = 0.0;
    for (int j = 0; j < 513; ++j) {
        // Tap j meets the sample that is 512 - j steps old, 256 - j beside the delayed one.
        sum += hilbert_xcoeffs[static_cast<std::size_t>(j)] / HILBERT_GAIN *
               std::polar(1.0, -2.0 * kPi * frequency * static_cast<double>(256 - j));
    }
    return sum;
}

TEST_F(HilbertTransformer, TurnsEveryFrequencyByAQuarterOfATurnAndNothingElse) {
    for (double f = 0.005; f <= 0.495; f += 0.0003) {
        const std::complex<double> h = transfer(f);
        EXPECT_NEAR(h.real(), 0.0, 1e-12) << f;
        EXPECT_NEAR(h.imag(), -1.0, 3e-3) << f;
    }
}

TEST_F(HilbertTransformer, PassesNoConstantAndNoAlternation) {
    EXPECT_NEAR(std::abs(transfer(0.0)), 0.0, 1e-12);
    EXPECT_NEAR(std::abs(transfer(0.5)), 0.0, 1e-12);
}

} // namespace
} // namespace zemo::test
