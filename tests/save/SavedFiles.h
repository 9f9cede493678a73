#pragma once

#include <cstdint>
#include <vector>

#include "files_test/SoundFiles.h"

/// What a saved file must hold, written down by hand for a rate of 48000 Hz.
namespace zemo::test {

/// `words`: the values as bit patterns, the extra pair included.
inline Bytes expectedCaf(const std::vector<std::uint32_t>& words) {
    return join({text("caff"), big(1, 2), big(0, 2), //
                 text("desc"), big(32, 8), big(0x40E7700000000000, 8), text("lpcm"), big(3, 4),
                 big(4, 4), big(1, 4), big(1, 4), big(32, 4), //
                 text("data"), big(4 + 4 * words.size(), 8), big(0, 4), littleWords(words)});
}

inline Bytes expectedAiffC(const std::vector<std::uint32_t>& words) {
    return join({text("FORM"),
                 big(64 + 4 * words.size(), 4),
                 text("AIFC"), //
                 text("FVER"),
                 big(4, 4),
                 big(0xA2805140, 4), //
                 text("COMM"),
                 big(24, 4),
                 big(1, 2),
                 big(words.size(), 4),
                 big(32, 2),
                 big(0x400E, 2),
                 big(0xBB80000000000000, 8),
                 text("fl32"),
                 big(0, 2), //
                 text("SSND"),
                 big(8 + 4 * words.size(), 4),
                 big(0, 4),
                 big(0, 4),
                 bigWords(words)});
}

} // namespace zemo::test
