#pragma once

#include <string>

namespace zemo {

/// A file's place as the open and save panels hand it over. `path` is absolute, in the file
/// system's own bytes (UTF-8 on any system of today).
class FileUrl {
public:
    explicit FileUrl(std::string path) : path_(std::move(path)) {}

    const std::string& path() const noexcept { return path_; }

    /// [any] "file://" and the path, with everything but RFC 3986 path characters as %XX.
    std::string absoluteString() const;

    /// [any] What follows the last slash of the absolute string, escapes as they are.
    std::string lastPathComponent() const;

    /// [any] What follows the last dot of the file's name, empty when there is none or when the
    /// dot begins the name.
    std::string pathExtension() const;

private:
    std::string path_;
};

} // namespace zemo
