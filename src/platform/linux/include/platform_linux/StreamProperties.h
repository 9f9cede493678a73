#pragma once

namespace zemo::platform {

/// [main] First of all, while there is no other thread: tells the sound servers' library what
/// desktops show and sort this program's streams by. What the user has set in the environment
/// stays.
void setStreamProperties(const char* version);

} // namespace zemo::platform
