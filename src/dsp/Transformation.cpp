#include "dsp/Transformation.h"

#include "platform/LongWork.h"
#include "platform/OutOfMemory.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {

std::span<const float> soundSamples() {
    return {fBuffer.load(), static_cast<std::size_t>(fBuffersize.load())};
}

Refusal replaceSoundBy(std::int64_t count, std::int64_t slack, undo_struct* undo,
                       const std::function<void(std::span<float>)>& kernel) {
    const auto replace = [&]() -> Refusal {
        SampleBlock samples = allocateUnsetSamples(count);
        if (samples == nullptr) {
            return outOfMemory();
        }
        const std::span result(samples.get(), static_cast<std::size_t>(count));
        if (!platform::runLongWork([&] { kernel(result); })) {
            return cancelled();
        }
        swapBuffer(samples, count, slack);
        if (undo != nullptr) {
            make_revert(*undo, std::move(samples), count);
        }
        return std::nullopt;
    };
    return platform::unlessOutOfMemory(replace, outOfMemory);
}

platform::Error outOfMemory() {
    return {platform::ErrorCategory::OutOfMemory, std::nullopt,
            "There is not enough memory for this transformation."};
}

platform::Error cancelled() {
    return {platform::ErrorCategory::Cancelled, std::nullopt, "Cancelled."};
}

} // namespace zemo
