#include "files/AiffChunks.h"

#include <algorithm>
#include <array>

namespace zemo::aiff {
namespace {

using platform::fourCharCode;

enum class Coding : std::uint8_t { SignedBig, SignedLittle, UnsignedBig, Float32, Float64, Other };

/// What the compression types of AIFF-C stand for. A size of 0 bits: as the chunk says.
struct Compression {
    std::uint32_t type;
    Coding coding;
    std::uint16_t bits;
    std::uint32_t bytesPerPacketAndChannel; ///< of codings other than linear PCM
    std::uint32_t framesPerPacket;
};

constexpr std::array kCompressions{
    Compression{fourCharCode("NONE"), Coding::SignedBig, 0, 0, 1},
    Compression{fourCharCode("twos"), Coding::SignedBig, 0, 0, 1},
    Compression{fourCharCode("sowt"), Coding::SignedLittle, 0, 0, 1},
    Compression{fourCharCode("raw "), Coding::UnsignedBig, 0, 0, 1},
    Compression{fourCharCode("in24"), Coding::SignedBig, 24, 0, 1},
    Compression{fourCharCode("in32"), Coding::SignedBig, 32, 0, 1},
    Compression{fourCharCode("42ni"), Coding::SignedLittle, 24, 0, 1},
    Compression{fourCharCode("23ni"), Coding::SignedLittle, 32, 0, 1},
    Compression{fourCharCode("fl32"), Coding::Float32, 32, 0, 1},
    Compression{fourCharCode("FL32"), Coding::Float32, 32, 0, 1},
    Compression{fourCharCode("fl64"), Coding::Float64, 64, 0, 1},
    Compression{fourCharCode("FL64"), Coding::Float64, 64, 0, 1},
    Compression{fourCharCode("ulaw"), Coding::Other, 0, 1, 1},
    Compression{fourCharCode("ULAW"), Coding::Other, 0, 1, 1},
    Compression{fourCharCode("alaw"), Coding::Other, 0, 1, 1},
    Compression{fourCharCode("ALAW"), Coding::Other, 0, 1, 1},
    Compression{fourCharCode("ima4"), Coding::Other, 0, 34, 64},
    Compression{fourCharCode("MAC3"), Coding::Other, 0, 2, 6},
    Compression{fourCharCode("MAC6"), Coding::Other, 0, 1, 6},
};

/// Null for a type that is not in the table.
const Compression* find(std::uint32_t type) {
    const auto* const found =
        std::find_if(kCompressions.begin(), kCompressions.end(),
                     [type](const Compression& one) { return one.type == type; });
    return found != kCompressions.end() ? found : nullptr;
}

Compression compressionOf(std::uint32_t type) {
    const Compression* const found = find(type);
    return found != nullptr ? *found : Compression{type, Coding::Other, 0, 0, 0};
}

bool isFloat(Coding coding) {
    return coding == Coding::Float32 || coding == Coding::Float64;
}

std::uint32_t flagsOf(Coding coding, bool packed) {
    std::uint32_t flags = packed ? platform::kIsPacked : platform::kIsAlignedHigh;
    if (coding != Coding::SignedLittle) {
        flags |= platform::kIsBigEndian;
    }
    if (isFloat(coding)) {
        flags |= platform::kIsFloat;
    } else if (coding != Coding::UnsignedBig) {
        flags |= platform::kIsSignedInteger;
    }
    return flags;
}

} // namespace

FormHeader FormHeader::parse(ByteReader& in) {
    FormHeader header;
    header.chunkType = in.u32();
    header.chunkSize = in.u32();
    header.formType = in.u32();
    return header;
}

void FormHeader::write(ByteWriter& out) const {
    out.u32(chunkType);
    out.u32(chunkSize);
    out.u32(formType);
}

ChunkHeader ChunkHeader::parse(ByteReader& in) {
    ChunkHeader header;
    header.chunkType = in.u32();
    header.chunkSize = in.u32();
    return header;
}

void ChunkHeader::write(ByteWriter& out) const {
    out.u32(chunkType);
    out.u32(chunkSize);
}

void FormatVersion::write(ByteWriter& out) const {
    out.u32(timestamp);
}

Common Common::parse(ByteReader& in, bool compressed) {
    Common common;
    common.numChannels = in.u16();
    common.numSampleFrames = in.u32();
    common.sampleSize = in.u16();
    common.sampleRate = in.extended80();
    if (compressed) {
        common.compressionType = in.u32();
    }
    return common;
}

void Common::write(ByteWriter& out) const {
    out.u16(numChannels);
    out.u32(numSampleFrames);
    out.u16(sampleSize);
    out.extended80(sampleRate);
    out.u32(compressionType);
    out.u16(0); // a Pascal string of no characters and its pad byte
}

bool Common::isCompressionKnown() const noexcept {
    return find(compressionType) != nullptr;
}

bool Common::isPlausible() const noexcept {
    const Compression compression = compressionOf(compressionType);
    const bool sizeFromChunk = compression.coding != Coding::Other && compression.bits == 0;
    return numChannels > 0 && (!sizeFromChunk || (sampleSize > 0 && sampleSize <= 32));
}

platform::AudioStreamBasicDescription Common::streamDescription() const noexcept {
    const Compression compression = compressionOf(compressionType);
    platform::AudioStreamBasicDescription result;
    result.mSampleRate = sampleRate;
    result.mFramesPerPacket = compression.framesPerPacket;
    result.mChannelsPerFrame = numChannels;
    if (compression.coding == Coding::Other) {
        result.mFormatID = compressionType;
        result.mBytesPerPacket = compression.bytesPerPacketAndChannel * numChannels;
        return result;
    }
    const std::uint32_t bits = compression.bits != 0 ? compression.bits : sampleSize;
    result.mFormatID = platform::kLinearPCM;
    result.mFormatFlags = flagsOf(compression.coding, bits % 8 == 0);
    result.mBytesPerFrame = (bits + 7) / 8 * numChannels;
    result.mBytesPerPacket = result.mBytesPerFrame;
    result.mBitsPerChannel = bits;
    return result;
}

std::int32_t Common::sourceBitDepth() const noexcept {
    const Compression compression = compressionOf(compressionType);
    const auto bits = static_cast<std::int32_t>(streamDescription().mBitsPerChannel);
    return isFloat(compression.coding) ? -bits : bits;
}

SoundData SoundData::parse(ByteReader& in) {
    SoundData data;
    data.offset = in.u32();
    data.blockSize = in.u32();
    return data;
}

void SoundData::write(ByteWriter& out) const {
    out.u32(offset);
    out.u32(blockSize);
}

} // namespace zemo::aiff
