#pragma once

#include <cstdint>

/// Counts what may block. The program that links this has its own functions before the C library's,
/// for memory and for locks; the kernel itself counts the system calls, so that none slips by,
/// wherever it is made from. One thread at a time counts.
namespace zemo::test {

struct CallCounts {
    std::uint64_t allocations = 0; ///< malloc and its family, new and delete, mappings; frees too
    std::uint64_t locks = 0; ///< mutexes, read-write locks, spin locks, conditions, semaphores
    std::uint64_t systemCalls = 0;

    bool operator==(const CallCounts&) const = default;
};

enum class SystemCallsBy : std::uint8_t {
    Kernel, ///< syscall user dispatch: every one that the thread makes
    Names,  ///< where the kernel does not offer it: only the functions of the C library named here
};

/// [main] Who counts them. The first call asks the kernel, for this thread.
SystemCallsBy prepareCounters();

CallCounts counts() noexcept;
void resetCounts() noexcept;

/// The thread that prepared counts as long as one of these lives. They are not nested.
class Counting {
public:
    Counting() noexcept;
    Counting(const Counting&) = delete;
    Counting& operator=(const Counting&) = delete;
    ~Counting();
};

} // namespace zemo::test
