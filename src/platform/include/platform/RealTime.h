#pragma once

#include <cassert>

/// Behind the parameters of every [rt] function. Compilers that know the attribute look, with
/// -Wfunction-effects, whether the function calls anything that has it not, and with
/// -fsanitize=realtime, while it runs, whether it calls anything of the system's that may wait.
#if defined(__has_cpp_attribute) && __has_cpp_attribute(clang::nonblocking)
#define ZEMO_NONBLOCKING [[clang::nonblocking]]
/// Before and behind what such a compiler cannot know to be harmless; the place says why it is.
#define ZEMO_TRUSTED_NONBLOCKING                                                                   \
    _Pragma("clang diagnostic push") _Pragma("clang diagnostic ignored \"-Wfunction-effects\"")
#define ZEMO_TRUSTED_END _Pragma("clang diagnostic pop")
#else
#define ZEMO_NONBLOCKING
#define ZEMO_TRUSTED_NONBLOCKING
#define ZEMO_TRUSTED_END
#endif

namespace zemo::platform {

inline constinit thread_local int realTimeDepth = 0;

// The number is among those that a thread has from its start on: nothing is allocated for it.
ZEMO_TRUSTED_NONBLOCKING

/// [rt] Marks the thread as being inside a real-time call for as long as it lives.
class RealTimeScope {
public:
    RealTimeScope() noexcept ZEMO_NONBLOCKING { ++realTimeDepth; }
    RealTimeScope(const RealTimeScope&) = delete;
    RealTimeScope& operator=(const RealTimeScope&) = delete;
    ~RealTimeScope() ZEMO_NONBLOCKING { --realTimeDepth; }
};

/// [any][rt] Whether this thread is inside a real-time call.
inline bool insideRealTime() noexcept ZEMO_NONBLOCKING {
    return realTimeDepth > 0;
}

ZEMO_TRUSTED_END

/// [any] Stands at the head of whatever allocates, locks, blocks or does input and output.
inline void assertNotRealTime() {
    assert(!insideRealTime());
}

} // namespace zemo::platform
