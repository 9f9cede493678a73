#include "dsp/HarmonicRedo.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "platform/Progress.h"

namespace zemo::dsp {
namespace {

/// The high-pass has its last finite sample at most so many after the DC blocker's.
constexpr std::size_t kUntilAllNaN = 8;
constexpr std::size_t kCopyAtOnce = 1U << 14U;
constexpr std::size_t kBetweenQuestions = 1U << 14U; ///< samples, whether it is still wanted

/// How many of `most` samples have the bits of those `period` before them.
std::size_t repeatedSamples(const float* samples, std::size_t period, std::size_t most) {
    constexpr std::size_t kAtOnce = 256;
    std::size_t count = 0;
    const auto same = [&](std::size_t length) {
        return std::memcmp(samples + count, samples + count - period, length * sizeof(float)) == 0;
    };
    while (count + kAtOnce <= most && same(kAtOnce)) {
        count += kAtOnce;
    }
    while (count < most && same(1)) {
        ++count;
    }
    return count;
}

/// Sets `count` samples to those `period` before them, over and over.
void repeatSamples(float* samples, std::size_t period, std::size_t count) {
    std::size_t distance = period;
    for (std::size_t done = 0; done < count;) {
        const std::size_t length = std::min(count - done, distance);
        std::memcpy(samples + done, samples + done - distance, length * sizeof(float));
        done += length;
        if (distance < kCopyAtOnce && done >= distance) {
            distance *= 2;
        }
    }
}

} // namespace

void HarmonicRedo::advance(std::size_t number, Both& states) {
    const auto place = static_cast<std::int64_t>(number);
    harmonicSample(path_, input_[number], place, states.wrong);
    output_[number] = harmonicSample(path_, input_[number], place, states.right);
}

bool HarmonicRedo::isMark(std::size_t place, const Both& states) const {
    return place > mark_.place && static_cast<std::int64_t>(mark_.place) >= path_.attack &&
           sameState(states.right, mark_.states.right) &&
           sameState(states.wrong, mark_.states.wrong);
}

/// At a place with the mark's states: as long as the input since the mark repeats itself, so does
/// the output. Without this silence and tones of whole periods, in which two states may never meet,
/// would all be done one sample after the other. Returns how many samples that served.
std::size_t HarmonicRedo::repeat(std::size_t place, std::size_t to, Both& states) {
    const std::size_t period = place - mark_.place;
    const std::size_t count = repeatedSamples(input_ + place, period, to - place);
    if (count < 2 * period) {
        return 0;
    }
    const std::size_t whole = count - count % period;
    repeatSamples(output_ + place, period, whole);
    states = mark_.states;
    copied_ += whole;
    return whole;
}

/// With NaN in the second's blocker there is nothing else up to the end.
void HarmonicRedo::fillWithNaN(std::size_t from, std::size_t to, HarmonicState& state) {
    std::fill(output_ + from, output_ + to, std::numeric_limits<float>::quiet_NaN());
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    state.second = {kNone, kNone};
    if (path_.four) {
        state.fourth = {kNone, kNone};
    }
    if (path_.filtered) {
        state.outputs.fill(std::numeric_limits<float>::quiet_NaN());
    }
    copied_ += to - from;
}

bool HarmonicRedo::run(std::size_t from, std::size_t to, const HarmonicState& wrong,
                       HarmonicState& right) {
    Both states{wrong, right};
    mark_ = {from, states};
    const std::size_t begun = redone_;
    std::size_t reach = 1; // of the mark: doubled each time, so that any period comes to fit
    for (std::size_t i = from; i < to;) {
        if (sameState(states.wrong, states.right)) {
            return true;
        }
        if ((redone_ - begun) % kBetweenQuestions == 0 && platform::isStopRequested()) {
            break;
        }
        if (std::isnan(states.right.second.prevOut) && to - i >= kUntilAllNaN) {
            fillWithNaN(i, to, states.right);
            break;
        }
        if (isMark(i, states)) {
            i += repeat(i, to, states);
            mark_ = {i, states};
        } else if (i - mark_.place >= reach) {
            mark_ = {i, states};
            reach *= 2;
        }
        if (i < to) {
            advance(i, states);
            ++redone_;
            ++i;
        }
    }
    right = states.right;
    return false;
}

void HarmonicRedo::runAll(std::size_t length, const HarmonicState& wrong,
                          const HarmonicState& right) {
    HarmonicState state = right;
    if (path_.four && std::isnan(state.fourth.prevOut)) {
        fillWithNaN(0, length, state); // the fourth's blocker never gets rid of it
    } else {
        run(0, length, wrong, state);
    }
}

} // namespace zemo::dsp
