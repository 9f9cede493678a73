#include "dsp/kernels/EvenSpline.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <span>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/kernels/EvenSpline.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h.
#include <hwy/highway.h>

#include "dsp/kernels/Rounding-inl.h"

#ifndef ZEMO_DSP_SPLINE_KERNEL
#define ZEMO_DSP_SPLINE_KERNEL
namespace zemo::dsp {

/// The group as the vector code sees it.
struct SplineKernel {
    SplineGroup& group;

    const EvenGrids& grids() const { return group.grids_; }
    std::int64_t runUp() const { return group.runUp_; }
    double* slopes() const { return group.slopes_; }
    double* factors() const { return group.factors_; }
    double* forward() const { return group.forward_; }
    std::int64_t first() const { return group.first_; }
    std::int64_t end() const { return group.end_; }
};

/// What the blocks of a group take for granted and leave, in their order.
struct BlockBorders {
    std::array<GroupBorders::State, SplineGroup::kBlocks> before;
    std::array<GroupBorders::State, SplineGroup::kBlocks> last;
    std::array<double, SplineGroup::kBlocks> slopeBehind;
    bool hasZeroPivot = false;
};

} // namespace zemo::dsp
#endif

HWY_BEFORE_NAMESPACE();
namespace zemo::dsp::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::CappedTag<double, SplineGroup::kBlocks>;
using Floats = hn::Rebind<float, Doubles>;
using Indices = hn::Rebind<std::int32_t, Doubles>;
using WideIndices = hn::Rebind<std::int64_t, Doubles>;
using DoubleVec = hn::Vec<Doubles>;

/// Divides whole numbers by one and the same number, correctly rounded. Where the processor has a
/// fused multiply-add this takes five of them and no division: from a quotient within two units in
/// the last place to one within one, and from that to the right one (P. Markstein, Computation of
/// elementary functions on the IBM RISC System/6000 processor, 1990).
class Divisor {
public:
    HWY_INLINE explicit Divisor(double value)
        : value_(hn::Set(Doubles(), value)),
          inverse_(hn::Set(Doubles(), 1.0 / value)),
          isPlain_(HWY_NATIVE_FMA == 0 || !isUsual(value)) {}

    HWY_INLINE DoubleVec under(DoubleVec number) const {
        if (isPlain_) {
            return hn::Div(number, value_);
        }
        auto quotient = hn::Mul(number, inverse_);
        for (int i = 0; i < 2; ++i) {
            const auto rest = hn::NegMulAdd(quotient, value_, number);
            quotient = hn::MulAdd(rest, inverse_, quotient);
        }
        return quotient;
    }

private:
    /// The theorem is not for a significand of ones only, nor for numbers at the ends of the range.
    static bool isUsual(double value) {
        constexpr std::uint64_t kSignificand = (std::uint64_t{1} << 52U) - 1;
        const bool isOnes = (std::bit_cast<std::uint64_t>(value) & kSignificand) == kSignificand;
        return value > 0x1p-200 && value < 0x1p200 && !isOnes;
    }

    DoubleVec value_;
    DoubleVec inverse_;
    bool isPlain_;
};

/// The rows of some blocks, one in each lane, one row after the other.
class RowWalk {
public:
    /// Before the row `row` of the sound in the first lane.
    HWY_INLINE RowWalk(const EvenGrids& grids, std::int64_t row)
        : next_(grids.samples + row),
          number_(hn::Mul(hn::Iota(Doubles(), 0.0),
                          hn::Set(Doubles(), static_cast<double>(SplineGroup::kBlockRows)))),
          lanes_(hn::Mul(hn::Iota(Indices(), 0),
                         hn::Set(Indices(), static_cast<std::int32_t>(SplineGroup::kBlockRows)))),
          rate_(grids.rate) {
        const Doubles d;
        // The knots row - 2, row - 1 and row.
        number_ = hn::Add(number_, hn::Set(d, static_cast<double>(row)));
        const auto knotBefore = rate_.under(hn::Sub(number_, hn::Set(d, 1.0)));
        const auto twoBefore = rate_.under(hn::Sub(number_, hn::Set(d, 2.0)));
        knot_ = rate_.under(number_);
        length_ = hn::Sub(knot_, knotBefore);
        lengthBefore_ = hn::Sub(knotBefore, twoBefore);
        const auto sampleBefore = load(next_ - 1);
        sample_ = load(next_);
        slope_ = hn::Div(hn::Sub(sample_, sampleBefore), length_);
    }

