#pragma once

#include <cstdint>
#include <string>

#include "files/FileUrl.h"

namespace zemo {

/// Why a sound file is not taken.
struct RefusalReason {
    enum class Kind : std::uint8_t {
        None,       ///< nothing in its header speaks against it
        Unreadable, ///< it is no container that is known; `sentence` says why
        Rate,       ///< `rate` is not the output's
        Channels,   ///< it has `channels` of them, not one
        Format,     ///< its samples are not 32-bit floats
    };

    Kind kind = Kind::None;
    double rate = 0.0; ///< hertz
    std::uint32_t channels = 0;
    std::string sentence{};
};

/// [main] What openSoundFile found amiss first in a file that it refused. Reads its header again;
/// None as well when there is no memory for that.
RefusalReason refusalReason(const FileUrl& url);

} // namespace zemo
