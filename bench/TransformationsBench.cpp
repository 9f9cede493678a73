#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

#include "PlainForms.h"
#include "dsp/AmplitudeModulation.h"
#include "dsp/HarmonicProcessor.h"
#include "dsp/HilbertTransformer.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "dsp/SingleSideband.h"
#include "platform/Services.h"
#include "platform_linux/LinuxServices.h"
#include "playback/SharedState.h"

/// Each transformation's kernel beside its plain form, and a copy of memory as the limit of both.
namespace zemo {
namespace {

namespace plain = test::plain;
using test::Series;
using test::Sound;

constexpr double kRate = 48000.0;
constexpr std::int64_t kSecond = 48000;
constexpr std::int64_t kMinute = 60 * kSecond;

std::size_t lengthOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

/// Noise and tones, the same at each run.
Sound testSound(std::int64_t count) {
    std::mt19937 bits(1);
    Sound sound(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < sound.size(); ++i) {
        const double turns = static_cast<double>(i) / kRate;
        const double tones = std::sin(2.0 * std::numbers::pi * 220.0 * turns) +
                             std::sin(2.0 * std::numbers::pi * 1370.0 * turns);
        const double noise = static_cast<double>(bits()) / 4294967296.0 - 0.5;
        sound[i] = static_cast<float>(0.3 * tones + 0.2 * noise);
    }
    return sound;
}

/// Runs `work` on a sound of the benchmark's length; what it returns is kept from being left out.
template <typename Work> void measure(benchmark::State& state, Work work) {
    const Sound sound = testSound(state.range(0));
    for ([[maybe_unused]] auto each : state) {
        auto result = work(sound);
        benchmark::DoNotOptimize(result);
        benchmark::ClobberMemory();
    }
    state.counters["per_sample"] = benchmark::Counter(
        static_cast<double>(state.range(0)) * static_cast<double>(state.iterations()),
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// The same for a kernel, on as many cores as the benchmark's second number says.
template <typename Kernel> void measureKernel(benchmark::State& state, Kernel kernel) {
    platform::ThreadWorkers workers(static_cast<unsigned>(state.range(1)));
    platform::services().workers = &workers;
    measure(state, kernel);
    platform::services().workers = nullptr;
}

/// The same for one that is kernel(input, output), both of the benchmark's length: the output's
/// memory is there before the first run.
template <typename Kernel> void measureKernelInto(benchmark::State& state, Kernel kernel) {
    Sound output(lengthOf(state));
    measureKernel(state, [&](const Sound& sound) {
        kernel(std::span<const float>(sound), std::span<float>(output));
        return output.data();
    });
}

void memoryCopy(benchmark::State& state) {
    const std::vector<char> from(lengthOf(state), 1);
    std::vector<char> to(from.size(), 2);
    for ([[maybe_unused]] auto each : state) {
        std::memcpy(to.data(), from.data(), from.size());
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    const double copied =
        static_cast<double>(state.range(0)) * static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<std::int64_t>(copied));
    state.counters["per_sample"] = benchmark::Counter(
        copied / sizeof(float), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(memoryCopy)->Arg(256 << 20)->UseRealTime()->Unit(benchmark::kMillisecond);

void amplitudeModulation(benchmark::State& state) {
    measureKernelInto(state, [](auto input, auto output) {
        dsp::amplitudeModulate(input, output, 440.0F, 0.5F, kRate);
    });
}

void amplitudeModulationPlain(benchmark::State& state) {
    measure(state, [](const Sound& sound) {
        return plain::amplitudeModulation(sound, 440.0F, 0.5F, kRate);
    });
}

void phaseModulation(benchmark::State& state) {
    const std::int64_t blockLength = dsp::envelopeBlockLength(16.0F, kRate);
    measureKernelInto(state, [&](auto input, auto output) {
        const auto envelope = dsp::blockEnvelope(input, blockLength);
        dsp::phaseModulate(input, output, envelope, 440.0F, 2.0F, kRate);
    });
}

void phaseModulationPlain(benchmark::State& state) {
    measure(state, [](const Sound& sound) {
        return plain::phaseModulation(sound, 440.0F, 2.0F, 16.0F, kRate);
    });
}

/// The transformer step by step; the sideband's kernel has its own way to the same sums.
void hilbert(benchmark::State& state) {
    R = kRate;
    hilbert_xv.fill(0.0);
    Series output(lengthOf(state));
    measure(state, [&](const Sound& sound) {
        for (std::size_t i = 0; i < sound.size(); ++i) {
            output[i] = hilbertTransform(static_cast<double>(sound[i]));
        }
        return output.data();
    });
}

void hilbertPlain(benchmark::State& state) {
    plain::Hilbert transformer;
    Series output(lengthOf(state));
    measure(state, [&](const Sound& sound) {
        for (std::size_t i = 0; i < sound.size(); ++i) {
            output[i] = transformer(static_cast<double>(sound[i]), kRate);
        }
        return output.data();
    });
}

void singleSideband(benchmark::State& state) {
    std::array<double, 513> line{};
    measureKernelInto(state, [&](auto input, auto output) {
        dsp::singleSideband(input, output, dsp::Sideband::Upper, 120.0F, 1.0F, kRate, line);
    });
}

void singleSidebandPlain(benchmark::State& state) {
    plain::Hilbert transformer;
    measure(state, [&](const Sound& sound) {
        return plain::singleSideband(sound, true, 120.0F, 1.0F, kRate, transformer);
    });
}

/// What the sheet begins with, but with both harmonics.
HdSettings harmonicSettings(std::int32_t highPass) {
    return {.two = true,
            .four = true,
            .attack = 500,
            .scale = true,
            .hpSelect = highPass,
            .slope = 0.995,
            .mix = 0.5F,
            .knee = 0.5F,
            .comp = 0.5F};
}

void harmonics(benchmark::State& state, std::int32_t highPass) {
    std::array<float, 3> inputs{};
    std::array<float, 3> outputs{};
    const HdSettings settings = harmonicSettings(highPass);
    measureKernelInto(state, [&](auto input, auto output) {
        dsp::addHarmonics(input, output, settings, inputs, outputs);
    });
}

void harmonicsPlain(benchmark::State& state, std::int32_t highPass) {
    const HdSettings same = harmonicSettings(highPass);
    const plain::Hd settings{same.two,   same.four, same.attack, same.scale, same.hpSelect,
                             same.slope, same.mix,  same.knee,   same.comp};
    plain::HighPass filter;
    measure(state, [&](const Sound& sound) { return plain::harmonics(sound, settings, filter); });
}

constexpr float kRatio = 0.91875F;

std::size_t resampledLength(const benchmark::State& state) {
    return static_cast<std::size_t>(dsp::resampledLength(state.range(0), kRatio, kRate));
}

void resampling(benchmark::State& state) {
    Sound output(resampledLength(state));
    measureKernel(state, [&](const Sound& sound) {
        dsp::resample(sound, output, kRatio, kRate);
        return output.data();
    });
}

void resamplingPlain(benchmark::State& state) {
    const std::size_t length = resampledLength(state);
    measure(state,
            [&](const Sound& sound) { return plain::resampled(sound, length, kRatio, kRate); });
}

void onOneAndAllCores(benchmark::internal::Benchmark* benchmark) {
    const auto all = static_cast<std::int64_t>(platform::ThreadWorkers().count());
    benchmark->ArgNames({"samples", "cores"})
        ->ArgsProduct({{kSecond, kMinute}, {1, all}})
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

void onOneCore(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("samples")->Arg(kSecond)->Arg(kMinute)->UseRealTime()->Unit(
        benchmark::kMillisecond);
}

BENCHMARK(amplitudeModulation)->Apply(onOneAndAllCores);
BENCHMARK(amplitudeModulationPlain)->Apply(onOneCore);
BENCHMARK(phaseModulation)->Apply(onOneAndAllCores);
BENCHMARK(phaseModulationPlain)->Apply(onOneCore);
BENCHMARK(hilbert)->Apply(onOneCore);
BENCHMARK(hilbertPlain)->Apply(onOneCore);
BENCHMARK(singleSideband)->Apply(onOneAndAllCores);
BENCHMARK(singleSidebandPlain)->Apply(onOneCore);
BENCHMARK_CAPTURE(harmonics, whole, 0)->Apply(onOneAndAllCores);
BENCHMARK_CAPTURE(harmonicsPlain, whole, 0)->Apply(onOneCore);
BENCHMARK_CAPTURE(harmonics, high_pass, 1)->Apply(onOneAndAllCores);
BENCHMARK_CAPTURE(harmonicsPlain, high_pass, 1)->Apply(onOneCore);
BENCHMARK(resampling)->Apply(onOneAndAllCores);
BENCHMARK(resamplingPlain)->Apply(onOneCore);

} // namespace
} // namespace zemo
