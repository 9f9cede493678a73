// The longest that a render call takes, as a share of its period: zemo-worst-call [SECONDS]
#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "RenderStage.h"
#include "platform_linux/RenderFeed.h"
#include "playback/RenderCallback.h"
#include "playback/RenderMessageQueue.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace {

using bench::Deaf;
using bench::loadSine;
using bench::NoOutput;

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kFrames = 512;
constexpr double kRate = 48000.0;
constexpr double kPeriod = kFrames / kRate; ///< seconds
constexpr std::int64_t kSamples = 1 << 20;

/// The play goes on for ever, by way of the outputs' own feed; the RMS is the longer of the levels.
std::vector<double> secondsOfCalls(double seconds) {
    platform::RenderFeed feed;
    RenderMessageQueue queue;
    Deaf deaf;
    renderDelegate = &queue;
    bufferPlayer.rmsMode = 1;
    feed.setCallback(FloatBufferRenderProc, &bufferPlayer);
    feed.begin();
    std::vector<float> heard(kFrames);
    std::vector<double> times;
    times.reserve(10'000'000);
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    for (auto before = Clock::now(); before < end && times.size() < times.capacity();) {
        if (bufferPlayer.readPosition.load() > static_cast<double>(kSamples - 4 * kFrames)) {
            bufferPlayer.readPosition.store(0.0);
        }
        bufferPlayer.rampState.store(Steady);
        before = Clock::now();
        feed.fill(heard.data(), kFrames);
        times.push_back(std::chrono::duration<double>(Clock::now() - before).count());
        queue.drain(deaf);
        if (times.size() % 100 == 0) { // the system halts a real-time thread that never rests
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    }
    renderDelegate = nullptr;
    return times;
}

/// So many busy loops at once; the system spreads them over the cores.
class BusyLoops {
public:
    explicit BusyLoops(unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            loops_.emplace_back([this] {
                while (!ended_.load(std::memory_order_relaxed)) {
                }
            });
        }
    }
    BusyLoops(const BusyLoops&) = delete;
    BusyLoops& operator=(const BusyLoops&) = delete;
    ~BusyLoops() { ended_ = true; }

private:
    std::atomic<bool> ended_{false};
    std::vector<std::jthread> loops_;
};

void printRow(const char* name, std::vector<double> times) {
    std::sort(times.begin(), times.end());
    const std::size_t count = times.size();
    const double median = times[count / 2];
    const double most =
        times[std::min(count - 1, static_cast<std::size_t>(static_cast<double>(count) * 0.9999))];
    const double worst = times.back();
    std::printf("%-28s %9zu %9.2f %9.2f %9.2f %8.4f %% %8.4f %% %8.3f %%\n", name, count,
                median * 1e6, most * 1e6, worst * 1e6, 100.0 * median / kPeriod,
                100.0 * most / kPeriod, 100.0 * worst / kPeriod);
}

/// As audio servers run their threads, where the system lets us.
bool askForRealTime() {
    const sched_param parameters{.sched_priority = 20};
    return pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameters) == 0;
}

void measure(const char* name, double seconds, unsigned loops, bool realTime) {
    const BusyLoops busy(loops);
    std::jthread([&] {
        if (!realTime || askForRealTime()) {
            printRow(name, secondsOfCalls(seconds));
        } else {
            std::printf("%-28s not allowed\n", name);
        }
    }).join();
}

} // namespace
} // namespace zemo

int main(int count, char** arguments) {
    const double seconds = count > 1 ? std::atof(arguments[1]) : 5.0;
    zemo::loadSine(zemo::kSamples);
    zemo::NoOutput output;
    zemo::bufferPlayer.outputUnit = &output;
    const unsigned cores = std::max(1U, std::thread::hardware_concurrency());
    std::printf("%-28s %9s %9s %9s %9s %10s %10s %10s\n", "512 frames at 48 kHz", "calls",
                "median us", "99.99 %", "worst", "of period", "99.99 %", "worst");
    zemo::measure("alone", seconds, 0, false);
    zemo::measure("a loop on each other core", seconds, cores - 1, false);
    zemo::measure("a loop on every core", seconds, cores, false);
    zemo::measure("real-time, alone", seconds, 0, true);
    zemo::measure("real-time, a loop on every", seconds, cores, true);
    zemo::bufferPlayer.outputUnit = nullptr;
    return 0;
}
