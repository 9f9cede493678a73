#pragma once

#include <cstddef>
#include <new>

#include "platform/Memory.h"
#include "platform/Services.h"

namespace zemo {

/// What a call of the libraries may take at most: it is seen to before that call.
inline constexpr std::size_t kLibraryRoom = std::size_t{1} << 26U;

/// [main], [worker] To be called before any library that decodes, encodes or converts: throws
/// std::bad_alloc when the system would not give it that much. The libraries themselves do not look
/// whether they got a block (libvorbis and libsoxr nowhere, libsndfile not everywhere): without one
/// they would end the program.
inline void requireRoomForLibraries() {
    platform::Memory* const memory = platform::services().memory;
    if (memory != nullptr && !memory->isGranted(kLibraryRoom)) {
        throw std::bad_alloc();
    }
}

} // namespace zemo
