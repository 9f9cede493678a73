#include "files/AudioFile.h"

#include <algorithm>
#include <optional>
#include <system_error>
#include <vector>

#include "files/AiffChunks.h"
#include "files/CafChunks.h"
#include "platform/Pieces.h"
#include "platform/Services.h"

namespace zemo {
namespace {

using platform::Error;
using platform::ErrorCategory;
using platform::FileStream;
using platform::Result;

/// More chunks than any real file has: a file of nothing but empty ones ends here.
constexpr int kMostChunks = 65536;

Error malformed(std::uint64_t offset, const platform::Sentence& sentence) {
    return {ErrorCategory::Malformed, offset, sentence};
}

/// A stretch of the file, inside it.
struct Range {
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;
};

Range clipped(std::uint64_t offset, std::uint64_t bytes, std::uint64_t fileSize) {
    const std::uint64_t left = offset < fileSize ? fileSize - offset : 0;
    return {offset, std::min(bytes, left)};
}

Range without(const Range& range, std::uint64_t head) {
    const std::uint64_t skipped = std::min(head, range.bytes);
    return {range.offset + skipped, range.bytes - skipped};
}

// CAF ---------------------------------------------------------------------------------------

struct CafContents {
    std::optional<caf::AudioDescription> description;
    std::optional<Range> data;
    std::optional<Range> packetTable;
    std::int64_t packetsInTable = 0;
};

/// The first chunk of a kind counts; a second one is skipped like an unknown one.
void takeChunk(CafContents& contents, std::uint32_t type, const Range& body, FileStream& stream) {
    ByteReader in(stream, body.offset);
    if (type == caf::kAudioDescriptionType && !contents.description &&
        body.bytes >= caf::AudioDescription::kBytes) {
        contents.description = caf::AudioDescription::parse(in);
    } else if (type == caf::kAudioDataType && !contents.data) {
        contents.data = without(body, caf::AudioData::kBytes);
    } else if (type == caf::kPacketTableType && !contents.packetTable &&
               body.bytes >= caf::PacketTable::kBytes) {
        contents.packetsInTable = caf::PacketTable::parse(in).numberPackets;
        contents.packetTable = without(body, caf::PacketTable::kBytes);
    }
}

CafContents walkCaf(FileStream& stream) {
    CafContents contents;
    ByteReader in(stream, caf::FileHeader::kBytes);
    for (int chunk = 0; chunk < kMostChunks; ++chunk) {
        const auto header = caf::ChunkHeader::parse(in);
        const bool toTheEnd =
            header.chunkType == caf::kAudioDataType && header.chunkSize == caf::kSizeUnknown;
        if (in.failed() || (header.chunkSize < 0 && !toTheEnd)) {
            break;
        }
        const auto size = toTheEnd ? UINT64_MAX : static_cast<std::uint64_t>(header.chunkSize);
        const Range body = clipped(in.offset(), size, stream.size());
        takeChunk(contents, header.chunkType, body, stream);
        in = ByteReader(stream, body.offset + body.bytes);
    }
    return contents;
}

std::uint64_t cafPacketCount(const CafContents& contents) {
    if (contents.description->bytesPerPacket > 0) {
        return contents.data->bytes / contents.description->bytesPerPacket;
    }
    // Packets of varying size: the table has at least one byte for each that is really there.
    const std::uint64_t entries = contents.packetTable ? contents.packetTable->bytes : 0;
    const auto said =
        static_cast<std::uint64_t>(std::max<std::int64_t>(contents.packetsInTable, 0));
    return std::min({said, entries, contents.data->bytes});
}

Result<ContainerDescription> describeCaf(FileStream& stream) {
    ByteReader in(stream, 0);
    const auto header = caf::FileHeader::parse(in);
    if (in.failed() || header.fileVersion != 1) {
        return Error{ErrorCategory::NotSupported, 4, "This version of CAF is not known."};
    }
    const CafContents contents = walkCaf(stream);
    if (!contents.description || !contents.data) {
        return malformed(stream.size(), "The CAF file has no audio description or no audio data.");
    }
    if (!contents.description->isPlausible()) {
        return malformed(caf::FileHeader::kBytes, "The CAF file's audio description is wrong.");
    }
    return ContainerDescription{.format = contents.description->streamDescription(),
                                .sourceBitDepth = contents.description->sourceBitDepth(),
                                .packetCount = cafPacketCount(contents),
                                .dataOffset = contents.data->offset,
                                .dataBytes = contents.data->bytes};
}

// AIFF --------------------------------------------------------------------------------------

struct AiffContents {
    std::optional<aiff::Common> common;
    std::optional<Range> data;
};

void takeChunk(AiffContents& contents, std::uint32_t type, const Range& body, FileStream& stream,
               bool compressed) {
    ByteReader in(stream, body.offset);
    const std::uint64_t commonBytes =
        compressed ? aiff::Common::kBytesAiffC : aiff::Common::kBytesAiff;
    if (type == aiff::kCommonType && !contents.common && body.bytes >= commonBytes) {
        contents.common = aiff::Common::parse(in, compressed);
    } else if (type == aiff::kSoundDataType && !contents.data) {
        const bool whole = body.bytes >= aiff::SoundData::kBytes;
        const std::uint64_t gap = whole ? aiff::SoundData::parse(in).offset : 0;
        contents.data = without(without(body, aiff::SoundData::kBytes), gap);
    }
}

AiffContents walkAiff(FileStream& stream, bool compressed) {
    AiffContents contents;
    ByteReader in(stream, aiff::FormHeader::kBytes);
    for (int chunk = 0; chunk < kMostChunks; ++chunk) {
        const auto header = aiff::ChunkHeader::parse(in);
        if (in.failed()) {
            break;
        }
        const Range body = clipped(in.offset(), header.chunkSize, stream.size());
        takeChunk(contents, header.chunkType, body, stream, compressed);
        in = ByteReader(stream, body.offset + body.bytes + (body.bytes & 1U));
    }
    return contents;
}

std::uint64_t aiffPacketCount(const AiffContents& contents, std::uint32_t bytesPerPacket) {
    if (bytesPerPacket == 0) {
        return 0;
    }
    return std::min<std::uint64_t>(contents.data->bytes / bytesPerPacket,
                                   contents.common->numSampleFrames);
}

Result<ContainerDescription> describeAiff(FileStream& stream, bool compressed) {
    AiffContents contents = walkAiff(stream, compressed);
    if (!contents.common) {
        return malformed(stream.size(), "The AIFF file has no common chunk.");
    }
    if (!contents.common->isCompressionKnown()) {
        return Error{ErrorCategory::NotSupported, std::nullopt,
                     "The AIFF-C file's compression is not known."};
    }
    if (!contents.data && contents.common->numSampleFrames > 0) {
        return malformed(stream.size(), "The AIFF file has no sound data.");
    }
    if (!contents.data) {
        contents.data = Range{stream.size(), 0}; // a sound of no frames needs no data chunk
    }
    if (!contents.common->isPlausible()) {
        return malformed(aiff::FormHeader::kBytes, "The AIFF file's common chunk is wrong.");
    }
    const auto format = contents.common->streamDescription();
    return ContainerDescription{.format = format,
                                .sourceBitDepth = contents.common->sourceBitDepth(),
                                .packetCount = aiffPacketCount(contents, format.mBytesPerPacket),
                                .dataOffset = contents.data->offset,
                                .dataBytes = contents.data->bytes};
}

// Data --------------------------------------------------------------------------------------

/// On all workers; the bytes up to the first that could not be read count.
std::uint64_t readInPieces(FileStream& stream, std::uint64_t offset, void* destination,
                           std::uint64_t bytes) {
    constexpr std::uint64_t kPiece = std::uint64_t{1} << 22U;
    std::vector<std::uint64_t> taken((bytes + kPiece - 1) / kPiece);
    platform::forEachPiece(taken.size(), [&](std::size_t piece, unsigned /*worker*/) {
        const std::uint64_t from = piece * kPiece;
        taken[piece] = stream.readAt(offset + from, static_cast<char*>(destination) + from,
                                     std::min(kPiece, bytes - from));
    });
    std::uint64_t whole = 0;
    for (const std::uint64_t count : taken) {
        whole += count;
        if (count < kPiece) {
            break;
        }
    }
    return whole;
}

} // namespace

Result<ContainerDescription> describeContainer(FileStream& stream) {
    ByteReader in(stream, 0);
    const auto form = aiff::FormHeader::parse(in);
    if (form.chunkType == caf::kFileType) {
        return describeCaf(stream);
    }
    const bool compressed = form.formType == aiff::kAiffC;
    if (!in.failed() && form.chunkType == aiff::kFormType &&
        (compressed || form.formType == aiff::kAiff)) {
        return describeAiff(stream, compressed);
    }
    return Error{ErrorCategory::NotSupported, 0, "The file is neither CAF nor AIFF."};
}

Result<AudioFile> AudioFile::open(const std::string& path) {
    int error = 0;
    auto stream = platform::services().fileSystem->openForReading(path, error);
    if (stream == nullptr) {
        return Error{ErrorCategory::CannotOpen, std::nullopt,
                     std::string("The file cannot be opened: ") +
                         std::generic_category().message(error) + "."};
    }
    auto description = describeContainer(*stream);
    if (!description) {
        return description.error();
    }
    return AudioFile(std::move(stream), description.value());
}

std::uint64_t AudioFile::readBytes(std::uint64_t from, std::uint64_t count, void* destination) {
    if (from >= description_.dataBytes) {
        return 0;
    }
    const std::uint64_t bytes = std::min(count, description_.dataBytes - from);
    return readInPieces(*stream_, description_.dataOffset + from, destination, bytes);
}

} // namespace zemo
