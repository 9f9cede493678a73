#include "dsp/kernels/Harmonics.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/kernels/Harmonics.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h.
#include <hwy/highway.h>

#include "dsp/kernels/Rounding-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zemo::dsp::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::ScalableTag<double>;
using Floats = hn::Rebind<float, Doubles>;
using DoubleVec = hn::Vec<Doubles>;
using FloatVec = hn::Vec<Floats>;

/// Samples of each strip that are staged at once.
constexpr std::size_t kRows = 64;
/// Sample r of strip s is at r * kStripsAbreast + s.
using Stage = std::array<float, kRows * kStripsAbreast>;

struct PathVectors {
    explicit PathVectors(const HarmonicPath& path)
        : twoBack(hn::Set(Floats(), path.filter.twoBack)),
          oneBack(hn::Set(Floats(), path.filter.oneBack)),
          gain(hn::Set(Floats(), path.filter.gain)),
          knee(hn::Set(Floats(), path.knee)),
          comp(hn::Set(Floats(), path.comp)),
          divisor(hn::Set(Floats(), path.divisor)),
          slope(hn::Set(Doubles(), path.slope)),
          dryShare(hn::Set(Floats(), path.dryShare)),
          wetShare(hn::Set(Floats(), path.wetShare)),
          twoShare(hn::Set(Floats(), path.twoShare)),
          fourShare(hn::Set(Floats(), path.fourShare)) {}

    FloatVec twoBack;
    FloatVec oneBack;
    FloatVec gain;
    FloatVec knee;
    FloatVec comp;
    FloatVec divisor;
    DoubleVec slope;
    FloatVec dryShare;
    FloatVec wetShare;
    FloatVec twoShare;
    FloatVec fourShare;
};

/// The states of as many strips as a vector has doubles.
struct Lanes {
    Lanes(const StripStates& states, std::size_t strip)
        : olderIn(hn::LoadU(Floats(), &states.olderIn[strip])),
          newerIn(hn::LoadU(Floats(), &states.newerIn[strip])),
          olderOut(hn::LoadU(Floats(), &states.olderOut[strip])),
          newerOut(hn::LoadU(Floats(), &states.newerOut[strip])),
          secondIn(hn::LoadU(Doubles(), &states.secondIn[strip])),
          secondOut(hn::LoadU(Doubles(), &states.secondOut[strip])),
          fourthIn(hn::LoadU(Doubles(), &states.fourthIn[strip])),
          fourthOut(hn::LoadU(Doubles(), &states.fourthOut[strip])) {}

    void store(StripStates& states, std::size_t strip) const {
        hn::StoreU(olderIn, Floats(), &states.olderIn[strip]);
        hn::StoreU(newerIn, Floats(), &states.newerIn[strip]);
        hn::StoreU(olderOut, Floats(), &states.olderOut[strip]);
        hn::StoreU(newerOut, Floats(), &states.newerOut[strip]);
        hn::StoreU(secondIn, Doubles(), &states.secondIn[strip]);
        hn::StoreU(secondOut, Doubles(), &states.secondOut[strip]);
        hn::StoreU(fourthIn, Doubles(), &states.fourthIn[strip]);
        hn::StoreU(fourthOut, Doubles(), &states.fourthOut[strip]);
    }

    FloatVec olderIn;
    FloatVec newerIn;
    FloatVec olderOut;
    FloatVec newerOut;
    DoubleVec secondIn;
    DoubleVec secondOut;
    DoubleVec fourthIn;
    DoubleVec fourthOut;
};

/// As TwoPole::step.
HWY_INLINE FloatVec highPassed(const PathVectors& path, FloatVec x, Lanes& lanes) {
    const auto in = hn::Div(x, path.gain);
    const auto outer = hn::Add(lanes.olderIn, in);
    const auto sum = hn::Sub(outer, hn::Mul(hn::Set(Floats(), 2.0F), lanes.newerIn));
    const auto back = hn::Add(sum, hn::Mul(path.twoBack, lanes.olderOut));
    const auto y = hn::Add(back, hn::Mul(path.oneBack, lanes.newerOut));
    lanes.olderIn = lanes.newerIn;
    lanes.newerIn = in;
    lanes.olderOut = lanes.newerOut;
    lanes.newerOut = y;
    return y;
}

/// As compressed.
HWY_INLINE FloatVec compressedSamples(const PathVectors& path, FloatVec x) {
    const auto zero = hn::Zero(Floats());
    const auto loud = hn::Gt(hn::Abs(x), path.knee);
    const auto above = hn::Add(path.knee, hn::Mul(path.comp, hn::Sub(x, path.knee)));
    const auto s = hn::IfThenElse(hn::And(loud, hn::Gt(x, zero)), above, x);
    const auto below = hn::Sub(hn::Neg(path.knee), hn::Mul(path.comp, hn::Add(s, path.knee)));
    return hn::IfThenElse(hn::And(loud, hn::Lt(s, zero)), below, s);
}

