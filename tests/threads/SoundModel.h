#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "dsp/HarmonicProcessor.h"
#include "dsp/Revert.h"
#include "dsp/SingleSideband.h"

namespace zemo::test {

using Samples = std::vector<float>;

/// What the sound, its copy and the filters' histories are to be, by the kernels alone: on one
/// thread, with nobody watching.
class SoundModel {
public:
    Samples sound;
    Samples copy; ///< of Revert; empty: none

    // What a transformation is to make of the sound. Nothing changes before accept().
    Samples resampled(float ratio);
    Samples amplitudeModulated(float frequency, float index);
    Samples oneSideband(dsp::Sideband sideband, float frequency, float index);
    Samples phaseModulated(float frequency, float index, float envelopeRate);
    Samples withHarmonics(const HdSettings& settings);
    Samples normalized(bool force) const;

    /// The transformation came to its end: `made` is the sound, what was is the copy.
    void accept(Samples made);
    void revert();
    /// It was refused or cancelled: the histories stay as they were.
    void reject() { next_ = now_; }

    /// Whether the program's histories are these.
    bool hasHistories() const;

private:
    struct Histories {
        std::array<float, 3> inputs{};
        std::array<float, 3> outputs{};
        std::array<double, 513> delayLine{};
    };
    Histories now_ = ofTheProgram();
    Histories next_ = now_;
    static Histories ofTheProgram();
};

/// The program's sound and copy.
Samples samplesOf(const undo_struct& undo);
bool areSame(const Samples& a, const Samples& b); ///< NaN for NaN, else bit by bit

} // namespace zemo::test
