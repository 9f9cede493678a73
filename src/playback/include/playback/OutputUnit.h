#pragma once

#include <cstdint>

#include "playback/SharedState.h"

namespace zemo {

/// [main] Opens and configures the output without starting it; fills R and streamFormat.
/// Ends the process when it cannot.
void createOutputUnit(BufferPlayer* player);

/// [main] Starts a play from the first sample unless one is under way. The argument is ignored.
/// Returns 0.
std::int32_t bufferPlay0(std::int64_t ignored);

/// [main] Asks a play under way for its fade-out; the callback does the rest. Returns 0.
std::int32_t bufferStop0();

/// [main] To be called after bufferPlay0 and then every few milliseconds while it returns true:
/// lets the device begin its calls, finishes the stop that the callback asked for, goes on with a
/// play that was begun in between, and puts the player to rest when the device, or the sound of
/// such a play, went away.
bool superviseOutputUnit();

/// [main] Stops the unit without a fade and puts the player to rest, as if the play had ended.
void haltOutputUnit();

/// [any] A ramp over 0..1000: 0 below, 1 above, x / 1000 (computed in double) between.
float kramp(float x);

} // namespace zemo
