#include <syslog.h>

#include <cstdio>
#include <string>

#include "platform/RealTime.h"
#include "platform_linux/LinuxServices.h"

namespace zemo::platform {
namespace {

/// Flushed at once: a trace line that is lost with the program is of no use.
void write(std::FILE* stream, std::string_view text) {
    assertNotRealTime();
    if (text.empty()) { // and perhaps nowhere
        return;
    }
    const bool written = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    if (!written || std::fflush(stream) != 0) {
        std::clearerr(stream); // nobody reads it any more; the program goes on
    }
}

} // namespace

SystemTrace::SystemTrace(const char* programName) {
    ::openlog(programName, LOG_PERROR, LOG_USER);
}

SystemTrace::~SystemTrace() {
    ::closelog();
}

void SystemTrace::print(std::string_view text) {
    write(stdout, text);
}

void SystemTrace::printError(std::string_view text) {
    write(stderr, text);
}

void SystemTrace::log(std::string_view text) {
    assertNotRealTime();
    ::syslog(LOG_INFO, "%.*s", static_cast<int>(text.size()), text.data());
}

} // namespace zemo::platform
