#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "platform/RealTime.h"

namespace zemo::platform {

/// What a server holds of a stream before its device takes it, as its requests show: the first one
/// fills it, and a later one asks for what the device has taken. Once there is nothing left when a
/// request comes, there was a gap, or almost. The library tells of none.
///
/// A device whose own clock is slow by up to 100 in a million does not look as if it ran empty. One
/// that holds no more than a request, such as JACK's, is not judged: nothing asked for changes
/// that.
class DeviceLead {
public:
    explicit DeviceLead(std::uint32_t rate) noexcept : nanosecondsAFrame_(1e9 / rate) {} ///< hertz

    /// [audio][rt] A request of so many frames, at a monotonic time.
    void request(std::chrono::nanoseconds now, std::uint32_t frames) noexcept ZEMO_NONBLOCKING;

    bool wasLost() const noexcept { return lost_.load(); } ///< [any]

private:
    const double nanosecondsAFrame_;
    // Of the audio thread.
    std::uint32_t requests_ = 0; ///< up to two
    double full_ = 0.0;          ///< nanoseconds, as is the lead
    double lead_ = 0.0;          ///< after the last request
    std::chrono::nanoseconds last_{0};
    std::atomic<bool> lost_{false};
};

} // namespace zemo::platform
