#include "rescue/FatalEnd.h"

#include <signal.h> // NOLINT(modernize-deprecated-headers): sigaction is not in <csignal>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <ctime>

namespace zemo::rescue {
namespace {

using namespace std::chrono_literals;

constexpr auto kExitPatience = 60s;
constexpr int kCrashPatience = 1000; ///< looks, of 10 ms each
constexpr std::array kCrashes{SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr std::size_t kStackBytes = std::size_t{1} << 16U;

constinit std::atomic<RescueKeeper*> keeper{nullptr};
std::array<struct sigaction, kCrashes.size()> before;
/// A stack that has overflowed has no room for the handler. The main thread's alone.
alignas(16) std::array<char, kStackBytes> handlerStack;

void finishAtExit() {
    if (RescueKeeper* const kept = keeper.load()) {
        kept->finish(kExitPatience);
    }
}

/// Nothing but plain system calls: the heap may be broken, and its lock be held by this thread.
/// The keeper needs that heap as well; when it cannot go on, the patience ends.
void waitForTheKeeper() {
    const RescueKeeper* const kept = keeper.load();
    if (kept == nullptr || kept->isThisThread()) {
        return;
    }
    for (int looks = 0; looks < kCrashPatience && kept->isBusy(); ++looks) {
        const timespec pause{.tv_sec = 0, .tv_nsec = 10'000'000};
        ::nanosleep(&pause, nullptr);
    }
}

/// The handler before this one is back by then, and the signal comes once it is let through.
void crashed(int number) {
    waitForTheKeeper();
    for (std::size_t i = 0; i < kCrashes.size(); ++i) {
        if (kCrashes[i] == number) {
            ::sigaction(number, &before[i], nullptr);
        }
    }
    static_cast<void>(::raise(number));
}

} // namespace

FatalEnd::FatalEnd(RescueKeeper& kept) {
    static const int once = std::atexit(finishAtExit); // it cannot be taken back
    static_cast<void>(once);
    keeper = &kept;
    stack_t stack{};
    stack.ss_sp = handlerStack.data();
    stack.ss_size = handlerStack.size();
    ::sigaltstack(&stack, nullptr);
    struct sigaction action {};
    action.sa_handler = crashed;
    action.sa_flags = SA_ONSTACK;
    ::sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < kCrashes.size(); ++i) {
        ::sigaction(kCrashes[i], &action, &before[i]);
    }
}

FatalEnd::~FatalEnd() {
    for (std::size_t i = 0; i < kCrashes.size(); ++i) {
        ::sigaction(kCrashes[i], &before[i], nullptr);
    }
    stack_t none{};
    none.ss_flags = SS_DISABLE;
    ::sigaltstack(&none, nullptr);
    keeper = nullptr;
}

} // namespace zemo::rescue
