#include "files/FixFlags.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace zemo {
namespace {

using namespace platform;

constexpr std::array<std::string_view, 22> kDiscarded{
    "wav", "WAV", "wv",  "WV",  "wma", "WMA", "mp3", "MP3",  "ra",   "RA",   "au",
    "AU",  "vox", "VOX", "ogg", "OGG", "m4a", "M4A", "flac", "FLAC", "aiff", "AIFF"};

} // namespace

std::uint32_t CalculateLPCMFlags(std::uint32_t validBitsPerChannel,
                                 std::uint32_t totalBitsPerChannel, bool isFloat, bool isBigEndian,
                                 bool isNonInterleaved) {
    std::uint32_t flags = isFloat ? kIsFloat : kIsSignedInteger;
    flags |= isBigEndian ? kIsBigEndian : 0U;
    flags |= validBitsPerChannel == totalBitsPerChannel ? kIsPacked : kIsAlignedHigh;
    flags |= isNonInterleaved ? kIsNonInterleaved : 0U;
    return flags;
}

std::uint32_t fixAifFlags(AudioStreamBasicDescription format) {
    return CalculateLPCMFlags(format.mBitsPerChannel, format.mBitsPerChannel, true, true, false);
}

bool discardExtensions(const std::string& extension) {
    return std::find(kDiscarded.begin(), kDiscarded.end(), extension) != kDiscarded.end();
}

AudioStreamBasicDescription* setFormat(AudioStreamBasicDescription* format, std::uint32_t* fileType,
                                       const std::string& extension, double rate) {
    if (extension == "caf" || extension == "CAF") {
        *fileType = kFileTypeCaf;
        format->mFormatFlags = kIsFloat | kIsPacked | kIsNonInterleaved;
    } else if (extension == "aif" || extension == "AIF") {
        *fileType = kFileTypeAiffC;
        format->mFormatFlags = kIsFloat | kIsBigEndian | kIsPacked;
    }
    format->mSampleRate = rate;
    format->mFormatID = kLinearPCM;
    format->mBytesPerPacket = 4;
    format->mFramesPerPacket = 1;
    format->mBytesPerFrame = 4;
    format->mChannelsPerFrame = 1;
    format->mBitsPerChannel = 32;
    format->mReserved = 0;
    return format;
}

} // namespace zemo
