#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <string>

#include "platform_linux/LinuxServices.h"

namespace zemo::platform {

void LinuxMemory::preferLargePages(void* block, std::size_t bytes) {
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const std::uintptr_t before = reinterpret_cast<std::uintptr_t>(block) % page;
    static_cast<void>(
        ::madvise(static_cast<std::byte*>(block) - before, bytes + before, MADV_HUGEPAGE));
}

/// What the kernel says is free or can be freed at once: "MemAvailable:  1234 kB".
std::uint64_t LinuxMemory::availableBytes() {
    std::ifstream in("/proc/meminfo");
    std::string word;
    while (in >> word) {
        std::uint64_t kibibytes = 0;
        if (word == "MemAvailable:" && in >> kibibytes) {
            return kibibytes * 1024;
        }
    }
    return UINT64_MAX;
}

/// Only the addresses are asked for: nothing is touched.
bool LinuxMemory::isGranted(std::size_t bytes) {
    void* const block =
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return block != MAP_FAILED && ::munmap(block, bytes) == 0;
}

} // namespace zemo::platform
