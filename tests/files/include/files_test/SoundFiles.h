#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

/// Sound files put together byte by byte, without the program's own chunk types: what these say is
/// what the formats' documents say.
namespace zemo::test {

using Bytes = std::vector<std::uint8_t>;

Bytes big(std::uint64_t value, std::size_t bytes);
Bytes text(const std::string& characters);
Bytes join(std::initializer_list<Bytes> parts);
Bytes zeros(std::size_t count);
/// 1, 2, 3, ...: bytes that are told apart.
Bytes counting(std::size_t count);
Bytes bigWords(const std::vector<std::uint32_t>& words);
Bytes littleWords(const std::vector<std::uint32_t>& words);
Bytes bigFloats(const std::vector<float>& samples);
Bytes littleFloats(const std::vector<float>& samples);
/// The sound that `data` becomes when it is copied into `count` zeroed samples, as bit patterns.
std::vector<std::uint32_t> wordsOf(const Bytes& data, std::size_t count);
std::vector<std::uint32_t> reversed(std::vector<std::uint32_t> words);

/// The fields of a CAF audio description; as they stand, mono 32-bit little-endian float.
struct CafDescription {
    double rate = 48000.0;
    const char* formatID = "lpcm";
    std::uint32_t flags = 3; ///< 1 float, 2 little-endian
    std::uint32_t bytesPerPacket = 4;
    std::uint32_t framesPerPacket = 1;
    std::uint32_t channels = 1;
    std::uint32_t bits = 32;
};

Bytes cafHeader();
Bytes cafChunk(const std::string& type, const Bytes& body);
/// A chunk that says of itself that it has `size` bytes.
Bytes cafChunk(const std::string& type, std::int64_t size, const Bytes& body);
Bytes cafDescriptionChunk(const CafDescription& description);
Bytes cafDataChunk(const Bytes& samples);
Bytes cafFile(const CafDescription& description, const Bytes& samples);

/// An 80-bit number: the sign and exponent, and the mantissa with its explicit leading one.
Bytes extended(std::uint16_t signAndExponent, std::uint64_t mantissa);
/// 48000 Hz.
Bytes extended48000();

/// The fields of an AIFF common chunk; as they stand, mono 32-bit big-endian float.
struct AiffCommon {
    std::uint16_t channels = 1;
    std::uint32_t frames = 0;
    std::uint16_t bits = 32;
    Bytes rate = extended48000();
    std::string compression = "fl32"; ///< empty: an AIFF, not an AIFF-C
};

/// A pad byte follows a body of odd length.
Bytes aiffChunk(const std::string& type, const Bytes& body);
Bytes aiffChunk(const std::string& type, std::uint32_t size, const Bytes& body);
Bytes aiffCommonChunk(const AiffCommon& common);
Bytes aiffDataChunk(const Bytes& samples, std::uint32_t offset = 0);
Bytes aiffForm(const std::string& formType, std::initializer_list<Bytes> chunks);
Bytes aiffFile(const AiffCommon& common, const Bytes& samples);

} // namespace zemo::test
