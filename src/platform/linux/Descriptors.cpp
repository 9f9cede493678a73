#include "platform_linux/Descriptors.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <string_view>
#include <utility>

#include "platform_linux/LinuxServices.h"

namespace zemo::platform {
namespace {

using namespace std::string_view_literals;

constexpr int kPollMilliseconds = 20;

constexpr std::array kStandardNames{std::pair{"/dev/stdin"sv, STDIN_FILENO},
                                    std::pair{"/dev/stdout"sv, STDOUT_FILENO},
                                    std::pair{"/dev/stderr"sv, STDERR_FILENO}};
constexpr std::array kDescriptorFolders{"/dev/fd/"sv, "/proc/self/fd/"sv};

std::optional<int> numberIn(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size() && number >= 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

bool isSameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// The same for another name of one of them, as /proc/PID/fd/N.
std::optional<int> ownDescriptorOfLink(const std::string& path) {
    const auto number = numberIn(std::string_view(path).substr(path.rfind('/') + 1));
    struct stat named {};
    struct stat opened {};
    const bool isOurs = number && ::stat(path.c_str(), &named) == 0 &&
                        ::fstat(*number, &opened) == 0 && isSameFile(named, opened);
    return isOurs ? number : std::nullopt;
}

} // namespace

std::optional<int> ownDescriptor(const std::string& path) {
    for (const auto& [name, descriptor] : kStandardNames) {
        if (path == name) {
            return descriptor;
        }
    }
    for (const std::string_view folder : kDescriptorFolders) {
        if (path.starts_with(folder)) {
            return numberIn(std::string_view(path).substr(folder.size()));
        }
    }
    return std::nullopt;
}

/// Each in the direction in which it is not used.
void reserveStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            // The lowest number that is free: those below are open by now.
            ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

/// Through the descriptor that is open already, so that bytes go where it stands: what a shell has
/// opened for appending is appended to. Other streams are opened; a regular file that another
/// process has open keeps what is in it.
int PosixFileOperations::openStream(const std::string& path) {
    auto descriptor = ownDescriptor(path);
    if (!descriptor) {
        descriptor = ownDescriptorOfLink(path);
    }
    if (descriptor) {
        const int copy = ::fcntl(*descriptor, F_DUPFD_CLOEXEC, 0);
        return copy < 0 ? -errno : copy;
    }
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return -errno;
    }
    // Not blocking: whoever waits for a pipe's reader should be able to stop waiting.
    const int append = S_ISREG(status.st_mode) ? O_APPEND : 0;
    const int result = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | append);
    if (result >= 0) {
        return result;
    }
    return errno == ENXIO && S_ISFIFO(status.st_mode) ? -EAGAIN : -errno;
}

void PosixFileOperations::awaitStream(int descriptor) {
    pollfd waiting{.fd = descriptor, .events = POLLOUT, .revents = 0};
    static_cast<void>(::poll(&waiting, 1, kPollMilliseconds)); // -1 is passed over
}

} // namespace zemo::platform
