#include "playback/CheckError.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "platform/Alert.h"
#include "platform/Format.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"

namespace zemo {
namespace {

constexpr std::size_t kMessageBytes = 265; ///< terminating zero included

bool isPrintable(char c) {
    return c >= 0x20 && c <= 0x7e;
}

std::string bounded(std::string text) {
    if (text.size() > kMessageBytes - 1) {
        text.resize(kMessageBytes - 1);
    }
    return text;
}

} // namespace

std::string statusText(platform::Status error) {
    const auto bits = static_cast<std::uint32_t>(error);
    std::string code(4, ' ');
    bool printable = true;
    for (std::size_t i = 0; i < 4; ++i) {
        code[i] = static_cast<char>((bits >> (24 - 8 * i)) & 0xFFU);
        printable = printable && isPrintable(code[i]);
    }
    return printable ? "'" + code + "'" : std::to_string(error);
}

std::string formattedWithoutArguments(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        result += text[i];
        if (text[i] == '%' && i + 1 < text.size() && text[i + 1] == '%') {
            ++i;
        }
    }
    return result;
}

void CheckError(platform::Status error, const char* operation) {
    if (error == platform::kNoError) {
        return;
    }
    const platform::Services& platform = platform::services();
    const std::string code = statusText(error);
    platform.trace->printError(platform::format("Error: %s (%s)\n", operation, code.c_str()));
    const std::string message =
        bounded(std::string(operation) + " (" + code + ")\nApplication will quit");
    platform.trace->print(message + "\n");
    // The alert takes its text as a format, so "%%" in a code is shown as one sign.
    platform.alert->runCritical(kAlertTitle, formattedWithoutArguments(message), "OK");
    std::exit(1); // NOLINT(concurrency-mt-unsafe): the end is deliberate and on the main thread
}

} // namespace zemo
