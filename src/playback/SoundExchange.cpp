#include "playback/SoundExchange.h"

#include <algorithm>
#include <new>
#include <utility>

#include "platform/Clock.h"
#include "platform/LongWork.h"
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

/// The block that is to be freed: fBuffer itself may dangle, after clean(). Never freed at exit,
/// when the output may still be reading it. [main]
SampleBlock& ownedBlock() {
    static auto* const block = new SampleBlock;
    return *block;
}
constinit std::int64_t ownedSlack = 0;

constexpr std::size_t kPageBytes = 4096;
constexpr std::size_t kLargeBytes = std::size_t{1} << 23; ///< from here on large pages are worth it

/// Whether a block of that many samples and the slack has a size at all.
bool canCount(std::int64_t count) {
    constexpr std::int64_t kMost = INT64_MAX / static_cast<std::int64_t>(sizeof(float));
    return count >= 0 && count <= kMost - kSlackSamples;
}

/// Nobody else holds the block, and whatever others read in it is behind this thread: a share that
/// is given back comes after those that were given back before. The count alone has no order.
bool isOwnedAlone(const SampleBlock& block) {
    const bool isAlone = block.use_count() <= 1;
    SampleBlock(block).reset();
    return isAlone;
}

} // namespace

SampleBlock ownSamples(float* samples) noexcept {
    if (samples == nullptr) {
        return nullptr;
    }
    try {
        return {samples, [](float* block) { std::free(block); }};
    } catch (const std::bad_alloc&) { // the samples are freed by then
        return nullptr;
    }
}

SampleBlock allocateSamples(std::int64_t count) {
    platform::assertNotRealTime();
    if (!canCount(count)) {
        return nullptr;
    }
    const auto wanted = static_cast<std::size_t>(count + kSlackSamples);
    return ownSamples(static_cast<float*>(std::calloc(wanted, sizeof(float))));
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
    return ownSamples(samples);
}

bool isSounding() {
    return bufferPlayer.outputUnit != nullptr && bufferPlayer.outputUnit->isRunning();
}

void awaitRenderCallsUnderWay() {
    const std::uint64_t entered = callsEntered.load();
    while (callsLeft.load() < entered) {
        platform::services().clock->sleepFor(50us);
    }
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
        platform::pauseFor(500us);
    }
    if (unit->isRunning()) {
        haltOutputUnit();
    }
}

void clean() {
    ownedBlock().reset();
    ownedSlack = 0;
    fBuffersize.store(0);
}

void swapBuffer(SampleBlock& samples, std::int64_t& count, std::int64_t& slack) {
    fallIdle();
    const std::int64_t oldCount = fBuffersize.exchange(0);
    awaitRenderCallsUnderWay();
    samples.swap(ownedBlock());
    fBuffer.store(ownedBlock().get());
    fBuffersize.store(count);
    count = oldCount;
    slack = std::exchange(ownedSlack, slack);
}

void replaceBuffer(SampleBlock samples, std::int64_t count, std::int64_t slack) {
    swapBuffer(samples, count, slack);
}

SampleBlock heldSound() {
    return ownedBlock();
}

bool ensureSoundIsWritable() {
    if (isOwnedAlone(ownedBlock())) {
        return true;
    }
    const std::int64_t count = fBuffersize.load();
    SampleBlock copy = allocateUnsetSamples(count);
    if (copy == nullptr) {
        return false;
    }
    std::copy_n(ownedBlock().get(), count, copy.get());
    replaceBuffer(std::move(copy), count);
    return true;
}

SoundWithheld::SoundWithheld() : count_((fallIdle(), fBuffersize.exchange(0))) {
    awaitRenderCallsUnderWay();
}

SoundWithheld::~SoundWithheld() {
    fBuffersize.store(count_);
}

void emptyBuffer() {
    replaceBuffer(nullptr, 0, 0);
}

std::int64_t slackSamples() noexcept {
    return ownedSlack;
}

RenderPassage::RenderPassage() noexcept ZEMO_NONBLOCKING
    : count_((callsEntered.fetch_add(1), fBuffersize.load())),
      samples_(fBuffer.load()) {}

RenderPassage::~RenderPassage() ZEMO_NONBLOCKING {
    callsLeft.fetch_add(1);
}

} // namespace zemo