    /// Takes the next row: the coefficients of a[j] u[j-1] + b[j] u[j] + c[j] u[j+1] = right, and
    /// c[j-1].
    HWY_INLINE void step() {
        const Doubles d;
        const auto one = hn::Set(d, 1.0);
        number_ = hn::Add(number_, one);
        const auto knot = rate_.under(number_);
        const auto length = hn::Sub(knot, knot_);
        ++next_;
        const auto sample = load(next_);
        const auto slope = hn::Div(hn::Sub(sample, sample_), length);
        below = length;
        on = hn::Mul(hn::Set(d, 2.0), hn::Add(length_, length));
        aboveBefore = lengthBefore_;
        right = hn::Mul(hn::Set(d, 3.0), hn::Add(hn::Mul(slope_, length), hn::Mul(slope, length_)));
        knot_ = knot;
        lengthBefore_ = length_;
        length_ = length;
        sample_ = sample;
        slope_ = slope;
    }

    DoubleVec below;
    DoubleVec on;
    DoubleVec aboveBefore;
    DoubleVec right;

private:
    HWY_INLINE DoubleVec load(const float* first) const {
        return hn::PromoteTo(Doubles(), hn::GatherIndex(Floats(), first, lanes_));
    }

    const float* next_; ///< the sample of knot_, in the first lane
    DoubleVec number_;  ///< of knot_
    hn::Vec<Indices> lanes_;
    Divisor rate_;
    DoubleVec knot_;
    DoubleVec length_;       ///< of the interval that ends at knot_
    DoubleVec lengthBefore_; ///< of the one before it
    DoubleVec sample_;
    DoubleVec slope_; ///< of the chord that ends at knot_
};

HWY_INLINE void storeStates(DoubleVec pivot, DoubleVec right, GroupBorders::State* states) {
    const Doubles d;
    HWY_ALIGN double pivots[hn::MaxLanes(Doubles())];
    HWY_ALIGN double rights[hn::MaxLanes(Doubles())];
    hn::Store(pivot, d, pivots);
    hn::Store(right, d, rights);
    for (std::size_t lane = 0; lane < hn::Lanes(d); ++lane) {
        states[lane] = {pivots[lane], rights[lane]};
    }
}

/// The elimination, from a run-up before the blocks' first row to one behind their last. The row
/// that it begins with is taken for the first of all.
void eliminate(const SplineKernel& kernel, std::int64_t block, BlockBorders& borders) {
    const Doubles d;
    const auto lanes = static_cast<std::int64_t>(hn::Lanes(d));
    const std::int64_t runUp = kernel.runUp();
    const std::int64_t rows = SplineGroup::kBlockRows + 2 * runUp;
    RowWalk row(kernel.grids(), kernel.first() + block * SplineGroup::kBlockRows - runUp);
    row.step();
    auto pivot = row.on;
    auto right = hn::Div(row.right, pivot);
    hn::Store(right, d, kernel.forward());
    auto zeros = hn::Zero(d);
    for (std::int64_t r = 1; r < rows; ++r) {
        row.step();
        const auto factor = hn::Div(row.aboveBefore, pivot);
        pivot = hn::Sub(row.on, hn::Mul(row.below, factor));
        right = hn::Div(hn::Sub(row.right, hn::Mul(row.below, right)), pivot);
        zeros = hn::Or(zeros, hn::VecFromMask(d, hn::Eq(pivot, hn::Zero(d))));
        hn::Store(factor, d, kernel.factors() + r * lanes);
        hn::Store(right, d, kernel.forward() + r * lanes);
        if (r == runUp - 1) {
            storeStates(pivot, right, borders.before.data() + block);
        }
        if (r == runUp + SplineGroup::kBlockRows - 1) {
            storeStates(pivot, right, borders.last.data() + block);
        }
    }
    // A pivot of 0 in a run-up is none of the whole run's; but then the borders differ, too.
    const auto isZero = hn::Ne(hn::BitCast(WideIndices(), zeros), hn::Zero(WideIndices()));
    borders.hasZeroPivot = borders.hasZeroPivot || !hn::AllFalse(WideIndices(), isZero);
}

