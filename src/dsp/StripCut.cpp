#include "dsp/StripCut.h"

#include <algorithm>

#include "platform/Pieces.h"

namespace zemo::dsp {
namespace {

constexpr std::size_t kUnit = 16;   ///< lengths of strips are multiples
constexpr std::size_t kHistory = 3; ///< samples that fill the high-pass's histories

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
    const auto dcRunUp = static_cast<std::size_t>(kDcRunUp / (1.0 - settings.slope));
    plan.filterRunUp = settings.hpSelect > 0 ? kFilterRunUp : 0;
    plan.runUp = plan.filterRunUp + (dcRunUp / kUnit + 1) * kUnit;
    plan.shortest = std::max(kUnit * kUnit, plan.runUp / 4 / kUnit * kUnit);
    plan.longest = std::max(kLongest, 16 * plan.runUp);
    return plan;
}

StripCut cutSound(std::size_t length, std::int32_t attack, const StripPlan& plan) {
    const auto faded = static_cast<std::size_t>(std::max(attack, 0));
    StripCut cut;
    cut.first = std::min(std::max(faded, plan.runUp + kGuessed), length);
    const std::size_t rest = length - cut.first;
    const std::size_t most = rest <= kHistory ? 0 : (rest - kHistory) / kStripsAbreast;
    if (plan.runUp == 0 || most < plan.shortest) {
        return cut;
    }
    const std::size_t groups = (most + plan.longest - 1) / plan.longest;
    const std::size_t workers = platform::workersFor(most / plan.shortest);
    cut.groups = std::min((groups + workers - 1) / workers * workers, most / plan.shortest);
    cut.stride = most / cut.groups / kUnit * kUnit;
    if (cut.stride > kUnit && cut.stride / kUnit % 2 == 0) {
        cut.stride -= kUnit; // an odd number of cache lines: the strips share no cache set
    }
    return cut;
}

} // namespace zemo::dsp
