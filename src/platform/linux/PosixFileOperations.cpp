#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>

#include <linux/magic.h>

#include "platform_linux/Descriptors.h"
#include "platform_linux/LinuxServices.h"
#include "platform_linux/UnfinishedFiles.h"

namespace zemo::platform {
namespace {

constexpr int kMostLinks = 40; ///< as many as the kernel follows

int answer(int result) {
    return result < 0 ? -errno : result;
}

/// The target of the link at `path`; empty when there is no link.
int readLink(const std::string& path, std::string& target) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = ::readlink(path.c_str(), text.data(), text.size());
    target.assign(text.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    const bool isNoLink = length < 0 && (errno == EINVAL || errno == ENOENT);
    return length >= 0 || isNoLink ? 0 : -errno;
}

bool isUnderProc(const std::string& link) {
    struct statfs fileSystem {};
    const int descriptor = ::open(link.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    const bool found = descriptor >= 0 && ::fstatfs(descriptor, &fileSystem) == 0 &&
                       fileSystem.f_type == PROC_SUPER_MAGIC;
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    return found;
}

int inspectOwn(int descriptor, FileStatus& status) {
    struct stat found {};
    if (::fstat(descriptor, &found) != 0) {
        return -errno;
    }
    status = {.exists = true, .isStream = !S_ISDIR(found.st_mode), .isWritable = true};
    return 0;
}

} // namespace

int PosixFileOperations::followLinks(const std::string& path, std::string& target) {
    target = path;
    for (int links = 0; links < kMostLinks; ++links) {
        std::string next;
        const int result = ownDescriptor(target) ? 0 : readLink(target, next);
        if (result != 0 || next.empty() || isUnderProc(target)) {
            return result;
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
    status = {};
    if (const auto descriptor = ownDescriptor(path)) {
        return inspectOwn(*descriptor, status);
    }
    struct stat found {};
    if (::lstat(path.c_str(), &found) != 0) {
        return errno == ENOENT ? 0 : -errno;
    }
    const bool isRegular = S_ISREG(found.st_mode);
    status = {.exists = true,
              .isRegular = isRegular,
              .isStream = !isRegular && !S_ISDIR(found.st_mode), // a link too: one under /proc
              .isWritable = ::access(path.c_str(), W_OK) == 0};
    return 0;
}

int PosixFileOperations::create(const std::string& path, NewFileAccess access) {
    const mode_t mode = access == NewFileAccess::OwnerOnly ? 0600 : 0666;
    unfinishedFiles().add(path);
    const int result = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (result >= 0) {
        return result;
    }
    const int error = errno;
    unfinishedFiles().remove(path);
    return -error;
}

long PosixFileOperations::write(int descriptor, const void* bytes, std::size_t count) {
    const ssize_t written = ::write(descriptor, bytes, count);
    return written < 0 ? -errno : written;
}

long PosixFileOperations::writeAt(int descriptor, std::uint64_t offset, const void* bytes,
                                  std::size_t count) {
    const ssize_t written = ::pwrite(descriptor, bytes, count, static_cast<off_t>(offset));
    return written < 0 ? -errno : written;
}

void PosixFileOperations::beginSync(int descriptor, std::uint64_t from, std::uint64_t bytes) {
    static_cast<void>(::sync_file_range(descriptor, static_cast<off_t>(from),
                                        static_cast<off_t>(bytes), SYNC_FILE_RANGE_WRITE));
}

int PosixFileOperations::finishSync(int descriptor, std::uint64_t from, std::uint64_t bytes) {
    const auto offset = static_cast<off_t>(from);
    const auto length = static_cast<off_t>(bytes);
    const int result = answer(::sync_file_range(
        descriptor, offset, length,
        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER));
    static_cast<void>(::posix_fadvise(descriptor, offset, length, POSIX_FADV_DONTNEED));
    return result == -ENOSYS ? 0 : result; // a kernel without that call: sync does it all
}

int PosixFileOperations::sync(int descriptor) {
    return answer(::fsync(descriptor));
}

int PosixFileOperations::closeDuplicate(int descriptor) {
    const int duplicate = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    return duplicate < 0 ? -errno : answer(::close(duplicate));
}

int PosixFileOperations::close(int descriptor) {
    return answer(::close(descriptor));
}

int PosixFileOperations::rename(const std::string& from, const std::string& to) {
    const int result = answer(std::rename(from.c_str(), to.c_str()));
    if (result == 0) {
        unfinishedFiles().remove(from);
    }
    return result;
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
    const int result = answer(::unlink(path.c_str()));
    if (result == 0) {
        unfinishedFiles().remove(path);
    }
    return result;
}

std::uint64_t PosixFileOperations::uniqueNumber() {
    std::uint64_t number = 0;
    if (::getrandom(&number, sizeof number, GRND_NONBLOCK) != sizeof number) {
        number = static_cast<std::uint64_t>(::getpid());
    }
    return number;
}

} // namespace zemo::platform
