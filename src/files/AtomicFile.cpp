#include "files/AtomicFile.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/Format.h"
#include "platform/OutOfMemory.h"
#include "platform/Progress.h"
#include "platform/Services.h"

namespace zemo {
namespace {

using platform::NewFileAccess;

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
    if (!status.isRegular && !status.isStream) {
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
    if (!hidden_.empty()) {
        uninterrupted([this] { return operations_->remove(hidden_); });
    }
}

int AtomicFile::create(const std::string& path, Order order) {
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
    if (status.isStream) {
        return openStream(order);
    }
    isReplacing_ = status.exists;
    return openNew(folderOf(target_),
                   isReplacing_ ? NewFileAccess::OwnerOnly : NewFileAccess::Default);
}

/// A named pipe is waited for until somebody reads it.
int AtomicFile::openStream(Order order) {
    place_ = Place::Stream;
    order_ = order;
    while (true) {
        const int result = uninterrupted([&] { return operations_->openStream(target_); });
        if (result >= 0) {
            descriptor_ = result;
            return 0;
        }
        if (result != -EAGAIN || platform::isStopRequested()) {
            return result == -EAGAIN ? ECANCELED : -result;
        }
        operations_->awaitStream(-1);
    }
}

int AtomicFile::openNew(const std::string& folder, NewFileAccess access) {
    const int result = uninterrupted([&] { return operations_->createNameless(folder, access); });
    if (result >= 0) {
        place_ = Place::Nameless;
        descriptor_ = result;
        return 0;
    }
    return openHidden(folder, access); // which also answers why, where neither is possible
}

int AtomicFile::openHidden(const std::string& folder, NewFileAccess access) {
    place_ = Place::Hidden;
    for (int attempt = 0; attempt < kMostNames; ++attempt) {
        std::string name = hiddenName(folder);
        const int result = uninterrupted([&] { return operations_->create(name, access); });
        if (result >= 0) {
            hidden_ = std::move(name);
            descriptor_ = result;
            return 0;
        }
        if (result != -EEXIST) {
            return -result;
        }
    }
    return EEXIST;
}

std::string AtomicFile::hiddenName(const std::string& folder) {
    return folder + platform::format(".zemo-%016lx", operations_->uniqueNumber());
}

int AtomicFile::write(const void* bytes, std::size_t count) {
    const auto* const first = static_cast<const std::byte*>(bytes);
    return place_ == Place::Stream && order_ == Order::Any ? keep(first, count)
                                                           : writeOut(first, count);
}

/// Called by libraries as well, which an exception must not pass through.
int AtomicFile::keep(const std::byte* bytes, std::size_t count) {
    return platform::unlessOutOfMemory(
        [&] {
            kept_.insert(kept_.end(), bytes, bytes + count);
            return 0;
        },
        [] { return ENOMEM; });
}

/// A call goes up to the next multiple of a block, so that the system copies whole pages of the
/// file; and the disk has work while the rest is written.
int AtomicFile::writeOut(const std::byte* bytes, std::size_t count) {
    while (count > 0) {
        if (platform::isStopRequested()) {
            return ECANCELED;
        }
        const std::size_t room = kBlock - written_ % kBlock;
        const long taken = operations_->write(descriptor_, bytes, std::min(count, room));
        if (taken == -EINTR) {
            continue;
        }
        if (taken == -EAGAIN && place_ == Place::Stream) {
            operations_->awaitStream(descriptor_);
            continue;
        }
        if (taken <= 0) {
            return taken == 0 ? EIO : static_cast<int>(-taken);
        }
        bytes += taken;
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
    if (place_ == Place::Stream) {
        const auto* const first = static_cast<const std::byte*>(bytes);
        std::copy(first, first + count, kept_.begin() + static_cast<std::ptrdiff_t>(offset));
        return 0;
    }
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
    if (place_ == Place::Stream) {
        return 0;
    }
    operations_->beginSync(descriptor_, block, kBlock);
    return block < kUnderWay ? 0 : errorOf(uninterrupted([&] {
        return operations_->finishSync(descriptor_, block - kUnderWay, kBlock);
    }));
}

/// Block by block, so that the work can be left off in between.
int AtomicFile::awaitDisk() {
    const std::uint64_t blocks = written_ / kBlock;
    const std::uint64_t awaited = kUnderWay / kBlock;
    for (std::uint64_t block = blocks - std::min(blocks, awaited); block < blocks; ++block) {
        const int error = errorOf(uninterrupted(
            [&] { return operations_->finishSync(descriptor_, block * kBlock, kBlock); }));
        if (error != 0 || platform::isStopRequested()) {
            return error != 0 ? error : ECANCELED;
        }
    }
    return platform::isStopRequested() ? ECANCELED : 0;
}

/// The old file's attributes are taken as late as possible: its owner may have narrowed them since
/// this save began.
int AtomicFile::flush() {
    if (place_ == Place::Stream) {
        return writeOut(kept_.data(), kept_.size());
    }
    int error = awaitDisk();
    if (error == 0) {
        error = errorOf(
            uninterrupted([this] { return operations_->copyAttributes(target_, descriptor_); }));
    }
    return error != 0 ? error
                      : errorOf(uninterrupted([this] { return operations_->sync(descriptor_); }));
}

/// A nameless file stays open until it is linked: closing it would remove it.
int AtomicFile::close() {
    int result = 0;
    if (place_ == Place::Nameless) {
        result = operations_->closeDuplicate(descriptor_);
    } else {
        result = operations_->close(descriptor_);
        descriptor_ = -1; // also after an error: Linux has let go of it
    }
    return result == -EINTR ? 0 : errorOf(result); // flushed before, so nothing can be missing
}

int AtomicFile::replaceTarget() {
    if (place_ == Place::Stream) {
        return 0;
    }
    const std::string folder = folderOf(target_); // once the target is new there is no way back
    const int result = place_ == Place::Nameless ? linkNameless(folder) : uninterrupted([this] {
        return operations_->rename(hidden_, target_);
    });
    if (result != 0) {
        return errorOf(result);
    }
    // The file is saved. That these may fail, as in a folder that may not be read, changes nothing.
    if (place_ == Place::Nameless) {
        // Some file systems log a file's content only once it has a name.
        uninterrupted([this] { return operations_->sync(descriptor_); });
        operations_->close(std::exchange(descriptor_, -1));
    }
    hidden_.clear();
    uninterrupted([&] { return operations_->syncFolder(folder); });
    return 0;
}

/// A file that has appeared at the target since is replaced, as it would be by a rename, and its
/// attributes are kept like those of any old file.
int AtomicFile::linkNameless(const std::string& folder) {
    if (!isReplacing_) {
        const int linked =
            uninterrupted([this] { return operations_->link(descriptor_, target_); });
        if (linked != -EEXIST) {
            return linked;
        }
        const int copied =
            uninterrupted([this] { return operations_->copyAttributes(target_, descriptor_); });
        if (copied != 0) {
            return copied;
        }
    }
    return linkOver(folder);
}

int AtomicFile::linkOver(const std::string& folder) {
    int result = -EEXIST;
    for (int attempt = 0; result == -EEXIST && attempt < kMostNames; ++attempt) {
        const std::string hidden = hiddenName(folder);
        result = uninterrupted([&] { return operations_->linkOver(descriptor_, hidden, target_); });
    }
    return result;
}

WriteOutcome writeAtomically(const std::string& path, std::span<const std::uint8_t> head,
                             std::span<const std::byte> body, std::span<const std::byte> tail) {
    platform::beginStage((head.size() + body.size() + tail.size()) / kBlock);
    AtomicFile file;
    const int creating = file.create(path);
    if (creating == ECANCELED && platform::isStopRequested()) {
        return {.cancelled = true};
    }
    if (creating != 0) {
        return {.createError = creating};
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
