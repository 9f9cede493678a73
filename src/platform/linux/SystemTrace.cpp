#include <syslog.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "platform/RealTime.h"
#include "platform_linux/LinuxServices.h"

namespace zemo::platform {
namespace {

/// Flushed at once: a trace line that is lost with the program is of no use. Returns 0 or an error
/// number, which for a trace line is ignored: nobody reads it any more, and the program goes on.
int write(std::FILE* stream, std::string_view text) {
    assertNotRealTime();
    if (text.empty()) { // and perhaps nowhere
        return 0;
    }
    const bool written = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    if (written && std::fflush(stream) == 0) {
        return 0;
    }
    const int error = errno;
    std::clearerr(stream);
    return error;
}

} // namespace

SystemTrace::SystemTrace(const char* programName) {
    ::openlog(programName, LOG_PERROR, LOG_USER);
}

SystemTrace::~SystemTrace() {
    ::closelog();
}

void SystemTrace::print(std::string_view text) {
    write(output_, text);
}

int SystemTrace::printResult(std::string_view text) {
    return write(output_, text);
}

void SystemTrace::printError(std::string_view text) {
    write(stderr, text);
}

void SystemTrace::log(std::string_view text) {
    assertNotRealTime();
    ::syslog(LOG_INFO, "%.*s", static_cast<int>(text.size()), text.data());
}

} // namespace zemo::platform