/// As dcFilter of h2.
HWY_INLINE DoubleVec bentWithoutDc(DoubleVec x, DoubleVec slope, DoubleVec& prevIn,
                                   DoubleVec& prevOut) {
    const Doubles d;
    const auto bent = hn::Sub(hn::Mul(hn::Mul(hn::Set(d, 2.0), x), x), hn::Set(d, 1.0));
    const auto y = hn::Add(hn::Sub(bent, prevIn), hn::Mul(slope, prevOut));
    prevIn = bent;
    prevOut = y;
    return y;
}

/// As harmonicSample behind the attack.
template <bool kFiltered, bool kFour>
HWY_INLINE FloatVec harmonicSamples(const PathVectors& path, FloatVec x, Lanes& lanes) {
    const Doubles d;
    const Floats f;
    const auto driver =
        kFiltered ? highPassed(path, x, lanes) : hn::Div(compressedSamples(path, x), path.divisor);
    const auto y =
        bentWithoutDc(hn::PromoteTo(d, driver), path.slope, lanes.secondIn, lanes.secondOut);
    const auto second = hn::Mul(hn::Set(d, 0.5), y);
    auto fourth = hn::Zero(d);
    if constexpr (kFour) {
        fourth = bentWithoutDc(second, path.slope, lanes.fourthIn, lanes.fourthOut);
    }
    const auto wet = hn::Add(hn::Mul(roundToFloats(f, second), path.twoShare),
                             hn::Mul(roundToFloats(f, fourth), path.fourShare));
    return hn::Add(hn::Mul(path.dryShare, x), hn::Mul(path.wetShare, wet));
}

#if HWY_TARGET == HWY_SCALAR

HWY_INLINE void stageInput(const float* input, std::size_t stride, std::size_t rows, Stage& stage) {
    for (std::size_t s = 0; s < kStripsAbreast; ++s) {
        for (std::size_t r = 0; r < rows; ++r) {
            stage[r * kStripsAbreast + s] = input[s * stride + r];
        }
    }
}

HWY_INLINE void writeStage(const Stage& stage, std::size_t rows, std::size_t stride,
                           float* output) {
    for (std::size_t s = 0; s < kStripsAbreast; ++s) {
        for (std::size_t r = 0; r < rows; ++r) {
            output[s * stride + r] = stage[r * kStripsAbreast + s];
        }
    }
}

#else

/// Four rows of four become the columns; the rows are `fromStride` and `toStride` apart.
HWY_INLINE void transpose(const float* from, std::size_t fromStride, float* to,
                          std::size_t toStride) {
    const hn::FixedTag<float, 4> f;
    const auto a = hn::LoadU(f, from);
    const auto b = hn::LoadU(f, from + fromStride);
    const auto c = hn::LoadU(f, from + 2 * fromStride);
    const auto d = hn::LoadU(f, from + 3 * fromStride);
    const auto lowerAC = hn::InterleaveLower(f, a, c);
    const auto upperAC = hn::InterleaveUpper(f, a, c);
    const auto lowerBD = hn::InterleaveLower(f, b, d);
    const auto upperBD = hn::InterleaveUpper(f, b, d);
    hn::StoreU(hn::InterleaveLower(f, lowerAC, lowerBD), f, to);
    hn::StoreU(hn::InterleaveUpper(f, lowerAC, lowerBD), f, to + toStride);
    hn::StoreU(hn::InterleaveLower(f, upperAC, upperBD), f, to + 2 * toStride);
    hn::StoreU(hn::InterleaveUpper(f, upperAC, upperBD), f, to + 3 * toStride);
}

HWY_INLINE void stageInput(const float* input, std::size_t stride, std::size_t rows, Stage& stage) {
    for (std::size_t s = 0; s < kStripsAbreast; s += 4) {
        for (std::size_t r = 0; r < rows; r += 4) {
            transpose(input + s * stride + r, stride, &stage[r * kStripsAbreast + s],
                      kStripsAbreast);
        }
    }
}

HWY_INLINE void writeStage(const Stage& stage, std::size_t rows, std::size_t stride,
                           float* output) {
    for (std::size_t s = 0; s < kStripsAbreast; s += 4) {
        for (std::size_t r = 0; r < rows; r += 4) {
            transpose(&stage[r * kStripsAbreast + s], kStripsAbreast, output + s * stride + r,
                      stride);
        }
    }
}

#endif

/// Two vectors at a time: the one's steps fill the other's waits.
template <bool kFiltered, bool kFour>
HWY_INLINE FloatVec runStage(const PathVectors& path, Stage& stage, std::size_t rows,
                             StripStates& states, FloatVec highest) {
    const Floats f;
    const std::size_t lanes = hn::Lanes(f);
    for (std::size_t strip = 0; strip < kStripsAbreast; strip += 2 * lanes) {
        Lanes left(states, strip);
        Lanes right(states, strip + lanes);
        float* at = &stage[strip];
        for (std::size_t r = 0; r < rows; ++r, at += kStripsAbreast) {
            const auto x = harmonicSamples<kFiltered, kFour>(path, hn::LoadU(f, at), left);
            const auto y = harmonicSamples<kFiltered, kFour>(path, hn::LoadU(f, at + lanes), right);
            hn::StoreU(x, f, at);
            hn::StoreU(y, f, at + lanes);
            highest = hn::IfThenElse(hn::Gt(x, highest), x, highest);
            highest = hn::IfThenElse(hn::Gt(y, highest), y, highest);
        }
        left.store(states, strip);
        right.store(states, strip + lanes);
    }
    return highest;
}

