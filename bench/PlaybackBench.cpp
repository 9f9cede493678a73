#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "RenderStage.h"
#include "playback/RenderCallback.h"
#include "playback/RenderMessageQueue.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace {

using bench::Deaf;
using bench::loadSine;
using bench::NoOutput;

constexpr std::int64_t kSamples = 1 << 16;

/// Where in the sound the call begins.
enum class Place { Start, AcrossTheEnd, BehindTheEnd };

double positionOf(Place place, std::uint32_t frames) {
    switch (place) {
    case Place::AcrossTheEnd:
        return static_cast<double>(kSamples - (frames >> 1U));
    case Place::BehindTheEnd:
        return static_cast<double>(kSamples);
    default:
        return 0.0;
    }
}

constexpr std::uint32_t kNoState = 4; ///< as the callback takes any value above FadeOut

void renderCall(benchmark::State& state, std::uint32_t ramp, Place place, bool rms) {
    NoOutput output;
    RenderMessageQueue queue;
    Deaf deaf;
    bufferPlayer.outputUnit = &output;
    loadSine(kSamples);
    renderDelegate = &queue;
    bufferPlayer.rmsMode = rms ? 1 : 0;
    const auto frames = static_cast<std::uint32_t>(state.range(0));
    const double position = positionOf(place, frames);
    std::vector<float> heard(frames);
    platform::AudioBufferList data{1, {{1, 4 * frames, heard.data()}}};
    platform::RenderActionFlags flags = 0;
    const platform::AudioTimeStamp time{};
    for ([[maybe_unused]] auto each : state) {
        bufferPlayer.rampState.store(ramp, std::memory_order_relaxed);
        bufferPlayer.readPosition.store(position, std::memory_order_relaxed);
        bufferPlayer.idleCycles.store(2, std::memory_order_relaxed);
        FloatBufferRenderProc(&bufferPlayer, &flags, &time, 0, frames, &data);
        benchmark::DoNotOptimize(heard.data());
        benchmark::ClobberMemory();
        queue.drain(deaf); // or the queue would run full, and a message cost nothing
    }
    state.counters["per_frame"] =
        benchmark::Counter(static_cast<double>(frames) * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    renderDelegate = nullptr;
    bufferPlayer.outputUnit = nullptr;
    emptyBuffer();
}

/// Every state, with either meter, in calls of the usual lengths.
void registerRenderCalls() {
    struct Case {
        const char* name;
        std::uint32_t ramp;
        Place place;
    };
    constexpr std::array kCases{
        Case{"silent", Silent, Place::Start},
        Case{"fade_in", FadeIn, Place::Start},
        Case{"steady", Steady, Place::Start},
        Case{"fade_out", FadeOut, Place::Start},
        Case{"no_state", kNoState, Place::Start},
        Case{"silent_behind_the_end", Silent, Place::BehindTheEnd},
        Case{"fade_in_across_the_end", FadeIn, Place::AcrossTheEnd},
        Case{"steady_across_the_end", Steady, Place::AcrossTheEnd},
        Case{"fade_out_across_the_end", FadeOut, Place::AcrossTheEnd},
    };
    for (const Case& each : kCases) {
        for (const bool rms : {false, true}) {
            const std::string name =
                std::string("renderCall/") + each.name + (rms ? "/rms" : "/peak");
            benchmark::RegisterBenchmark(name.c_str(), renderCall, each.ramp, each.place, rms)
                ->Arg(64)
                ->Arg(512)
                ->Arg(4096);
        }
    }
}
[[maybe_unused]] const bool registered = (registerRenderCalls(), true);

void queuePush(benchmark::State& state) {
    Deaf deaf;
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
