#include "dsp/kernels/Sideband.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/kernels/Sideband.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h.
#include <hwy/highway.h>

#include "dsp/SineTerms.h"
#include "dsp/kernels/Rounding-inl.h"
#include "dsp/kernels/VectorSine-inl.h"

namespace zemo::dsp {

#ifndef ZEMO_DSP_SIDEBAND_KERNEL
#define ZEMO_DSP_SIDEBAND_KERNEL
/// The chunk as the vector code sees it.
struct SidebandKernel {
    static constexpr std::size_t kCentre = 256;
    static constexpr std::size_t kRowsTogether = 8;
    static constexpr std::size_t kMostLanes = 8;

    SidebandChunk& chunk;

    const SidebandRun& run() const { return chunk.run_; }
    double* phases() const { return chunk.phases_; }
    double* quadrature() const { return chunk.quadrature_; }
    const double* bounds() const { return chunk.bounds_; }
    double* row(std::size_t r) const { return chunk.row(r); }
    std::size_t rows() const { return chunk.rows_; }
    std::size_t stagedRows() const { return chunk.rows_ + SidebandChunk::kHistory; }
    std::size_t first() const { return chunk.first_; }
    std::size_t count() const { return chunk.count_; }
    double exactWet(std::size_t k) const { return chunk.exactWet(k); }
    float mixed(std::size_t k, double wet, double divisor) const {
        return chunk.mixed(k, wet, divisor);
    }
};
#endif

} // namespace zemo::dsp

HWY_BEFORE_NAMESPACE();
namespace zemo::dsp::HWY_NAMESPACE {

std::size_t vectorLanes() {
    static_assert(hn::MaxLanes(Doubles()) <= SidebandKernel::kMostLanes);
    return hn::Lanes(Doubles());
}

/// As dividing each sample before it enters the delay line.
void divideByGain(double* values, std::size_t count) {
    const Doubles d;
    const auto gain = hn::Set(d, HILBERT_GAIN);
    for (std::size_t k = 0; k < count; k += hn::Lanes(d)) {
        hn::Store(hn::Div(hn::Load(d, values + k), gain), d, values + k);
    }
}

/// The sums of rows o, o + 2, o + 4 and o + 6, `centre` being that of row o. A row's left samples
/// are the next row's, moved by one tap, and so are the right ones: each is loaded once.
class FourRows {
public:
    HWY_INLINE FourRows(const double* centre, std::size_t stride)
        : centre_(centre), stride_(static_cast<std::ptrdiff_t>(stride)) {
        for (int p = 0; p < 4; ++p) {
            left_[p] = at(2 * p - 1);
            right_[p] = at(2 * p + 1);
            sum_[p] = hn::Zero(Doubles());
        }
    }

    /// Four taps: the offsets k, k + 2, k + 4, k + 6.
    HWY_INLINE void add(std::ptrdiff_t k, const double* taps) {
        addOne<0>(k, taps[0]);
        addOne<1>(k + 2, taps[1]);
        addOne<2>(k + 4, taps[2]);
        addOne<3>(k + 6, taps[3]);
    }

    HWY_INLINE DoubleVec sum(int p) const { return sum_[p]; }

private:
    HWY_INLINE DoubleVec at(std::ptrdiff_t m) const {
        return hn::Load(Doubles(), centre_ + m * stride_);
    }

    /// After kTurn steps row p's left sample is in place (p - kTurn) mod 4, its right one in
    /// (p + kTurn) mod 4.
    template <int kTurn> HWY_INLINE void addOne(std::ptrdiff_t k, double tap) {
        const auto factor = hn::Set(Doubles(), tap);
        for (int p = 0; p < 4; ++p) {
            const auto pair = hn::Sub(left_[(p - kTurn + 4) % 4], right_[(p + kTurn) % 4]);
            sum_[p] = hn::MulAdd(factor, pair, sum_[p]);
        }
        left_[(3 - kTurn + 4) % 4] = at(-k - 2);
        right_[kTurn] = at(k + 8);
    }

