#pragma once

#include <string>

namespace zemo {

/// A file's place as the open and save panels hand it over. `path` is absolute, in the file
/// system's own bytes, which need not be UTF-8. An `extension` that is given counts instead of the
/// name's own: a stream has none.
class FileUrl {
public:
    explicit FileUrl(std::string path, std::string extension = {})
        : path_(std::move(path)), extension_(std::move(extension)) {}

    const std::string& path() const noexcept { return path_; }

    /// [any] "file://" and the path, with everything but RFC 3986 path characters as %XX.
    std::string absoluteString() const;

    /// [any] What follows the last slash of the absolute string, escapes as they are.
    std::string lastPathComponent() const;

    /// [any] The extension that was given, else what follows the last dot of the file's name, empty
    /// when there is none or when the dot begins the name.
    std::string pathExtension() const;

private:
    std::string path_;
    std::string extension_;
};

} // namespace zemo
