#pragma once

#include <string>

#include "platform/AudioOutput.h"

namespace zemo {

/// The title of every alert of the program.
inline constexpr const char* kAlertTitle = "ZEMO: Error:";

/// [main] Returns when `error` is 0. Otherwise reports `operation` and the code on standard error,
/// standard output and in an alert, and ends the process with status 1.
void CheckError(platform::Status error, const char* operation);

/// [any] `error` as people write it: four printable characters in single quotes, else a decimal.
std::string statusText(platform::Status error);

/// [any] What a printf of `text` alone, without arguments, shows where that is defined: "%%"
/// becomes "%"; every other character stays.
std::string formattedWithoutArguments(const std::string& text);

} // namespace zemo
