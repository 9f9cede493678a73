#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/FileStream.h"

namespace zemo {

/// The first line of a file that openFile returns has at most so many bytes, the terminating zero
/// included.
inline constexpr std::size_t kFirstLineBytes = 1000;

/// [main] Loads any file as headerless 32-bit floats, bytes reversed when `swap` is set. Returns
/// the file's first line (valid until the next call, at most 999 bytes), "No text", "size_error"
/// (fewer than 4 bytes; the sound is empty now) or "error" (cannot be opened; the sound is empty
/// now. Or no memory for it; the sound is as it was).
const char* openFile(const char* path, bool swap);

/// [main] The file's size in whole 4-byte values, also printed with `path`; 0 for no stream.
std::int64_t getSize(platform::FileStream* stream, const char* path);

/// [any] How many of the sound's bytes a swap covers. Counted in 32 bits: of a sound of 2^30
/// samples or more only the first (4 x count) mod 2^32 bytes are swapped.
constexpr std::uint32_t swappedBytes(std::int64_t count) noexcept {
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(count) * 4U);
}

} // namespace zemo
