#pragma once

#include <cassert>

namespace zemo::platform {

inline constinit thread_local int realTimeDepth = 0;

/// [rt] Marks the thread as being inside a real-time call for as long as it lives.
class RealTimeScope {
public:
    RealTimeScope() noexcept { ++realTimeDepth; }
    RealTimeScope(const RealTimeScope&) = delete;
    RealTimeScope& operator=(const RealTimeScope&) = delete;
    ~RealTimeScope() { --realTimeDepth; }
};

/// [any][rt] Whether this thread is inside a real-time call.
inline bool insideRealTime() noexcept {
    return realTimeDepth > 0;
}

/// [any] Stands at the head of whatever allocates, locks, blocks or does input and output.
inline void assertNotRealTime() {
    assert(!insideRealTime());
}

} // namespace zemo::platform
