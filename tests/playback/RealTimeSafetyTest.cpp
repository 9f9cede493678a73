// Proves that the render callback neither allocates, locks nor enters the kernel.
#include <pthread.h>
#include <semaphore.h>
#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "CallCounters.h"
#include "platform_linux/Device.h"
#include "platform_linux/LinuxServices.h"
#include "playback/OutputUnit.h"
#include "playback/RenderCallback.h"
#include "playback/RenderMessageQueue.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/FakePlatform.h"
#include "support/FeedOutput.h"

namespace zemo::test {

std::ostream& operator<<(std::ostream& out, const CallCounts& counts) {
    return out << counts.allocations << " allocations, " << counts.locks << " locks, "
               << counts.systemCalls << " system calls";
}

namespace {

constexpr CallCounts kNothing{};

/// Does one thing whenever the callback has a level to tell.
class Misbehaving final : public RenderDelegate {
public:
    explicit Misbehaving(std::function<void()> deed) : deed_(std::move(deed)) {}
    void updateValue(float) override { deed_(); }
    void resetMeter() override {}
    void resetPlayTitle() override {}
    void traceIdleCycle(std::int32_t) override {}
    void traceMissingBuffer() override {}

private:
    std::function<void()> deed_;
};

class RealTimeSafety : public testing::Test {
protected:
    RealTimeSafety() {
        renderDelegate = &queue_;
        bufferPlayer.outputUnit = &output_;
        const bool byKernel = prepareCounters() == SystemCallsBy::Kernel;
        RecordProperty("system calls counted by", byKernel ? "the kernel" : "name");
        resetCounts();
    }
    ~RealTimeSafety() override { bufferPlayer.outputUnit = nullptr; }

    /// What one render call of the steady play counts when its listener does that.
    CallCounts countsOf(const std::function<void()>& deed) {
        Misbehaving listener(deed);
        renderDelegate = &listener;
        loadSound(std::vector<float>(1000, 0.5F));
        bufferPlayer.readPosition = 0.0;
        bufferPlayer.rampState = Steady;
        output_.start();
        resetCounts();
        {
            const Counting counting;
            output_.feed.fill(frames_.data(), platform::kFramesPerRenderCall);
        }
        renderDelegate = &queue_;
        return counts();
    }

    FakePlatform platform_;
    FeedOutput output_{FloatBufferRenderProc, &bufferPlayer};
    RenderMessageQueue queue_;
    std::vector<float> frames_ = std::vector<float>(4096);
};

TEST_F(RealTimeSafety, AnAllocationInsideACallIsCounted) {
    constexpr CallCounts kOne{.allocations = 1};
    void* volatile block = nullptr;
    const std::vector<std::function<void()>> deeds{
        [&] { block = std::malloc(16); },
        [&] { std::free(block); },
        [&] { block = std::calloc(2, 8); },
        [&] { block = std::realloc(block, 8); },
        [&] { block = reallocarray(block, 1, 4); },
        [&] { std::free(block); },
        [&] { block = ::operator new(16); },
        [&] { ::operator delete(block); },
        [&] { block = new char[16]; },
        [&] { delete[] static_cast<char*>(block); },
        [&] { block = ::operator new (16, std::align_val_t{64}); },
        [&] { ::operator delete (block, std::align_val_t{64}); },
        [&] { block = ::operator new(16, std::nothrow); },
        [&] { ::operator delete(block, std::nothrow); },
        [&] { block = std::aligned_alloc(64, 64); },
        [&] { std::free(block); },
        [&] {
            void* aligned = nullptr;
            [[maybe_unused]] const int result = posix_memalign(&aligned, 64, 64);
            block = aligned;
        },
        [&] { std::free(block); },
    };
    for (std::size_t i = 0; i < deeds.size(); ++i) {
        EXPECT_EQ(countsOf(deeds[i]), kOne) << i;
    }
}

TEST_F(RealTimeSafety, ALockInsideACallIsCounted) {
    constexpr CallCounts kOne{.locks = 1};
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_rwlock_t both = PTHREAD_RWLOCK_INITIALIZER;
    pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
    pthread_spinlock_t spinlock{};
    pthread_spin_init(&spinlock, PTHREAD_PROCESS_PRIVATE);
    sem_t semaphore{};
    sem_init(&semaphore, 0, 0);
    const std::vector<std::function<void()>> deeds{
        [&] { pthread_mutex_lock(&mutex); },
        [&] { static_cast<void>(pthread_mutex_trylock(&mutex)); },
        [&] { pthread_mutex_unlock(&mutex); },
        [&] { pthread_rwlock_rdlock(&both); },
        [&] { pthread_rwlock_unlock(&both); },
        [&] { pthread_rwlock_wrlock(&both); },
        [&] { pthread_rwlock_unlock(&both); },
        [&] { pthread_spin_lock(&spinlock); },
        [&] { pthread_spin_unlock(&spinlock); },
        [&] { pthread_cond_signal(&condition); },
        [&] { pthread_cond_broadcast(&condition); },
        [&] { sem_post(&semaphore); },
        [&] { sem_wait(&semaphore); },
        [&] { sem_trywait(&semaphore); },
    };
    for (std::size_t i = 0; i < deeds.size(); ++i) {
        EXPECT_EQ(countsOf(deeds[i]), kOne) << i;
    }
    sem_destroy(&semaphore);
    pthread_spin_destroy(&spinlock);
}

void askWithoutAFunction() {
#if defined(__x86_64__)
    long answer = 39; // getpid
    asm volatile("syscall" : "+a"(answer) : : "rcx", "r11", "memory");
    EXPECT_EQ(answer, ::getpid()) << "it is made all the same";
#endif
}

TEST_F(RealTimeSafety, ASystemCallInsideACallIsCounted) {
    constexpr CallCounts kOne{.systemCalls = 1};
    const auto writing =
        countsOf([] { [[maybe_unused]] const ssize_t result = ::write(-1, "", 0); });
    EXPECT_EQ(writing, kOne);
    const auto mapping = countsOf([] {
        void* const page = ::mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        static_cast<void>(page); // it is kept: of one call only the first is counted
    });
    EXPECT_EQ(mapping.allocations, 1U);
    if (prepareCounters() == SystemCallsBy::Kernel) {
        EXPECT_EQ(mapping.systemCalls, 1U);
        EXPECT_EQ(countsOf([] { static_cast<void>(::getppid()); }), kOne) << "of any name";
        EXPECT_EQ(countsOf(askWithoutAFunction), kOne);
    }
}

TEST_F(RealTimeSafety, OutsideACallNothingIsCounted) {
    void* volatile block = std::malloc(16);
    std::free(block);
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&mutex);
    static_cast<void>(::getppid());
    EXPECT_EQ(counts(), kNothing);
}

/// Everything that can meet a render call, at random, and how often each has.
class EveryCall : public RealTimeSafety {
protected:
    static constexpr std::uint64_t kCalls = 10'000'000;
    static constexpr std::uint64_t kOften = 10'000; ///< of those

