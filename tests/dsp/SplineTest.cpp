#include "dsp/Spline.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

#include "PlainForms.h"

namespace zemo::test {
namespace {

/// Sends what the ending process says to where the test can read it.
class StandardError final : public platform::TraceLog {
public:
    void print(std::string_view /*text*/) override {}
    void printError(std::string_view text) override {
        std::fwrite(text.data(), 1, text.size(), stderr);
    }
    void log(std::string_view /*text*/) override {}
};

class SplineEnd : public DspTest {
protected:
    SplineEnd() { platform::services().trace = &standardError_; }
    StandardError standardError_;
};

using Spline = DspTest;

Series randomKnots(std::size_t n, std::uint32_t seed) {
    std::mt19937 bits(seed);
    Series x;
    double t = -3.0;
    for (std::size_t i = 0; i < n; ++i) {
        x.push_back(t);
        t += 0.1 + static_cast<double>(bits() >> 8U) / 16777216.0;
    }
    return x;
}

Series evenKnots(std::size_t n, double distance) {
    Series x;
    for (std::size_t i = 0; i < n; ++i) {
        x.push_back(static_cast<double>(i) * distance);
    }
    return x;
}

Series wideNoise(std::size_t n, std::uint32_t seed) {
    const Sound sound = noise(n, seed);
    return {sound.begin(), sound.end()};
}

Series pointsBetween(double first, double last, std::size_t m) {
    Series points;
    for (std::size_t j = 0; j < m; ++j) {
        const double share = static_cast<double>(j) / static_cast<double>(m - 1);
        points.push_back(std::min(first + share * (last - first), last));
    }
    return points;
}

Series valuesAt(const Series& x, const Series& y, const Series& points) {
    Series values(points.size());
    ispline_gen(x.data(), y.data(), static_cast<std::int32_t>(x.size()), points.data(),
                values.data(), static_cast<std::int32_t>(points.size()));
    return values;
}

Series slopesOf(const Series& x, const Series& y) {
    Series d(x.size());
    getYD_gen(x.data(), y.data(), d.data(), static_cast<std::int32_t>(x.size()));
    return d;
}

double cubic(double t) {
    return 2.0 * t * t * t - 3.0 * t * t + 0.5 * t - 1.0;
}

double cubicSlope(double t) {
    return 6.0 * t * t - 6.0 * t + 0.5;
}

Series applied(const Series& x, double (*function)(double)) {
    Series y;
    for (const double t : x) {
        y.push_back(function(t));
    }
    return y;
}

double worstDifference(const Series& a, const Series& b) {
    EXPECT_EQ(a.size(), b.size());
    double worst = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        worst = std::max(worst, std::fabs(a[i] - b[i]));
    }
    return worst;
}

TEST(Tridiagonal, TheSolutionSatisfiesEveryRow) {
    constexpr std::size_t n = 200;
    Series a = wideNoise(n, 1);
    Series b = wideNoise(n, 2);
    Series c = wideNoise(n, 3);
    const Series right = wideNoise(n, 4);
    for (double& x : b) {
        x += x < 0.0 ? -3.0 : 3.0;
    }
    Series u = right;
    tridiag_gen(a.data(), b.data(), c.data(), u.data(), n);
    for (std::size_t j = 0; j < n; ++j) {
        const double before = j > 0 ? a[j] * u[j - 1] : 0.0;
        const double after = j + 1 < n ? c[j] * u[j + 1] : 0.0;
        EXPECT_NEAR(before + b[j] * u[j] + after, right[j], 1e-14) << j;
    }
}

TEST(Tridiagonal, TheCornersOutsideTheMatrixAreNotRead) {
    Series a{std::nan(""), 1.0};
    const Series b{2.0, 3.0};
    const Series c{1.0, std::nan("")};
    Series r{4.0, 7.0};
    tridiag_gen(a.data(), b.data(), c.data(), r.data(), 2);
    EXPECT_DOUBLE_EQ(r[0], 1.0);
    EXPECT_DOUBLE_EQ(r[1], 2.0);
}

TEST(Tridiagonal, TheFirstPivotIsNotLookedAt) {
    const Series a{0.0, 1.0};
    const Series b{0.0, 1.0};
    const Series c{1.0, 0.0};
    Series r{1.0, 1.0};
    tridiag_gen(a.data(), b.data(), c.data(), r.data(), 2);
    EXPECT_FALSE(std::isfinite(r[0]));
}

TEST(Tridiagonal, OneRowIsADivision) {
    const double b = 4.0;
    double r = 10.0;
    tridiag_gen(nullptr, &b, nullptr, &r, 1);
    EXPECT_EQ(r, 2.5);
}

TEST_F(SplineEnd, APivotOfZeroEndsTheProgramWithStatusOne) {
    // b[1] - a[1] c[0] / b[0] = 3 - 2 * 6 / 4.
    const Series a{0.0, 2.0};
    const Series b{4.0, 3.0};
    const Series c{6.0, 0.0};
    Series r{1.0, 1.0};
    EXPECT_EXIT(tridiag_gen(a.data(), b.data(), c.data(), r.data(), 2), testing::ExitedWithCode(1),
                testing::Eq("getYD-gen: divide-by-zero"));
}

TEST_F(SplineEnd, ThreeKnotsAreSingular) {
    // Both end rows say the same of the one inner knot.
    for (const Series& x : {Series{0.0, 1.0, 2.0}, Series{0.0, 1.0, 3.0}}) {
        EXPECT_EXIT(slopesOf(x, {1.0, 5.0, 2.0}), testing::ExitedWithCode(1),
                    testing::Eq("getYD-gen: divide-by-zero"));
    }
}

TEST_F(SplineEnd, APointBelowTheFirstKnotEndsTheProgramWithStatusOne) {
    const Series x = evenKnots(5, 1.0);
    EXPECT_EXIT(valuesAt(x, x, {-1e-9, 1.0}), testing::ExitedWithCode(1),
                testing::Eq("ispline_gen: Out of range\n"));
}

TEST_F(SplineEnd, APointAboveTheLastKnotEndsTheProgramWithStatusOne) {
    const Series x = evenKnots(5, 1.0);
    EXPECT_EXIT(valuesAt(x, x, {1.0, std::nextafter(4.0, 5.0)}), testing::ExitedWithCode(1),
                testing::Eq("ispline_gen: Out of range\n"));
}

TEST_F(Spline, PassesThroughEveryKnot) {
    const Series x = randomKnots(50, 5);
    const Series y = wideNoise(50, 6);
    EXPECT_LT(worstDifference(valuesAt(x, y, x), y), 1e-15);
}

TEST_F(Spline, APointOnTheLastKnotTakesTheLastInterval) {
    const Series x = randomKnots(20, 7);
    const Series y = wideNoise(20, 8);
    EXPECT_NEAR(valuesAt(x, y, {x.back()})[0], y.back(), 1e-14);
    EXPECT_NEAR(valuesAt(x, y, {x.front(), x.back(), x.back()})[2], y.back(), 1e-14);
}

TEST_F(Spline, ASinglePointOnAKnotGivesItsOrdinateExactly) {
    const Series x = randomKnots(20, 9);
    const Series y = wideNoise(20, 10);
    for (std::size_t i = 0; i + 1 < x.size(); ++i) {
        EXPECT_EQ(valuesAt(x, y, {x[i]})[0], y[i]);
    }
}

TEST_F(Spline, TheFirstPointChoosesAnIntervalHoweverFarFromZero) {
    // So far out that t - 1 is t.
    const double far = 1e17;
    const Series x{far, far + 1024, far + 2048, far + 3072, far + 4096};
    const Series y{5.0, 6.0, 7.0, 8.0, 9.0};
    EXPECT_EQ(valuesAt(x, y, {x[0]})[0], 5.0);
    EXPECT_NEAR(valuesAt(x, y, {x[2] + 512})[0], 7.5, 1e-12);
}

TEST_F(Spline, IsExactOnACubicAwayFromTheEndsOnUnevenKnots) {
    const Series x = randomKnots(80, 11);
    const Series points = pointsBetween(x[35], x[45], 500);
    const double scale = std::fabs(cubic(x[45]));
    EXPECT_LT(worstDifference(valuesAt(x, applied(x, cubic), points), applied(points, cubic)),
              1e-13 * scale);
}

TEST_F(Spline, IsExactOnACubicUpToTheEndsOnEvenKnots) {
    const Series x = evenKnots(40, 0.25);
    const Series points = pointsBetween(x.front(), x.back(), 1000);
    const double scale = std::fabs(cubic(x.back()));
    EXPECT_LT(worstDifference(valuesAt(x, applied(x, cubic), points), applied(points, cubic)),
              1e-13 * scale);
}

TEST_F(Spline, TheLastRowIsExactOnACubicOnUnevenKnots) {
    // Only the first row departs from the textbook; its error dies out on the way.
    const Series x = randomKnots(80, 12);
    EXPECT_NEAR(slopesOf(x, applied(x, cubic)).back() / cubicSlope(x.back()), 1.0, 1e-12);
}

TEST_F(Spline, TheFirstRowHasTwiceTheProductWhereTheTextbookHasASquare) {
    const Series x = randomKnots(12, 13);
    const Series y = wideNoise(12, 14);
    const Series d = slopesOf(x, y);
    const double h0 = x[1] - x[0];
    const double h1 = x[2] - x[1];
    const double s0 = (y[1] - y[0]) / h0;
    const double s1 = (y[2] - y[1]) / h1;
    const double left = h1 * (h0 + h1) * d[0] + (h0 + h1) * (h0 + h1) * d[1];
    EXPECT_NEAR(left, s0 * (3.0 * h0 * h1 + 2.0 * h0 * h1) + s1 * h0 * h0, 1e-13);
    EXPECT_GT(std::fabs(left - (s0 * (3.0 * h0 * h1 + 2.0 * h1 * h1) + s1 * h0 * h0)), 1e-3);
}

TEST_F(Spline, ItsSecondDerivativeIsContinuousAtEveryInnerKnot) {
    const Series x = randomKnots(60, 15);
    const Series y = wideNoise(60, 16);
    const Series d = slopesOf(x, y);
    for (std::size_t i = 1; i + 1 < x.size(); ++i) {
        const double h0 = x[i] - x[i - 1];
        const double h1 = x[i + 1] - x[i];
        const double s0 = (y[i] - y[i - 1]) / h0;
        const double s1 = (y[i + 1] - y[i]) / h1;
        const double fromTheLeft = (2.0 * d[i - 1] + 4.0 * d[i] - 6.0 * s0) / h0;
        const double fromTheRight = (6.0 * s1 - 4.0 * d[i] - 2.0 * d[i + 1]) / h1;
        EXPECT_NEAR(fromTheLeft, fromTheRight, 1e-11 * (std::fabs(fromTheLeft) + 1.0)) << i;
    }
}

TEST_F(Spline, IsLinearInItsOrdinates) {
    const Series x = randomKnots(100, 17);
    const Series a = wideNoise(100, 18);
    const Series b = wideNoise(100, 19);
    Series both;
    for (std::size_t i = 0; i < 100; ++i) {
        both.push_back(3.0 * a[i] - 0.5 * b[i]);
    }
    const Series points = pointsBetween(x.front(), x.back(), 777);
    const Series fromA = valuesAt(x, a, points);
    const Series fromB = valuesAt(x, b, points);
    const Series fromBoth = valuesAt(x, both, points);
    for (std::size_t j = 0; j < points.size(); ++j) {
        EXPECT_NEAR(fromBoth[j], 3.0 * fromA[j] - 0.5 * fromB[j], 1e-13);
    }
}

TEST_F(Spline, DoesNotMindWhereItsAbscissaeBegin) {
    const Series x = evenKnots(30, 0.5);
    Series shifted;
    for (const double t : x) {
        shifted.push_back(t + 1024.0);
    }
    const Series y = wideNoise(30, 20);
    EXPECT_TRUE(sameBits(slopesOf(shifted, y), slopesOf(x, y)));
}

TEST_F(Spline, AgreesWithThePlainFormToTheBit) {
    for (const std::size_t n : {4UL, 5UL, 6UL, 30UL, 500UL}) {
        for (const bool even : {false, true}) {
            const Series x = even ? evenKnots(n, 1.0 / 44100.0) : randomKnots(n, 21);
            const Series y = wideNoise(n, 22);
            EXPECT_TRUE(sameBits(slopesOf(x, y), plain::slopes(x, y)));
            for (const std::size_t m : {2UL, 3UL, 17UL, 1000UL, 4000UL}) {
                const Series points = pointsBetween(x.front(), x.back(), m);
                EXPECT_TRUE(sameBits(valuesAt(x, y, points), plain::spline(x, y, points)))
                    << n << " " << even << " " << m;
            }
            EXPECT_TRUE(sameBits(valuesAt(x, y, x), plain::spline(x, y, x)));
        }
    }
}

} // namespace
} // namespace zemo::test
