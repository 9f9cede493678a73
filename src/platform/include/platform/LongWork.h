#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <new>

#include "platform/Clock.h"
#include "platform/Services.h"

namespace zemo::platform {

/// Whether a person may end a piece of work before its time.
enum class Cancel : std::uint8_t { Allowed, NotAllowed };

/// Work that may take long. A window runs it on another thread, stays awake meanwhile and shows how
/// far it is; a program without one just does it.
class LongWork {
public:
    /// Throws nothing. Reports its progress, and looks whether it is still wanted, by Progress.h.
    using Work = std::function<void()>;

    LongWork() = default;
    LongWork(const LongWork&) = delete;
    LongWork& operator=(const LongWork&) = delete;
    virtual ~LongWork() = default;

    /// [main] Does `work` and returns at its end. False: it was asked to stop, and what it has made
    /// is not to be used. Nothing else that could change the sound is begun meanwhile.
    virtual bool run(const Work& work, Cancel cancel) = 0;

    /// [main] Lets some time pass.
    virtual void pause(std::chrono::microseconds duration) = 0;
};

/// [main] The same by the service, or without one on the caller's thread. The work may throw
/// std::bad_alloc, wherever it runs: it comes out here, when the work has ended. However much the
/// work captures, handing it on asks for no memory: two references need none.
template <typename Work> bool runLongWork(const Work& work, Cancel cancel = Cancel::Allowed) {
    if (services().longWork == nullptr) {
        work();
        return true;
    }
    bool outOfMemory = false;
    const bool done = services().longWork->run(
        [&] {
            try {
                work();
            } catch (const std::bad_alloc&) {
                outOfMemory = true;
            }
        },
        cancel);
    if (outOfMemory) {
        throw std::bad_alloc();
    }
    return done;
}

inline void pauseFor(std::chrono::microseconds duration) {
    if (services().longWork != nullptr) {
        services().longWork->pause(duration);
    } else {
        services().clock->sleepFor(duration);
    }
}

} // namespace zemo::platform
