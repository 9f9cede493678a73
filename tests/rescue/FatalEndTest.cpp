// Ends of real processes, each in a child: a copy that is being made is finished by them.
#include "rescue/FatalEnd.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <functional>
#include <thread>

#include "Rescues.h"

namespace zemo::test {
namespace {

using rescue::FatalEnd;
using rescue::RescueKeeper;

#if defined(__SANITIZE_THREAD__)
constexpr bool kForksWithThreads = false; // that sanitizer's own threads are not in the child
#else
constexpr bool kForksWithThreads = true;
#endif

/// Takes its time over every block, as a slow disk.
class SlowOperations final : public platform::PosixFileOperations {
public:
    int sync(int descriptor) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        return PosixFileOperations::sync(descriptor);
    }
};

class FatalEnds : public RescueTest {
protected:
    void SetUp() override {
        if (!kForksWithThreads) {
            GTEST_SKIP() << "children with threads of their own";
        }
        makeSound(1000, 0.5F);
    }

    /// How a child ended in which a copy was begun just before that end.
    int statusAfter(const std::function<void()>& end) {
        const pid_t child = ::fork();
        if (child == 0) {
            SlowOperations operations;
            platform::services().fileOperations = &operations;
            Told told;
            RescueKeeper keeper(root_, told.events());
            const FatalEnd fatalEnd(keeper);
            keeper.keep(HeldSound::take(), "bell");
            end();
            ::_exit(99); // it was not the end
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return status;
    }

    /// A sanitizer has its own handler before ours, which ends the process with a status.
    static bool isCrash(int status, int number) {
#if defined(__SANITIZE_ADDRESS__)
        static_cast<void>(number);
        return WIFSIGNALED(status) || (WEXITSTATUS(status) != 0 && WEXITSTATUS(status) != 99);
#else
        return WIFSIGNALED(status) && WTERMSIG(status) == number;
#endif
    }

    void expectTheSoundOnTheDisk() {
        ASSERT_EQ(copies().size(), 1U);
        EXPECT_EQ(read(copies()[0]), std::vector<float>(1000, 0.5F));
    }
};

TEST_F(FatalEnds, ExitWaitsForTheCopy) {
    const int status = statusAfter([] { std::exit(1); });
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1);
    expectTheSoundOnTheDisk();
}

TEST_F(FatalEnds, ExitWaitsForTheCopyOnAnyThread) {
    const int status = statusAfter([] { std::thread([] { std::exit(1); }).join(); });
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1);
    expectTheSoundOnTheDisk();
}

TEST_F(FatalEnds, ACrashWaitsForTheCopyAndIsStillThatCrash) {
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        const int status = statusAfter([number] { ::raise(number); });
        EXPECT_TRUE(isCrash(status, number)) << number;
        expectTheSoundOnTheDisk();
        std::filesystem::remove_all(root_);
    }
}

TEST_F(FatalEnds, ACrashOnAnotherThreadWaitsAsWell) {
    const int status = statusAfter([] { std::thread([] { ::raise(SIGABRT); }).join(); });
    EXPECT_TRUE(isCrash(status, SIGABRT));
    expectTheSoundOnTheDisk();
}

int overflow(volatile int* depth) {
    volatile int here = *depth + 1;
    return here > 0 ? overflow(&here) + here : 0; // never so deep
}

TEST_F(FatalEnds, AnOverflownStackWaitsAsWell) {
    const int status = statusAfter([] {
        volatile int depth = 0;
        depth = overflow(&depth);
    });
    EXPECT_TRUE(isCrash(status, SIGSEGV));
    expectTheSoundOnTheDisk();
}

TEST_F(FatalEnds, OnceItIsOverSignalsAreWhatTheyWere) {
    Told told;
    RescueKeeper keeper(root_, told.events());
    struct sigaction before {};
    struct sigaction during {};
    struct sigaction after {};
    ::sigaction(SIGSEGV, nullptr, &before);
    {
        const FatalEnd fatalEnd(keeper);
        ::sigaction(SIGSEGV, nullptr, &during);
    }
    ::sigaction(SIGSEGV, nullptr, &after);
    EXPECT_NE(during.sa_handler, before.sa_handler);
    EXPECT_EQ(after.sa_handler, before.sa_handler);
}

} // namespace
} // namespace zemo::test