    struct Met {
        std::array<std::uint64_t, 5> states{};
        std::array<std::uint64_t, 2> meters{};
        std::uint64_t calls = 0, exchanges = 0, noSound = 0, emptyQueue = 0, fullQueue = 0;
        std::uint64_t endings = 0, stops = 0, nobody = 0, longCalls = 0, callsOfFeed = 0;
    };

    std::uint32_t below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(random_() % limit);
    }
    bool oneIn(std::uint32_t times) { return below(times) == 0; }

    /// Between two calls, whether or not a play is under way: nobody waits for its end.
    void changeSound() {
        bufferPlayer.outputUnit = nullptr;
        if (oneIn(10)) {
            emptyBuffer();
        } else {
            const std::int64_t count = below(3000);
            SampleBlock block = allocateSamples(count);
            std::fill_n(block.get(), count, oneIn(20) ? NAN : 0.5F);
            replaceBuffer(std::move(block), count);
        }
        bufferPlayer.outputUnit = &output_;
        ++met_.exchanges;
    }

    /// The queue is emptied after every play for a while, then runs full for a while.
    void drainSometimes() {
        if (met_.calls / 20'000 % 2 == 0) {
            queue_.drain(deaf_);
            fresh_ = true;
        }
    }

    void beginPlay() {
        bufferPlayer.rmsMode = static_cast<std::uint8_t>(below(2));
        bufferPlayer.isPlaying = 0;
        bufferPlayer.rampState = Silent;
        renderDelegate = oneIn(50) ? nullptr : &queue_;
        bufferPlay0(0);
        output_.start(); // which no play does without a sound
        if (oneIn(20)) {
            bufferPlayer.rampState = 4;
        }
        platform_.trace.all.clear();
        platform_.trace.out.clear();
    }

    std::uint32_t someFrames() {
        const std::uint32_t kind = below(100);
        return kind == 0 ? 4096 : kind < 3 ? 512 : kind < 20 ? below(512) : below(40);
    }

    /// A render call by way of the outputs' feed, or of any length.
    static platform::Status call(void* self, platform::RenderActionFlags* flags,
                                 const platform::AudioTimeStamp* time, std::uint32_t bus,
                                 std::uint32_t frames, platform::AudioBufferList* data) {
        static_cast<EveryCall*>(self)->note(frames);
        return FloatBufferRenderProc(&bufferPlayer, flags, time, bus, frames, data);
    }

