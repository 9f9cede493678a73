#pragma once

#include <cstdint>
#include <string>

#include "platform/StreamDescription.h"

/// The writer's format helpers. All [any].
namespace zemo {

inline constexpr std::uint32_t kFileTypeCaf = platform::fourCharCode("caff");
inline constexpr std::uint32_t kFileTypeAiffC = platform::fourCharCode("AIFC");

/// 0 for a NaN, the sample itself otherwise.
constexpr float stripeNaN(float sample) noexcept {
    return sample != sample ? 0.0F : sample;
}

/// The flags of linear PCM: packed when all `totalBitsPerChannel` are valid, aligned high
/// otherwise.
std::uint32_t CalculateLPCMFlags(std::uint32_t validBitsPerChannel,
                                 std::uint32_t totalBitsPerChannel, bool isFloat, bool isBigEndian,
                                 bool isNonInterleaved);

/// The flags of big-endian floats of the format's size: 11 for 32 bits.
std::uint32_t fixAifFlags(platform::AudioStreamBasicDescription format);

/// Whether the program has never written files of that extension.
bool discardExtensions(const std::string& extension);

/// Fills `format` with mono 32-bit float at `rate` hertz as the file of that extension holds it
/// ("caf", "CAF", "aif", "AIF"), and `fileType`. For any other extension neither the file type nor
/// the flags are set. Returns `format`.
platform::AudioStreamBasicDescription* setFormat(platform::AudioStreamBasicDescription* format,
                                                 std::uint32_t* fileType,
                                                 const std::string& extension, double rate);

} // namespace zemo
