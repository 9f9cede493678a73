#include "overview/ColourMap.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace zemo::overview {
namespace {

using Triple = std::array<double, 3>;

constexpr double kDarkest = 10.0; ///< CIE lightness
constexpr double kLightest = 96.0;
constexpr double kFirstHue = 292.0; ///< degrees in CIE LCh: violet
constexpr double kLastHue = 462.0;  ///< yellow, once around
constexpr double kMostChroma = 68.0;

double fromLab(double t) {
    constexpr double kBend = 6.0 / 29.0;
    return t > kBend ? t * t * t : 3.0 * kBend * kBend * (t - 4.0 / 29.0);
}

/// CIE L*a*b* under D65 to linear sRGB.
Triple linearRgb(double lightness, double chroma, double hueDegrees) {
    const double hue = hueDegrees * std::numbers::pi / 180.0;
    const double middle = (lightness + 16.0) / 116.0;
    const double x = 0.95047 * fromLab(middle + chroma * std::cos(hue) / 500.0);
    const double y = fromLab(middle);
    const double z = 1.08883 * fromLab(middle - chroma * std::sin(hue) / 200.0);
    return {3.2404542 * x - 1.5371385 * y - 0.4985314 * z,
            -0.9692660 * x + 1.8760108 * y + 0.0415560 * z,
            0.0556434 * x - 0.2040259 * y + 1.0572252 * z};
}

bool canBeShown(const Triple& rgb) {
    return std::all_of(rgb.begin(), rgb.end(), [](double c) { return c >= 0.0 && c <= 1.0; });
}

std::uint8_t encoded(double linear) {
    const double c =
        linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
    return static_cast<std::uint8_t>(std::lround(255.0 * std::clamp(c, 0.0, 1.0)));
}

/// As strong as a screen shows it at that lightness, which stays.
Colour colourAt(double part) {
    const double lightness = kDarkest + (kLightest - kDarkest) * part;
    const double hue = kFirstHue + (kLastHue - kFirstHue) * part;
    double chroma = kMostChroma * std::sqrt(std::sin(std::numbers::pi * (0.02 + 0.96 * part)));
    Triple rgb = linearRgb(lightness, chroma, hue);
    while (!canBeShown(rgb) && chroma > 0.5) {
        chroma -= 0.5;
        rgb = linearRgb(lightness, chroma, hue);
    }
    return {encoded(rgb[0]), encoded(rgb[1]), encoded(rgb[2])};
}

std::array<Colour, 256> makeMap() {
    std::array<Colour, 256> map;
    for (std::size_t i = 0; i < map.size(); ++i) {
        map[i] = colourAt(static_cast<double>(i) / static_cast<double>(map.size() - 1));
    }
    return map;
}

} // namespace

const std::array<Colour, 256>& colourMap() {
    static const std::array<Colour, 256> map = makeMap();
    return map;
}

} // namespace zemo::overview
