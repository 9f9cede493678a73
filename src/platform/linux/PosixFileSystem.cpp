#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform_linux/LinuxServices.h"

namespace zemo::platform {
namespace {

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
        descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        struct stat status {};
        if (descriptor_ < 0 || ::fstat(descriptor_, &status) != 0) {
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

} // namespace

std::unique_ptr<FileStream> PosixFileSystem::openForReading(const std::string& path, int& error) {
    auto stream = std::make_unique<PosixFileStream>(); // first: later the descriptor could be lost
    const int failure = stream->open(path);
    if (failure != 0) {
        error = failure;
        return nullptr;
    }
    return stream;
}

} // namespace zemo::platform
