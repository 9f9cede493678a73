#include "platform_linux/DeviceLead.h"

#include <algorithm>

namespace zemo::platform {
namespace {

/// What the slowest device plays while a second passes by the system's clock.
constexpr double kSlowest = 1.0 - 1e-4;

} // namespace

/// The device begins at some time between the first two requests, so that the clock counts only
/// from the second one on.
void DeviceLead::request(std::chrono::nanoseconds now,
                         std::uint32_t frames) noexcept ZEMO_NONBLOCKING {
    const double asked = nanosecondsAFrame_ * frames;
    if (requests_ == 0) {
        full_ = asked;
    } else if (requests_ == 1) {
        full_ = asked < full_ ? full_ : 0.0;
        lead_ = full_;
    } else if (full_ > 0.0) {
        lead_ -= kSlowest * static_cast<double>((now - last_).count());
        if (lead_ < 0.0) {
            lost_.store(true);
            lead_ = 0.0;
        }
        lead_ = std::min(lead_ + asked, full_);
    }
    requests_ = std::min(requests_ + 1, 2U);
    last_ = now;
}

} // namespace zemo::platform
