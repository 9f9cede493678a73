#include "files/CAByteOrder.h"

#include <cstring>

namespace zemo {
namespace {

float swapped(float value) noexcept {
    return std::bit_cast<float>(CASwap32(std::bit_cast<std::uint32_t>(value)));
}

} // namespace

float CASwapFloat32BigToHost(float value) noexcept {
    return swapped(value);
}

float CASwapFloat32HostToBig(float value) noexcept {
    return swapped(value);
}

void swapSamples(std::span<float> samples) noexcept {
    for (float& sample : samples) {
        std::uint32_t word = 0;
        std::memcpy(&word, &sample, sizeof word);
        word = CASwap32(word);
        std::memcpy(&sample, &word, sizeof word);
    }
}

} // namespace zemo