    void note(std::uint32_t frames) {
        ++met_.states[std::min(bufferPlayer.rampState.load(), 4U)];
        ++met_.meters[bufferPlayer.rmsMode];
        met_.noSound += fBuffer.load() == nullptr ? 1U : 0U;
        met_.emptyQueue += fresh_ ? 1U : 0U;
        met_.nobody += renderDelegate.load() == nullptr ? 1U : 0U;
        met_.longCalls += frames == 4096 ? 1U : 0U;
        met_.callsOfFeed += byFeed_ ? 1U : 0U;
        ++met_.calls;
        fresh_ = false;
    }

    void callOnce() {
        const std::uint32_t frames = someFrames();
        platform::RenderActionFlags flags = 0;
        const platform::AudioTimeStamp time{};
        platform::AudioBufferList data{1, {{1, 4 * frames, frames_.data()}}};
        const Counting counting;
        call(this, &flags, &time, 0, frames, &data);
    }

    void request() {
        const std::uint32_t frames = oneIn(100) ? 4096 : below(1100);
        const Counting counting;
        output_.feed.fill(frames_.data(), frames);
    }

    void play() {
        byFeed_ = oneIn(2);
        for (int i = 0; i < 200 && output_.isRunning(); ++i) {
            if (oneIn(40)) {
                bufferStop0();
                ++met_.stops;
            }
            byFeed_ ? request() : callOnce();
            if (oneIn(100)) {
                changeSound();
            }
        }
        met_.endings += output_.isRunning() ? 0U : 1U;
        const Counting counting;
        output_.feed.fill(frames_.data(), 64); // the silence behind a stop
    }

    struct Deaf final : RenderDelegate {
        void updateValue(float) override {}
        void repeatUpdateValue(float, std::uint32_t) override {}
        void resetMeter() override {}
        void resetPlayTitle() override {}
        void traceIdleCycle(std::int32_t) override {}
        void traceMissingBuffer() override {}
    };

    Deaf deaf_;
    Met met_;
    bool fresh_ = false;  ///< the queue was emptied just now
    bool byFeed_ = false; ///< or the test itself makes the calls, of any length
    std::mt19937 random_{8};
};

TEST_F(EveryCall, OfTenMillionNoneAllocatesLocksOrEntersTheKernel) {
    output_.feed.setCallback(call, this);
    while (met_.calls < kCalls) {
        changeSound();
        beginPlay();
        const std::uint64_t droppedBefore = queue_.dropped();
        const std::uint64_t callsBefore = met_.calls;
        play();
        met_.fullQueue += queue_.dropped() > droppedBefore ? met_.calls - callsBefore : 0;
        output_.feed.end();
        drainSometimes();
    }
    EXPECT_EQ(counts(), kNothing);
    for (const std::uint64_t count : met_.states) {
        EXPECT_GT(count, kOften);
    }
    EXPECT_GT(std::min(met_.meters[0], met_.meters[1]), kOften);
    EXPECT_GT(met_.exchanges, kOften);
    EXPECT_GT(met_.noSound, kOften);
    EXPECT_GT(std::min(met_.emptyQueue, met_.fullQueue), kOften);
    EXPECT_GT(met_.endings, kOften);
    EXPECT_GT(met_.stops, kOften);
    EXPECT_GT(met_.nobody, kOften);
    EXPECT_GT(met_.longCalls, kOften);
    EXPECT_GT(met_.callsOfFeed, kCalls / 10);
}

/// Whether the kernel offers this machine's clock without being entered: Linux says which it is.
bool isClockOutsideTheKernel() {
    std::ifstream file("/sys/devices/system/clocksource/clocksource0/current_clocksource");
    std::string name;
    file >> name;
    return name == "tsc" || name == "kvm-clock" || name == "hyperv_clocksource_tsc_page" ||
           name == "arch_sys_counter";
}

TEST_F(RealTimeSafety, ADevicesLookAtTheClockEntersNoKernel) {
    if (!isClockOutsideTheKernel()) {
        GTEST_SKIP() << "this machine has no such clock";
    }
    platform::SteadyClock clock;
    platform::DeviceRun run(clock,
                            {.rate = 48000, .latency = std::chrono::milliseconds(50), .name = {}});
    run.feed.setCallback(FloatBufferRenderProc, &bufferPlayer);
    loadSound(std::vector<float>(1000, 0.5F));
    for (std::uint32_t i = 0; i < 1'000'000; ++i) {
        if (run.feed.phase() != platform::RenderFeed::Phase::Rendering) {
            run.feed.begin();
        }
        const Counting counting;
        run.fill(frames_.data(), 1 + i % 600);
    }
    EXPECT_EQ(counts(), kNothing);
}

TEST_F(RealTimeSafety, TheSilenceAfterAStopAllocatesNothing) {
    output_.feed.setTail(100000);
    output_.feed.begin();
    output_.feed.askStop();
    {
        const Counting counting;
        while (output_.feed.fill(frames_.data(), 64) == 64) {
        }
    }
    EXPECT_EQ(counts(), kNothing);
}

} // namespace
} // namespace zemo::test
