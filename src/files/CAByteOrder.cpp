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
    swapWords(std::as_writable_bytes(samples));
}

void swapWords(std::span<std::byte> block) noexcept {
    std::byte* const bytes = block.data();
    for (std::size_t i = 0; i + sizeof(std::uint32_t) <= block.size(); i += sizeof(std::uint32_t)) {
        std::uint32_t word = 0;
        std::memcpy(&word, bytes + i, sizeof word);
        word = CASwap32(word);
        std::memcpy(bytes + i, &word, sizeof word);
    }
}

} // namespace zemo
