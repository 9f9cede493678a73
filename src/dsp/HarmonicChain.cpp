#include "dsp/HarmonicChain.h"

#include <bit>
#include <cmath>

namespace zemo::dsp {
namespace {

bool sameNumber(double left, double right) {
    return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right) ||
           (std::isnan(left) && std::isnan(right));
}

bool sameNumber(float left, float right) {
    return std::bit_cast<std::uint32_t>(left) == std::bit_cast<std::uint32_t>(right) ||
           (std::isnan(left) && std::isnan(right));
}

bool sameBlocker(const DcState& left, const DcState& right) {
    return sameNumber(left.prevOut, right.prevOut) && sameNumber(left.prevIn, right.prevIn);
}

/// The oldest value of a history is shifted out unheard.
bool sameHistory(const std::array<float, 3>& left, const std::array<float, 3>& right) {
    return sameNumber(left[2], right[2]) && sameNumber(left[1], right[1]);
}

} // namespace

HarmonicPath harmonicPath(const HdSettings& settings, float inPeak) {
    HarmonicPath path;
    path.filtered = settings.hpSelect > 0;
    path.filter = twoPole(static_cast<std::uint8_t>(settings.hpSelect - 1));
    path.knee = settings.knee;
    path.comp = settings.comp;
    path.divisor = settings.knee + (inPeak - settings.knee) * settings.comp;
    path.slope = settings.slope;
    path.attack = settings.attack;
    path.four = settings.four;
    path.dryShare = 1.0F - settings.mix;
    path.wetShare = settings.mix;
    path.twoShare = settings.two ? 1.0F : 0.0F;
    path.fourShare = settings.four ? 1.0F : 0.0F;
    return path;
}

bool sameState(const HarmonicState& left, const HarmonicState& right) {
    return sameBlocker(left.second, right.second) && sameBlocker(left.fourth, right.fourth) &&
           sameHistory(left.outputs, right.outputs) && sameHistory(left.inputs, right.inputs);
}

bool isFourthSpent(const HarmonicState& state) {
    return std::fabs(state.fourth.prevOut) < 0x1p-160;
}

bool differInZerosOnly(const HarmonicState& left, const HarmonicState& right) {
    HarmonicState as = right;
    as.fourth.prevOut = left.fourth.prevOut;
    return isFourthSpent(left) && isFourthSpent(right) && sameState(left, as);
}

void runHarmonics(const HarmonicPath& path, const float* input, float* output, std::size_t from,
                  std::size_t to, HarmonicState& state) {
    HarmonicState now = state;
    for (std::size_t i = from; i < to; ++i) {
        const float result = harmonicSample(path, input[i], static_cast<std::int64_t>(i), now);
        if (output != nullptr) {
            output[i] = result;
        }
    }
    state = now;
}

} // namespace zemo::dsp
