#include "dsp/Spline.h"

#include <cstdlib>
#include <vector>

#include "platform/Services.h"
#include "platform/TraceLog.h"

namespace zemo {
namespace {

[[noreturn]] void end(const char* message) {
    platform::services().trace->printError(message);
    std::exit(1); // NOLINT(concurrency-mt-unsafe): the end is deliberate
}

/// Two neighbouring intervals: their lengths and the slopes of their chords.
struct Intervals {
    double hLeft;
    double hRight;
    double sLeft;
    double sRight;

    Intervals(const double* x, const double* y, std::int32_t knot)
        : hLeft(x[knot] - x[knot - 1]),
          hRight(x[knot + 1] - x[knot]),
          sLeft((y[knot] - y[knot - 1]) / hLeft),
          sRight((y[knot + 1] - y[knot]) / hRight) {}
};

/// The cubic of one interval, about its left end.
struct Cubic {
    double x0 = 0.0;
    double c0 = 0.0;
    double c1 = 0.0;
    double c2 = 0.0;
    double c3 = 0.0;

    Cubic(const double* x, const double* y, const double* d, std::int32_t k) : x0(x[k]) {
        const double w = 1.0 / (x[k + 1] - x[k]);
        const double s = (y[k + 1] - y[k]) * w;
        c0 = y[k];
        c1 = d[k];
        c2 = w * (3.0 * s - 2.0 * d[k] - d[k + 1]);
        c3 = w * w * (-2.0 * s + d[k] + d[k + 1]);
    }
    Cubic() = default;

    double at(double t) const {
        const double u = t - x0;
        return ((c3 * u + c2) * u + c1) * u + c0;
    }
};

/// The interval in which t lies, from `k` on forward; a knot belongs to the one that it begins, the
/// last knot to the last interval.
std::int32_t intervalOf(const double* x, std::int32_t n, double t, std::int32_t k) {
    while (k < n && t > x[k]) {
        ++k;
    }
    if (k == n || x[k] > t) {
        --k;
    }
    return k == n - 1 ? n - 2 : k;
}

} // namespace

void tridiag_gen(const double* a, const double* b, const double* c, double* r, std::int32_t n) {
    std::vector<double> g(static_cast<std::size_t>(n));
    double beta = b[0];
    r[0] = r[0] / beta;
    for (std::int32_t j = 1; j < n; ++j) {
        g[static_cast<std::size_t>(j)] = c[j - 1] / beta;
        beta = b[j] - a[j] * g[static_cast<std::size_t>(j)];
        if (beta == 0.0) {
            end("getYD-gen: divide-by-zero");
        }
        r[j] = (r[j] - a[j] * r[j - 1]) / beta;
    }
    for (std::int32_t j = n - 2; j >= 0; --j) {
        r[j] = r[j] - g[static_cast<std::size_t>(j) + 1] * r[j + 1];
    }
}

void getYD_gen(const double* x, const double* y, double* d, std::int32_t n) {
    const auto size = static_cast<std::size_t>(n);
    std::vector<double> a(size);
    std::vector<double> b(size);
    std::vector<double> c(size);
    {
        const Intervals at(x, y, 1);
        const double h0 = at.hLeft;
        const double h1 = at.hRight;
        b[0] = h1 * (h0 + h1);
        c[0] = (h0 + h1) * (h0 + h1);
        d[0] = at.sLeft * (3.0 * h0 * h1 + 2.0 * h0 * h1) + at.sRight * (h0 * h0);
    }
    for (std::int32_t i = 1; i <= n - 2; ++i) {
        const Intervals at(x, y, i);
        const auto row = static_cast<std::size_t>(i);
        a[row] = at.hRight;
        b[row] = 2.0 * (at.hLeft + at.hRight);
        c[row] = at.hLeft;
        d[i] = 3.0 * (at.sLeft * at.hRight + at.sRight * at.hLeft);
    }
    const Intervals at(x, y, n - 2);
    const double h0 = at.hLeft;
    const double h1 = at.hRight;
    a[size - 1] = (h0 + h1) * (h0 + h1);
    b[size - 1] = h0 * (h0 + h1);
    d[n - 1] = at.sLeft * (h1 * h1) + at.sRight * (3.0 * h0 * h1 + 2.0 * (h0 * h0));
    tridiag_gen(a.data(), b.data(), c.data(), d, n);
}

void ispline_gen(const double* x, const double* y, std::int32_t n, const double* xi, double* yi,
                 std::int32_t m) {
    std::vector<double> d(static_cast<std::size_t>(n));
    getYD_gen(x, y, d.data(), n);
    if (x[0] > xi[0] || xi[m - 1] > x[n - 1]) {
        end("ispline_gen: Out of range\n");
    }
    std::int32_t k = 0;
    double rightEnd = 0.0;
    Cubic cubic;
    for (std::int32_t j = 0; j < m; ++j) {
        if (j == 0 || xi[j] > rightEnd) { // the first point always chooses an interval
            k = intervalOf(x, n, xi[j], k);
            cubic = Cubic(x, y, d.data(), k);
            rightEnd = x[k + 1];
        }
        yi[j] = cubic.at(xi[j]);
    }
}

} // namespace zemo
