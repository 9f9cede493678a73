#include "files/AudioFileLayout.h"

#include "files/AiffChunks.h"
#include "files/CafChunks.h"

namespace zemo {

std::vector<std::uint8_t> cafHeader(const platform::AudioStreamBasicDescription& format,
                                    std::uint64_t dataBytes) {
    using namespace caf;
    const bool isFloat = (format.mFormatFlags & platform::kIsFloat) != 0;
    const bool isLittleEndian = (format.mFormatFlags & platform::kIsBigEndian) == 0;
    const AudioDescription description{
        .sampleRate = format.mSampleRate,
        .formatID = format.mFormatID,
        .formatFlags = (isFloat ? AudioDescription::kFormatIsFloat : 0U) |
                       (isLittleEndian ? AudioDescription::kFormatIsLittleEndian : 0U),
        .bytesPerPacket = format.mBytesPerPacket,
        .framesPerPacket = format.mFramesPerPacket,
        .channelsPerFrame = format.mChannelsPerFrame,
        .bitsPerChannel = format.mBitsPerChannel};
    ByteWriter out;
    FileHeader{}.write(out);
    ChunkHeader{kAudioDescriptionType, AudioDescription::kBytes}.write(out);
    description.write(out);
    ChunkHeader{kAudioDataType, static_cast<std::int64_t>(AudioData::kBytes + dataBytes)}.write(
        out);
    AudioData{}.write(out);
    return out.bytes();
}

std::vector<std::uint8_t> aiffCHeader(const platform::AudioStreamBasicDescription& format,
                                      std::uint64_t dataBytes) {
    using namespace aiff;
    constexpr std::uint32_t kCommonBytes = Common::kBytesAiffC + 2; // an empty name and its pad
    constexpr std::uint32_t kHeadBytes = FormHeader::kBytes + ChunkHeader::kBytes +
                                         FormatVersion::kBytes + ChunkHeader::kBytes +
                                         kCommonBytes + ChunkHeader::kBytes + SoundData::kBytes;
    static_assert(kMostAiffCBytes == 0xFFFFFFFFULL - kHeadBytes);
    const auto data = static_cast<std::uint32_t>(dataBytes);
    ByteWriter out;
    FormHeader{kFormType, kHeadBytes - static_cast<std::uint32_t>(ChunkHeader::kBytes) + data,
               kAiffC}
        .write(out);
    ChunkHeader{kFormatVersionType, FormatVersion::kBytes}.write(out);
    FormatVersion{}.write(out);
    ChunkHeader{kCommonType, kCommonBytes}.write(out);
    Common{.numChannels = static_cast<std::uint16_t>(format.mChannelsPerFrame),
           .numSampleFrames = data / format.mBytesPerFrame,
           .sampleSize = static_cast<std::uint16_t>(format.mBitsPerChannel),
           .sampleRate = format.mSampleRate,
           .compressionType = platform::fourCharCode("fl32")}
        .write(out);
    ChunkHeader{kSoundDataType, static_cast<std::uint32_t>(SoundData::kBytes) + data}.write(out);
    SoundData{}.write(out);
    return out.bytes();
}

} // namespace zemo
