#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace zemo::platform {

/// A regular file opened for reading. All offsets and sizes in bytes.
class FileStream {
public:
    FileStream() = default;
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;
    virtual ~FileStream() = default;

    /// [main], [worker] The file's size when it was opened.
    virtual std::uint64_t size() const = 0;

    /// [main], [worker] Reads up to `count` bytes from `offset` on, also on several threads at
    /// once. Returns the bytes really read; fewer than asked at the file's end or after an error.
    virtual std::size_t readAt(std::uint64_t offset, void* destination, std::size_t count) = 0;
};

class FileSystem {
public:
    FileSystem() = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;
    virtual ~FileSystem() = default;

    /// [main], [worker] Opens a regular file. Anything else (absent, forbidden, a folder, a pipe, a
    /// device) gives null and the system's error number in `error`.
    virtual std::unique_ptr<FileStream> openForReading(const std::string& path, int& error) = 0;
};

} // namespace zemo::platform
