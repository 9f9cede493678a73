#include "interface/FieldValue.h"

#include <QLocale>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <system_error>

namespace zemo {
namespace {

/// The text in the notation of C, without what may stand before a number.
std::string plainText(const QString& text) {
    QString plain = text.trimmed();
    plain.replace(QLocale().decimalPoint(), ".");
    if (plain.startsWith('+')) {
        plain.remove(0, 1);
    }
    return plain.toStdString();
}

/// Only digits make a number here: "inf" and "nan" are words.
bool beginsANumber(const std::string& text) {
    const std::size_t start = text.rfind('-', 0) == 0 ? 1 : 0;
    return start < text.size() &&
           (text[start] == '.' || (text[start] >= '0' && text[start] <= '9'));
}

/// Beyond the range of the type: infinite when the exponent is not negative, else 0.
template <typename Real> Real outOfRange(const std::string& text) {
    const bool tiny = text.find("e-") != std::string::npos ||
                      text.find("E-") != std::string::npos || text.find("0.") <= 1;
    const Real magnitude = tiny ? Real{0} : std::numeric_limits<Real>::infinity();
    return text.front() == '-' ? -magnitude : magnitude;
}

template <typename Real> Real leadingNumber(const QString& text) {
    const std::string plain = plainText(text);
    Real value = 0;
    if (!beginsANumber(plain)) {
        return value;
    }
    const auto result = std::from_chars(plain.data(), plain.data() + plain.size(), value);
    return result.ec == std::errc::result_out_of_range ? outOfRange<Real>(plain) : value;
}

/// Whether all of the text is this number.
template <typename Number> bool isNumber(const QString& text, Number value) {
    const QString sign = QLocale().decimalPoint();
    const std::string plain = plainText(text);
    Number read = 0;
    const auto result = std::from_chars(plain.data(), plain.data() + plain.size(), read);
    return (sign == "." || !text.contains('.')) && result.ec == std::errc() &&
           result.ptr == plain.data() + plain.size() && read == value;
}

constexpr double kLeastPlain = 1e-4; ///< magnitudes that are shown without an exponent
constexpr double kBeyondPlain = 1e9;

template <typename Real> QString realText(Real value) {
    const double magnitude = std::fabs(static_cast<double>(value));
    const bool isPlain = magnitude == 0.0 || (magnitude >= kLeastPlain && magnitude < kBeyondPlain);
    std::array<char, 32> text{}; // more than the longest, of 24 characters
    const auto format = isPlain ? std::chars_format::fixed : std::chars_format::scientific;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, format).ptr;
    return localizedNumber(QString::fromLatin1(text.data(), end - text.data()));
}

} // namespace

float floatValue(const QString& text) {
    return leadingNumber<float>(text);
}

double doubleValue(const QString& text) {
    return leadingNumber<double>(text);
}

std::int32_t integerValue(const QString& text) {
    const std::string plain = plainText(text);
    std::int64_t value = 0;
    const auto result = std::from_chars(plain.data(), plain.data() + plain.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        value = plain.front() == '-' ? INT32_MIN : INT32_MAX;
    }
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

QString shownNumber(const QString& text, float used) {
    return !std::isfinite(used) || isNumber(text, used) ? text : numberText(used);
}

QString shownNumber(const QString& text, double used) {
    return !std::isfinite(used) || isNumber(text, used) ? text : numberText(used);
}

QString shownNumber(const QString& text, std::int32_t used) {
    return isNumber(text, used) ? text : numberText(used);
}

QString numberText(float value) {
    return realText(value);
}

QString numberText(double value) {
    return realText(value);
}

QString numberText(std::int32_t value) {
    return QString::number(value);
}

QString localizedNumber(const QString& english) {
    return QString(english).replace(".", QLocale().decimalPoint());
}

} // namespace zemo
