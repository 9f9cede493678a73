#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>

#include "platform_linux/LinuxServices.h"

namespace zemo::platform {
namespace {

constexpr int kMostLinks = 40; ///< as many as the kernel follows

int answer(int result) {
    return result < 0 ? -errno : result;
}

/// The target of the link at `path`; empty when there is no link.
std::string linkTarget(const std::string& path) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = ::readlink(path.c_str(), text.data(), text.size());
    return length > 0 ? std::string(text.data(), static_cast<std::size_t>(length)) : std::string();
}

} // namespace

int PosixFileOperations::followLinks(const std::string& path, std::string& target) {
    target = path;
    for (int links = 0; links < kMostLinks; ++links) {
        const std::string next = linkTarget(target);
        if (next.empty()) {
            return 0;
        }
        if (next.front() == '/') {
            target = next;
        } else {
            target.erase(target.rfind('/') + 1).append(next);
        }
    }
    return -ELOOP;
}

int PosixFileOperations::inspect(const std::string& path, FileStatus& status) {
    struct stat found {};
    status = {};
    if (::stat(path.c_str(), &found) != 0) {
        return errno == ENOENT ? 0 : -errno;
    }
    status = {.exists = true,
              .isRegular = S_ISREG(found.st_mode),
              .isWritable = ::access(path.c_str(), W_OK) == 0,
              .mode = found.st_mode & 07777U,
              .owner = found.st_uid,
              .group = found.st_gid};
    return 0;
}

int PosixFileOperations::create(const std::string& path) {
    return answer(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
}

int PosixFileOperations::setPermissions(int descriptor, const FileStatus& like) {
    // Only root may give a file away; for everyone else it is their own from now on.
    if (::fchown(descriptor, like.owner, like.group) != 0 && errno != EPERM) {
        return -errno;
    }
    return answer(::fchmod(descriptor, like.mode));
}

long PosixFileOperations::write(int descriptor, const void* bytes, std::size_t count) {
    const ssize_t written = ::write(descriptor, bytes, count);
    return written < 0 ? -errno : written;
}

int PosixFileOperations::sync(int descriptor) {
    return answer(::fsync(descriptor));
}

int PosixFileOperations::close(int descriptor) {
    return answer(::close(descriptor));
}

int PosixFileOperations::rename(const std::string& from, const std::string& to) {
    return answer(std::rename(from.c_str(), to.c_str()));
}

int PosixFileOperations::syncFolder(const std::string& folder) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        return -errno;
    }
    const int result = answer(::fsync(descriptor));
    ::close(descriptor);
    return result == -EINVAL ? 0 : result; // a file system without folders to flush
}

int PosixFileOperations::remove(const std::string& path) {
    return answer(::unlink(path.c_str()));
}

std::uint64_t PosixFileOperations::uniqueNumber() {
    std::uint64_t number = 0;
    if (::getrandom(&number, sizeof number, GRND_NONBLOCK) != sizeof number) {
        number = static_cast<std::uint64_t>(::getpid());
    }
    return number;
}

} // namespace zemo::platform
