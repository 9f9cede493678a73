#include "interchange/WavHeader.h"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

#include "files_test/SoundFiles.h"
#include "interchange/Import.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

/// The most samples that a WAV file can have: all of it but eight bytes is counted in 32 bits.
constexpr std::uint64_t kMostInWav = (0xFFFFFFFFULL - 50) / 4;

Bytes little(std::uint64_t value, std::size_t bytes) {
    Bytes result = big(value, bytes);
    std::reverse(result.begin(), result.end());
    return result;
}

Bytes formatChunk(std::uint32_t rate) {
    return join({text("fmt "), little(18, 4), little(3, 2), little(1, 2), little(rate, 4),
                 little(std::uint64_t{rate} * 4, 4), little(4, 2), little(32, 2), little(0, 2)});
}

TEST(WavHeader, IsThatOfMonoFloats) {
    EXPECT_EQ(wavHeader(48000, 10),
              join({text("RIFF"), little(50 + 40, 4), text("WAVE"), formatChunk(48000),
                    text("fact"), little(4, 4), little(10, 4), text("data"), little(40, 4)}));
}

TEST(WavHeader, IsAnRf64FromTheFirstSampleThatWavCannotCount) {
    EXPECT_EQ(wavHeader(44100, kMostInWav).size(), 58U);
    const std::uint64_t count = kMostInWav + 1;
    const Bytes minusOne = little(0xFFFFFFFF, 4);
    EXPECT_EQ(
        wavHeader(44100, count),
        join({text("RF64"), minusOne, text("WAVE"), text("ds64"), little(28, 4),
              little(50 + 36 + 4 * count, 8), little(4 * count, 8), little(count, 8), little(0, 4),
              formatChunk(44100), text("fact"), little(4, 4), minusOne, text("data"), minusOne}));
}

/// A header and behind it as many zeros as it says.
class HugeFile final : public platform::FileSystem {
public:
    explicit HugeFile(std::uint64_t samples)
        : head_(wavHeader(48000, samples)), bytes_(4 * samples) {}

    std::unique_ptr<platform::FileStream> openForReading(const std::string& /*path*/,
                                                         int& /*error*/) override {
        class Stream final : public platform::FileStream {
        public:
            Stream(const Bytes& head, std::uint64_t bytes) : head_(head), bytes_(bytes) {}
            std::uint64_t size() const override { return head_.size() + bytes_; }
            std::size_t readAt(std::uint64_t offset, void* destination,
                               std::size_t count) override {
                std::memset(destination, 0, count);
                if (offset < head_.size()) {
                    std::memcpy(destination, head_.data() + offset,
                                std::min<std::size_t>(count, head_.size() - offset));
                }
                return count;
            }

        private:
            const Bytes& head_;
            std::uint64_t bytes_;
        };
        return std::make_unique<Stream>(head_, bytes_);
    }

private:
    Bytes head_;
    std::uint64_t bytes_;
};

TEST(WavHeader, OfAnySizeIsReadByTheImport) {
    const FakePlatform platform;
    for (const std::uint64_t count :
         {std::uint64_t{1}, kMostInWav, kMostInWav + 1, std::uint64_t{5} << 30}) {
        HugeFile file(count);
        platform::services().fileSystem = &file;
        const auto description = describeSoundFile("/x");
        ASSERT_TRUE(description) << count;
        EXPECT_EQ(description.value().frames, static_cast<std::int64_t>(count));
        EXPECT_EQ(description.value().channels, 1);
        EXPECT_EQ(description.value().rate, 48000.0);
    }
}

} // namespace
} // namespace zemo::test
