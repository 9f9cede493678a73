#pragma once

#include <cstddef>

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
};

} // namespace zemo::platform
