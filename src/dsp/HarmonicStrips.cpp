#include "dsp/HarmonicStrips.h"

#include <algorithm>
#include <atomic>
#include <vector>

#include "dsp/HarmonicRedo.h"
#include "dsp/Pieces.h"
#include "dsp/TwoPole.h"
#include "dsp/kernels/Harmonics.h"

namespace zemo::dsp {
namespace {

constexpr std::size_t kUnit = 16;         ///< lengths of strips are multiples
constexpr std::size_t kSweep = 1U << 18U; ///< samples of a sweep that a worker takes at a time
constexpr std::size_t kGuessed = 2;       ///< samples before a run-up that its guess reads
constexpr std::size_t kHistory = 3;       ///< samples that fill the high-pass's histories

void raise(std::atomic<float>& peak, float to) {
    float now = peak.load();
    while (to > now && !peak.compare_exchange_weak(now, to)) {
    }
}

template <typename Measure> float peakBy(std::span<const float> samples, const Measure& measure) {
    std::atomic<float> peak = 0.0F;
    forEachStretch(samples.size(), kSweep, [&](std::size_t first, std::size_t count) {
        raise(peak, measure(samples.subspan(first, count)));
    });
    return peak;
}

void scaleBy(float factor, std::span<float> samples) {
    forEachStretch(samples.size(), kSweep, [&](std::size_t first, std::size_t count) {
        for (float& sample : samples.subspan(first, count)) {
            sample *= factor;
        }
    });
}

/// Strips of `stride` samples in groups of kStripsAbreast, from `first` on without a gap.
struct Cut {
    std::size_t first = 0;
    std::size_t groups = 0;
    std::size_t stride = 0;

    std::size_t strips() const { return groups * kStripsAbreast; }
    std::size_t start(std::size_t strip) const { return first + strip * stride; }
    std::size_t end() const { return start(strips()); }
};

/// The strips begin behind the attack, far enough from the start for the first one's run-up, and
/// leave the samples that fill the histories.
Cut cutSound(std::size_t length, std::int32_t attack, const StripPlan& plan) {
    const auto faded = static_cast<std::size_t>(std::max(attack, 0));
    Cut cut;
    cut.first = std::min(std::max(faded, plan.runUp + kGuessed), length);
    const std::size_t rest = length - cut.first;
    const std::size_t most = rest <= kHistory ? 0 : (rest - kHistory) / kStripsAbreast;
    if (plan.runUp == 0 || most < plan.shortest) {
        return cut;
    }
    const std::size_t groups = (most + plan.longest - 1) / plan.longest;
    const std::size_t workers = workersFor(most / plan.shortest);
    cut.groups = std::min((groups + workers - 1) / workers * workers, most / plan.shortest);
    cut.stride = most / cut.groups / kUnit * kUnit;
    if (cut.stride > kUnit && cut.stride / kUnit % 2 == 0) {
        cut.stride -= kUnit; // an odd number of cache lines: the strips share no cache set
    }
    return cut;
}

class StripRun {
public:
    StripRun(const HarmonicPath& path, std::span<const float> input, std::span<float> output,
             const StripPlan& plan, const Cut& cut)
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
    void verify(HarmonicState& state);

    const HarmonicPath& path_;
    std::span<const float> input_;
    std::span<float> output_;
    StripPlan plan_;
    Cut cut_;
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
    StripStates states;
    for (std::size_t strip = 0; strip < kStripsAbreast; ++strip) {
        states.set(strip, guessAt(start + strip * cut_.stride - plan_.runUp));
    }
    runStrips(path_, &input_[start - plan_.runUp], nullptr, cut_.stride, plan_.runUp, states);
    begun_[group] = states;
    raise(groupsPeak_,
          runStrips(path_, &input_[start], &output_[start], cut_.stride, cut_.stride, states));
    left_[group] = states;
}

/// From the state at the first strip's start to that at the last one's end.
void StripRun::verify(HarmonicState& state) {
    for (std::size_t strip = 0; strip < cut_.strips(); ++strip) {
        const std::size_t group = strip / kStripsAbreast;
        const std::size_t lane = strip % kStripsAbreast;
        const HarmonicState begun = begun_[group].get(lane);
        bool right = sameState(begun, state);
        if (!right) {
            ++report_.failed;
            right = redo_.run(cut_.start(strip), cut_.start(strip + 1), begun, state);
        }
        if (right) {
            state = left_[group].get(lane);
        }
    }
}

void StripRun::run(HarmonicState& state) {
    const HarmonicState fresh = state;
    if (path_.four) {
        state.fourth = blockerAfterSecond(fresh);
    }
    HarmonicState guessed = state;
    runHarmonics(path_, input_.data(), output_.data(), 0, cut_.first, state);
    forEachPiece(cut_.groups, [&](std::size_t group, unsigned /*worker*/) { runGroup(group); });
    verify(state);
    runHarmonics(path_, input_.data(), output_.data(), cut_.end(), input_.size(), state);
    if (path_.four && cut_.groups > 0) {
        HarmonicState right = fresh;
        right.fourth = state.second;
        redo_.run(0, input_.size(), guessed, right);
    }
    report_.strips = cut_.strips();
    report_.redone = redo_.redone();
    report_.copied = redo_.copied();
}

float StripRun::peak() const {
    if (report_.strips == 0 || report_.redone + report_.copied > 0) {
        return peakBy(output_, highestSample);
    }
    const auto outside = std::max(highestSample(output_.first(cut_.first)),
                                  highestSample(output_.subspan(cut_.end())));
    return std::max(groupsPeak_.load(), outside);
}

} // namespace

StripPlan planStrips(const HdSettings& settings) {
    // Beyond the steepest one two states take so long to meet that strips do not pay.
    constexpr double kSteepest = 0.9995;
    constexpr double kDcRunUp = 56.0; // times 1 / (1 - slope): see docs/DSP.md
    constexpr std::size_t kFilterRunUp = 8192;
    constexpr std::size_t kLongest = std::size_t{1} << 18U;
    StripPlan plan;
    if (!(settings.slope >= 0.0 && settings.slope <= kSteepest)) {
        return plan;
    }
    const auto runUp = static_cast<std::size_t>(kDcRunUp / (1.0 - settings.slope)) +
                       (settings.hpSelect > 0 ? kFilterRunUp : 0);
    plan.runUp = (runUp / kUnit + 1) * kUnit;
    plan.shortest = std::max(kUnit * kUnit, plan.runUp / 4 / kUnit * kUnit);
    plan.longest = std::max(kLongest, 16 * plan.runUp);
    return plan;
}

float peakMagnitude(std::span<const float> samples) {
    return peakBy(samples, largestMagnitude);
}

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
        scaleBy(inPeak / strips.peak(), output);
    }
    if (path.filtered) {
        inputs = state.inputs;
        outputs = state.outputs;
    }
    return strips.report();
}

} // namespace zemo::dsp