/// The slopes of the blocks' own rows, in the rows' order, from a run-up behind the last one on.
void substituteBack(const SplineKernel& kernel, std::int64_t block, BlockBorders& borders) {
    constexpr std::int64_t kTogether = 8;
    const Doubles d;
    const auto lanes = static_cast<std::int64_t>(hn::Lanes(d));
    const std::int64_t runUp = kernel.runUp();
    const std::int64_t behind = runUp + SplineGroup::kBlockRows;
    auto slope = hn::Load(d, kernel.forward() + (behind + runUp - 1) * lanes);
    const auto step = [&](std::int64_t r) {
        const auto factor = hn::Load(d, kernel.factors() + (r + 1) * lanes);
        slope = hn::Sub(hn::Load(d, kernel.forward() + r * lanes), hn::Mul(factor, slope));
    };
    for (std::int64_t r = behind + runUp - 2; r >= behind; --r) {
        step(r);
    }
    HWY_ALIGN double tile[kTogether * hn::MaxLanes(Doubles())];
    hn::Store(slope, d, tile);
    std::copy_n(tile, lanes, borders.slopeBehind.data() + block);
    for (std::int64_t o = SplineGroup::kBlockRows - kTogether; o >= 0; o -= kTogether) {
        for (std::int64_t r = kTogether - 1; r >= 0; --r) {
            step(runUp + o + r);
            hn::Store(slope, d, tile + r * lanes);
        }
        for (std::int64_t lane = 0; lane < lanes; ++lane) {
            double* const part = kernel.slopes() + (block + lane) * SplineGroup::kBlockRows + o;
            for (std::int64_t r = 0; r < kTogether; ++r) {
                part[r] = tile[r * lanes + lane];
            }
        }
    }
}

void solveBlocks(const SplineKernel& kernel, BlockBorders& borders) {
    const auto lanes = static_cast<std::int64_t>(hn::Lanes(Doubles()));
    for (std::int64_t block = 0; block < SplineGroup::kBlocks; block += lanes) {
        eliminate(kernel, block, borders);
        substituteBack(kernel, block, borders);
    }
}

/// Points of the new grid and the knots around them.
struct Places {
    DoubleVec number; ///< of the knot to the left
    DoubleVec left;
    DoubleVec right;
};

HWY_INLINE Places placesAt(DoubleVec number, const Divisor& rate) {
    return {number, rate.under(number), rate.under(hn::Add(number, hn::Set(Doubles(), 1.0)))};
}

/// j, j + 1...
HWY_INLINE DoubleVec numbers(std::int64_t j) {
    return hn::Iota(Doubles(), static_cast<double>(j));
}

inline double pointRate(const EvenGrids& grids) {
    return grids.rate * static_cast<double>(grids.ratio);
}

