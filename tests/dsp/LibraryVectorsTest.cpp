#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>

#include "Sounds.h"
#include "dsp/Filters.h"
#include "dsp/HilbertTransformer.h"
#include "dsp/Resampler.h"
#include "dsp/Spline.h"

/// Against SciPy: vectors/make_vectors.py made the numbers.
namespace zemo::test {
namespace {

using Vectors = std::map<std::string, Series>;
using AgainstSciPy = DspTest;

Vectors readVectors(const std::string& name) {
    std::ifstream file(ZEMO_DSP_VECTORS "/" + name);
    Vectors vectors;
    std::string title;
    std::size_t count = 0;
    while (file >> title >> count) {
        Series numbers(count);
        for (double& number : numbers) {
            file >> number;
        }
        EXPECT_TRUE(file) << title;
        vectors[title] = numbers;
    }
    EXPECT_FALSE(vectors.empty()) << name;
    return vectors;
}

Sound narrow(const Series& series) {
    Sound sound;
    for (const double x : series) {
        sound.push_back(static_cast<float>(x));
    }
    return sound;
}

Series splineOf(const Vectors& vectors, const std::string& title) {
    const Series& x = vectors.at(title + ".x");
    const Series& points = vectors.at(title + ".points");
    Series values(points.size());
    ispline_gen(x.data(), vectors.at(title + ".y").data(), static_cast<std::int32_t>(x.size()),
                points.data(), values.data(), static_cast<std::int32_t>(points.size()));
    return values;
}

double worstDifference(const Series& a, const Series& b) {
    EXPECT_EQ(a.size(), b.size());
    double worst = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        worst = std::max(worst, std::fabs(a[i] - b[i]));
    }
    return worst;
}

TEST_F(AgainstSciPy, TheResamplerIsTheNotAKnotSplineToOneRounding) {
    const Vectors vectors = readVectors("spline.txt");
    for (const char* title : {"even0", "even1", "even2", "even3", "even4"}) {
        const Series& parameters = vectors.at(std::string(title) + ".parameters");
        const Series& values = vectors.at(std::string(title) + ".values");
        const Sound y = narrow(vectors.at(std::string(title) + ".y"));
        const auto ratio = static_cast<float>(parameters[0]);
        const std::int32_t length =
            dsp::resampledLength(static_cast<std::int64_t>(y.size()), ratio, parameters[1]);
        ASSERT_EQ(static_cast<std::size_t>(length), values.size());
        Sound result(values.size());
        dsp::resample(y, result, ratio, parameters[1]);
        for (std::size_t j = 0; j < values.size(); ++j) {
            const auto value = static_cast<float>(values[j]);
            EXPECT_LE(std::fabs(result[j] - value),
                      std::nextafter(std::fabs(value), kInfinity) - std::fabs(value) + 1e-15F)
                << title << " " << j;
        }
    }
}

TEST_F(AgainstSciPy, TheSplineIsTheNotAKnotOneWhereItsFirstTwoIntervalsAreEqual) {
    const Vectors vectors = readVectors("spline.txt");
    EXPECT_LT(worstDifference(splineOf(vectors, "uneven"), vectors.at("uneven.values")), 1e-13);
}

TEST_F(AgainstSciPy, TheSplineDepartsFromItAtTheStartWhereTheyDiffer) {
    const Vectors vectors = readVectors("spline.txt");
    const Series values = splineOf(vectors, "departing");
    EXPECT_GT(std::fabs(values[0] - vectors.at("departing.values")[0]), 1e-4);
    EXPECT_NEAR(values.back(), vectors.at("departing.values").back(), 1e-12);
}

TEST_F(AgainstSciPy, TheHighPassesAreTheDirectFormFiltersOfTheirCoefficients) {
    const Vectors vectors = readVectors("high_pass.txt");
    const Sound in = narrow(vectors.at("input"));
    for (const int set : {0, 1}) {
        forgetRuns();
        Sound out(in.size());
        two_pole_iir(in.data(), out.data(), static_cast<std::int64_t>(in.size()),
                     static_cast<std::uint8_t>(set));
        const Sound expected = narrow(vectors.at("set" + std::to_string(set)));
        const double worst = worstShare(out, expected);
        EXPECT_LT(worst, 5e-5) << set;
        RecordProperty("set" + std::to_string(set), std::to_string(worst * 1e6) + "e-6");
    }
}

TEST_F(AgainstSciPy, TheHilbertPairIsTheOneOfTheFourierTransform) {
    const Vectors vectors = readVectors("hilbert.txt");
    const Series& input = vectors.at("input");
    const Series& transform = vectors.at("transform");
    double peak = 0.0;
    for (const double x : transform) {
        peak = std::max(peak, std::fabs(x));
    }
    for (const double rate : {44100.0, 48000.0}) {
        forgetRuns();
        R = rate;
        double worst = 0.0;
        for (std::size_t i = 0; i < 3 * input.size(); ++i) {
            const double y = hilbertTransform(input[i % input.size()]);
            if (i >= input.size()) {
                worst = std::max(worst, std::fabs(y - transform[(i - 256) % input.size()]) / peak);
            }
        }
        EXPECT_LT(worst, 2e-3) << rate;
        RecordProperty("at_" + std::to_string(static_cast<int>(rate)), std::to_string(worst));
    }
}

} // namespace
} // namespace zemo::test
