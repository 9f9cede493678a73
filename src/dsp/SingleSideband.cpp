#include "dsp/SingleSideband.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <vector>

#include "dsp/HilbertTransformer.h"
#include "dsp/Scratch.h"
#include "dsp/SineTerms.h"
#include "dsp/kernels/Sideband.h"
#include "platform/Pieces.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace dsp {
namespace {

void raise(std::atomic<double>& peak, double value) {
    double seen = peak.load();
    while (value > seen && !peak.compare_exchange_weak(seen, value)) {
    }
}

/// The chunks of one run, on all workers.
class Modulation {
public:
    explicit Modulation(const SidebandRun& run)
        : run_(run),
          chunks_((run.count + kSidebandChunk - 1) / kSidebandChunk),
          phaseBefore_(chunks_ + 1),
          scratch_(platform::workersFor(chunks_), SidebandChunk::scratchSize()) {}

    /// Writes the output as if it needed no scaling, and finds out whether it does; if so, writes
    /// it again. Holding the unscaled samples instead would take twice the sound's memory.
    void operator()() {
        platform::forEachPiece(chunks_,
                               [&](std::size_t index, unsigned worker) { first(index, worker); });
        const double divisor = peak_.load();
        if (divisor > 1.0 && !platform::isStopRequested()) {
            platform::forEachPiece(chunks_, [&](std::size_t index, unsigned worker) {
                SidebandChunk chunk(run_, scratch_.of(worker));
                chunk.begin(index, phaseBefore_[index]);
                chunk.transform();
                static_cast<void>(chunk.write(divisor));
            });
        }
    }

private:
    void first(std::size_t index, unsigned worker) {
        SidebandChunk chunk(run_, scratch_.of(worker));
        awaitPhaseBefore(index);
        phaseBefore_[index + 1] = chunk.begin(index, phaseBefore_[index]);
        phasesKnown_.store(index + 1);
        phasesKnown_.notify_all();
        chunk.transform();
        if (peak_.load() > 1.0 || !chunk.write(1.0)) {
            raise(peak_, chunk.largest(peak_.load()));
            platform::expectStages(2);
        }
    }

    /// Chunks are begun in their order, so whoever has the one before is at it.
    void awaitPhaseBefore(std::size_t index) {
        for (std::size_t known = phasesKnown_.load(); known < index; known = phasesKnown_.load()) {
            phasesKnown_.wait(known);
        }
    }

    const SidebandRun& run_;
    std::size_t chunks_;
    std::vector<double> phaseBefore_;
    Scratch scratch_;
    std::atomic<std::size_t> phasesKnown_{0};
    std::atomic<double> peak_{1.0}; ///< of the samples before they are scaled; 1 is full scale
};

/// As every sample's passing through the line leaves it.
void advance(std::span<double, 513> delayLine, std::span<const float> input) {
    const std::size_t fresh = std::min(delayLine.size(), input.size());
    std::copy(delayLine.begin() + static_cast<std::ptrdiff_t>(fresh), delayLine.end(),
              delayLine.begin());
    std::transform(input.end() - static_cast<std::ptrdiff_t>(fresh), input.end(),
                   delayLine.end() - static_cast<std::ptrdiff_t>(fresh),
                   [](float x) { return static_cast<double>(x) / HILBERT_GAIN; });
}

} // namespace

void singleSideband(std::span<const float> input, std::span<float> output, Sideband sideband,
                    float frequency, float index, double rate, std::span<double, 513> delayLine) {
    const SidebandRun run{.input = input.data(),
                          .output = output.data(),
                          .count = input.size(),
                          .table = hilbertTableAt(rate),
                          .delayLine = delayLine,
                          .sideband = sideband,
                          .step = kTwoPi * static_cast<double>(frequency) / rate,
                          .mix = index > 1.0F ? 1.0F : index};
    Modulation modulation(run);
    modulation();
    advance(delayLine, input);
}

} // namespace dsp

Refusal ssbmBuffer(bool upper, float cf, float index, undo_struct* undo) {
    const auto sound = soundSamples();
    std::array<double, 513> delayLine{};
    std::copy_n(hilbert_xv.begin(), delayLine.size(), delayLine.begin());
    Refusal refusal =
        replaceSound(fBuffersize.load(), kSlackSamples, undo, [&](std::span<float> result) {
            dsp::singleSideband(sound, result, upper ? dsp::Sideband::Upper : dsp::Sideband::Lower,
                                cf, index, R, delayLine);
        });
    if (!refusal) {
        std::copy(delayLine.begin(), delayLine.end(), hilbert_xv.begin());
    }
    return refusal;
}

} // namespace zemo
