#include "interface/FieldValue.h"

#include <QLocale>
#include <algorithm>
#include <charconv>
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

} // namespace zemo
