#pragma once

#include <cstdint>
#include <vector>

namespace zemo {

/// [any] All of a WAV file that stands before `samples` mono 32-bit floats at `rate` hertz. Where
/// the file is too large for WAV it is an RF64.
std::vector<std::uint8_t> wavHeader(std::uint32_t rate, std::uint64_t samples);

} // namespace zemo
