#pragma once

#include <atomic>
#include <cstdint>

namespace zemo {

/// What the render callback tells the rest of the program. Every message is [audio][rt].
class RenderDelegate {
public:
    RenderDelegate() = default;
    RenderDelegate(const RenderDelegate&) = delete;
    RenderDelegate& operator=(const RenderDelegate&) = delete;
    virtual ~RenderDelegate() = default;

    virtual void updateValue(float level) = 0; ///< the meter's level has changed
    /// The same message `times` times in a row.
    virtual void repeatUpdateValue(float level, std::uint32_t times) {
        for (std::uint32_t i = 0; i < times; ++i) {
            updateValue(level);
        }
    }
    virtual void resetMeter() = 0;                      ///< the meter is to forget its trail
    virtual void resetPlayTitle() = 0;                  ///< the fade-out has ended
    virtual void traceIdleCycle(std::int32_t left) = 0; ///< "IdleCycle = %d\n"
    virtual void traceMissingBuffer() = 0;              ///< "Can't access input buffer\n"
};

/// The delegate of this process; null: nobody listens. Set before the unit is started.
extern std::atomic<RenderDelegate*> renderDelegate;

} // namespace zemo
