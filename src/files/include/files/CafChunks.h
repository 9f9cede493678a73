#pragma once

#include <cstdint>

#include "files/ByteReader.h"
#include "files/ByteWriter.h"
#include "platform/FourCharCode.h"
#include "platform/StreamDescription.h"

/// The parts of a Core Audio Format file, big-endian throughout, in the order of the format's
/// document. A parse leaves the reader behind the structure; whether it was there in full is asked
/// of the reader.
namespace zemo::caf {

inline constexpr std::uint32_t kFileType = platform::fourCharCode("caff");
inline constexpr std::uint32_t kAudioDescriptionType = platform::fourCharCode("desc");
inline constexpr std::uint32_t kAudioDataType = platform::fourCharCode("data");
inline constexpr std::uint32_t kPacketTableType = platform::fourCharCode("pakt");
inline constexpr std::int64_t kSizeUnknown = -1; ///< of the data chunk: it runs to the file's end

struct FileHeader {
    static constexpr std::uint64_t kBytes = 8;
    std::uint32_t fileType = kFileType;
    std::uint16_t fileVersion = 1;
    std::uint16_t fileFlags = 0;

    static FileHeader parse(ByteReader& in);
    void write(ByteWriter& out) const;
};

struct ChunkHeader {
    static constexpr std::uint64_t kBytes = 12;
    std::uint32_t chunkType = 0;
    std::int64_t chunkSize = 0; ///< bytes that follow the header

    static ChunkHeader parse(ByteReader& in);
    void write(ByteWriter& out) const;
};

struct AudioDescription {
    static constexpr std::uint64_t kBytes = 32;
    static constexpr std::uint32_t kFormatIsFloat = 1;
    static constexpr std::uint32_t kFormatIsLittleEndian = 2;
    double sampleRate = 0.0;
    std::uint32_t formatID = 0;
    std::uint32_t formatFlags = 0; ///< the file format's own bits, not those of a stream
    std::uint32_t bytesPerPacket = 0;
    std::uint32_t framesPerPacket = 0;
    std::uint32_t channelsPerFrame = 0;
    std::uint32_t bitsPerChannel = 0;

    static AudioDescription parse(ByteReader& in);
    void write(ByteWriter& out) const;

    bool isLinearPCM() const noexcept { return formatID == platform::kLinearPCM; }
    /// What a chunk of this kind must say so that anything can be read by it.
    bool isPlausible() const noexcept;
    platform::AudioStreamBasicDescription streamDescription() const noexcept;
    /// Bits per sample, negative for floating point, 0 for what is not linear PCM.
    std::int32_t sourceBitDepth() const noexcept;
};

struct AudioData {
    static constexpr std::uint64_t kBytes = 4;
    std::uint32_t editCount = 0;

    static AudioData parse(ByteReader& in);
    void write(ByteWriter& out) const;
};

struct PacketTable {
    static constexpr std::uint64_t kBytes = 24;
    std::int64_t numberPackets = 0;
    std::int64_t numberValidFrames = 0;
    std::int32_t primingFrames = 0;
    std::int32_t remainderFrames = 0;

    static PacketTable parse(ByteReader& in);
    void write(ByteWriter& out) const;
};

} // namespace zemo::caf
