#pragma once

#include <cstdint>

namespace zemo::platform {

/// [any] The number that a four-character code such as "lpcm" stands for, first character highest.
constexpr std::uint32_t fourCharCode(const char (&text)[5]) noexcept {
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i) {
        code = (code << 8) | static_cast<unsigned char>(text[i]);
    }
    return code;
}

} // namespace zemo::platform
