#include "files/CAByteOrder.h"

#include <algorithm>
#include <cstring>

#include "platform/Pieces.h"

namespace zemo {
namespace {

float swapped(float value) noexcept {
    return std::bit_cast<float>(CASwap32(std::bit_cast<std::uint32_t>(value)));
}

constexpr std::size_t kAtATime = std::size_t{1} << 20U; ///< bytes that a worker takes

void swapStretch(std::byte* bytes, std::size_t count) noexcept {
    for (std::size_t i = 0; i + sizeof(std::uint32_t) <= count; i += sizeof(std::uint32_t)) {
        std::uint32_t word = 0;
        std::memcpy(&word, bytes + i, sizeof word);
        word = CASwap32(word);
        std::memcpy(bytes + i, &word, sizeof word);
    }
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
    platform::forEachStretch(block.size(), kAtATime, [&](std::size_t first, std::size_t count) {
        swapStretch(block.data() + first, count);
    });
}

} // namespace zemo
