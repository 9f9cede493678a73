// Per-target: included once for each instruction set, see hwy/foreach_target.h.
#if defined(ZEMO_DSP_VECTOR_SINE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ZEMO_DSP_VECTOR_SINE_INL_H
#undef ZEMO_DSP_VECTOR_SINE_INL_H
#else
#define ZEMO_DSP_VECTOR_SINE_INL_H
#endif

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace zemo::dsp::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::ScalableTag<double>;
using Floats = hn::Rebind<float, Doubles>; ///< as many as there are doubles
using Words = hn::Rebind<std::uint64_t, Doubles>;
using DoubleVec = hn::Vec<Doubles>;
using FloatVec = hn::Vec<Floats>;
using DoubleMask = hn::Mask<Doubles>;

/// Reduced arguments: x = quarters * pi/2 + rest, |rest| <= pi/4.
struct Reduced {
    DoubleVec rest;
    DoubleVec quarters;
    hn::Vec<Words> quarterBits; ///< the last two bits tell the quadrant
};

/// Right to 2^-52 of the rest plus 2^-69, for |x| < kMostPhase (W. Cody and W. Waite, Software
/// Manual for the Elementary Functions, ch. 8). The first two parts of pi/2 have 23 bits each, so
/// that their products with the number of quarters are exact.
inline constexpr double kMostPhase = 1073741824.0;

HWY_INLINE Reduced reduce(DoubleVec x) {
    const Doubles d;
    const auto magic = hn::Set(d, 6755399441055744.0); // 1.5 * 2^52: its last bit is worth one
    const auto shifted = hn::Add(hn::Mul(x, hn::Set(d, 0x1.45f306dc9c883p-1)), magic);
    const auto quarters = hn::Sub(shifted, magic);
    auto rest = hn::Sub(x, hn::Mul(quarters, hn::Set(d, 0x1.921fb4p+0)));
    rest = hn::Sub(rest, hn::Mul(quarters, hn::Set(d, 0x1.4442dp-24)));
    rest = hn::Sub(rest, hn::Mul(quarters, hn::Set(d, 0x1.8469898cc517p-48)));
    return {rest, quarters, hn::BitCast(Words(), shifted)};
}

/// sin and cos for |x| <= pi/4, by the polynomials of fdlibm (Sun Microsystems, 1993).
HWY_INLINE DoubleVec sineOfRest(DoubleVec x) {
    const Doubles d;
    const auto z = hn::Mul(x, x);
    auto sum = hn::Set(d, 1.58969099521155010221e-10);
    for (const double c :
         {-2.50507602534068634195e-08, 2.75573137070700676789e-06, -1.98412698298579493134e-04,
          8.33333333332248946124e-03, -1.66666666666666324348e-01}) {
        sum = hn::Add(hn::Mul(sum, z), hn::Set(d, c));
    }
    return hn::Add(x, hn::Mul(hn::Mul(z, x), sum));
}

HWY_INLINE DoubleVec cosineOfRest(DoubleVec x) {
    const Doubles d;
    const auto z = hn::Mul(x, x);
    auto sum = hn::Set(d, -1.13596475577881948265e-11);
    for (const double c :
         {2.08757232129817482790e-09, -2.75573143513906633035e-07, 2.48015872894767294178e-05,
          -1.38888888888741095749e-03, 4.16666666666666019037e-02}) {
        sum = hn::Add(hn::Mul(sum, z), hn::Set(d, c));
    }
    const auto one = hn::Set(d, 1.0);
    const auto half = hn::Mul(z, hn::Set(d, 0.5));
    const auto whole = hn::Sub(one, half);
    const auto lost = hn::Sub(hn::Sub(one, whole), half);
    return hn::Add(whole, hn::Add(lost, hn::Mul(hn::Mul(z, z), sum)));
}

/// `value` negated where that bit of `bits` is set.
template <int kBit> HWY_INLINE DoubleVec negatedBy(hn::Vec<Words> bits, DoubleVec value) {
    const Doubles d;
    const auto toSign = hn::BitCast(d, hn::ShiftLeft<63 - kBit>(bits));
    return hn::Xor(value, hn::And(toSign, hn::SignBit(d)));
}

HWY_INLINE DoubleVec oddQuarterSelects(hn::Vec<Words> bits, DoubleVec odd, DoubleVec even) {
    const auto isOdd = hn::TestBit(bits, hn::Set(Words(), 1));
    return hn::IfThenElse(hn::RebindMask(Doubles(), isOdd), odd, even);
}

struct SineAndCosine {
    DoubleVec sine;
    DoubleVec cosine;
};

HWY_INLINE SineAndCosine sineAndCosine(const Reduced& x) {
    const auto sine = sineOfRest(x.rest);
    const auto cosine = cosineOfRest(x.rest);
    const auto bits = x.quarterBits;
    const auto next = hn::Add(bits, hn::Set(Words(), 1));
    return {negatedBy<1>(bits, oddQuarterSelects(bits, cosine, sine)),
            negatedBy<1>(next, oddQuarterSelects(bits, sine, cosine))};
}

HWY_INLINE DoubleVec sine(const Reduced& x) {
    const auto bits = x.quarterBits;
    return negatedBy<1>(bits, oddQuarterSelects(bits, cosineOfRest(x.rest), sineOfRest(x.rest)));
}

/// Where `sine`, the vector's own of `phase`, may be rounded to another float than the true sine
/// is: it is within 2^-44 of the middle between two floats, or so small that the error of the
/// reduced argument counts, or the phase is out of range (or no number).
HWY_INLINE DoubleMask isDoubtful(DoubleVec phase, const Reduced& x, DoubleVec sine) {
    constexpr std::uint64_t kNear = 256; // units in the last place of a double
    constexpr std::uint64_t kMiddle = std::uint64_t{1} << 28U;
    constexpr std::uint64_t kBelowFloat = 2 * kMiddle - 1;
    const Doubles d;
    const Words w;
    const auto moved = hn::Add(hn::BitCast(w, sine), hn::Set(w, kMiddle + kNear));
    const auto beyond = hn::And(moved, hn::Set(w, kBelowFloat & ~(2 * kNear - 1)));
    const auto isNear = hn::RebindMask(d, hn::Eq(beyond, hn::Zero(w)));
    const auto size = hn::Abs(sine);
    const auto least =
        hn::IfThenElse(hn::Eq(x.quarters, hn::Zero(d)), hn::Set(d, 0x1p-100), hn::Set(d, 0x1p-20));
    const auto isCertain =
        hn::And(hn::Lt(hn::Abs(phase), hn::Set(d, kMostPhase)), hn::Gt(size, least));
    return hn::Or(isNear, hn::Not(isCertain));
}

} // namespace zemo::dsp::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
