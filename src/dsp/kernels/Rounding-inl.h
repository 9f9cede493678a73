// Per-target: included once for each instruction set, see hwy/foreach_target.h.
#if defined(ZEMO_DSP_ROUNDING_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ZEMO_DSP_ROUNDING_INL_H
#undef ZEMO_DSP_ROUNDING_INL_H
#else
#define ZEMO_DSP_ROUNDING_INL_H
#endif

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace zemo::dsp::HWY_NAMESPACE {

/// Doubles as floats, beyond whose range they are infinite. Where the library has no vectors its
/// own function gives the largest float there.
template <class FloatTag, class DoubleVector>
HWY_INLINE hwy::HWY_NAMESPACE::Vec<FloatTag> roundToFloats(FloatTag f, DoubleVector v) {
    namespace hn = hwy::HWY_NAMESPACE;
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
    const hn::Rebind<double, FloatTag> d;
    HWY_ALIGN double wide[hn::MaxLanes(FloatTag())];
    HWY_ALIGN float narrow[hn::MaxLanes(FloatTag())];
    hn::Store(v, d, wide);
    for (std::size_t lane = 0; lane < hn::MaxLanes(FloatTag()); ++lane) {
        narrow[lane] = static_cast<float>(wide[lane]);
    }
    return hn::Load(f, narrow);
#else
    return hn::DemoteTo(f, v);
#endif
}

} // namespace zemo::dsp::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
