#include "dsp/kernels/Carriers.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/kernels/Carriers.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h.
#include <hwy/highway.h>

#include "dsp/SineTerms.h"
#include "dsp/kernels/Rounding-inl.h"
#include "dsp/kernels/VectorSine-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zemo::dsp::HWY_NAMESPACE {

/// As wrappedOnce.
HWY_INLINE DoubleVec wrapped(FloatVec phase) {
    const Doubles d;
    const Floats f;
    const auto wide = hn::PromoteTo(d, phase);
    const auto turn = hn::Set(d, kTwoPi);
    const auto back = hn::PromoteTo(d, roundToFloats(f, hn::Sub(wide, turn)));
    return hn::IfThenElse(hn::Gt(wide, turn), back, wide);
}

/// As sineOf.
HWY_INLINE FloatVec sineOfPhase(DoubleVec phase) {
    const Doubles d;
    const Reduced reduced = reduce(phase);
    auto result = sine(reduced);
    const auto doubtful = isDoubtful(phase, reduced, result);
    if (HWY_UNLIKELY(!hn::AllFalse(d, doubtful))) {
        HWY_ALIGN double lanes[hn::MaxLanes(Doubles())];
        hn::Store(phase, d, lanes);
        for (double& lane : lanes) {
            lane = std::sin(lane);
        }
        result = hn::IfThenElse(doubtful, hn::Load(d, lanes), result);
    }
    return roundToFloats(Floats(), result);
}

/// The numbers first, first + 1... as floats. Exact as doubles, so rounded once.
HWY_INLINE FloatVec numbersFrom(std::size_t first) {
    const Doubles d;
    return roundToFloats(Floats(), hn::Iota(d, static_cast<double>(first)));
}

void amplitudeModulateVectors(const float* input, float* output, std::size_t first,
                              std::size_t count, float step, float index) {
    const Floats f;
    const auto steps = hn::Set(f, step);
    const auto dryShare = hn::Set(f, 1.0F - index);
    const auto wetShare = hn::Set(f, index);
    const std::size_t lanes = hn::Lanes(f);
    std::size_t k = 0;
    for (; k + lanes <= count; k += lanes) {
        const auto carrier = sineOfPhase(wrapped(hn::Mul(numbersFrom(first + k), steps)));
        const auto x = hn::LoadU(f, input + k);
        const auto wet = hn::Mul(hn::Mul(wetShare, x), carrier);
        hn::StoreU(hn::Add(hn::Mul(dryShare, x), wet), f, output + k);
    }
    for (; k < count; ++k) {
        const float carrier = sineOf(wrappedOnce(static_cast<float>(first + k) * step));
        const float x = input[k];
        output[k] = (1.0F - index) * x + index * x * carrier;
    }
}

void phaseModulateVectors(const float* input, float* output, std::size_t first, std::size_t count,
                          const Carrier& carrier, const LevelLine& level, std::size_t skip) {
    const Floats f;
    const auto steps = hn::Set(f, carrier.step);
    const auto indices = hn::Set(f, carrier.index);
    const auto from = hn::Set(f, level.from);
    const auto rise = hn::Set(f, level.rise);
    const auto length = hn::Set(f, level.length);
    const std::size_t lanes = hn::Lanes(f);
    std::size_t k = 0;
    for (; k + lanes <= count; k += lanes) {
        const auto x = hn::LoadU(f, input + k);
        const auto phase = hn::Add(hn::Mul(numbersFrom(first + k), steps), hn::Mul(indices, x));
        const auto part = hn::Div(hn::Mul(numbersFrom(skip + k), rise), length);
        hn::StoreU(hn::Mul(sineOfPhase(wrapped(phase)), hn::Add(from, part)), f, output + k);
    }
    for (; k < count; ++k) {
        const float phase = static_cast<float>(first + k) * carrier.step + carrier.index * input[k];
        const float part = static_cast<float>(skip + k) * level.rise / level.length;
        output[k] = sineOf(wrappedOnce(phase)) * (level.from + part);
    }
}

} // namespace zemo::dsp::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zemo::dsp {

HWY_EXPORT(amplitudeModulateVectors);
HWY_EXPORT(phaseModulateVectors);

void amplitudeModulateStretch(const float* input, float* output, std::size_t first,
                              std::size_t count, float step, float index) {
    HWY_DYNAMIC_DISPATCH(amplitudeModulateVectors)(input, output, first, count, step, index);
}

void phaseModulateStretch(const float* input, float* output, std::size_t first, std::size_t count,
                          const Carrier& carrier, const LevelLine& level, std::size_t skip) {
    HWY_DYNAMIC_DISPATCH(phaseModulateVectors)
    (input, output, first, count, carrier, level, skip);
}

} // namespace zemo::dsp
#endif
