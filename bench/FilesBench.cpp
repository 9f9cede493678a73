#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "files/AiffChunks.h"
#include "files/AudioFile.h"
#include "files/ByteWriter.h"
#include "files/CafChunks.h"
#include "files/Normalize.h"

namespace zemo {
namespace {

class MemoryStream final : public platform::FileStream {
public:
    explicit MemoryStream(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}

    std::uint64_t size() const override { return bytes_.size(); }

    std::size_t readAt(std::uint64_t offset, void* destination, std::size_t count) override {
        const std::uint64_t from = std::min<std::uint64_t>(offset, bytes_.size());
        const std::size_t read = std::min<std::size_t>(count, bytes_.size() - from);
        std::memcpy(destination, bytes_.data() + from, read);
        return read;
    }

private:
    std::vector<std::uint8_t> bytes_;
};

std::vector<std::uint8_t> cafFile() {
    ByteWriter out;
    caf::FileHeader{}.write(out);
    caf::ChunkHeader{caf::kAudioDescriptionType, caf::AudioDescription::kBytes}.write(out);
    caf::AudioDescription{48000.0, platform::kLinearPCM, 3, 4, 1, 1, 32}.write(out);
    caf::ChunkHeader{caf::kAudioDataType, caf::AudioData::kBytes + 4000}.write(out);
    caf::AudioData{}.write(out);
    std::vector<std::uint8_t> bytes = out.bytes();
    bytes.resize(bytes.size() + 4000);
    return bytes;
}

std::vector<std::uint8_t> aiffCFile() {
    ByteWriter out;
    aiff::FormHeader{}.write(out);
    ByteWriter common;
    aiff::Common{1, 1000, 32, 48000.0, platform::fourCharCode("fl32")}.write(common);
    const auto commonBytes = static_cast<std::uint32_t>(common.bytes().size());
    aiff::ChunkHeader{aiff::kCommonType, commonBytes}.write(out);
    for (const std::uint8_t byte : common.bytes()) {
        out.u8(byte);
    }
    aiff::ChunkHeader{aiff::kSoundDataType, aiff::SoundData::kBytes + 4000}.write(out);
    aiff::SoundData{}.write(out);
    std::vector<std::uint8_t> bytes = out.bytes();
    bytes.resize(bytes.size() + 4000);
    return bytes;
}

void containerParse(benchmark::State& state, std::vector<std::uint8_t> (*file)()) {
    MemoryStream stream(file());
    for ([[maybe_unused]] auto each : state) {
        auto description = describeContainer(stream);
        if (!description || description.value().packetCount != 1000) {
            state.SkipWithError("the file was not understood");
            break;
        }
        benchmark::DoNotOptimize(description);
    }
}
BENCHMARK_CAPTURE(containerParse, caf, cafFile);
BENCHMARK_CAPTURE(containerParse, aiff_c, aiffCFile);

void normalizeMillion(benchmark::State& state) {
    std::vector<float> samples(1000000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = std::sin(0.05F * static_cast<float>(i));
    }
    float peak = 0.0F;
    for ([[maybe_unused]] auto each : state) {
        normalize(samples.data(), static_cast<std::int64_t>(samples.size()), &peak, true);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(samples.size()) * state.iterations());
}
BENCHMARK(normalizeMillion)->Unit(benchmark::kMillisecond);

void signedPeakMillion(benchmark::State& state) {
    std::vector<float> samples(1000000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = std::sin(0.05F * static_cast<float>(i));
    }
    for ([[maybe_unused]] auto each : state) {
        benchmark::DoNotOptimize(
            signedPeak(samples.data(), static_cast<std::int64_t>(samples.size())));
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(samples.size()) * state.iterations());
}
BENCHMARK(signedPeakMillion)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace zemo
