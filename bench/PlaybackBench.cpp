#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "playback/RenderCallback.h"
#include "playback/RenderMessageQueue.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace {

constexpr std::int64_t kSamples = 1 << 16;

/// Answers every call and does nothing.
class NoOutput final : public platform::AudioOutputUnit {
    platform::Status setRenderCallback(platform::RenderCallback, void*) override { return 0; }
    platform::Status sampleRate(double&) override { return 0; }
    platform::Status setStreamFormat(const platform::AudioStreamBasicDescription&) override {
        return 0;
    }
    platform::Status initialize() override { return 0; }
    platform::Status start() override { return 0; }
    platform::Status stop() override { return 0; }
    bool isRunning() const noexcept override { return false; }
    bool attend() override { return false; }
    bool takeFailure() override { return false; }
    std::string notice() const override { return {}; }
};

void loadSine() {
    SampleBlock samples = allocateSamples(kSamples);
    for (std::int64_t i = 0; i < kSamples; ++i) {
        samples.get()[i] = 0.8F * std::sin(0.05F * static_cast<float>(i));
    }
    replaceBuffer(std::move(samples), kSamples);
}

void renderCall(benchmark::State& state, RampState ramp, bool rms) {
    NoOutput output;
    RenderMessageQueue queue;
    bufferPlayer.outputUnit = &output;
    loadSine();
    renderDelegate = &queue;
    bufferPlayer.rmsMode = rms ? 1 : 0;
    const auto frames = static_cast<std::uint32_t>(state.range(0));
    std::vector<float> heard(frames);
    platform::AudioBufferList data{1, {{1, 4 * frames, heard.data()}}};
    platform::RenderActionFlags flags = 0;
    const platform::AudioTimeStamp time{};
    for ([[maybe_unused]] auto each : state) {
        bufferPlayer.rampState.store(ramp, std::memory_order_relaxed);
        bufferPlayer.readPosition.store(0.0, std::memory_order_relaxed);
        FloatBufferRenderProc(&bufferPlayer, &flags, &time, 0, frames, &data);
        benchmark::DoNotOptimize(heard.data());
        benchmark::ClobberMemory();
    }
    state.counters["per_frame"] =
        benchmark::Counter(static_cast<double>(frames) * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    renderDelegate = nullptr;
    bufferPlayer.outputUnit = nullptr;
    emptyBuffer();
}

BENCHMARK_CAPTURE(renderCall, steady_peak, Steady, false)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK_CAPTURE(renderCall, steady_rms, Steady, true)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK_CAPTURE(renderCall, fade_in, FadeIn, false)->Arg(512);

void queuePush(benchmark::State& state) {
    struct Deaf final : RenderDelegate {
        void updateValue(float) override {}
        void resetMeter() override {}
        void resetPlayTitle() override {}
        void traceIdleCycle(std::int32_t) override {}
        void traceMissingBuffer() override {}
    } deaf;
    RenderMessageQueue queue;
    for ([[maybe_unused]] auto each : state) {
        for (int i = 0; i < 1000; ++i) {
            queue.updateValue(0.5F);
        }
        state.PauseTiming();
        queue.drain(deaf);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(1000 * state.iterations());
}
BENCHMARK(queuePush);

} // namespace
} // namespace zemo
