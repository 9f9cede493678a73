#include "interchange/WavHeader.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace zemo {
namespace {

constexpr std::uint16_t kIeeeFloat = 3;
constexpr std::uint16_t kBytesPerSample = 4;
constexpr std::uint32_t kFormatBytes = 18;
constexpr std::uint32_t kLongSizesBytes = 28;
constexpr std::uint32_t kInLongSizes = UINT32_MAX; ///< a size that is in the chunk 'ds64'
constexpr std::uint64_t kChunkHead = 8;

class LittleWriter {
public:
    void name(std::string_view fourCharacters) {
        bytes_.insert(bytes_.end(), fourCharacters.begin(), fourCharacters.end());
    }
    void u16(std::uint16_t value) { number(value, 2); }
    void u32(std::uint32_t value) { number(value, 4); }
    void u64(std::uint64_t value) { number(value, 8); }

    std::vector<std::uint8_t> take() { return std::move(bytes_); }

private:
    void number(std::uint64_t value, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            bytes_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
    }

    std::vector<std::uint8_t> bytes_;
};

void writeFormat(LittleWriter& out, std::uint32_t rate) {
    out.name("fmt ");
    out.u32(kFormatBytes);
    out.u16(kIeeeFloat);
    out.u16(1);
    out.u32(rate);
    out.u32(rate * kBytesPerSample); // in 32 bits, as the field is
    out.u16(kBytesPerSample);
    out.u16(8 * kBytesPerSample);
    out.u16(0);
}

} // namespace

std::vector<std::uint8_t> wavHeader(std::uint32_t rate, std::uint64_t samples) {
    const std::uint64_t data = samples * kBytesPerSample;
    const std::uint64_t behindRiff =
        4 + (kChunkHead + kFormatBytes) + (kChunkHead + 4) + kChunkHead + data;
    const bool isLong = behindRiff > UINT32_MAX;
    const auto inPlace = [&](std::uint64_t size) {
        return isLong ? kInLongSizes : static_cast<std::uint32_t>(size);
    };
    LittleWriter out;
    out.name(isLong ? "RF64" : "RIFF");
    out.u32(inPlace(behindRiff));
    out.name("WAVE");
    if (isLong) {
        out.name("ds64");
        out.u32(kLongSizesBytes);
        out.u64(behindRiff + kChunkHead + kLongSizesBytes);
        out.u64(data);
        out.u64(samples);
        out.u32(0); // no other chunk is long
    }
    writeFormat(out, rate);
    out.name("fact");
    out.u32(4);
    out.u32(inPlace(samples));
    out.name("data");
    out.u32(inPlace(data));
    return out.take();
}

} // namespace zemo
