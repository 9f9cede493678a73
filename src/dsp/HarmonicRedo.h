#pragma once

#include <cstddef>

#include "dsp/HarmonicChain.h"

namespace zemo::dsp {

/// Puts right what was run from a wrong state. All [any].
class HarmonicRedo {
public:
    /// Both arrays begin with the sound.
    HarmonicRedo(const HarmonicPath& path, const float* input, float* output)
        : path_(path), input_(input), output_(output) {}

    /// Writes the samples from `from` on as they follow from `right`, given that those that are
    /// there follow from `wrong`: up to where the two states meet, else up to `to`. Returns whether
    /// they met; else `right` is the state at `to`.
    bool run(std::size_t from, std::size_t to, const HarmonicState& wrong, HarmonicState& right);

    /// The same for the whole sound of that length.
    void runAll(std::size_t length, const HarmonicState& wrong, const HarmonicState& right);

    std::size_t redone() const { return redone_; } ///< samples run one after the other, in all
    std::size_t copied() const { return copied_; } ///< samples that repeated others, in all

private:
    struct Both {
        HarmonicState wrong;
        HarmonicState right;
    };
    struct Mark {
        std::size_t place = 0;
        Both states;
    };

    void advance(std::size_t number, Both& states);
    bool isMark(std::size_t place, const Both& states) const;
    std::size_t repeat(std::size_t place, std::size_t to, Both& states);
    void fillWithNaN(std::size_t from, std::size_t to, HarmonicState& state);

    const HarmonicPath& path_;
    const float* input_;
    float* output_;
    Mark mark_;
    std::size_t redone_ = 0;
    std::size_t copied_ = 0;
};

} // namespace zemo::dsp
