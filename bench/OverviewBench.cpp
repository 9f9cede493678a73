#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "overview/Spectrogram.h"
#include "overview/WavePyramid.h"

namespace zemo::overview {
namespace {

constexpr double kRate = 44100.0;

/// A sound of that many seconds.
std::vector<float> sound(std::int64_t seconds) {
    std::vector<float> samples(static_cast<std::size_t>(seconds) * 44100);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<float>(i * 2654435761U % 65536) / 65536.0F - 0.5F;
    }
    return samples;
}

void wavePyramid(benchmark::State& state) {
    const std::vector<float> samples = sound(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(WavePyramid::build(samples));
    }
    state.counters["per_sample"] = benchmark::Counter(
        static_cast<double>(samples.size()),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(wavePyramid)->Arg(2)->Arg(60)->Arg(7200)->Unit(benchmark::kMillisecond);

void waveColumns(benchmark::State& state) {
    const auto pyramid = WavePyramid::build(sound(state.range(0)));
    const double each = static_cast<double>(pyramid->count()) / 1200.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(pyramid->columns(0.0, each, 1200));
    }
}
BENCHMARK(waveColumns)->Arg(2)->Arg(60)->Arg(7200)->Unit(benchmark::kMicrosecond);

void spectrogram(benchmark::State& state) {
    const std::vector<float> samples = sound(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(Spectrogram::build(samples, kRate));
    }
}
BENCHMARK(spectrogram)->Arg(2)->Arg(60)->Arg(7200)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace zemo::overview
