#include "platform_linux/LinuxServices.h"

#include <sys/utsname.h>

#include <charconv>
#include <string>
#include <thread>

namespace zemo::platform {

std::chrono::nanoseconds SteadyClock::now() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

void SteadyClock::sleepFor(std::chrono::nanoseconds time) {
    std::this_thread::sleep_for(time);
}

std::int32_t KernelVersion::minorOf(const std::string& release) {
    const std::size_t dot = release.find('.');
    std::int32_t minor = 0;
    if (dot != std::string::npos) {
        std::from_chars(release.data() + dot + 1, release.data() + release.size(), minor);
    }
    return minor;
}

std::int32_t KernelVersion::minorVersion() {
    utsname names{};
    return ::uname(&names) == 0 ? minorOf(names.release) : 0;
}

} // namespace zemo::platform
