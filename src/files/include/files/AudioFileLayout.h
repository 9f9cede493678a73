#pragma once

#include <cstdint>
#include <vector>

#include "platform/StreamDescription.h"

namespace zemo {

/// The most bytes of audio that an AIFF-C file can say it has.
inline constexpr std::uint64_t kMostAiffCBytes = 0xFFFFFFFFULL - 72;

/// [any] All of a CAF file that stands before `dataBytes` bytes of audio, for linear PCM.
std::vector<std::uint8_t> cafHeader(const platform::AudioStreamBasicDescription& format,
                                    std::uint64_t dataBytes);

/// [any] All of an AIFF-C file that stands before `dataBytes` (at most kMostAiffCBytes, an even
/// number) bytes of mono big-endian 32-bit floats.
std::vector<std::uint8_t> aiffCHeader(const platform::AudioStreamBasicDescription& format,
                                      std::uint64_t dataBytes);

} // namespace zemo
