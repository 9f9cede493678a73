#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// What every target defines: takes one input, ends the process where a promise is broken.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace zemo::fuzz {

/// An assertion that holds in every build.
inline void require(bool promise, const char* what) {
    if (!promise) {
        std::fprintf(stderr, "Broken promise: %s\n", what);
        std::abort();
    }
}

} // namespace zemo::fuzz
