#pragma once

#include <QString>
#include <string>
#include <string_view>

/// Names of files are bytes to the system and usually UTF-8, but they need not be. Qt drops the
/// bytes that are not: these functions keep them. All [any].
namespace zemo {

/// A path or name as Qt takes it. A byte that is not part of any UTF-8 becomes a lone surrogate,
/// U+DC80 to U+DCFF, so that nothing is lost.
QString pathFromBytes(std::string_view bytes);

/// The way back.
std::string bytesOfPath(const QString& path);

/// The same of the path as it is from the root, without "." and "..".
std::string absoluteBytesOf(const QString& path);

/// The path's last part for a person to read: U+FFFD stands for every byte that is no UTF-8.
QString shownFileName(const QString& path);

/// The name in characters that can be typed, and told from other such names: %XX for every byte
/// that is not part of any UTF-8, and for the percent sign itself.
QString escapedName(std::string_view name);

/// The way back, for any text.
std::string unescapedName(const QString& text);

} // namespace zemo
