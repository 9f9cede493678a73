#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

#include "platform_linux/LinuxServices.h"

namespace zemo::platform {

void LinuxMemory::preferLargePages(void* block, std::size_t bytes) {
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const std::uintptr_t before = reinterpret_cast<std::uintptr_t>(block) % page;
    static_cast<void>(
        ::madvise(static_cast<std::byte*>(block) - before, bytes + before, MADV_HUGEPAGE));
}

} // namespace zemo::platform
