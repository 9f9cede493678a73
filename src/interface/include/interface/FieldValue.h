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

} // namespace zemo
