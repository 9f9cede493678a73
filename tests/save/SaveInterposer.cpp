// Loaded before the C library into zemo-batch (LD_PRELOAD), it shows what a save is at:
//   ZEMO_TEST_NO_NAMELESS_FILES  the file system has no nameless files
//   ZEMO_TEST_STOP_AT            "fsync" or "rename": the process that comes there stops itself
//   first

// Its own open() is not to be a checked form of the library's.
#undef _FORTIFY_SOURCE

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h> // NOLINT(modernize-deprecated-headers): the numbers alone
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

namespace {

template <typename Function> Function* next(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

/// By system calls alone: a child that borrows the memory of its parent comes here too.
void stopAt(const char* place) {
    const char* const wanted = std::getenv("ZEMO_TEST_STOP_AT");
    if (wanted != nullptr && std::strcmp(wanted, place) == 0) {
        ::syscall(SYS_kill, ::syscall(SYS_getpid), SIGSTOP);
    }
}

} // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if ((flags & O_TMPFILE) == O_TMPFILE && std::getenv("ZEMO_TEST_NO_NAMELESS_FILES") != nullptr) {
        errno = EOPNOTSUPP;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

int fsync(int descriptor) {
    static auto* const original = next<int(int)>("fsync");
    stopAt("fsync");
    return original(descriptor);
}

int rename(const char* from, const char* to) noexcept {
    stopAt("rename");
    return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}
}
