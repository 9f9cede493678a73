#include "CallCounters.h"

#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/uio.h>
#include <ucontext.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

namespace zemo::test {
namespace {

// <linux/prctl.h> of Linux 5.11
constexpr int kSetSyscallUserDispatch = 59;
constexpr unsigned long kDispatchOn = 1;
constexpr char kAllow = 0;
constexpr char kBlock = 1;

/// The kernel reads it at every system call of the thread that asked it to.
volatile char selector = kAllow;
bool kernelCounts = false;
thread_local bool isCounting = false;
CallCounts counted;

void countAllocation() noexcept {
    counted.allocations += isCounting ? 1 : 0;
}

void countLock() noexcept {
    counted.locks += isCounting ? 1 : 0;
}

void countSystemCall() noexcept {
    counted.systemCalls += isCounting && !kernelCounts ? 1 : 0;
}

#if defined(__x86_64__)
constexpr int kInstructionBytes = 2; ///< of "syscall"

/// The call was not made. It is counted, and made after all; the kernel looks away for the rest of
/// this Counting.
void onSystemCall(int /*signal*/, siginfo_t* /*info*/, void* context) {
    ++counted.systemCalls;
    selector = kAllow;
    static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP] -= kInstructionBytes;
}

bool askKernel() {
    struct sigaction action {};
    action.sa_sigaction = onSystemCall;
    action.sa_flags = SA_SIGINFO;
    return ::sigaction(SIGSYS, &action, nullptr) == 0 &&
           ::prctl(kSetSyscallUserDispatch, kDispatchOn, 0UL, 0UL, &selector) == 0;
}
#else
bool askKernel() {
    return false;
}
#endif

template <typename Function> Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

} // namespace

SystemCallsBy prepareCounters() {
    static const bool asked = askKernel();
    kernelCounts = asked;
    return kernelCounts ? SystemCallsBy::Kernel : SystemCallsBy::Names;
}

CallCounts counts() noexcept {
    return counted;
}

void resetCounts() noexcept {
    counted = {};
}

Counting::Counting() noexcept {
    isCounting = true;
    selector = kBlock;
}

Counting::~Counting() {
    selector = kAllow;
    isCounting = false;
}

// The C library's names. Each counts and goes on to the function that it stands before.

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier): so they are called
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void* __libc_valloc(std::size_t size);
void* __libc_pvalloc(std::size_t size);
void __libc_free(void* block);
// NOLINTEND(bugprone-reserved-identifier)

// The operators new and delete of the C++ library end in these.

void* malloc(std::size_t size) {
    countAllocation();
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    countAllocation();
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
    countAllocation();
    return __libc_realloc(block, size);
}

void* reallocarray(void* block, std::size_t count, std::size_t size) {
    countAllocation();
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(count, size, &bytes)) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_realloc(block, bytes);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    countAllocation();
    return __libc_memalign(alignment, size);
}

