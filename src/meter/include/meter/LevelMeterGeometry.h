#pragma once

#include <array>
#include <cstddef>

/// What the level meter draws, as numbers. Coordinates are those of an unprojected OpenGL view:
/// x and y from -1 to 1, y upward.
namespace zemo {

struct MeterColour {
    float red = 0.0F;
    float green = 0.0F;
    float blue = 0.0F;
    float alpha = 0.0F;
};

/// A rectangle with a vertical gradient, its corners given in the order (left, foot),
/// (right, foot), (right, top), (left, top).
struct MeterQuad {
    static constexpr float kLeft = -0.5F;
    static constexpr float kRight = 0.5F;
    float foot = 0.0F;
    float top = 0.0F;
    MeterColour footColour;
    MeterColour topColour;
};

/// What the meter keeps from one frame to the next.
struct MeterMemory {
    float prev_v = 0.0F;  ///< the bar's top in the frame before
    float prev_cv = 0.0F; ///< the level's magnitude in the frame before
};

/// One frame: the quads in the order in which they are drawn, and the memory for the next one.
struct MeterFrame {
    std::array<MeterQuad, 4> quads;
    std::size_t count = 0;
    MeterMemory memory;

    const MeterQuad* begin() const { return quads.data(); }
    const MeterQuad* end() const { return quads.data() + count; }
};

/// [any] Replaces the level at `p` (linear amplitude) by the bar's top: -0.98 for 0, 0.98 for 1 and
/// -1, beyond it for more. Returns p.
float* scaleLinear(float* p);

/// [any] The frame for `level` (linear amplitude, sign ignored) after a frame that left `memory`.
/// A bar that has fallen leaves its old top as a translucent ghost, for one frame.
MeterFrame meterFrame(float level, const MeterMemory& memory);

} // namespace zemo
