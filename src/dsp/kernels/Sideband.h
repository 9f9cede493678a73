#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "dsp/HilbertTransformer.h"
#include "dsp/SingleSideband.h"

/// Single-sideband modulation of a chunk of the sound in the vectors of the processor at hand.
///
/// The Hilbert transform is summed in another order than the plain form's, because the taps are odd
/// about the centre and two of them can share a product. So a sample is known up to a bound only;
/// where the bound leaves a doubt which float (or which peak) it gives, the plain sum decides. The
/// results are the plain form's, bit for bit (A. Ziv, Fast Evaluation of Elementary Mathematical
/// Functions with Correctly Rounded Last Bit, 1991).
namespace zemo::dsp {

inline constexpr std::size_t kSidebandChunk = 16384; ///< samples
inline constexpr std::size_t kSidebandGroup = 64;    ///< samples that share a bound

/// What a run of the modulation is made with.
struct SidebandRun {
    const float* input = nullptr;
    float* output = nullptr;
    std::size_t count = 0; ///< samples of the sound
    HilbertTable table;
    std::span<const double, 513> delayLine; ///< as the run before left it
    Sideband sideband = Sideband::Upper;
    double step = 0.0; ///< radians a sample
    float mix = 0.0F;
};

/// One chunk and the scratch space for it. The staged rows hold one sample of each lane's part.
class SidebandChunk {
public:
    /// Doubles that a worker needs, aligned as memory for vectors is.
    static std::size_t scratchSize();

    SidebandChunk(const SidebandRun& run, double* scratch);

    /// Takes chunk `index`, whose first phase comes after `phase`; returns its last one.
    double begin(std::size_t index, double phase);

    /// Once begun: fills the staged rows, the bounds and the approximate transform.
    void transform();

    /// Once transformed: the largest magnitude of the chunk's samples, or `peak` if that is larger.
    double largest(double peak);

    /// Once transformed: writes the output, every sample divided by `divisor`. False, with the
    /// output unfinished, when that is 1 and a sample exceeds it.
    bool write(double divisor);

private:
    friend struct SidebandKernel;

    double* row(std::size_t r) { return staged_ + (r + kPaddingRows) * lanes_; }
    double valueAt(std::size_t k, std::size_t tap) const;
    double delayed(std::size_t k) const;
    double exactWet(std::size_t k) const;
    void findBounds();
    void stage();
    float mixed(std::size_t k, double wet, double divisor) const;

    static constexpr std::size_t kPaddingRows = 8;
    static constexpr std::size_t kHistory = 512; ///< samples before a sample that its sum hears

    const SidebandRun& run_;
    double* phases_;
    double* quadrature_; ///< in the samples' order
    double* bounds_;     ///< of each group; infinite: only the plain sum will do
    double* staged_;
    std::size_t lanes_ = 1;
    std::size_t rows_ = 0; ///< samples of each lane's part
    std::size_t first_ = 0;
    std::size_t count_ = 0;
};

} // namespace zemo::dsp
