#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h> // NOLINT(modernize-deprecated-headers): sigfillset is not in <csignal>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>

#include "platform_linux/LinuxServices.h"

/// Files without a name, and how they get one.
namespace zemo::platform {
namespace {

using Link = std::array<char, 32>;

/// The name under which an open file can be linked.
Link linkTo(int descriptor) {
    Link name{};
    static_cast<void>(std::snprintf(name.data(), name.size(), "/proc/self/fd/%d", descriptor));
    return name;
}

struct Replacement {
    const char* source;
    const char* hidden;
    const char* target;
};

/// Returns an error number.
int replaceTarget(const Replacement& names) {
    if (::linkat(AT_FDCWD, names.source, AT_FDCWD, names.hidden, AT_SYMLINK_FOLLOW) != 0) {
        return errno;
    }
    if (::rename(names.hidden, names.target) != 0) {
        const int error = errno;
        ::unlink(names.hidden);
        return error;
    }
    return 0;
}

/// What the child does: system calls alone, since it shares this process's memory.
int replaceTargetApart(void* replacement) {
    ::setsid(); // a kill of the process's group does not reach the child either
    return replaceTarget(*static_cast<const Replacement*>(replacement));
}

/// Blocks all signals in this thread, and in the children that it makes.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all{};
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_{};
};

/// In a child process, which a kill of this one leaves alone, so that the hidden name never stays.
/// The child borrows the memory (as in posix_spawn), since copying a large sound's page tables
/// takes long. Returns an error number.
int replaceInChild(Replacement& replacement) {
#if defined(__SANITIZE_THREAD__) // it takes such a child for a copy of the process
    return replaceTarget(replacement);
#endif
    constexpr std::size_t kStack = std::size_t{32} << 10U;
    alignas(16) std::array<std::byte, kStack> stack; // NOLINT: the child's own
    const SignalsBlocked blocked;
    const pid_t child = ::clone(replaceTargetApart, stack.data() + stack.size(),
                                CLONE_VM | CLONE_VFORK, &replacement);
    if (child < 0) { // no more processes, or none allowed
        return replaceTarget(replacement);
    }
    int status = 0;
    while (::waitpid(child, &status, __WALL) < 0) {
        if (errno != EINTR) {
            return errno;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : EIO;
}

} // namespace

int PosixFileOperations::createNameless(const std::string& folder, NewFileAccess access) {
    const mode_t mode = access == NewFileAccess::OwnerOnly ? 0600 : 0666;
    const int descriptor = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
    if (descriptor < 0) {
        return -errno;
    }
    if (::access(linkTo(descriptor).data(), F_OK) != 0) { // without /proc it can get no name
        const int error = errno;
        ::close(descriptor);
        return -error;
    }
    return descriptor;
}

int PosixFileOperations::link(int descriptor, const std::string& path) {
    const int result =
        ::linkat(AT_FDCWD, linkTo(descriptor).data(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW);
    return result < 0 ? -errno : 0;
}

int PosixFileOperations::linkOver(int descriptor, const std::string& hidden,
                                  const std::string& path) {
    const Link source = linkTo(descriptor);
    Replacement replacement{source.data(), hidden.c_str(), path.c_str()};
    return -replaceInChild(replacement);
}

} // namespace zemo::platform
