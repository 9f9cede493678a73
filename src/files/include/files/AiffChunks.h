#pragma once

#include <cstdint>

#include "files/ByteReader.h"
#include "files/ByteWriter.h"
#include "platform/FourCharCode.h"
#include "platform/StreamDescription.h"

/// The parts of an AIFF or AIFF-C file, big-endian throughout. Chunks start at even offsets.
namespace zemo::aiff {

inline constexpr std::uint32_t kFormType = platform::fourCharCode("FORM");
inline constexpr std::uint32_t kAiff = platform::fourCharCode("AIFF");
inline constexpr std::uint32_t kAiffC = platform::fourCharCode("AIFC");
inline constexpr std::uint32_t kFormatVersionType = platform::fourCharCode("FVER");
inline constexpr std::uint32_t kCommonType = platform::fourCharCode("COMM");
inline constexpr std::uint32_t kSoundDataType = platform::fourCharCode("SSND");
inline constexpr std::uint32_t kFormatVersion1 = 0xA2805140; ///< AIFF-C of May 23, 1990

struct FormHeader {
    static constexpr std::uint64_t kBytes = 12;
    std::uint32_t chunkType = kFormType;
    std::uint32_t chunkSize = 0; ///< often wrong in streamed files; not relied on
    std::uint32_t formType = kAiffC;

    static FormHeader parse(ByteReader& in);
    void write(ByteWriter& out) const;
};

struct ChunkHeader {
    static constexpr std::uint64_t kBytes = 8;
    std::uint32_t chunkType = 0;
    std::uint32_t chunkSize = 0; ///< bytes that follow the header, pad byte not counted

    static ChunkHeader parse(ByteReader& in);
    void write(ByteWriter& out) const;
};

struct FormatVersion {
    static constexpr std::uint64_t kBytes = 4;
    std::uint32_t timestamp = kFormatVersion1;

    void write(ByteWriter& out) const;
};

struct Common {
    static constexpr std::uint64_t kBytesAiff = 18;
    static constexpr std::uint64_t kBytesAiffC = 22; ///< without the compression's name
    std::uint16_t numChannels = 0;
    std::uint32_t numSampleFrames = 0;
    std::uint16_t sampleSize = 0; ///< bits
    double sampleRate = 0.0;      ///< hertz
    std::uint32_t compressionType = platform::fourCharCode("NONE");

    static Common parse(ByteReader& in, bool compressed);
    /// As AIFF-C, the compression's name empty.
    void write(ByteWriter& out) const;

    bool isPlausible() const noexcept;
    /// Nothing can be said of packets of a compression that is not known, not even their number.
    bool isCompressionKnown() const noexcept;
    platform::AudioStreamBasicDescription streamDescription() const noexcept;
    /// Bits per sample, negative for floating point, 0 for what is not linear PCM.
    std::int32_t sourceBitDepth() const noexcept;
};

struct SoundData {
    static constexpr std::uint64_t kBytes = 8;
    std::uint32_t offset = 0; ///< bytes between this structure and the first sample
    std::uint32_t blockSize = 0;

    static SoundData parse(ByteReader& in);
    void write(ByteWriter& out) const;
};

} // namespace zemo::aiff
