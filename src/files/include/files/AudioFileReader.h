#pragma once

#include "files/FileUrl.h"

namespace zemo {

/// [any] Whether a sound file is taken, from five of its checks. They are chained by equality, so
/// this holds exactly when an odd number of them does. That is the rule, not a slip: a mono 16-bit
/// file at the output's rate (three) is taken, one that fails a single check (four) is not.
constexpr bool isReadable(bool linearPCM, bool mono, bool isFloat, bool is32Bit,
                          bool rateMatches) noexcept {
    return ((((linearPCM == mono) == isFloat) == is32Bit) == rateMatches);
}

/// [main] Loads a CAF or AIFF-C file into the shared sound as it stands: no conversion but a byte
/// swap. Returns "OK"; or, after an alert, "KO" with the sound as it was.
const char* openSoundFile(const FileUrl& url);

} // namespace zemo
