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
    PosixFileStream(int descriptor, std::uint64_t size) : descriptor_(descriptor), size_(size) {}
    ~PosixFileStream() override { ::close(descriptor_); }

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
    int descriptor_;
    std::uint64_t size_;
};

int openRegularFile(const std::string& path, struct stat& status, int& error) {
    // Not blocking: a pipe without a writer would hold the program.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        error = errno;
        return -1;
    }
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        return descriptor;
    }
    error = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    ::close(descriptor);
    return -1;
}

} // namespace

std::unique_ptr<FileStream> PosixFileSystem::openForReading(const std::string& path, int& error) {
    struct stat status {};
    const int descriptor = openRegularFile(path, status, error);
    if (descriptor < 0) {
        return nullptr;
    }
    return std::make_unique<PosixFileStream>(descriptor,
                                             static_cast<std::uint64_t>(status.st_size));
}

} // namespace zemo::platform