template <bool kFiltered, bool kFour>
HWY_INLINE float runStripsAs(const HarmonicPath& path, const float* input, float* output,
                             std::size_t stride, std::size_t count, StripStates& states) {
    const PathVectors vectors(path);
    alignas(64) Stage stage;
    auto highest = hn::Zero(Floats());
    for (std::size_t done = 0; done < count; done += kRows) {
        const std::size_t rows = HWY_MIN(kRows, count - done);
        stageInput(input + done, stride, rows, stage);
        highest = runStage<kFiltered, kFour>(vectors, stage, rows, states, highest);
        if (output != nullptr) {
            writeStage(stage, rows, stride, output + done);
        }
    }
    return hn::GetLane(hn::MaxOfLanes(Floats(), highest));
}

float runStripsVectors(const HarmonicPath& path, const float* input, float* output,
                       std::size_t stride, std::size_t count, StripStates& states) {
    if (path.filtered) {
        return path.four ? runStripsAs<true, true>(path, input, output, stride, count, states)
                         : runStripsAs<true, false>(path, input, output, stride, count, states);
    }
    return path.four ? runStripsAs<false, true>(path, input, output, stride, count, states)
                     : runStripsAs<false, false>(path, input, output, stride, count, states);
}

/// The highest of measure(samples), or 0.
template <typename Measure>
HWY_INLINE float highestOf(const float* samples, std::size_t count, const Measure& measure) {
    const hn::ScalableTag<float> f;
    const std::size_t lanes = hn::Lanes(f);
    auto one = hn::Zero(f);
    auto other = hn::Zero(f);
    std::size_t i = 0;
    for (; i + 2 * lanes <= count; i += 2 * lanes) {
        const auto x = measure(hn::LoadU(f, samples + i));
        const auto y = measure(hn::LoadU(f, samples + i + lanes));
        one = hn::IfThenElse(hn::Gt(x, one), x, one);
        other = hn::IfThenElse(hn::Gt(y, other), y, other);
    }
    for (; i < count; ++i) {
        const auto x = measure(hn::Set(f, samples[i]));
        one = hn::IfThenElse(hn::Gt(x, one), x, one);
    }
    return hn::GetLane(hn::MaxOfLanes(f, hn::Max(one, other)));
}

struct Magnitude {
    template <typename Vec> HWY_INLINE Vec operator()(Vec x) const { return hn::Abs(x); }
};
struct Itself {
    template <typename Vec> HWY_INLINE Vec operator()(Vec x) const { return x; }
};

float largestMagnitudeVectors(const float* samples, std::size_t count) {
    return highestOf(samples, count, Magnitude());
}

float highestSampleVectors(const float* samples, std::size_t count) {
    return highestOf(samples, count, Itself());
}

} // namespace zemo::dsp::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zemo::dsp {

HWY_EXPORT(runStripsVectors);
HWY_EXPORT(largestMagnitudeVectors);
HWY_EXPORT(highestSampleVectors);

void StripStates::set(std::size_t strip, const HarmonicState& state) {
    olderIn[strip] = state.inputs[1];
    newerIn[strip] = state.inputs[2];
    olderOut[strip] = state.outputs[1];
    newerOut[strip] = state.outputs[2];
    secondIn[strip] = state.second.prevIn;
    secondOut[strip] = state.second.prevOut;
    fourthIn[strip] = state.fourth.prevIn;
    fourthOut[strip] = state.fourth.prevOut;
}

HarmonicState StripStates::get(std::size_t strip) const {
    HarmonicState state;
    state.inputs = {0.0F, olderIn[strip], newerIn[strip]};
    state.outputs = {0.0F, olderOut[strip], newerOut[strip]};
    state.second = {secondIn[strip], secondOut[strip]};
    state.fourth = {fourthIn[strip], fourthOut[strip]};
    return state;
}

float runStrips(const HarmonicPath& path, const float* input, float* output, std::size_t stride,
                std::size_t count, StripStates& states) {
    return HWY_DYNAMIC_DISPATCH(runStripsVectors)(path, input, output, stride, count, states);
}

float largestMagnitude(std::span<const float> samples) {
    return HWY_DYNAMIC_DISPATCH(largestMagnitudeVectors)(samples.data(), samples.size());
}

float highestSample(std::span<const float> samples) {
    return HWY_DYNAMIC_DISPATCH(highestSampleVectors)(samples.data(), samples.size());
}

} // namespace zemo::dsp
#endif
