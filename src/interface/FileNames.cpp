#include "interface/FileNames.h"

#include <QByteArray>
#include <QChar>
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <system_error>

namespace zemo {
namespace {

constexpr char16_t kFirstEscape = 0xDC80; ///< stands for the byte 0x80
constexpr char16_t kLastEscape = 0xDCFF;

/// How many bytes at the beginning are one character of UTF-8; 0: the first one is not part of any.
std::size_t characterLength(std::string_view bytes) {
    const auto byteAt = [&](std::size_t i) {
        return i < bytes.size() ? static_cast<std::uint8_t>(bytes[i]) : std::uint8_t{0};
    };
    const std::uint8_t first = byteAt(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0 // a later byte, or too long a form
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xC0U) != 0x80) {
            return 0;
        }
    }
    // Longer than need be, a surrogate, or beyond the last code point.
    const std::uint8_t second = byteAt(1);
    const bool isWrong = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
                         (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
    return isWrong ? 0 : length;
}

/// Hands over every character, and every byte that is not part of one.
template <typename Character, typename Byte>
void forEachPart(std::string_view bytes, const Character& character, const Byte& byte) {
    while (!bytes.empty()) {
        const std::size_t length = characterLength(bytes);
        if (length > 0) {
            character(bytes.substr(0, length));
        } else {
            byte(static_cast<std::uint8_t>(bytes.front()));
        }
        bytes.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

bool isEscape(QChar c) {
    return c.unicode() >= kFirstEscape && c.unicode() <= kLastEscape;
}

/// Whether a surrogate stands by itself, and not behind its other half.
bool isLone(const QString& text, qsizetype at) {
    return at == 0 || !text[at - 1].isHighSurrogate();
}

void appendEscaped(QByteArray& text, std::uint8_t byte) {
    text += '%';
    text += QByteArray(1, static_cast<char>(byte)).toHex().toUpper();
}

} // namespace

QString pathFromBytes(std::string_view bytes) {
    QString path;
    forEachPart(
        bytes,
        [&](std::string_view character) {
            path += QString::fromUtf8(character.data(), static_cast<qsizetype>(character.size()));
        },
        [&](std::uint8_t byte) {
            path += QChar(static_cast<char16_t>(kFirstEscape + (byte - 0x80)));
        });
    return path;
}

std::string bytesOfPath(const QString& path) {
    QByteArray bytes;
    qsizetype begin = 0;
    for (qsizetype i = 0; i < path.size(); ++i) {
        if (isEscape(path[i]) && isLone(path, i)) {
            bytes += path.mid(begin, i - begin).toUtf8();
            bytes += static_cast<char>(path[i].unicode() - kFirstEscape + 0x80);
            begin = i + 1;
        }
    }
    bytes += path.mid(begin).toUtf8();
    return bytes.toStdString();
}

std::string absoluteBytesOf(const QString& path) {
    const std::filesystem::path bytes = bytesOfPath(path);
    std::error_code error;
    const auto absolute = std::filesystem::absolute(bytes, error);
    return (error ? bytes : absolute).lexically_normal();
}

QString shownFileName(const QString& path) {
    QString name = path.mid(path.lastIndexOf('/') + 1);
    for (qsizetype i = 0; i < name.size(); ++i) {
        if (isEscape(name[i]) && isLone(name, i)) {
            name[i] = QChar::ReplacementCharacter;
        }
    }
    return name;
}

QString escapedName(std::string_view name) {
    QByteArray text;
    forEachPart(
        name,
        [&](std::string_view character) {
            if (character == "%") {
                appendEscaped(text, '%');
            } else {
                text.append(character.data(), static_cast<qsizetype>(character.size()));
            }
        },
        [&](std::uint8_t byte) { appendEscaped(text, byte); });
    return QString::fromUtf8(text);
}

std::string unescapedName(const QString& text) {
    return QByteArray::fromPercentEncoding(text.toUtf8()).toStdString();
}

} // namespace zemo
