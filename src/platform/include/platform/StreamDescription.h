#pragma once

#include <cstdint>

#include "platform/FourCharCode.h"

namespace zemo::platform {

/// How a stream of audio is laid out. All sizes in bytes, the rate in hertz.
struct AudioStreamBasicDescription {
    double mSampleRate = 0.0;
    std::uint32_t mFormatID = 0;
    std::uint32_t mFormatFlags = 0;
    std::uint32_t mBytesPerPacket = 0;
    std::uint32_t mFramesPerPacket = 0;
    std::uint32_t mBytesPerFrame = 0;
    std::uint32_t mChannelsPerFrame = 0;
    std::uint32_t mBitsPerChannel = 0;
    std::uint32_t mReserved = 0;
};
static_assert(sizeof(AudioStreamBasicDescription) == 40);

inline constexpr std::uint32_t kLinearPCM = fourCharCode("lpcm");

/// Bits of mFormatFlags for linear PCM.
enum LinearPCMFlag : std::uint32_t {
    kIsFloat = 1,
    kIsBigEndian = 2,
    kIsSignedInteger = 4,
    kIsPacked = 8,
    kIsAlignedHigh = 16,
    kIsNonInterleaved = 32,
};

} // namespace zemo::platform
