#pragma once

#include <functional>
#include <optional>
#include <span>

#include "dsp/Revert.h"
#include "platform/Error.h"

/// What all transformations of the sound have in common.
namespace zemo {

/// Why a transformation was not done, in one sentence; nothing: it was done.
using Refusal = std::optional<platform::Error>;

/// [main] The sound, as the kernels take it.
std::span<const float> soundSamples();

/// [main] Lets `kernel` make a sound of `count` samples, all of which it must set, beside the one
/// that is there, and puts it in its place. The one that was there becomes `undo`'s copy, or is
/// freed where that is null. Long work, so that the kernel runs on another thread where there is a
/// window; refuses, with the sound and the copy as they were, when there is no memory for it or the
/// user has cancelled it. So do all transformations, with their own `undo`. The kernel may throw
/// std::bad_alloc.
Refusal replaceSoundBy(std::int64_t count, std::int64_t slack, undo_struct* undo,
                       const std::function<void(std::span<float>)>& kernel);

/// [main] The same for a kernel of any size: it is called where it is, and asks for no memory.
template <typename Kernel>
Refusal replaceSound(std::int64_t count, std::int64_t slack, undo_struct* undo,
                     const Kernel& kernel) {
    return replaceSoundBy(count, slack, undo, std::cref(kernel));
}

/// [any] The refusals for want of memory, and by the user.
platform::Error outOfMemory();
platform::Error cancelled();

} // namespace zemo
