#include "platform_linux/UnfinishedFiles.h"

#include <signal.h> // NOLINT(modernize-deprecated-headers): sigaction is not in <csignal>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <initializer_list>

namespace zemo::platform {
namespace {

constinit UnfinishedFiles files;

/// On the main thread, which writes the files: while it is here it makes none.
void endAfterRemoval(int number) {
    const pid_t process = ::getpid();
    if (::syscall(SYS_gettid) != process) {
        ::syscall(SYS_tgkill, process, process, number);
        return;
    }
    files.unlinkAll();
    static_cast<void>(::signal(number, SIG_DFL));
    static_cast<void>(::raise(number)); // pending until this returns
}

} // namespace

void UnfinishedFiles::add(const std::string& path) noexcept {
    if (!isEnabled_ || path.size() >= PATH_MAX) {
        return;
    }
    for (Name& name : names_) {
        if (!name.isTaken.exchange(true)) {
            std::memcpy(name.path.data(), path.c_str(), path.size() + 1);
            name.isSet = true;
            return;
        }
    }
}

void UnfinishedFiles::remove(const std::string& path) noexcept {
    for (Name& name : names_) {
        if (name.isSet && path == name.path.data()) {
            name.isSet = false;
            name.isTaken = false;
            return;
        }
    }
}

void UnfinishedFiles::unlinkAll() noexcept {
    const int before = errno;
    for (const Name& name : names_) {
        if (name.isSet) {
            ::unlink(name.path.data());
        }
    }
    errno = before;
}

UnfinishedFiles& unfinishedFiles() noexcept {
    return files;
}

void removeUnfinishedFilesOnSignals() {
    files.enable();
    for (const int number : {SIGHUP, SIGINT, SIGPIPE, SIGTERM, SIGXCPU, SIGXFSZ}) {
        struct sigaction action {};
        const bool isIgnored = ::sigaction(number, nullptr, &action) == 0 &&
                               action.sa_handler == SIG_IGN; // as by nohup
        if (!isIgnored) {
            action = {};
            action.sa_handler = endAfterRemoval;
            action.sa_flags = SA_RESTART;
            ::sigfillset(&action.sa_mask);
            ::sigaction(number, &action, nullptr);
        }
    }
}

} // namespace zemo::platform
