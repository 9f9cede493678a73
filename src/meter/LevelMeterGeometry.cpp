#include "meter/LevelMeterGeometry.h"

#include <cmath>

namespace zemo {
namespace {

constexpr float kFoot = -0.98F;
constexpr float kThreshold = 0.70710677F;      ///< the float nearest to 1/sqrt(2)
constexpr double kLowTop = 0.7071067811865476; ///< the same as a double, where a top is clamped
constexpr float kOpaque = 1.0F;
constexpr float kGhost = 0.6F;

constexpr MeterColour kFootColour{0.0F, 0.3F, 0.3F, kOpaque};

// In 32-bit floats throughout: in doubles the low ramp would miss its end by a bit.
MeterColour lowRamp(float c, float alpha) {
    return {c, 0.5F + 0.15F * c, 0.3F - 0.3F * c, alpha};
}

MeterColour highRamp(float c, float alpha) {
    return {0.6F + 0.4F * c, 0.5F - 0.5F * c, 0.2F + 0.1F * c, alpha};
}

MeterColour zoneBoundary(float alpha) {
    return {0.7F, 0.5F, 0.2F, alpha};
}

/// The low ramp at the threshold.
MeterColour lowRampEnd(float alpha) {
    return {0.70710677F, 0.606066F, 0.087867975F, alpha};
}

void add(MeterFrame& frame, const MeterQuad& quad) {
    frame.quads[frame.count++] = quad;
}

/// The bar itself. The upper zone goes by the magnitude, not by the position: between the two, it
/// is drawn with no height.
void addBar(MeterFrame& frame, float top, float magnitude) {
    const float lowTop = top <= kThreshold ? top : static_cast<float>(kLowTop);
    const float lowMagnitude = magnitude < kThreshold ? magnitude : kThreshold;
    add(frame, {kFoot, lowTop, kFootColour, lowRamp(lowMagnitude, kOpaque)});
    if (magnitude > kThreshold) {
        add(frame, {lowTop, top, zoneBoundary(kOpaque), highRamp(magnitude, kOpaque)});
    }
}

/// The trail goes by positions throughout.
void addGhost(MeterFrame& frame, float top, float magnitude, const MeterMemory& before) {
    if (before.prev_v <= kThreshold) {
        add(frame,
            {top, before.prev_v, lowRamp(magnitude, kGhost), lowRamp(before.prev_cv, kGhost)});
    } else if (top <= kThreshold) {
        add(frame, {top, kThreshold, lowRamp(magnitude, kGhost), lowRampEnd(kGhost)});
        add(frame,
            {kThreshold, before.prev_v, zoneBoundary(kGhost), highRamp(before.prev_cv, kGhost)});
    } else {
        add(frame,
            {top, before.prev_v, highRamp(magnitude, kGhost), highRamp(before.prev_cv, kGhost)});
    }
}

} // namespace

float* scaleLinear(float* p) {
    *p = static_cast<float>(-0.98 + 2.0 * std::fabs(static_cast<double>(*p) * -0.98));
    return p;
}

MeterFrame meterFrame(float level, const MeterMemory& memory) {
    const float magnitude = std::fabs(level);
    float top = level;
    scaleLinear(&top);
    MeterFrame frame;
    addBar(frame, top, magnitude);
    if (memory.prev_v > top) {
        addGhost(frame, top, magnitude, memory);
    }
    frame.memory = {.prev_v = top, .prev_cv = magnitude};
    return frame;
}

} // namespace zemo
