#pragma once

#include <string>

namespace zemo::platform {

/// [main], [worker] What printf would print. The format is always a literal of the program.
[[gnu::format(printf, 1, 2)]] std::string format(const char* text, ...);

} // namespace zemo::platform
