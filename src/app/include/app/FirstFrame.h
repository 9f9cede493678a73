#pragma once

#include <QWidget>

namespace zemo {

/// [main] Shows `window` and returns when it has painted its first frame; after a quarter of a
/// second even if not, for a window manager may keep the window hidden. Keys and clicks wait.
void showFirstFrame(QWidget& window);

} // namespace zemo
