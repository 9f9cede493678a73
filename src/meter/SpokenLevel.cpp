#include "meter/SpokenLevel.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zemo {

double levelInDecibels(float level) {
    const double magnitude = std::fabs(static_cast<double>(level));
    if (!(magnitude > 0.0)) {
        return -std::numeric_limits<double>::infinity();
    }
    return std::round(200.0 * std::log10(magnitude)) / 10.0;
}

double spokenDecibels(float level) {
    return std::clamp(levelInDecibels(level), kSpokenFloor, kSpokenCeiling);
}

bool SpokenLevel::offer(float level, Time now) {
    offered_ = spokenDecibels(level);
    if (offered_ == told_ || (lastTime_ && now - *lastTime_ < kInterval)) {
        return false;
    }
    told_ = offered_;
    lastTime_ = now;
    return true;
}

std::optional<SpokenLevel::Time> SpokenLevel::due(Time now) const {
    if (offered_ == told_) {
        return std::nullopt;
    }
    return std::max(Time{0}, lastTime_.value_or(now - kInterval) + kInterval - now);
}

} // namespace zemo