/// As intervalOfPoint.
HWY_INLINE Places intervalsOf(const EvenGrids& grids, const Divisor& rate, std::int64_t j,
                              DoubleVec t) {
    const Doubles d;
    const auto one = hn::Set(d, 1.0);
    if (grids.ratio == 1.0F) {
        // All points end an interval: every second one stays in that of the one before.
        return placesAt(hn::Mul(hn::Floor(hn::Mul(numbers(j), hn::Set(d, 0.5))), hn::Set(d, 2.0)),
                        rate);
    }
    Places places = placesAt(hn::Floor(hn::Mul(t, hn::Set(d, grids.rate))), rate);
    for (;;) {
        const auto down = hn::IfThenElseZero(hn::Gt(places.left, t), one);
        const auto up = hn::IfThenElseZero(hn::Le(places.right, t), one);
        const auto number = hn::Add(hn::Sub(places.number, down), up);
        if (HWY_LIKELY(hn::AllTrue(d, hn::Eq(number, places.number)))) {
            break;
        }
        places = placesAt(number, rate);
    }
    const auto isBeyond = hn::Gt(places.number, hn::Set(d, static_cast<double>(grids.knots - 2)));
    // The first point ends nothing: there is no interval before it.
    const auto isOnKnot = hn::And(hn::Eq(t, places.left), hn::Gt(places.number, hn::Zero(d)));
    if (HWY_LIKELY(hn::AllFalse(d, hn::Or(isOnKnot, isBeyond)))) {
        return places;
    }
    // Where the point before is in the interval before, and not on a knot itself, it ends that.
    const auto before = hn::Div(hn::Sub(numbers(j), one), hn::Set(d, pointRate(grids)));
    const auto knotBefore = rate.under(hn::Sub(places.number, one));
    const auto isInARow = hn::And(isOnKnot, hn::Eq(before, knotBefore));
    if (HWY_LIKELY(hn::AllFalse(d, hn::Or(isInARow, isBeyond)))) {
        const auto ends = hn::And(isOnKnot, hn::Gt(before, knotBefore));
        return placesAt(hn::Sub(places.number, hn::IfThenElseZero(ends, one)), rate);
    }
    HWY_ALIGN double intervals[hn::MaxLanes(Doubles())];
    for (std::size_t lane = 0; lane < hn::Lanes(d); ++lane) {
        const std::int64_t point = j + static_cast<std::int64_t>(lane);
        intervals[lane] = static_cast<double>(intervalOfPoint(grids, point));
    }
    return placesAt(hn::Load(d, intervals), rate);
}

/// What a cubic passes through: the samples and the slopes at both ends of its interval.
struct Ends {
    DoubleVec y0;
    DoubleVec y1;
    DoubleVec d0;
    DoubleVec d1;
};

/// Of any intervals of the group.
HWY_INLINE Ends gatheredEnds(const float* samples, const double* slopes, DoubleVec number) {
    const Doubles d;
    const auto index = hn::DemoteTo(Indices(), number);
    const auto wideIndex = hn::PromoteTo(WideIndices(), index);
    return {hn::PromoteTo(d, hn::GatherIndex(Floats(), samples, index)),
            hn::PromoteTo(d, hn::GatherIndex(Floats(), samples + 1, index)),
            hn::GatherIndex(d, slopes, wideIndex), hn::GatherIndex(d, slopes + 1, wideIndex)};
}

/// Of intervals that are all among the first one's and the next 2 * lanes - 1.
HWY_INLINE Ends neighbouringEnds(const float* samples, const double* slopes, DoubleVec number) {
    const Doubles d;
    const std::size_t lanes = hn::Lanes(d);
    const auto far = static_cast<std::int64_t>(lanes);
    const auto first = static_cast<std::int64_t>(hn::GetLane(number));
    const auto offset = hn::Sub(number, hn::Set(d, static_cast<double>(first)));
    const auto isFar = hn::Ge(offset, hn::Set(d, static_cast<double>(lanes)));
    const auto within =
        hn::Sub(offset, hn::IfThenElseZero(isFar, hn::Set(d, static_cast<double>(lanes))));
    const auto indices =
        hn::IndicesFromVec(d, hn::PromoteTo(WideIndices(), hn::DemoteTo(Indices(), within)));
    const auto choose = [&](DoubleVec near, DoubleVec distant) HWY_ATTR {
        return hn::IfThenElse(isFar, hn::TableLookupLanes(distant, indices),
                              hn::TableLookupLanes(near, indices));
    };
    const auto sample = [&](std::int64_t i) HWY_ATTR {
        return choose(hn::PromoteTo(d, hn::LoadU(Floats(), samples + i)),
                      hn::PromoteTo(d, hn::LoadU(Floats(), samples + i + far)));
    };
    const auto slope = [&](std::int64_t i) HWY_ATTR {
        return choose(hn::LoadU(d, slopes + i), hn::LoadU(d, slopes + i + far));
    };
    return {sample(first), sample(first + 1), slope(first), slope(first + 1)};
}

