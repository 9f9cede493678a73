#pragma once

#include <cstdint>

#include "platform/AudioOutput.h"

namespace zemo {

/// [audio][rt] The output's render callback: copies the next `frames` samples of the sound into
/// the first buffer of `data` (mono floats), with a fade of one call at either end, leaves the
/// call's level in `value`, and stops the unit after a few silent calls.
/// `context` is the address of bufferPlayer. Always returns 0.
platform::Status FloatBufferRenderProc(void* context, platform::RenderActionFlags* flags,
                                       const platform::AudioTimeStamp* time, std::uint32_t bus,
                                       std::uint32_t frames,
                                       platform::AudioBufferList* data) noexcept ZEMO_NONBLOCKING;

} // namespace zemo
