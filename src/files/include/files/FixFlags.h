#pragma once

namespace zemo {

/// [any] 0 for a NaN, the value itself otherwise.
constexpr float stripeNaN(float value) noexcept {
    return value != value ? 0.0F : value;
}

} // namespace zemo
