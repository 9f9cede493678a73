#include "files/CafChunks.h"

namespace zemo::caf {

FileHeader FileHeader::parse(ByteReader& in) {
    FileHeader header;
    header.fileType = in.u32();
    header.fileVersion = in.u16();
    header.fileFlags = in.u16();
    return header;
}

void FileHeader::write(ByteWriter& out) const {
    out.u32(fileType);
    out.u16(fileVersion);
    out.u16(fileFlags);
}

ChunkHeader ChunkHeader::parse(ByteReader& in) {
    ChunkHeader header;
    header.chunkType = in.u32();
    header.chunkSize = in.i64();
    return header;
}

void ChunkHeader::write(ByteWriter& out) const {
    out.u32(chunkType);
    out.i64(chunkSize);
}

AudioDescription AudioDescription::parse(ByteReader& in) {
    AudioDescription description;
    description.sampleRate = in.f64();
    description.formatID = in.u32();
    description.formatFlags = in.u32();
    description.bytesPerPacket = in.u32();
    description.framesPerPacket = in.u32();
    description.channelsPerFrame = in.u32();
    description.bitsPerChannel = in.u32();
    return description;
}

void AudioDescription::write(ByteWriter& out) const {
    out.f64(sampleRate);
    out.u32(formatID);
    out.u32(formatFlags);
    out.u32(bytesPerPacket);
    out.u32(framesPerPacket);
    out.u32(channelsPerFrame);
    out.u32(bitsPerChannel);
}

bool AudioDescription::isPlausible() const noexcept {
    if (channelsPerFrame == 0) {
        return false;
    }
    return !isLinearPCM() || (bytesPerPacket > 0 && framesPerPacket > 0 && bitsPerChannel > 0 &&
                              bitsPerChannel <= 64);
}

platform::AudioStreamBasicDescription AudioDescription::streamDescription() const noexcept {
    platform::AudioStreamBasicDescription result{.mSampleRate = sampleRate,
                                                 .mFormatID = formatID,
                                                 .mFormatFlags = formatFlags,
                                                 .mBytesPerPacket = bytesPerPacket,
                                                 .mFramesPerPacket = framesPerPacket,
                                                 .mBytesPerFrame = 0,
                                                 .mChannelsPerFrame = channelsPerFrame,
                                                 .mBitsPerChannel = bitsPerChannel,
                                                 .mReserved = 0};
    if (!isLinearPCM()) {
        return result;
    }
    result.mBytesPerFrame = bytesPerPacket / framesPerPacket;
    const std::uint64_t usedBits = std::uint64_t{channelsPerFrame} * bitsPerChannel;
    const bool packed = usedBits == std::uint64_t{result.mBytesPerFrame} * 8;
    result.mFormatFlags =
        ((formatFlags & kFormatIsFloat) != 0 ? platform::kIsFloat : platform::kIsSignedInteger) |
        ((formatFlags & kFormatIsLittleEndian) != 0 ? 0U : platform::kIsBigEndian) |
        (packed ? platform::kIsPacked : platform::kIsAlignedHigh);
    return result;
}

std::int32_t AudioDescription::sourceBitDepth() const noexcept {
    if (!isLinearPCM()) {
        return 0;
    }
    const auto bits = static_cast<std::int32_t>(bitsPerChannel);
    return (formatFlags & kFormatIsFloat) != 0 ? -bits : bits;
}

AudioData AudioData::parse(ByteReader& in) {
    AudioData data;
    data.editCount = in.u32();
    return data;
}

void AudioData::write(ByteWriter& out) const {
    out.u32(editCount);
}

PacketTable PacketTable::parse(ByteReader& in) {
    PacketTable table;
    table.numberPackets = in.i64();
    table.numberValidFrames = in.i64();
    table.primingFrames = in.i32();
    table.remainderFrames = in.i32();
    return table;
}

void PacketTable::write(ByteWriter& out) const {
    out.i64(numberPackets);
    out.i64(numberValidFrames);
    out.u32(static_cast<std::uint32_t>(primingFrames));
    out.u32(static_cast<std::uint32_t>(remainderFrames));
}

} // namespace zemo::caf
