#pragma once

#include <cstddef>
#include <cstdint>

namespace zemo::platform {

class Memory {
public:
    Memory() = default;
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;
    virtual ~Memory() = default;

    /// [main], [worker] Says that all of a block that nobody has touched yet is going to be used,
    /// so that the system may hand it over in large pages. It is a hint: it cannot fail.
    virtual void preferLargePages(void* block, std::size_t bytes) = 0;

    /// [main], [worker] About how many bytes more the system can give without taking them from
    /// others; the greatest number where it does not say.
    virtual std::uint64_t availableBytes() { return UINT64_MAX; }

    /// [main], [worker] Whether the process is given a block of that many bytes, which goes back at
    /// once.
    virtual bool isGranted(std::size_t /*bytes*/) { return true; }
};

} // namespace zemo::platform
