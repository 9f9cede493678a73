#include "platform/Utf8.h"

#include <array>
#include <cstddef>

namespace zemo::platform {
namespace {

/// A kind of sequence by its first byte, and what its second byte may be; all later ones are
/// 80 to BF. (The Unicode Standard, table of well-formed byte sequences.)
struct Kind {
    unsigned char firstLeast, firstMost;
    std::size_t length;
    unsigned char secondLeast, secondMost;
};

constexpr std::array kKinds{
    Kind{0x00, 0x7F, 1, 0x00, 0x00}, Kind{0xC2, 0xDF, 2, 0x80, 0xBF},
    Kind{0xE0, 0xE0, 3, 0xA0, 0xBF}, Kind{0xE1, 0xEC, 3, 0x80, 0xBF},
    Kind{0xED, 0xED, 3, 0x80, 0x9F}, Kind{0xEE, 0xEF, 3, 0x80, 0xBF},
    Kind{0xF0, 0xF0, 4, 0x90, 0xBF}, Kind{0xF1, 0xF3, 4, 0x80, 0xBF},
    Kind{0xF4, 0xF4, 4, 0x80, 0x8F},
};

bool isWithin(char byte, unsigned char least, unsigned char most) noexcept {
    const auto value = static_cast<unsigned char>(byte);
    return value >= least && value <= most;
}

/// Of the sequence that `text` begins with; 0 when it is none.
std::size_t sequenceLength(std::string_view text) noexcept {
    for (const Kind& kind : kKinds) {
        if (!isWithin(text[0], kind.firstLeast, kind.firstMost)) {
            continue;
        }
        if (text.size() < kind.length ||
            (kind.length > 1 && !isWithin(text[1], kind.secondLeast, kind.secondMost))) {
            return 0;
        }
        for (std::size_t i = 2; i < kind.length; ++i) {
            if (!isWithin(text[i], 0x80, 0xBF)) {
                return 0;
            }
        }
        return kind.length;
    }
    return 0;
}

} // namespace

bool isUtf8(std::string_view text) noexcept {
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

} // namespace zemo::platform
