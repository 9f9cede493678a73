#pragma once

#include <QOpenGLContext>
#include <future>
#include <memory>

namespace zemo {

/// Makes the meter's OpenGL context on a thread of its own, because loading the driver takes as
/// long as making the rest of the window. While one lives, makeGlMeterCanvas() takes its context;
/// without one it makes its own. [main]
class GlPreparation {
public:
    GlPreparation();
    GlPreparation(const GlPreparation&) = delete;
    GlPreparation& operator=(const GlPreparation&) = delete;
    ~GlPreparation();

    /// Waits for the context; null when it was taken already. It may be invalid: no OpenGL.
    static std::unique_ptr<QOpenGLContext> take();

private:
    std::future<std::unique_ptr<QOpenGLContext>> context_;
};

/// [any] The meter's context, belonging to this thread; invalid where there is no OpenGL.
std::unique_ptr<QOpenGLContext> makeMeterContext();

} // namespace zemo