/// Whole vectors of points from `from` on; returns the first that was left.
std::int64_t writePoints(const SplineKernel& kernel, std::int64_t from, std::int64_t end) {
    const Doubles d;
    const EvenGrids& grids = kernel.grids();
    const auto lanes = static_cast<std::int64_t>(hn::Lanes(d));
    const Divisor knotRate(grids.rate);
    const Divisor divisor(pointRate(grids));
    const auto first = hn::Set(d, static_cast<double>(kernel.first()));
    const auto two = hn::Set(d, 2.0);
    const float* const samples = grids.samples + kernel.first();
    // Neighbours are read beyond the last one, but not beyond the sound; and they are near each
    // other unless the points are far apart.
    const double most = static_cast<double>(lanes - 1) / static_cast<double>(grids.ratio) + 2.0;
    const bool isNarrow = most < static_cast<double>(2 * lanes);
    const double lastNarrow = isNarrow ? static_cast<double>(grids.knots - 2 * lanes) : 0.0;
    std::int64_t j = from;
    for (; j + lanes <= end; j += lanes) {
        const auto t = divisor.under(numbers(j));
        const Places places = intervalsOf(grids, knotRate, j, t);
        const auto number = hn::Sub(places.number, first);
        const auto [y0, y1, d0, d1] = hn::GetLane(places.number) < lastNarrow
                                          ? neighbouringEnds(samples, kernel.slopes(), number)
                                          : gatheredEnds(samples, kernel.slopes(), number);
        const auto w = hn::Div(hn::Set(d, 1.0), hn::Sub(places.right, places.left));
        const auto s = hn::Mul(hn::Sub(y1, y0), w);
        const auto c2 =
            hn::Mul(w, hn::Sub(hn::Sub(hn::Mul(hn::Set(d, 3.0), s), hn::Mul(two, d0)), d1));
        const auto c3 =
            hn::Mul(hn::Mul(w, w), hn::Add(hn::Add(hn::Mul(hn::Set(d, -2.0), s), d0), d1));
        const auto u = hn::Sub(t, places.left);
        const auto value =
            hn::Add(hn::Mul(hn::Add(hn::Mul(hn::Add(hn::Mul(c3, u), c2), u), d0), u), y0);
        hn::StoreU(roundToFloats(Floats(), value), Floats(), grids.output + j);
    }
    return j;
}

} // namespace zemo::dsp::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zemo::dsp {

HWY_EXPORT(solveBlocks);
HWY_EXPORT(writePoints);