    const double* centre_;
    std::ptrdiff_t stride_;
    DoubleVec left_[4];
    DoubleVec right_[4];
    DoubleVec sum_[4];
};

/// The approximate transform of all rows, in the samples' order.
void transformRows(const SidebandKernel& kernel) {
    constexpr std::size_t kTogether = SidebandKernel::kRowsTogether;
    const Doubles d;
    const std::size_t lanes = hn::Lanes(d);
    double taps[128];
    for (std::size_t k = 0; k < 128; ++k) {
        taps[k] = kernel.run().table.taps[255 - 2 * k] * kernel.run().table.passes;
    }
    HWY_ALIGN double tile[kTogether * hn::MaxLanes(Doubles())];
    for (std::size_t o = 0; o < kernel.rows(); o += kTogether) {
        for (std::size_t parity = 0; parity < 2; ++parity) {
            FourRows four(kernel.row(o + parity + SidebandKernel::kCentre), lanes);
            for (std::size_t k = 0; k < 128; k += 4) {
                four.add(static_cast<std::ptrdiff_t>(2 * k + 1), taps + k);
            }
            for (std::size_t p = 0; p < 4; ++p) {
                hn::Store(four.sum(static_cast<int>(p)), d, tile + (2 * p + parity) * lanes);
            }
        }
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            double* const part = kernel.quadrature() + lane * kernel.rows() + o;
            for (std::size_t r = 0; r < kTogether; ++r) {
                part[r] = tile[r * lanes + lane];
            }
        }
    }
}

/// The samples from `k` on before they are scaled: known up to the group's bound.
HWY_INLINE DoubleVec approximateWet(const SidebandKernel& kernel, std::size_t k) {
    const Doubles d;
    const auto phase = hn::LoadU(d, kernel.phases() + k);
    const auto terms = sineAndCosine(reduce(phase));
    const float* const input = kernel.run().input + kernel.first() + k;
    const auto delayed =
        kernel.first() + k >= SidebandKernel::kCentre
            ? hn::PromoteTo(d, hn::LoadU(Floats(), input - SidebandKernel::kCentre))
            : hn::Zero(d);
    const auto inPhase = hn::Mul(delayed, terms.cosine);
    const auto outOfPhase = hn::Mul(hn::LoadU(d, kernel.quadrature() + k), terms.sine);
    return kernel.run().sideband == Sideband::Upper ? hn::Sub(inPhase, outOfPhase)
                                                    : hn::Add(inPhase, outOfPhase);
}

/// How far the samples from `k` on are known; infinite where only the plain sum will do.
HWY_INLINE double boundOf(const SidebandKernel& kernel, std::size_t k) {
    const bool inReach = std::fabs(kernel.phases()[k]) < kMostPhase;
    return inReach ? kernel.bounds()[k / kSidebandGroup] : std::numeric_limits<double>::infinity();
}

/// The largest exact magnitude among the samples from `k` on, where one may exceed `peak`.
HWY_INLINE double raisedBy(const SidebandKernel& kernel, std::size_t k, DoubleVec wet, double bound,
                           double peak) {
    const Doubles d;
    const auto reach = hn::Add(hn::Abs(wet), hn::Set(d, bound));
    if (HWY_LIKELY(hn::AllTrue(d, hn::Le(reach, hn::Set(d, peak))))) {
        return peak;
    }
    for (std::size_t i = k; i < std::min(k + hn::Lanes(d), kernel.count()); ++i) {
        const double size = std::fabs(kernel.exactWet(i));
        peak = size > peak ? size : peak;
    }
    return peak;
}

double largestOf(const SidebandKernel& kernel, double peak) {
    for (std::size_t k = 0; k < kernel.count(); k += hn::Lanes(Doubles())) {
        peak = raisedBy(kernel, k, approximateWet(kernel, k), boundOf(kernel, k), peak);
    }
    return peak;
}

/// The samples `wet` divided by `divisor` and rounded, from `k` on; false where they are in doubt.
HWY_INLINE bool writeVector(const SidebandKernel& kernel, std::size_t k, DoubleVec wet,
                            double bound, double divisor) {
    const Doubles d;
    const Floats f;
    const hn::Rebind<std::uint32_t, Floats> bits;
    if (!(bound < std::numeric_limits<double>::max()) || !std::isfinite(divisor)) {
        return false;
    }
    // Where all around is zero the approximation is the plain sum itself.
    auto result = roundToFloats(f, wet);
    if (divisor > 1.0) {
        wet = hn::Div(wet, hn::Set(d, divisor));
        result = roundToFloats(f, wet);
    }
    if (bound > 0.0) {
        const auto reach = hn::Set(d, bound / divisor);
        const auto low = roundToFloats(f, hn::Sub(wet, reach));
        const auto high = roundToFloats(f, hn::Add(wet, reach));
        if (HWY_UNLIKELY(
                !hn::AllTrue(bits, hn::Eq(hn::BitCast(bits, low), hn::BitCast(bits, high))))) {
            return false;
        }
        result = low;
    }
    const auto x = hn::LoadU(f, kernel.run().input + kernel.first() + k);
    const auto dry = hn::Mul(hn::Set(f, 1.0F - kernel.run().mix), x);
    const auto mixed = hn::Add(dry, hn::Mul(hn::Set(f, kernel.run().mix), result));
    hn::StoreU(mixed, f, kernel.run().output + kernel.first() + k);
    return true;
}

