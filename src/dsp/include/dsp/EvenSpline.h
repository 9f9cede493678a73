#pragma once

#include <cstdint>

/// The cubic spline through the samples of an even grid, and its values on another one, group of
/// rows by group of rows, in the vectors of the processor at hand.
///
/// The elimination's recurrences forget where they began: from any start both the pivots and the
/// right sides fall onto the very bits of the run over the whole sound, within some 50 rows, and so
/// does the back substitution from the right. So each block of rows begins a run-up early, and its
/// state at its own first row is compared with what its neighbour left there. Where all are equal
/// every row is exact, one after the other from the first on (and from the last on, for the
/// slopes).
namespace zemo::dsp {

/// Both grids and the sound. The knot i lies at i / rate, the point j at j / (rate * ratio).
struct EvenGrids {
    const float* samples = nullptr;
    std::int64_t knots = 0; ///< samples, at least 4
    float* output = nullptr;
    std::int64_t points = 0; ///< none beyond the last knot
    double rate = 0.0;
    float ratio = 0.0F;

    double knot(std::int64_t i) const noexcept { return static_cast<double>(i) / rate; }
    double point(std::int64_t j) const noexcept {
        return static_cast<double>(j) / (rate * static_cast<double>(ratio));
    }
};

/// [any] The interval that the point j takes its cubic from: that of the last knot that is not
/// beyond it, or the last interval. But an interval that an earlier point has chosen serves up to
/// and on its right end.
std::int64_t intervalOfPoint(const EvenGrids& grids, std::int64_t j);

/// [any] The first point whose interval is `knot` or later; grids.points when there is none.
std::int64_t firstPointFrom(const EvenGrids& grids, std::int64_t knot);

enum class SplineOutcome : std::uint8_t {
    Exact,         ///< every point is the same bits as in the plain form
    BordersDiffer, ///< the run-up was too short somewhere
    NotFinite,     ///< a sample is infinite or NaN: then the plain form gives NaN everywhere
    ZeroPivot,     ///< the elimination met a pivot of 0
    Stopped,       ///< asked to leave off
};

/// The usual run-up, in rows.
inline constexpr std::int64_t kSplineRunUp = 64;

/// [main], [worker] Writes all points, on all workers. `runUp` is at least 2; one as long as the
/// sound makes the result exact in any case. Needs 220 KiB a worker at the usual run-up, and 64
/// bytes for each 8192 samples; std::bad_alloc when they are not to be had.
SplineOutcome splineOnEvenGrids(const EvenGrids& grids, std::int64_t runUp = kSplineRunUp);

} // namespace zemo::dsp
