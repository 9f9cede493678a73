#pragma once

#include <QWidget>
#include <functional>

namespace zemo {

/// [main] Calls `next` once, from the event loop, when `window` has painted its first frame; after
/// a quarter of a second even if not, for a window manager may keep the window hidden.
void afterFirstFrame(QWidget& window, std::function<void()> next);

} // namespace zemo
