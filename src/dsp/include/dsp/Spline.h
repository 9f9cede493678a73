#pragma once

#include <cstdint>

/// An interpolating cubic spline through (x, y), each interval the cubic Hermite polynomial of its
/// two values and two slopes (C. de Boor, A Practical Guide to Splines, ch. IV). All in double.
/// Arrays are the caller's. All [any], but for the fatal ends.
namespace zemo {

/// Solves a[j] u[j-1] + b[j] u[j] + c[j] u[j+1] = r[j], j = 0..n-1, into r (a[0] and c[n-1] are not
/// read), by elimination without pivoting. Ends the process with status 1 on a pivot of 0 (that of
/// the first row is not looked at).
void tridiag_gen(const double* a, const double* b, const double* c, double* r, std::int32_t n);

/// The slopes at the n knots (at least 3, strictly increasing) into d, with an end condition of the
/// not-a-knot kind. The first row has 2 h0 h1 where the textbook form has 2 h1^2: the same on an
/// even grid, and intended.
void getYD_gen(const double* x, const double* y, double* d, std::int32_t n);

/// The spline at the m points xi (not decreasing) into yi. Ends the process with status 1 when the
/// first or the last of them is outside the knots.
void ispline_gen(const double* x, const double* y, std::int32_t n, const double* xi, double* yi,
                 std::int32_t m);

} // namespace zemo
