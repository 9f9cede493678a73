// Proves that the render callback neither allocates, locks nor writes: this program puts its own
// functions before the C library's and counts every call that is made from inside the callback.
#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <random>

#include "platform/RealTime.h"
#include "platform_linux/RenderFeed.h"
#include "playback/OutputUnit.h"
#include "playback/RenderCallback.h"
#include "playback/RenderMessageQueue.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/FakePlatform.h"

namespace {

std::atomic<long> allocations{0};
std::atomic<long> locks{0};
std::atomic<long> writes{0};

void countInsideRealTime(std::atomic<long>& counter) {
    if (zemo::platform::insideRealTime()) {
        counter.fetch_add(1);
    }
}

template <typename Function> Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) {
    countInsideRealTime(allocations);
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    countInsideRealTime(allocations);
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
    countInsideRealTime(allocations);
    return __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    countInsideRealTime(allocations);
    return __libc_memalign(alignment, size);
}

void free(void* block) {
    countInsideRealTime(allocations);
    __libc_free(block);
}

int pthread_mutex_lock(pthread_mutex_t* mutex) {
    static const auto real = next<int (*)(pthread_mutex_t*)>("pthread_mutex_lock");
    countInsideRealTime(locks);
    return real(mutex);
}

int pthread_cond_signal(pthread_cond_t* condition) {
    static const auto real = next<int (*)(pthread_cond_t*)>("pthread_cond_signal");
    countInsideRealTime(locks);
    return real(condition);
}

ssize_t write(int descriptor, const void* bytes, std::size_t count) {
    static const auto real = next<ssize_t (*)(int, const void*, std::size_t)>("write");
    countInsideRealTime(writes);
    return real(descriptor, bytes, count);
}
}

namespace zemo::test {
namespace {

/// The part of a real output that runs on the audio thread.
class FeedOutput final : public platform::AudioOutputUnit {
public:
    FeedOutput() { feed.setCallback(FloatBufferRenderProc, &bufferPlayer); }
    platform::Status setRenderCallback(platform::RenderCallback, void*) override { return 0; }
    platform::Status sampleRate(double&) override { return 0; }
    platform::Status setStreamFormat(const platform::AudioStreamBasicDescription&) override {
        return 0;
    }
    platform::Status initialize() override { return 0; }
    platform::Status start() override {
        if (!feed.resume()) {
            feed.begin();
        }
        return 0;
    }
    platform::Status stop() override {
        feed.askStop();
        return 0;
    }
    bool isRunning() const noexcept override {
        return feed.phase() == platform::RenderFeed::Phase::Rendering;
    }
    bool attend() override { return isRunning(); }
    bool takeFailure() override { return false; }
    std::string notice() const override { return {}; }

    platform::RenderFeed feed;
};

class RealTimeSafety : public testing::Test {
protected:
    RealTimeSafety() {
        renderDelegate = &queue_;
        bufferPlayer.outputUnit = &output_;
    }
    ~RealTimeSafety() override { bufferPlayer.outputUnit = nullptr; }

    void call(std::uint32_t frames) {
        const std::uint32_t state = bufferPlayer.rampState;
        ++callsByState_[std::min(state, 4U)];
        output_.feed.fill(frames_.data(), frames);
    }

    static void resetCounters() {
        allocations = 0;
        locks = 0;
        writes = 0;
    }

    FakePlatform platform_;
    FeedOutput output_;
    RenderMessageQueue queue_;
    std::vector<float> frames_ = std::vector<float>(4096);
    std::array<long, 5> callsByState_{};
};

TEST_F(RealTimeSafety, AnAllocationALockAndAWriteInsideACallAreCounted) {
    resetCounters();
    std::mutex mutex;
    {
        const platform::RealTimeScope inside;
        void* volatile block = std::malloc(16);
        std::free(block);
        int* volatile number = new int(1);
        delete number;
        pthread_mutex_lock(mutex.native_handle());
        mutex.unlock();
        EXPECT_EQ(::write(-1, "", 0), -1);
    }
    EXPECT_EQ(allocations, 4);
    EXPECT_EQ(locks, 1);
    EXPECT_EQ(writes, 1);
}

TEST_F(RealTimeSafety, OutsideACallNothingIsCounted) {
    resetCounters();
    void* volatile block = std::malloc(16);
    std::free(block);
    EXPECT_EQ(allocations, 0);
}

TEST_F(RealTimeSafety, AHundredThousandCallsInEveryStateAllocateLockAndWriteNothing) {
    std::mt19937 random(8);
    long calls = 0;
    resetCounters();
    while (calls < 100000) {
        loadSound(std::vector<float>(random() % 5000, 0.5F));
        bufferPlayer.rmsMode = static_cast<std::uint8_t>(random() % 2);
        bufferPlay0(0);
        platform_.trace.all.clear();
        platform_.trace.out.clear();
        if (random() % 10 == 0) {
            bufferPlayer.rampState = 4;
        }
        while (output_.isRunning() && bufferPlayer.readPosition < 20000.0) {
            if (random() % 50 == 0) {
                bufferStop0();
            }
            call(1 + static_cast<std::uint32_t>(random() % 300));
            ++calls;
        }
        output_.feed.end();
        bufferPlayer.isPlaying = 0;
        bufferPlayer.rampState = Silent;
        if (random() % 2 == 0) { // sometimes the queue runs full
            queue_.drain(platform_.delegate);
            platform_.delegate.messages.clear();
        }
    }
    emptyBuffer();
    output_.start();
    call(64);
    EXPECT_EQ(allocations, 0);
    EXPECT_EQ(locks, 0);
    EXPECT_EQ(writes, 0);
    for (const long count : callsByState_) {
        EXPECT_GT(count, 100) << "every state was tried";
    }
}

TEST_F(RealTimeSafety, TheSilenceAfterAStopAllocatesNothing) {
    output_.feed.setTail(100000);
    output_.feed.begin();
    output_.feed.askStop();
    resetCounters();
    {
        const platform::RealTimeScope inside;
        while (output_.feed.fill(frames_.data(), 64) == 64) {
        }
    }
    EXPECT_EQ(allocations, 0);
    EXPECT_EQ(locks, 0);
}

} // namespace
} // namespace zemo::test