void* memalign(std::size_t alignment, std::size_t size) {
    countAllocation();
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    countAllocation();
    *block = __libc_memalign(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}

void* valloc(std::size_t size) {
    countAllocation();
    return __libc_valloc(size);
}

void* pvalloc(std::size_t size) {
    countAllocation();
    return __libc_pvalloc(size);
}

void free(void* block) {
    countAllocation();
    __libc_free(block);
}

// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are lists and types
#define COUNTED(count, result, name, parameters, arguments)                                        \
    result name parameters {                                                                       \
        static const auto real = next<result(*) parameters>(#name);                                \
        count();                                                                                   \
        return real arguments;                                                                     \
    }
// NOLINTEND(bugprone-macro-parentheses)

COUNTED(countAllocation, void*, mmap, (void* at, size_t n, int p, int f, int d, off_t o),
        (at, n, p, f, d, o))
COUNTED(countAllocation, void*, mmap64, (void* at, size_t n, int p, int f, int d, off64_t o),
        (at, n, p, f, d, o))
COUNTED(countAllocation, int, munmap, (void* at, size_t n), (at, n))
COUNTED(countAllocation, void*, sbrk, (intptr_t more), (more))
COUNTED(countAllocation, int, brk, (void* end), (end))

COUNTED(countLock, int, pthread_mutex_lock, (pthread_mutex_t * m), (m))
COUNTED(countLock, int, pthread_mutex_trylock, (pthread_mutex_t * m), (m))
COUNTED(countLock, int, pthread_mutex_timedlock, (pthread_mutex_t * m, const timespec* t), (m, t))
COUNTED(countLock, int, pthread_mutex_clocklock,
        (pthread_mutex_t * m, clockid_t c, const timespec* t), (m, c, t))
COUNTED(countLock, int, pthread_mutex_unlock, (pthread_mutex_t * m), (m))
COUNTED(countLock, int, pthread_rwlock_rdlock, (pthread_rwlock_t * l), (l))
COUNTED(countLock, int, pthread_rwlock_tryrdlock, (pthread_rwlock_t * l), (l))
COUNTED(countLock, int, pthread_rwlock_timedrdlock, (pthread_rwlock_t * l, const timespec* t),
        (l, t))
COUNTED(countLock, int, pthread_rwlock_wrlock, (pthread_rwlock_t * l), (l))
COUNTED(countLock, int, pthread_rwlock_trywrlock, (pthread_rwlock_t * l), (l))
COUNTED(countLock, int, pthread_rwlock_timedwrlock, (pthread_rwlock_t * l, const timespec* t),
        (l, t))
COUNTED(countLock, int, pthread_rwlock_unlock, (pthread_rwlock_t * l), (l))
COUNTED(countLock, int, pthread_spin_lock, (pthread_spinlock_t * l), (l))
COUNTED(countLock, int, pthread_spin_trylock, (pthread_spinlock_t * l), (l))
COUNTED(countLock, int, pthread_spin_unlock, (pthread_spinlock_t * l), (l))
COUNTED(countLock, int, pthread_cond_wait, (pthread_cond_t * c, pthread_mutex_t* m), (c, m))
COUNTED(countLock, int, pthread_cond_timedwait,
        (pthread_cond_t * c, pthread_mutex_t* m, const timespec* t), (c, m, t))
COUNTED(countLock, int, pthread_cond_clockwait,
        (pthread_cond_t * c, pthread_mutex_t* m, clockid_t k, const timespec* t), (c, m, k, t))
COUNTED(countLock, int, pthread_cond_signal, (pthread_cond_t * c), (c))
COUNTED(countLock, int, pthread_cond_broadcast, (pthread_cond_t * c), (c))
COUNTED(countLock, int, pthread_barrier_wait, (pthread_barrier_t * b), (b))
COUNTED(countLock, int, sem_wait, (sem_t * s), (s))
COUNTED(countLock, int, sem_trywait, (sem_t * s), (s))
COUNTED(countLock, int, sem_timedwait, (sem_t * s, const timespec* t), (s, t))
COUNTED(countLock, int, sem_post, (sem_t * s), (s))

// Only where the kernel does not count.
COUNTED(countSystemCall, ssize_t, write, (int d, const void* b, size_t n), (d, b, n))
COUNTED(countSystemCall, ssize_t, writev, (int d, const iovec* v, int n), (d, v, n))
COUNTED(countSystemCall, ssize_t, read, (int d, void* b, size_t n), (d, b, n))
COUNTED(countSystemCall, int, poll, (pollfd * p, nfds_t n, int t), (p, n, t))
COUNTED(countSystemCall, int, nanosleep, (const timespec* t, timespec* r), (t, r))
COUNTED(countSystemCall, int, clock_nanosleep, (clockid_t c, int f, const timespec* t, timespec* r),
        (c, f, t, r))
COUNTED(countSystemCall, int, sched_yield, (), ())

#undef COUNTED
}

} // namespace zemo::test