/// False, with the output unfinished, where nothing is divided but a sample exceeds 1.
bool writeOutput(const SidebandKernel& kernel, double divisor) {
    const std::size_t lanes = hn::Lanes(Doubles());
    float* const output = kernel.run().output + kernel.first();
    for (std::size_t k = 0; k < kernel.count(); k += lanes) {
        const double bound = boundOf(kernel, k);
        const auto wet = approximateWet(kernel, k);
        if (divisor == 1.0 && raisedBy(kernel, k, wet, bound, 1.0) > 1.0) {
            return false;
        }
        const bool isWhole = k + lanes <= kernel.count();
        if (HWY_LIKELY(isWhole && writeVector(kernel, k, wet, bound, divisor))) {
            continue;
        }
        for (std::size_t i = k; i < std::min(k + lanes, kernel.count()); ++i) {
            output[i] = kernel.mixed(i, kernel.exactWet(i), divisor);
        }
    }
    return true;
}

} // namespace zemo::dsp::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zemo::dsp {
namespace {

/// The lanes' parts are rounded up to whole groups of rows.
constexpr std::size_t kSlack = SidebandKernel::kMostLanes * SidebandKernel::kRowsTogether;
constexpr std::size_t kArraySize = kSidebandChunk + kSlack;

/// In units of the largest sample that the sum hears. The magnitudes of the taps over the gain sum
/// to 3.7: 256 roundings of the plain sum, 129 of the other one and some of the carrier's are less
/// than 1.7e-13 together. Two passes double both the sum and the roundings.
double boundFor(int passes) {
    return passes == 2 ? 0x1p-40 : 0x1p-42;
}

constexpr std::uint32_t kInfinityBits = 0x7F800000;

/// The magnitudes' bits are in the magnitudes' order.
std::uint32_t largestBits(const float* from, const float* end) {
    std::uint32_t largest = 0;
    for (; from != end; ++from) {
        largest = std::max(largest, std::bit_cast<std::uint32_t>(*from) & 0x7FFFFFFFU);
    }
    return largest;
}

} // namespace

HWY_EXPORT(vectorLanes);
HWY_EXPORT(divideByGain);
HWY_EXPORT(transformRows);
HWY_EXPORT(largestOf);
HWY_EXPORT(writeOutput);

std::size_t SidebandChunk::scratchSize() {
    // The staged rows of all lanes: each lane's part, its history, and the padding at both ends.
    constexpr std::size_t kStaged =
        kArraySize + (kHistory + 3 * kPaddingRows) * SidebandKernel::kMostLanes;
    return 2 * kArraySize + kSidebandChunk / kSidebandGroup + kStaged;
}

SidebandChunk::SidebandChunk(const SidebandRun& run, double* scratch)
    : run_(run),
      phases_(scratch),
      quadrature_(phases_ + kArraySize),
      bounds_(quadrature_ + kArraySize),
      staged_(bounds_ + kSidebandChunk / kSidebandGroup) {}

double SidebandChunk::begin(std::size_t index, double phase) {
    first_ = index * kSidebandChunk;
    count_ = std::min(kSidebandChunk, run_.count - first_);
    for (std::size_t k = 0; k < count_; ++k) {
        phase += run_.step;
        phases_[k] = phase;
        if (phase >= kTwoPi) {
            phase -= kTwoPi;
        }
    }
    std::fill_n(phases_ + count_, kSlack, 0.0);
    return phase;
}

void SidebandChunk::transform() {
    lanes_ = HWY_DYNAMIC_DISPATCH(vectorLanes)();
    constexpr std::size_t kTogether = SidebandKernel::kRowsTogether;
    const std::size_t share = (count_ + lanes_ - 1) / lanes_;
    rows_ = (share + kTogether - 1) / kTogether * kTogether;
    findBounds();
    if (run_.table.passes == 0) {
        std::fill_n(quadrature_, count_ + kSlack, 0.0);
        return;
    }
    stage();
    HWY_DYNAMIC_DISPATCH(transformRows)({*this});
}

