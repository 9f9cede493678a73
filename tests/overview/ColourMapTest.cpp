#include "overview/ColourMap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

namespace zemo::overview {
namespace {

double linear(std::uint8_t channel) {
    const double c = static_cast<double>(channel) / 255.0;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

double luminance(const Colour& colour) {
    return 0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) +
           0.0722 * linear(colour.blue);
}

/// CIE lightness.
double lightness(const Colour& colour) {
    const double y = luminance(colour);
    return y > 0.008856 ? 116.0 * std::cbrt(y) - 16.0 : 903.3 * y;
}

TEST(ColourMap, EveryColourIsLighterThanTheOneBefore) {
    for (std::size_t i = 1; i < colourMap().size(); ++i) {
        EXPECT_GT(luminance(colourMap()[i]), luminance(colourMap()[i - 1])) << i;
    }
}

TEST(ColourMap, ItsStepsOfLightnessAreEven) {
    for (std::size_t i = 0; i < colourMap().size(); ++i) {
        const double expected = 10.0 + 86.0 * static_cast<double>(i) / 255.0;
        EXPECT_NEAR(lightness(colourMap()[i]), expected, 0.4) << i;
    }
}

TEST(ColourMap, ItRisesFromTheCardItLiesOn) {
    const double card = luminance({0x26, 0x24, 0x30});
    EXPECT_LT(luminance(colourMap().front()), card);
    EXPECT_GT((luminance(colourMap().back()) + 0.05) / (card + 0.05), 12.0);
}

} // namespace
} // namespace zemo::overview
