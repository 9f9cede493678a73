#include "dsp/StripCheck.h"

#include <algorithm>

namespace zemo::dsp {

StripCheck::StripCheck(const HarmonicPath& path, std::span<const float> input,
                       std::span<float> output, const StripCut& cut,
                       std::span<const StripStates> begun, std::span<const StripStates> left,
                       HarmonicRedo& redo)
    : path_(path),
      input_(input),
      output_(output),
      cut_(cut),
      begun_(begun),
      left_(left),
      redo_(redo),
      zeros_(cut.strips(), Zeros::Unknown) {}

HarmonicState StripCheck::begun(std::size_t strip) const {
    return begun_[strip / kStripsAbreast].get(strip % kStripsAbreast);
}

HarmonicState StripCheck::left(std::size_t strip) const {
    return left_[strip / kStripsAbreast].get(strip % kStripsAbreast);
}

bool StripCheck::hasZeros(std::size_t strip) {
    Zeros& zeros = zeros_[strip];
    if (zeros == Zeros::Unknown) {
        const auto samples = output_.subspan(cut_.start(strip), cut_.stride);
        const auto zero = std::find(samples.begin(), samples.end(), 0.0F);
        zeros = zero == samples.end() ? Zeros::None : Zeros::Some;
    }
    return zeros == Zeros::Some;
}

/// Of the samples behind the strips, as they follow from the last one.
bool StripCheck::restHasZeros() const {
    HarmonicState state = left(cut_.strips() - 1);
    runHarmonics(path_, input_.data(), output_.data(), cut_.end(), input_.size(), state);
    const auto rest = output_.subspan(cut_.end());
    return std::find(rest.begin(), rest.end(), 0.0F) != rest.end();
}

/// In quiet passages the states differ in what only the signs of zeros hang on, and may do so for
/// as long as the passage lasts. Returns the strip at which the state is known again, or the number
/// of strips; or `first` where there is a zero before.
std::size_t StripCheck::passUnheard(std::size_t first, const HarmonicState& state) {
    HarmonicState last = state;
    for (std::size_t strip = first; strip < cut_.strips(); ++strip) {
        if (!differInZerosOnly(begun(strip), last) || hasZeros(strip)) {
            return first;
        }
        last = left(strip);
        if (!isFourthSpent(last)) {
            return strip + 1;
        }
    }
    return restHasZeros() ? first : cut_.strips();
}

void StripCheck::run(HarmonicState& state) {
    for (std::size_t strip = 0; strip < cut_.strips();) {
        const HarmonicState start = begun(strip);
        std::size_t next = strip + 1;
        bool kept = sameState(start, state);
        if (!kept) {
            ++failed_;
            const std::size_t known = passUnheard(strip, state);
            unheard_ += known - strip;
            next = std::max(next, known);
            kept = known > strip || redo_.run(cut_.start(strip), cut_.start(next), start, state);
        }
        if (kept) {
            state = left(next - 1);
        }
        strip = next;
    }
}

} // namespace zemo::dsp
