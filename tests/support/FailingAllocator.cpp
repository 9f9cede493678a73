#include "support/FailingAllocator.h"

#include <link.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string_view>

// What the definitions below stand before: the C library's own, or the address sanitizer's.
#if defined(ZEMO_ADDRESS_SANITIZER)
#define ZEMO_REAL(name) __interceptor_##name
#else
#define ZEMO_REAL(name) __libc_##name
#endif

extern "C" {
void* ZEMO_REAL(malloc)(std::size_t bytes);
void* ZEMO_REAL(calloc)(std::size_t count, std::size_t bytes);
void* ZEMO_REAL(realloc)(void* block, std::size_t bytes);
void* ZEMO_REAL(memalign)(std::size_t alignment, std::size_t bytes);
void ZEMO_REAL(free)(void* block);
}

namespace zemo::test {
namespace {

struct Range {
    std::uintptr_t first = 0;
    std::uintptr_t end = 0;
};

/// Libraries that are spared, at most so many pieces of code.
constexpr std::size_t kMostRanges = 64;

constinit std::atomic<bool> armed{false};
constinit std::atomic<std::size_t> requests{0};
constinit std::atomic<bool> refusedAny{false};
constinit std::atomic<long> held{0};
constinit std::atomic<long> bytesHeld{0};
constinit MemoryFault plan;
constinit std::array<Range, kMostRanges> sparedCode{};
constinit std::size_t sparedRanges = 0;
constinit thread_local int sparing = 0;

/// The sanitizer does not survive it where a new thread cannot be asked for its stack.
#if defined(ZEMO_ADDRESS_SANITIZER)
constexpr const char* kAlwaysSpared = "libc.so libasan";
#else
constexpr const char* kAlwaysSpared = "";
#endif

/// Whether one of the words is in the library's file name.
bool isNamed(std::string_view words, std::string_view file) noexcept {
    while (!words.empty()) {
        const std::size_t end = std::min(words.find(' '), words.size());
        if (file.find(words.substr(0, end)) != std::string_view::npos) {
            return true;
        }
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return false;
}

int noteCode(dl_phdr_info* info, std::size_t /*size*/, void* /*unused*/) {
    if (!isNamed(kAlwaysSpared, info->dlpi_name) && !isNamed(plan.sparing, info->dlpi_name)) {
        return 0;
    }
    for (int i = 0; i < info->dlpi_phnum && sparedRanges < kMostRanges; ++i) {
        const ElfW(Phdr)& part = info->dlpi_phdr[i];
        if (part.p_type == PT_LOAD && (part.p_flags & PF_X) != 0) {
            const std::uintptr_t first = info->dlpi_addr + part.p_vaddr;
            sparedCode.at(sparedRanges++) = {first, first + part.p_memsz};
        }
    }
    return 0;
}

bool isSpared(const void* caller) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    for (std::size_t i = 0; i < sparedRanges; ++i) {
        if (address >= sparedCode[i].first && address < sparedCode[i].end) {
            return true;
        }
    }
    return false;
}

bool isRefused(std::size_t bytes, const void* caller) noexcept {
    if (!armed.load(std::memory_order_acquire) || sparing > 0 || bytes < plan.atLeastBytes ||
        isSpared(caller)) {
        return false;
    }
    const std::size_t before = requests++;
    const bool refused = before == plan.after || (plan.forGood && before > plan.after);
    if (refused) {
        refusedAny.store(true);
        errno = ENOMEM;
    }
    return refused;
}

/// The sanitizer cannot say it yet when its first blocks are asked for.
long usable([[maybe_unused]] void* block) noexcept {
#if defined(ZEMO_ADDRESS_SANITIZER)
    return 0;
#else
    return static_cast<long>(malloc_usable_size(block));
#endif
}

void* granted(void* block) noexcept {
    if (block != nullptr) {
        ++held;
        bytesHeld += usable(block);
    }
    return block;
}

void givenBack(void* block) noexcept {
    if (block != nullptr) {
        --held;
        bytesHeld -= usable(block);
    }
}

void* throwing(void* block) {
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

} // namespace

FailingMemory::FailingMemory(const MemoryFault& fault) {
    plan = fault;
    sparedRanges = 0;
    dl_iterate_phdr(noteCode, nullptr);
    requests = 0;
    refusedAny = false;
    armed.store(true, std::memory_order_release);
}

void FailingMemory::end() noexcept {
    armed.store(false);
}

std::size_t FailingMemory::asked() const noexcept {
    return requests.load();
}

bool FailingMemory::hasFailed() const noexcept {
    return refusedAny.load();
}

SparedMemory::SparedMemory() noexcept {
    ++sparing;
}

SparedMemory::~SparedMemory() {
    --sparing;
}

long heldBlocks() noexcept {
    return held.load();
}

long heldBytes() noexcept {
    return bytesHeld.load();
}

} // namespace zemo::test

using zemo::test::givenBack;
using zemo::test::granted;
using zemo::test::isRefused;
using zemo::test::throwing;

extern "C" {

void* malloc(std::size_t bytes) {
    return isRefused(bytes, __builtin_return_address(0)) ? nullptr
                                                         : granted(ZEMO_REAL(malloc)(bytes));
}

void* calloc(std::size_t count, std::size_t bytes) {
    return isRefused(count * bytes, __builtin_return_address(0))
               ? nullptr
               : granted(ZEMO_REAL(calloc)(count, bytes));
}

void* realloc(void* block, std::size_t bytes) {
    if (bytes > 0 && isRefused(bytes, __builtin_return_address(0))) {
        return nullptr;
    }
    givenBack(block);
    void* const result = ZEMO_REAL(realloc)(block, bytes);
    const bool stays = result == nullptr && bytes > 0;
    granted(stays ? block : result);
    return result;
}

void* memalign(std::size_t alignment, std::size_t bytes) {
    return isRefused(bytes, __builtin_return_address(0))
               ? nullptr
               : granted(ZEMO_REAL(memalign)(alignment, bytes));
}

void* aligned_alloc(std::size_t alignment, std::size_t bytes) {
    return isRefused(bytes, __builtin_return_address(0))
               ? nullptr
               : granted(ZEMO_REAL(memalign)(alignment, bytes));
}

int posix_memalign(void** block, std::size_t alignment, std::size_t bytes) {
    if (isRefused(bytes, __builtin_return_address(0))) {
        return ENOMEM;
    }
    *block = granted(ZEMO_REAL(memalign)(alignment, bytes));
    return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block) {
    givenBack(block);
    ZEMO_REAL(free)(block);
}

} // extern "C"

// The address sanitizer's own would not ask malloc.
void* operator new(std::size_t bytes) {
    return throwing(std::malloc(bytes));
}

void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return throwing(memalign(static_cast<std::size_t>(alignment), bytes));
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t /*bytes*/) noexcept {
    std::free(block);
}

void operator delete(void* block, std::align_val_t /*alignment*/) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t /*bytes*/, std::align_val_t /*alignment*/) noexcept {
    std::free(block);
}
