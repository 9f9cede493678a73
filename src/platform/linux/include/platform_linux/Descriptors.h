#pragma once

#include <optional>
#include <string>

namespace zemo::platform {

/// [any] The descriptor of this process that the path names: /dev/stdin, /dev/stdout, /dev/stderr,
/// /dev/fd/N or /proc/self/fd/N. By the name alone, so that these work without /dev and /proc.
std::optional<int> ownDescriptor(const std::string& path);

/// [main] Opens whichever of the descriptors 0, 1 and 2 is closed, so that no file that is opened
/// later gets its number and then the program's output. Using one of them still fails.
void reserveStandardDescriptors();

} // namespace zemo::platform
