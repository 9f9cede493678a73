#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "platform/FileOperations.h"

namespace zemo {

/// A file in the making: it is written under a hidden name beside its target and takes the target's
/// place at the very end. At every instant the target is the whole old file or the whole new one,
/// also when the program is killed; a failure removes what was written. Symbolic links are
/// followed; an existing target keeps its permissions.
///
/// Every step returns 0 or the system's error number; after an error only the destructor is left.
/// A step of work that should leave off returns ECANCELED, but not once the target is replaced.
/// [main], [worker]
class AtomicFile {
public:
    AtomicFile() = default;
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile();

    int create(const std::string& path);
    int write(const void* bytes, std::size_t count); ///< all of them, behind those before
    /// All of them, over bytes that were written before: `offset` + `count` is no more than these.
    int writeAt(std::uint64_t offset, const void* bytes, std::size_t count);
    int flush(); ///< to the disk
    int close();
    int replaceTarget();

private:
    int openTemporary(const std::string& folder);
    int passToDisk(std::size_t block);

    platform::FileOperations* operations_ = nullptr;
    std::string target_;
    std::string temporary_; ///< empty when there is none to remove
    int descriptor_ = -1;
    std::uint64_t written_ = 0; ///< bytes
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