namespace {

/// The last knot that is not beyond the point j.
std::int64_t lastKnotBefore(const EvenGrids& grids, std::int64_t j) {
    const double t = grids.point(j);
    auto k =
        std::clamp<std::int64_t>(static_cast<std::int64_t>(t * grids.rate), 0, grids.knots - 1);
    while (k > 0 && grids.knot(k) > t) {
        --k;
    }
    while (k + 1 < grids.knots && grids.knot(k + 1) <= t) {
        ++k;
    }
    return k;
}

/// Whether the point j lies on a knot, with the point before it in the interval before.
bool endsAnInterval(const EvenGrids& grids, std::int64_t j) {
    if (j == 0) {
        return false;
    }
    const std::int64_t k = lastKnotBefore(grids, j);
    return grids.knot(k) == grids.point(j) && lastKnotBefore(grids, j - 1) == k - 1;
}

bool isSame(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

bool isSame(const GroupBorders::State& a, const GroupBorders::State& b) {
    return isSame(a.pivot, b.pivot) && isSame(a.right, b.right);
}

bool areFinite(std::span<const float> samples) {
    std::uint32_t largest = 0;
    for (const float x : samples) {
        largest = std::max(largest, std::bit_cast<std::uint32_t>(x) & 0x7FFFFFFFU);
    }
    return largest < 0x7F800000U;
}

/// One row of the system in the plain form.
struct Row {
    double below = 0.0;
    double on = 0.0;
    double above = 0.0;
    double right = 0.0;
};

Row rowAt(const EvenGrids& grids, std::int64_t i) {
    const std::int64_t middle = std::clamp<std::int64_t>(i, 1, grids.knots - 2);
    const double hL = grids.knot(middle) - grids.knot(middle - 1);
    const double hR = grids.knot(middle + 1) - grids.knot(middle);
    const auto y = [&](std::int64_t k) { return static_cast<double>(grids.samples[k]); };
    const double sL = (y(middle) - y(middle - 1)) / hL;
    const double sR = (y(middle + 1) - y(middle)) / hR;
    if (i == 0) {
        return {0.0, hR * (hL + hR), (hL + hR) * (hL + hR),
                sL * (3.0 * hL * hR + 2.0 * hL * hR) + sR * (hL * hL)};
    }
    if (i == grids.knots - 1) {
        return {(hL + hR) * (hL + hR), hL * (hL + hR), 0.0,
                sL * (hR * hR) + sR * (3.0 * hL * hR + 2.0 * (hL * hL))};
    }
    return {hR, 2.0 * (hL + hR), hL, 3.0 * (sL * hR + sR * hL)};
}

} // namespace

std::int64_t intervalOfPoint(const EvenGrids& grids, std::int64_t j) {
    // Of points in a row that each end an interval every second one stays in it. At ratio 1 all do.
    std::int64_t inARow = j;
    if (grids.ratio != 1.0F) {
        inARow = 0;
        while (endsAnInterval(grids, j - inARow)) {
            ++inARow;
        }
    }
    const std::int64_t k = lastKnotBefore(grids, j) - inARow % 2;
    return std::min(k, grids.knots - 2);
}

std::int64_t firstPointFrom(const EvenGrids& grids, std::int64_t knot) {
    const double estimate = static_cast<double>(knot) * static_cast<double>(grids.ratio);
    auto j = std::clamp<std::int64_t>(static_cast<std::int64_t>(estimate), 0, grids.points);
    while (j > 0 && intervalOfPoint(grids, j - 1) >= knot) {
        --j;
    }
    while (j < grids.points && intervalOfPoint(grids, j) < knot) {
        ++j;
    }
    return j;
}

std::size_t SplineGroup::scratchSize(std::int64_t runUp) {
    return static_cast<std::size_t>(kSlopes + 2 * kBlocks * (kBlockRows + 2 * runUp));
}

SplineGroup::SplineGroup(const EvenGrids& grids, std::int64_t runUp, double* scratch)
    : grids_(grids),
      runUp_(runUp),
      slopes_(scratch),
      factors_(slopes_ + kSlopes),
      forward_(factors_ + kBlocks * (kBlockRows + 2 * runUp)) {}

/// Whether every row that the blocks need is one with two neighbours.
bool SplineGroup::hasPlainRowsOnly() const {
    return end_ - first_ == kRows && first_ - runUp_ >= 2 && end_ + runUp_ <= grids_.knots - 1;
}

GroupBorders SplineGroup::run(std::int64_t index) {
    first_ = index * kRows;
    end_ = std::min(first_ + kRows, grids_.knots);
    GroupBorders borders;
    const auto rows = static_cast<std::size_t>(end_ - first_);
    borders.isFinite = areFinite({grids_.samples + first_, rows});
    if (!borders.isFinite) {
        return borders;
    }
    if (hasPlainRowsOnly()) {
        BlockBorders blocks;
        HWY_DYNAMIC_DISPATCH(solveBlocks)({*this}, blocks);
        for (std::size_t b = 1; b < kBlocks; ++b) {
            const double firstSlope = slopes_[static_cast<std::int64_t>(b) * kBlockRows];
            borders.isExact = borders.isExact && isSame(blocks.before[b], blocks.last[b - 1]) &&
                              isSame(firstSlope, blocks.slopeBehind[b - 1]);
        }
        borders.before = blocks.before.front();
        borders.last = blocks.last.back();
        borders.slopeBehind = blocks.slopeBehind.back();
        borders.hasZeroPivot = blocks.hasZeroPivot;
        slopes_[kRows] = borders.slopeBehind;
    } else {
        solvePlainly(borders);
    }
    borders.firstSlope = slopes_[0];
    const std::int64_t from = firstPointFrom(grids_, first_);
    const std::int64_t behind = end_ < grids_.knots ? firstPointFrom(grids_, end_) : grids_.points;
    writePlainly(HWY_DYNAMIC_DISPATCH(writePoints)({*this}, from, behind), behind);
    return borders;
}

/// The same as one block, which may hold the first and the last row of all.
void SplineGroup::solvePlainly(GroupBorders& borders) {
    const std::int64_t from = std::max<std::int64_t>(first_ - runUp_, 0);
    const std::int64_t behind = std::min(end_ + runUp_, grids_.knots);
    Row row = rowAt(grids_, from);
    GroupBorders::State state{row.on, row.right / row.on};
    forward_[0] = state.right;
    for (std::int64_t i = from; i < behind; ++i) {
        if (i > from) {
            const double above = row.above;
            row = rowAt(grids_, i);
            const double factor = above / state.pivot;
            state.pivot = row.on - row.below * factor;
            state.right = (row.right - row.below * state.right) / state.pivot;
            borders.hasZeroPivot = borders.hasZeroPivot || state.pivot == 0.0;
            factors_[i - from] = factor;
            forward_[i - from] = state.right;
        }
        if (i == first_ - 1) {
            borders.before = state;
        }
        if (i == end_ - 1) {
            borders.last = state;
        }
    }
    double slope = forward_[behind - 1 - from];
    for (std::int64_t i = behind - 1; i >= first_; --i) {
        if (i < behind - 1) {
            slope = forward_[i - from] - factors_[i + 1 - from] * slope;
        }
        if (i <= end_) {
            slopes_[i - first_] = slope;
        }
    }
    borders.slopeBehind = end_ < grids_.knots ? slopes_[end_ - first_] : 0.0;
}

void SplineGroup::writePlainly(std::int64_t from, std::int64_t end) {
    for (std::int64_t j = from; j < end; ++j) {
        const std::int64_t k = intervalOfPoint(grids_, j);
        const double left = grids_.knot(k);
        const double w = 1.0 / (grids_.knot(k + 1) - left);
        const auto y0 = static_cast<double>(grids_.samples[k]);
        const double s = (static_cast<double>(grids_.samples[k + 1]) - y0) * w;
        const double d0 = slopes_[k - first_];
        const double d1 = slopes_[k + 1 - first_];
        const double c2 = w * (3.0 * s - 2.0 * d0 - d1);
        const double c3 = w * w * (-2.0 * s + d0 + d1);
        const double u = grids_.point(j) - left;
        grids_.output[j] = static_cast<float>(((c3 * u + c2) * u + d0) * u + y0);
    }
}

bool agree(const GroupBorders& left, const GroupBorders& right) {
    return isSame(left.last, right.before) && isSame(left.slopeBehind, right.firstSlope);
}

} // namespace zemo::dsp
#endif
