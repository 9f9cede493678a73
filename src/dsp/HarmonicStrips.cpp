#include "dsp/HarmonicStrips.h"

#include <algorithm>
#include <atomic>
#include <vector>

#include "dsp/HarmonicLevels.h"
#include "dsp/HarmonicRedo.h"
#include "dsp/StripCheck.h"
#include "dsp/StripCut.h"
#include "dsp/TwoPole.h"
#include "dsp/kernels/Harmonics.h"
#include "platform/Pieces.h"

namespace zemo::dsp {
namespace {

class StripRun {
public:
    StripRun(const HarmonicPath& path, std::span<const float> input, std::span<float> output,
             const StripPlan& plan, const StripCut& cut)
        : path_(path),
          input_(input),
          output_(output),
          plan_(plan),
          cut_(cut),
          begun_(cut.groups),
          left_(cut.groups),
          redo_(path, input.data(), output.data()) {}

    /// Runs the sound from `state` to its end.
    void run(HarmonicState& state);

    float peak() const; ///< as highestSample of the output
    const StripReport& report() const { return report_; }

private:
    DcState blockerAfterSecond(const HarmonicState& start) const;
    HarmonicState guessAt(std::size_t place) const;
    void runGroup(std::size_t group);

    const HarmonicPath& path_;
    std::span<const float> input_;
    std::span<float> output_;
    StripPlan plan_;
    StripCut cut_;
    std::vector<StripStates> begun_; ///< at the strips' starts
    std::vector<StripStates> left_;  ///< at their ends
    std::atomic<float> groupsPeak_ = 0.0F;
    HarmonicRedo redo_;
    StripReport report_;
};

/// The high-pass's inputs are known, and for want of it the second's input; the rest is silence.
HarmonicState StripRun::guessAt(std::size_t place) const {
    HarmonicState state;
    HarmonicPath second = path_;
    second.four = false;
    runHarmonics(second, input_.data(), nullptr, place - kGuessed, place, state);
    state.outputs = {};
    state.second.prevOut = 0.0;
    if (path_.four) {
        state.fourth.prevIn = h2(0.0);
    }
    return state;
}

/// The state that the fourth begins with. Known only at the end of the second; with strips it is
/// guessed like theirs, and verified in the end.
DcState StripRun::blockerAfterSecond(const HarmonicState& start) const {
    HarmonicPath second = path_;
    second.four = false;
    const std::size_t from = cut_.groups > 0 ? input_.size() - plan_.runUp : 0;
    HarmonicState state = cut_.groups > 0 ? guessAt(from) : start;
    runHarmonics(second, input_.data(), nullptr, from, input_.size(), state);
    return state.second;
}

void StripRun::runGroup(std::size_t group) {
    const std::size_t start = cut_.start(group * kStripsAbreast);
    StripStates states{};
    for (std::size_t strip = 0; strip < kStripsAbreast; ++strip) {
        states.set(strip, guessAt(start + strip * cut_.stride - plan_.runUp));
    }
    const float* const early = &input_[start - plan_.runUp];
    const std::size_t filtered = plan_.filterRunUp;
    runStrips(path_, early, nullptr, cut_.stride, filtered, states);
    if (filtered > 0) { // a wrong start of the high-pass is a bang that would take long to fade
        states.secondOut.fill(0.0);
        states.fourthIn.fill(path_.four ? h2(0.0) : 0.0);
        states.fourthOut.fill(0.0);
    }
    runStrips(path_, early + filtered, nullptr, cut_.stride, plan_.runUp - filtered, states);
    begun_[group] = states;
    raise(groupsPeak_,
          runStrips(path_, &input_[start], &output_[start], cut_.stride, cut_.stride, states));
    left_[group] = states;
}

void StripRun::run(HarmonicState& state) {
    const HarmonicState fresh = state;
    if (path_.four) {
        state.fourth = blockerAfterSecond(fresh);
    }
    const HarmonicState guessed = state;
    runHarmonics(path_, input_.data(), output_.data(), 0, cut_.first, state);
    platform::forEachPiece(cut_.groups,
                           [&](std::size_t group, unsigned /*worker*/) { runGroup(group); });
    if (platform::isStopRequested()) {
        return; // most groups have not been run
    }
    StripCheck check(path_, input_, output_, cut_, begun_, left_, redo_);
    check.run(state);
    runHarmonics(path_, input_.data(), output_.data(), cut_.end(), input_.size(), state);
    if (path_.four && cut_.groups > 0) {
        HarmonicState right = fresh;
        right.fourth = state.second;
        redo_.runAll(input_.size(), guessed, right);
    }
    report_.strips = cut_.strips();
    report_.failed = check.failed();
    report_.unheard = check.unheard();
    report_.redone = redo_.redone();
    report_.copied = redo_.copied();
}

float StripRun::peak() const {
    if (report_.strips == 0 || report_.redone + report_.copied > 0) {
        return highestOfSound(output_);
    }
    const auto outside = std::max(highestSample(output_.first(cut_.first)),
                                  highestSample(output_.subspan(cut_.end())));
    return std::max(groupsPeak_.load(), outside);
}

} // namespace

StripReport addHarmonicsInStrips(std::span<const float> input, std::span<float> output,
                                 const HdSettings& settings, std::array<float, 3>& inputs,
                                 std::array<float, 3>& outputs, const StripPlan& plan) {
    const float inPeak = peakMagnitude(input);
    const HarmonicPath path = harmonicPath(settings, inPeak);
    StripRun strips(path, input, output, plan, cutSound(input.size(), settings.attack, plan));
    HarmonicState state;
    if (path.filtered) {
        state.inputs = keptHistory(inputs);
        state.outputs = keptHistory(outputs);
    }
    strips.run(state);
    if (settings.scale) {
        scaleSound(output, inPeak / strips.peak());
    }
    if (path.filtered) {
        inputs = state.inputs;
        outputs = state.outputs;
    }
    return strips.report();
}

} // namespace zemo::dsp
