#include "files_test/SoundFiles.h"

#include <bit>
#include <numeric>

namespace zemo::test {
namespace {

std::uint32_t reversedWord(std::uint32_t word) {
    std::uint32_t result = 0;
    for (int i = 0; i < 4; ++i, word /= 256) {
        result = result * 256 + word % 256;
    }
    return result;
}

std::vector<std::uint32_t> bitsOf(const std::vector<float>& samples) {
    std::vector<std::uint32_t> words;
    for (const float sample : samples) {
        words.push_back(std::bit_cast<std::uint32_t>(sample));
    }
    return words;
}

} // namespace

Bytes big(std::uint64_t value, std::size_t bytes) {
    Bytes result(bytes);
    for (std::size_t i = bytes; i-- > 0; value /= 256) {
        result[i] = static_cast<std::uint8_t>(value % 256);
    }
    return result;
}

Bytes text(const std::string& characters) {
    return {characters.begin(), characters.end()};
}

Bytes join(std::initializer_list<Bytes> parts) {
    Bytes result;
    for (const Bytes& part : parts) {
        result.insert(result.end(), part.begin(), part.end());
    }
    return result;
}

Bytes zeros(std::size_t count) {
    return Bytes(count, 0);
}

Bytes counting(std::size_t count) {
    Bytes result(count);
    std::iota(result.begin(), result.end(), std::uint8_t{1});
    return result;
}

Bytes bigWords(const std::vector<std::uint32_t>& words) {
    Bytes result;
    for (const std::uint32_t word : words) {
        const Bytes bytes = big(word, 4);
        result.insert(result.end(), bytes.begin(), bytes.end());
    }
    return result;
}

Bytes littleWords(const std::vector<std::uint32_t>& words) {
    return bigWords(reversed(words));
}

Bytes bigFloats(const std::vector<float>& samples) {
    return bigWords(bitsOf(samples));
}

Bytes littleFloats(const std::vector<float>& samples) {
    return littleWords(bitsOf(samples));
}

std::vector<std::uint32_t> wordsOf(const Bytes& data, std::size_t count) {
    std::vector<std::uint32_t> words(count);
    for (std::size_t i = 0; i < data.size() && i / 4 < count; ++i) {
        words[i / 4] |= static_cast<std::uint32_t>(data[i]) << (8 * (i % 4));
    }
    return words;
}

std::vector<std::uint32_t> reversed(std::vector<std::uint32_t> words) {
    for (std::uint32_t& word : words) {
        word = reversedWord(word);
    }
    return words;
}

Bytes cafHeader() {
    return join({text("caff"), big(1, 2), big(0, 2)});
}

Bytes cafChunk(const std::string& type, std::int64_t size, const Bytes& body) {
    return join({text(type), big(static_cast<std::uint64_t>(size), 8), body});
}

Bytes cafChunk(const std::string& type, const Bytes& body) {
    return cafChunk(type, static_cast<std::int64_t>(body.size()), body);
}

Bytes cafDescriptionChunk(const CafDescription& description) {
    return cafChunk("desc",
                    join({big(std::bit_cast<std::uint64_t>(description.rate), 8),
                          text(description.formatID), big(description.flags, 4),
                          big(description.bytesPerPacket, 4), big(description.framesPerPacket, 4),
                          big(description.channels, 4), big(description.bits, 4)}));
}

Bytes cafDataChunk(const Bytes& samples) {
    return cafChunk("data", join({big(0, 4), samples}));
}

Bytes cafFile(const CafDescription& description, const Bytes& samples) {
    return join({cafHeader(), cafDescriptionChunk(description), cafDataChunk(samples)});
}

Bytes extended(std::uint16_t signAndExponent, std::uint64_t mantissa) {
    return join({big(signAndExponent, 2), big(mantissa, 8)});
}

Bytes extended48000() {
    return extended(0x400E, 0xBB80000000000000);
}

Bytes aiffChunk(const std::string& type, std::uint32_t size, const Bytes& body) {
    return join({text(type), big(size, 4), body, zeros(body.size() % 2)});
}

Bytes aiffChunk(const std::string& type, const Bytes& body) {
    return aiffChunk(type, static_cast<std::uint32_t>(body.size()), body);
}

Bytes aiffCommonChunk(const AiffCommon& common) {
    const Bytes plain =
        join({big(common.channels, 2), big(common.frames, 4), big(common.bits, 2), common.rate});
    const bool compressed = !common.compression.empty();
    return aiffChunk("COMM",
                     compressed ? join({plain, text(common.compression), zeros(2)}) : plain);
}

Bytes aiffDataChunk(const Bytes& samples, std::uint32_t offset) {
    return aiffChunk("SSND", join({big(offset, 4), big(0, 4), samples}));
}

Bytes aiffForm(const std::string& formType, std::initializer_list<Bytes> chunks) {
    const Bytes body = join(chunks);
    return join({text("FORM"), big(body.size() + 4, 4), text(formType), body});
}

Bytes aiffFile(const AiffCommon& common, const Bytes& samples) {
    return aiffForm(common.compression.empty() ? "AIFF" : "AIFC",
                    {aiffCommonChunk(common), aiffDataChunk(samples)});
}

} // namespace zemo::test
