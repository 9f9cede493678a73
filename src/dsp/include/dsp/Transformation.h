#pragma once

#include <functional>
#include <optional>
#include <span>

#include "platform/Error.h"

/// What all transformations of the sound have in common.
namespace zemo {

/// Why a transformation was not done, in one sentence; nothing: it was done.
using Refusal = std::optional<platform::Error>;

/// [main] The sound, as the kernels take it.
std::span<const float> soundSamples();

/// [main] Lets `kernel` make a sound of `count` samples beside the one that is there, and puts it
/// in its place. Refuses, with the sound as it was, when there is no memory for it.
Refusal replaceSound(std::int64_t count, std::int64_t slack,
                     const std::function<void(std::span<float>)>& kernel);

/// [any] The refusal for want of memory.
platform::Error outOfMemory();

} // namespace zemo
