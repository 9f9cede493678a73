#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/FileOperations.h"

namespace zemo {

/// A file that takes its target's place only when it is complete and on the disk. Until then it has
/// no name, so that a kill leaves nothing; on file systems without nameless files it has a hidden
/// one beside its target. At every instant the target is the whole old file or the whole new one; a
/// failure removes what was written. Symbolic links are followed. Nobody can read more of the new
/// file than of the old one: it is its owner's alone until it has the old file's owner, group,
/// mode, access list and extended attributes.
///
/// A target that is a stream (a pipe, a device, /dev/stdout) is written to directly, in order.
///
/// Every step returns 0 or the system's error number; after an error only the destructor is left.
/// A step of work that should leave off returns ECANCELED, but not once the target is replaced.
/// [main], [worker]
class AtomicFile {
public:
    enum class Order : std::uint8_t {
        Sequential, ///< write only
        Any,        ///< writeAt as well: the bytes for a stream are kept in memory until flush
    };

    AtomicFile() = default;
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile();

    int create(const std::string& path, Order order = Order::Sequential);
    int write(const void* bytes, std::size_t count); ///< all of them, behind those before
    /// All of them, over bytes that were written before: `offset` + `count` is no more than these.
    int writeAt(std::uint64_t offset, const void* bytes, std::size_t count);
    int flush(); ///< to the disk
    int close();
    /// Also 0 when the file is in place but its folder could not be flushed: the sound is saved.
    int replaceTarget();

private:
    /// Where the bytes are until the target is replaced.
    enum class Place : std::uint8_t { Nameless, Hidden, Stream };

    int openStream(Order order);
    int openNew(const std::string& folder, platform::NewFileAccess access);
    int openHidden(const std::string& folder, platform::NewFileAccess access);
    int writeOut(const std::byte* bytes, std::size_t count);
    int keep(const std::byte* bytes, std::size_t count);
    int passToDisk(std::size_t block);
    int awaitDisk();
    int linkNameless(const std::string& folder);
    int linkOver(const std::string& folder);
    std::string hiddenName(const std::string& folder);

    platform::FileOperations* operations_ = nullptr;
    Place place_ = Place::Nameless;
    Order order_ = Order::Sequential;
    std::string target_;
    bool isReplacing_ = false; ///< the target was there when the file was created
    std::string hidden_;       ///< empty when there is none to remove
    int descriptor_ = -1;
    std::uint64_t written_ = 0;   ///< bytes
    std::vector<std::byte> kept_; ///< for a stream, when the order is any
};

/// What came of a file that was written as a whole: at most one of them is not 0.
struct WriteOutcome {
    int createError = 0;
    int writeError = 0; ///< of writing, flushing, or taking the target's place
    int closeError = 0;
    bool cancelled = false; ///< then none of them is set, and the target is as it was

    bool done() const noexcept {
        return createError == 0 && writeError == 0 && closeError == 0 && !cancelled;
    }
};

/// [main], [worker] Makes the file at `path` hold `head`, `body` and `tail`, through an AtomicFile.
/// A stage of the thread's progress.
WriteOutcome writeAtomically(const std::string& path, std::span<const std::uint8_t> head,
                             std::span<const std::byte> body, std::span<const std::byte> tail = {});

} // namespace zemo
