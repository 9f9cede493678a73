#include "files/AtomicFile.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/Format.h"
#include "platform/Progress.h"
#include "platform/Services.h"

namespace zemo {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 22; ///< most bytes a call
constexpr std::size_t kUnderWay = 4 * kBlock;        ///< most bytes that the disk has yet to take
constexpr int kMostNames = 100;

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

/// What stands in the way of writing to a target that is there.
int refusal(const platform::FileStatus& status) {
    if (!status.exists) {
        return 0;
    }
    if (!status.isRegular) {
        return EINVAL;
    }
    return status.isWritable ? 0 : EACCES;
}

/// Repeats a call that a signal has interrupted.
template <typename Call> int uninterrupted(Call call) {
    int result = -EINTR;
    while (result == -EINTR) {
        result = call();
    }
    return result;
}

int errorOf(int result) {
    return result < 0 ? -result : 0;
}

} // namespace

AtomicFile::~AtomicFile() {
    if (descriptor_ >= 0) {
        operations_->close(descriptor_);
    }
    if (!temporary_.empty()) {
        uninterrupted([this] { return operations_->remove(temporary_); });
    }
}

int AtomicFile::create(const std::string& path) {
    operations_ = platform::services().fileOperations;
    platform::FileStatus status;
    int result = uninterrupted([&] { return operations_->followLinks(path, target_); });
    if (result == 0) {
        result = uninterrupted([&] { return operations_->inspect(target_, status); });
    }
    if (result != 0) {
        return errorOf(result);
    }
    if (const int error = refusal(status)) {
        return error;
    }
    if (const int error = openTemporary(folderOf(target_))) {
        return error;
    }
    return status.exists ? errorOf(uninterrupted(
                               [&] { return operations_->setPermissions(descriptor_, status); }))
                         : 0;
}

int AtomicFile::openTemporary(const std::string& folder) {
    for (int attempt = 0; attempt < kMostNames; ++attempt) {
        std::string name = folder + platform::format(".zemo-%016lx", operations_->uniqueNumber());
        const int result = uninterrupted([&] { return operations_->create(name); });
        if (result >= 0) {
            temporary_ = std::move(name);
            descriptor_ = result;
            return 0;
        }
        if (result != -EEXIST) {
            return -result;
        }
    }
    return EEXIST;
}

/// A call goes up to the next multiple of a block, so that the system copies whole pages of the
/// file; and the disk has work while the rest is written.
int AtomicFile::write(const void* bytes, std::size_t count) {
    const auto* next = static_cast<const char*>(bytes);
    while (count > 0) {
        if (platform::isStopRequested()) {
            return ECANCELED;
        }
        const std::size_t room = kBlock - written_ % kBlock;
        const long taken = operations_->write(descriptor_, next, std::min(count, room));
        if (taken == -EINTR) {
            continue;
        }
        if (taken <= 0) {
            return taken == 0 ? EIO : static_cast<int>(-taken);
        }
        next += taken;
        count -= static_cast<std::size_t>(taken);
        written_ += static_cast<std::size_t>(taken);
        if (written_ % kBlock == 0) {
            if (const int error = passToDisk(written_ - kBlock)) {
                return error;
            }
            platform::pieceDone();
        }
    }
    return 0;
}

int AtomicFile::writeAt(std::uint64_t offset, const void* bytes, std::size_t count) {
    const auto* next = static_cast<const char*>(bytes);
    while (count > 0) {
        const long taken = operations_->writeAt(descriptor_, offset, next, count);
        if (taken == -EINTR) {
            continue;
        }
        if (taken <= 0) {
            return taken == 0 ? EIO : static_cast<int>(-taken);
        }
        next += taken;
        offset += static_cast<std::size_t>(taken);
        count -= static_cast<std::size_t>(taken);
    }
    return 0;
}

/// Begins with the block just written and ends with an earlier one, so that a large sound does not
/// fill the system's memory a second time on its way.
int AtomicFile::passToDisk(std::size_t block) {
    operations_->beginSync(descriptor_, block, kBlock);
    return block < kUnderWay ? 0 : errorOf(uninterrupted([&] {
        return operations_->finishSync(descriptor_, block - kUnderWay, kBlock);
    }));
}

/// What is under way is awaited block by block, so that the work can be left off in between.
int AtomicFile::flush() {
    const std::uint64_t blocks = written_ / kBlock;
    const std::uint64_t awaited = kUnderWay / kBlock;
    for (std::uint64_t block = blocks - std::min(blocks, awaited); block < blocks; ++block) {
        const int error = errorOf(uninterrupted(
            [&] { return operations_->finishSync(descriptor_, block * kBlock, kBlock); }));
        if (error != 0 || platform::isStopRequested()) {
            return error != 0 ? error : ECANCELED;
        }
    }
    if (platform::isStopRequested()) {
        return ECANCELED;
    }
    return errorOf(uninterrupted([this] { return operations_->sync(descriptor_); }));
}

int AtomicFile::close() {
    const int result = operations_->close(descriptor_);
    descriptor_ = -1;                              // also after an error: Linux has let go of it
    return result == -EINTR ? 0 : errorOf(result); // flushed before, so nothing can be missing
}

int AtomicFile::replaceTarget() {
    const std::string folder = folderOf(target_); // once the target is new there is no way back
    const int result = uninterrupted([this] { return operations_->rename(temporary_, target_); });
    if (result != 0) {
        return errorOf(result);
    }
    temporary_.clear();
    return errorOf(uninterrupted([&] { return operations_->syncFolder(folder); }));
}

WriteOutcome writeAtomically(const std::string& path, std::span<const std::uint8_t> head,
                             std::span<const std::byte> body, std::span<const std::byte> tail) {
    platform::beginStage((head.size() + body.size() + tail.size()) / kBlock);
    AtomicFile file;
    if (const int error = file.create(path)) {
        return {.createError = error};
    }
    int error = file.write(head.data(), head.size());
    if (error == 0) {
        error = file.write(body.data(), body.size());
    }
    if (error == 0) {
        error = file.write(tail.data(), tail.size());
    }
    if (error == 0) {
        error = file.flush();
    }
    if (error == ECANCELED && platform::isStopRequested()) {
        return {.cancelled = true};
    }
    if (error != 0) {
        return {.writeError = error};
    }
    if (const int closing = file.close()) {
        return {.closeError = closing};
    }
    return {.writeError = file.replaceTarget()};
}

} // namespace zemo
