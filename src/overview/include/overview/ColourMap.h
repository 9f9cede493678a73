#pragma once

#include <array>
#include <cstdint>

namespace zemo::overview {

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};

/// [any] Colours from dark violet over rose and orange to a pale yellow, each as much lighter than
/// the one before as that is than the one before it: equal steps of CIE lightness, 10 to 96. The
/// first lies below the cards of the window, the others rise from it.
const std::array<Colour, 256>& colourMap();

} // namespace zemo::overview
