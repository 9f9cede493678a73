#include "playback/SoundExchange.h"

#include <algorithm>
#include <utility>

#include "platform/Clock.h"
#include "platform/Memory.h"
#include "platform/RealTime.h"
#include "platform/Services.h"
#include "playback/Delegate.h"
#include "playback/OutputUnit.h"
#include "playback/SharedState.h"

namespace zemo {
namespace {

using namespace std::chrono_literals;

/// Render calls that have passed their entry and their exit. Sequentially consistent, as is the
/// length: either a call sees length 0, or the exchange sees that call and waits for it.
constinit std::atomic<std::uint64_t> callsEntered{0};
constinit std::atomic<std::uint64_t> callsLeft{0};

/// The block that is to be freed: fBuffer itself may dangle, after clean(). [main]
constinit float* ownedBlock = nullptr;
constinit std::int64_t ownedSlack = 0;

constexpr std::size_t kPageBytes = 4096;
constexpr std::size_t kLargeBytes = std::size_t{1} << 23; ///< from here on large pages are worth it

/// Whether a block of that many samples and the slack has a size at all.
bool canCount(std::int64_t count) {
    constexpr std::int64_t kMost = INT64_MAX / static_cast<std::int64_t>(sizeof(float));
    return count >= 0 && count <= kMost - kSlackSamples;
}

/// The callback never waits, so this lasts no longer than one call.
void awaitRenderCallsUnderWay() {
    const std::uint64_t entered = callsEntered.load();
    while (callsLeft.load() < entered) {
        platform::services().clock->sleepFor(50us);
    }
}

} // namespace

SampleBlock allocateSamples(std::int64_t count) {
    platform::assertNotRealTime();
    if (!canCount(count)) {
        return nullptr;
    }
    const auto wanted = static_cast<std::size_t>(count + kSlackSamples);
    return SampleBlock(static_cast<float*>(std::calloc(wanted, sizeof(float))));
}

SampleBlock allocateUnsetSamples(std::int64_t count) {
    platform::assertNotRealTime();
    if (!canCount(count)) {
        return nullptr;
    }
    const auto bytes = static_cast<std::size_t>(count + kSlackSamples) * sizeof(float);
    void* block = nullptr;
    if (::posix_memalign(&block, kPageBytes, bytes) != 0) {
        return nullptr;
    }
    platform::Memory* const memory = platform::services().memory;
    if (memory != nullptr && bytes >= kLargeBytes) {
        memory->preferLargePages(block, bytes);
    }
    auto* const samples = static_cast<float*>(block);
    std::fill_n(samples + count, kSlackSamples, 0.0F);
    return SampleBlock(samples);
}

bool isSounding() {
    return bufferPlayer.outputUnit != nullptr && bufferPlayer.outputUnit->isRunning();
}

void fallIdle() {
    platform::assertNotRealTime();
    if (!isSounding()) {
        return;
    }
    platform::AudioOutputUnit* const unit = bufferPlayer.outputUnit;
    bufferStop0();
    platform::Clock& clock = *platform::services().clock;
    const auto deadline = clock.now() + kIdleWait;
    while (unit->isRunning() && clock.now() < deadline) {
        unit->attend(); // a device that was only readied makes no call before
        clock.sleepFor(500us);
    }
    if (unit->isRunning()) {
        haltOutputUnit();
    }
}

void clean() {
    std::free(ownedBlock);
    ownedBlock = nullptr;
    ownedSlack = 0;
    fBuffersize.store(0);
}

void swapBuffer(SampleBlock& samples, std::int64_t& count, std::int64_t& slack) {
    fallIdle();
    const std::int64_t oldCount = fBuffersize.exchange(0);
    awaitRenderCallsUnderWay();
    float* const block = samples.release();
    samples.reset(std::exchange(ownedBlock, block));
    fBuffer.store(block);
    fBuffersize.store(count);
    count = oldCount;
    slack = std::exchange(ownedSlack, slack);
}

void replaceBuffer(SampleBlock samples, std::int64_t count, std::int64_t slack) {
    swapBuffer(samples, count, slack);
}

void emptyBuffer() {
    replaceBuffer(nullptr, 0, 0);
}

std::int64_t slackSamples() noexcept {
    return ownedSlack;
}

RenderPassage::RenderPassage() noexcept
    : count_((callsEntered.fetch_add(1), fBuffersize.load())), samples_(fBuffer.load()) {}

RenderPassage::~RenderPassage() {
    callsLeft.fetch_add(1);
}

} // namespace zemo
