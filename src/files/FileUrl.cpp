#include "files/FileUrl.h"

#include <string_view>

namespace zemo {
namespace {

/// RFC 3986: unreserved characters, sub-delimiters, ':', '@' and the separator.
bool staysInPath(char c) {
    constexpr std::string_view kOthers = "-._~!$&'()*+,;=:@/";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kOthers.find(c) != std::string_view::npos;
}

std::string fileName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

} // namespace

std::string FileUrl::absoluteString() const {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string result = "file://";
    for (const char c : path_) {
        if (staysInPath(c)) {
            result += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            result += '%';
            result += kDigits[byte >> 4];
            result += kDigits[byte & 0x0FU];
        }
    }
    return result;
}

std::string FileUrl::lastPathComponent() const {
    return fileName(absoluteString());
}

std::string FileUrl::pathExtension() const {
    if (!extension_.empty()) {
        return extension_;
    }
    const std::string name = fileName(path_);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? std::string() : name.substr(dot + 1);
}

} // namespace zemo