/// Row r holds, for each lane, the sample that is r - kHistory behind the first of its part.
void SidebandChunk::stage() {
    const std::size_t rows = rows_ + kHistory;
    for (std::size_t lane = 0; lane < lanes_; ++lane) {
        const std::size_t place = first_ + lane * rows_; // of row 0, kHistory behind its sample
        const std::size_t from = std::min(place < kHistory ? kHistory - place : 0, rows);
        const std::size_t end =
            std::clamp(run_.count + kHistory - std::min(place, run_.count + kHistory), from, rows);
        double* const column = row(0) + lane;
        for (std::size_t r = 0; r < from; ++r) {
            column[r * lanes_] = 0.0;
        }
        for (std::size_t r = from; r < end; ++r) {
            column[r * lanes_] = static_cast<double>(run_.input[place + r - kHistory]);
        }
        for (std::size_t r = end; r < rows; ++r) {
            column[r * lanes_] = 0.0;
        }
    }
    HWY_DYNAMIC_DISPATCH(divideByGain)(row(0), rows * lanes_);
    std::fill_n(staged_, kPaddingRows * lanes_, 0.0);
    std::fill_n(row(rows), 2 * kPaddingRows * lanes_, 0.0);
    // Before the sound there is what the run before left.
    for (std::size_t lane = 0; lane < lanes_; ++lane) {
        for (std::size_t r = 0; first_ + lane * rows_ + r < kHistory; ++r) {
            row(r)[lane] = run_.delayLine[first_ + lane * rows_ + r + 1];
        }
    }
}

void SidebandChunk::findBounds() {
    constexpr std::size_t kGroups = kSidebandChunk / kSidebandGroup;
    constexpr std::size_t kBefore = kHistory / kSidebandGroup;
    std::uint32_t largest[kBefore + kGroups]{};
    const std::size_t groups = (count_ + kSidebandGroup - 1) / kSidebandGroup;
    // The first chunk has no samples before it.
    for (std::size_t g = first_ == 0 ? kBefore : 0; g < kBefore + groups; ++g) {
        const std::size_t from = first_ + g * kSidebandGroup - kHistory;
        const std::size_t end = std::min(from + kSidebandGroup, run_.count);
        largest[g] = largestBits(run_.input + from, run_.input + end);
    }
    const double share = boundFor(run_.table.passes);
    double past = 0.0;
    for (const double value : run_.delayLine) {
        const double size = std::fabs(value) * HILBERT_GAIN;
        past = size <= past ? past : size; // a NaN stays
    }
    for (std::size_t g = 0; g < groups; ++g) {
        const std::uint32_t bits = *std::max_element(largest + g, largest + g + kBefore + 1);
        const bool hearsPast = first_ + g * kSidebandGroup < kHistory;
        const double size =
            std::max(static_cast<double>(std::bit_cast<float>(bits)), hearsPast ? past : 0.0);
        const bool isKnown = bits < kInfinityBits && (!hearsPast || past <= 1e300);
        bounds_[g] = isKnown ? size * share : std::numeric_limits<double>::infinity();
    }
}

double SidebandChunk::valueAt(std::size_t k, std::size_t tap) const {
    const std::size_t r = k % rows_ + tap;
    return staged_[(r + kPaddingRows) * lanes_ + k / rows_];
}

double SidebandChunk::delayed(std::size_t k) const {
    constexpr std::size_t kDelay = SidebandKernel::kCentre;
    const std::size_t i = first_ + k;
    return i >= kDelay ? static_cast<double>(run_.input[i - kDelay]) : 0.0;
}

/// The plain form. The even taps are 0: they count where a sample is not finite.
double SidebandChunk::exactWet(std::size_t k) const {
    const bool isFinite = bounds_[k / kSidebandGroup] < std::numeric_limits<double>::infinity();
    double quadrature = 0.0;
    for (int pass = 0; pass < run_.table.passes; ++pass) {
        for (std::size_t j = isFinite ? 1 : 0; j < 513; j += isFinite ? 2 : 1) {
            quadrature += run_.table.taps[j] * valueAt(k, j);
        }
    }
    const double inPhase = delayed(k) * std::cos(phases_[k]);
    const double outOfPhase = quadrature * std::sin(phases_[k]);
    return run_.sideband == Sideband::Upper ? inPhase - outOfPhase : inPhase + outOfPhase;
}

float SidebandChunk::mixed(std::size_t k, double wet, double divisor) const {
    const double scaled = divisor > 1.0 ? wet / divisor : wet;
    return (1.0F - run_.mix) * run_.input[first_ + k] + run_.mix * static_cast<float>(scaled);
}

double SidebandChunk::largest(double peak) {
    return HWY_DYNAMIC_DISPATCH(largestOf)({*this}, peak);
}

bool SidebandChunk::write(double divisor) {
    return HWY_DYNAMIC_DISPATCH(writeOutput)({*this}, divisor);
}

} // namespace zemo::dsp
#endif
