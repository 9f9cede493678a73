#pragma once

#include <cstdint>

#include "playback/SoundExchange.h"

namespace zemo {

/// One level of undo: the sound as it was before the last transformation, or, after a revert, as
/// it was before that. Opening another sound does not touch it.
struct undo_struct {
    SampleBlock buf;
    std::int64_t bufsize = 0; ///< samples; 0: no copy
};

/// [main] Keeps a copy of `count` samples; any earlier copy is lost. False, with the earlier copy
/// as it was, when there is no memory for it.
bool make_revert(undo_struct& undo, const float* samples, std::int64_t count);

/// [main] Keeps the block itself as the copy.
void make_revert(undo_struct& undo, SampleBlock samples, std::int64_t count) noexcept;

/// [main] Exchanges the sound and the copy; nothing when there is no copy. Falls idle first.
void revert(undo_struct& undo);

} // namespace zemo
