#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "platform/Memory.h"
#include "platform/Services.h"
#include "platform_linux/Descriptors.h"
#include "platform_linux/LinuxServices.h"

namespace zemo::platform {
namespace {

/// What a stream that is read into memory leaves to the rest of the system.
constexpr std::uint64_t kReserve = std::uint64_t{1} << 28;

class PosixFileStream final : public FileStream {
public:
    PosixFileStream() = default;
    ~PosixFileStream() override {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }

    /// Opens a regular file; 0 or the system's error number.
    int open(const std::string& path) {
        // Not blocking: a pipe without a writer would hold the program.
        const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        return descriptor < 0 ? errno : take(descriptor);
    }

    /// The same with one that is open already, and belongs to this from now on.
    int take(int descriptor) {
        descriptor_ = descriptor;
        struct stat status {};
        if (::fstat(descriptor_, &status) != 0) {
            return errno;
        }
        size_ = static_cast<std::uint64_t>(status.st_size);
        if (S_ISREG(status.st_mode)) {
            return 0;
        }
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    }

    std::uint64_t size() const override { return size_; }

    std::size_t readAt(std::uint64_t offset, void* destination, std::size_t count) override {
        if (offset >= size_) {
            return 0;
        }
        count = std::min<std::uint64_t>(count, size_ - offset);
        std::size_t done = 0;
        while (done < count) {
            const ssize_t read = ::pread(descriptor_, static_cast<char*>(destination) + done,
                                         count - done, static_cast<off_t>(offset + done));
            if (read > 0) {
                done += static_cast<std::size_t>(read);
            } else if (read == 0 || errno != EINTR) {
                break;
            }
        }
        return done;
    }

private:
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
};

bool hasRoomFor(std::uint64_t bytes) {
    Memory* const memory = services().memory;
    return memory == nullptr || memory->availableBytes() >= kReserve + bytes;
}

/// Everything up to the stream's end, into a file in memory. Returns its descriptor or a negative
/// error number.
int readToTheEnd(int stream) {
    constexpr std::size_t kBytesBetweenChecks = std::size_t{1} << 20;
    const int kept = ::memfd_create("zemo-input", MFD_CLOEXEC);
    std::array<char, std::size_t{1} << 16> bytes; // NOLINT: filled by read
    std::size_t unchecked = kBytesBetweenChecks;
    int error = kept < 0 ? errno : 0;
    while (error == 0) {
        if (unchecked >= kBytesBetweenChecks && !hasRoomFor(kBytesBetweenChecks)) {
            error = ENOMEM;
            break;
        }
        unchecked %= kBytesBetweenChecks;
        const ssize_t got = ::read(stream, bytes.data(), bytes.size());
        if (got == 0) {
            return kept;
        }
        if (got < 0) {
            error = errno == EINTR ? 0 : errno;
        } else if (::write(kept, bytes.data(), static_cast<std::size_t>(got)) != got) {
            error = ENOSPC;
        } else {
            unchecked += static_cast<std::size_t>(got);
        }
    }
    if (kept >= 0) {
        ::close(kept);
    }
    return -error;
}

/// Whether the stream is a regular file at its beginning, which is read where it is.
bool isWholeFile(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
           ::lseek(descriptor, 0, SEEK_CUR) == 0;
}

bool isFolder(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
}

/// Whether the path leads to something that has to be read to its end.
bool isStream(const std::string& path) {
    struct stat status {};
    return ownDescriptor(path) || (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) &&
                                   !S_ISDIR(status.st_mode));
}

int duplicate(int descriptor) {
    const int copy = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    return copy < 0 ? -errno : copy;
}

} // namespace

PosixFileSystem::~PosixFileSystem() {
    for (const auto& [path, descriptor] : read_) {
        ::close(descriptor);
    }
}

/// Returns the descriptor of a regular file with the stream's content, or a negative error number.
int PosixFileSystem::openStream(const std::string& path) {
    if (const auto before = read_.find(path); before != read_.end()) {
        return duplicate(before->second);
    }
    const auto own = ownDescriptor(path);
    const int opened = own ? duplicate(*own) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (opened < 0 || isWholeFile(opened) || isFolder(opened)) {
        return opened < 0 && !own ? -errno : opened;
    }
    const auto entry = read_.emplace(path, -1).first; // may throw, and then nothing was read
    const int kept = readToTheEnd(opened);
    ::close(opened);
    if (kept < 0) {
        read_.erase(entry);
        return kept;
    }
    entry->second = kept;
    return duplicate(kept);
}

std::unique_ptr<FileStream> PosixFileSystem::openForReading(const std::string& path, int& error) {
    auto stream = std::make_unique<PosixFileStream>(); // first: later the descriptor could be lost
    if (streams_ == Streams::Read && isStream(path)) {
        const int descriptor = openStream(path);
        error = descriptor < 0 ? -descriptor : stream->take(descriptor);
        return error == 0 ? std::move(stream) : nullptr;
    }
    const int failure = stream->open(path);
    if (failure != 0) {
        error = failure;
        return nullptr;
    }
    return stream;
}

} // namespace zemo::platform
