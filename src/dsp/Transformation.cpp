#include "dsp/Transformation.h"

#include <new>

#include "platform/LongWork.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {

std::span<const float> soundSamples() {
    return {fBuffer.load(), static_cast<std::size_t>(fBuffersize.load())};
}

Refusal replaceSound(std::int64_t count, std::int64_t slack, undo_struct* undo,
                     const std::function<void(std::span<float>)>& kernel) {
    SampleBlock samples = allocateUnsetSamples(count);
    if (samples == nullptr) {
        return outOfMemory();
    }
    bool outOfScratch = false;
    const bool done = platform::runLongWork([&] {
        try {
            kernel({samples.get(), static_cast<std::size_t>(count)});
        } catch (const std::bad_alloc&) {
            outOfScratch = true;
        }
    });
    if (outOfScratch) {
        return outOfMemory();
    }
    if (!done) {
        return cancelled();
    }
    swapBuffer(samples, count, slack);
    if (undo != nullptr) {
        make_revert(*undo, std::move(samples), count);
    }
    return std::nullopt;
}

platform::Error outOfMemory() {
    return {platform::ErrorCategory::OutOfMemory, std::nullopt,
            "There is not enough memory for this transformation."};
}

platform::Error cancelled() {
    return {platform::ErrorCategory::Cancelled, std::nullopt, "Cancelled."};
}

} // namespace zemo
