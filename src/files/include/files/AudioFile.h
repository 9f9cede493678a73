#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/Error.h"
#include "platform/FileStream.h"
#include "platform/StreamDescription.h"

namespace zemo {

/// What a container says of the audio in it, and where that lies.
struct ContainerDescription {
    platform::AudioStreamBasicDescription format;
    std::int32_t sourceBitDepth = 0; ///< bits, negative for floating point, 0 when compressed
    std::uint64_t packetCount = 0;   ///< packets really present in the file
    std::uint64_t dataOffset = 0;    ///< bytes from the file's start
    std::uint64_t dataBytes = 0;     ///< bytes really present
};

/// [main], [worker] Reads a container's chunks, known by its content and not by its name.
platform::Result<ContainerDescription> describeContainer(platform::FileStream& stream);

/// The audio-file service: a CAF, AIFF or AIFF-C file opened for reading.
class AudioFile {
public:
    /// The size in bytes of the property 'ffmt' and whether it can be set.
    struct PropertyInfo {
        std::uint32_t size;
        bool writable;
    };

    /// [main], [worker] Opens the file; the error says why it is no readable container.
    static platform::Result<AudioFile> open(const std::string& path);

    PropertyInfo fileFormatInfo() const noexcept { return {4, false}; } ///< 'ffmt'
    const platform::AudioStreamBasicDescription& dataFormat() const noexcept {
        return description_.format; ///< 'dfmt'
    }
    std::int32_t sourceBitDepth() const noexcept { return description_.sourceBitDepth; } ///< 'sbtd'
    std::uint64_t packetCount() const noexcept { return description_.packetCount; }      ///< 'pcnt'

    /// [main], [worker] Reads raw audio bytes, `from` counted from the first one. Returns the
    /// bytes really read.
    std::uint64_t readBytes(std::uint64_t from, std::uint64_t count, void* destination);

private:
    AudioFile(std::unique_ptr<platform::FileStream> stream, ContainerDescription description)
        : stream_(std::move(stream)), description_(description) {}

    std::unique_ptr<platform::FileStream> stream_;
    ContainerDescription description_;
};

} // namespace zemo
