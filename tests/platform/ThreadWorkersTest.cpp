#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "platform_linux/LinuxServices.h"

namespace zemo::test {
namespace {

using platform::ThreadWorkers;

/// The numbers of the workers that took part.
std::multiset<unsigned> workersOf(ThreadWorkers& workers, unsigned most) {
    std::mutex mutex;
    std::multiset<unsigned> seen;
    workers.run(most, [&](unsigned worker) {
        const std::scoped_lock lock(mutex);
        seen.insert(worker);
    });
    return seen;
}

TEST(ThreadWorkers, ThereAreAsManyAsCoresButNoMoreThanSixteen) {
    EXPECT_EQ(ThreadWorkers().count(), std::clamp(std::thread::hardware_concurrency(), 1U, 16U));
    EXPECT_EQ(ThreadWorkers(3).count(), 3U);
    EXPECT_EQ(ThreadWorkers(1000).count(), 16U);
}

TEST(ThreadWorkers, EachTakesPartOnceAndThenTheRunIsOver) {
    ThreadWorkers workers(4);
    EXPECT_EQ(workersOf(workers, 100), (std::multiset<unsigned>{0, 1, 2, 3}));
    EXPECT_EQ(workersOf(workers, 4), (std::multiset<unsigned>{0, 1, 2, 3}));
    EXPECT_EQ(workersOf(workers, 2), (std::multiset<unsigned>{0, 1}));
    EXPECT_EQ(workersOf(workers, 1), (std::multiset<unsigned>{0}));
}

TEST(ThreadWorkers, TheFirstIsTheCaller) {
    ThreadWorkers workers(3);
    std::atomic<bool> isCaller{false};
    workers.run(3, [&, caller = std::this_thread::get_id()](unsigned worker) {
        if (worker == 0) {
            isCaller = std::this_thread::get_id() == caller;
        }
    });
    EXPECT_TRUE(isCaller);
}

TEST(ThreadWorkers, TheyRunAtTheSameTime) {
    ThreadWorkers workers(3);
    std::atomic<unsigned> there{0};
    workers.run(3, [&](unsigned /*worker*/) {
        ++there;
        while (there < 3) {
            std::this_thread::yield();
        }
    });
    EXPECT_EQ(there, 3U);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
/// In a process that has memory for the threads that it had before, but for no more: 0 when the
/// caller took part, and some of the others did not.
int withTooFewThreads() {
    const rlimit none{1 << 20, 1 << 20};
    if (setrlimit(RLIMIT_AS, &none) != 0) {
        return 2;
    }
    std::atomic<unsigned> there{0};
    std::atomic<bool> isCallerThere{false};
    ThreadWorkers workers(16);
    workers.run(16, [&](unsigned worker) {
        ++there;
        isCallerThere = isCallerThere || worker == 0;
    });
    return isCallerThere && there < 16 ? 0 : 1;
}

TEST(ThreadWorkers, WithTooFewThreadsThoseThatThereAreDoItAll) {
    EXPECT_EXIT(std::_Exit(withTooFewThreads()), testing::ExitedWithCode(0), "");
}
#endif

} // namespace
} // namespace zemo::test
