#pragma once

#include <QString>
#include <cstdint>

/// What a text field holds, as a number: the number that it begins with, the rest ignored, 0 where
/// there is none. The decimal sign is a point or that of the user's locale. All [main].
namespace zemo {

float floatValue(const QString& text);
double doubleValue(const QString& text);
/// The whole number that the text begins with, held to the range of 32 bits.
std::int32_t integerValue(const QString& text);

/// What a field is to show in which `text` was typed and `used` is used: the text, if it is that
/// number and nothing else in the locale's notation, else the number. It is read as that again. A
/// number that is not finite cannot be shown; the text stays.
QString shownNumber(const QString& text, float used);
QString shownNumber(const QString& text, double used);
QString shownNumber(const QString& text, std::int32_t used);

/// The shortest decimal that is read as this number, with the locale's decimal sign.
QString numberText(float value);
QString numberText(double value);
QString numberText(std::int32_t value);

/// A number in English notation, with the locale's decimal sign.
QString localizedNumber(const QString& english);

} // namespace zemo
