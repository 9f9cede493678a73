#pragma once

#include <span>
#include <vector>

#include "dsp/HarmonicRedo.h"
#include "dsp/StripCut.h"

namespace zemo::dsp {

/// Goes along the strips that were begun from guesses, keeps those that are right and redoes the
/// others.
class StripCheck {
public:
    /// The states of all groups, at their strips' starts and at their ends.
    StripCheck(const HarmonicPath& path, std::span<const float> input, std::span<float> output,
               const StripCut& cut, std::span<const StripStates> begun,
               std::span<const StripStates> left, HarmonicRedo& redo);

    /// [any] From the state at the first strip's start to that at the last one's end, or to one
    /// from which the rest of the sound follows to the bit and which differs in the fourth's
    /// blocker only.
    void run(HarmonicState& state);

    std::size_t failed() const { return failed_; }   ///< strips begun from a wrong state
    std::size_t unheard() const { return unheard_; } ///< of these and on, kept as they were

private:
    HarmonicState begun(std::size_t strip) const;
    HarmonicState left(std::size_t strip) const;
    bool hasZeros(std::size_t strip);
    bool restHasZeros() const;
    std::size_t passUnheard(std::size_t first, const HarmonicState& state);

    const HarmonicPath& path_;
    std::span<const float> input_;
    std::span<float> output_;
    const StripCut& cut_;
    std::span<const StripStates> begun_;
    std::span<const StripStates> left_;
    HarmonicRedo& redo_;
    enum class Zeros : char { Unknown, None, Some };
    std::vector<Zeros> zeros_; ///< whether the strips' results have some
    std::size_t failed_ = 0;
    std::size_t unheard_ = 0;
};

} // namespace zemo::dsp
