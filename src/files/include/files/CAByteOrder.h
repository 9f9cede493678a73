#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zemo {

static_assert(std::endian::native == std::endian::little, "ZEMO runs on little-endian hosts");

/// [any] The four bytes of `word` in the opposite order.
constexpr std::uint32_t CASwap32(std::uint32_t word) noexcept {
    return (word << 24) | ((word & 0xFF00U) << 8) | ((word >> 8) & 0xFF00U) | (word >> 24);
}

/// [any] The four bytes of the value's bit pattern in the opposite order.
float CASwapFloat32BigToHost(float value) noexcept;
float CASwapFloat32HostToBig(float value) noexcept;

/// [main], [worker] Reverses the bytes of every sample, on all workers. Bit patterns pass through
/// unchanged, NaNs included.
void swapSamples(std::span<float> samples) noexcept;

/// [any] The same for a block of bytes that holds floats; a rest of less than four stays.
void swapWords(std::span<std::byte> block) noexcept;

} // namespace zemo
