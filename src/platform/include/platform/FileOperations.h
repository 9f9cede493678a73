#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace zemo::platform {

/// What is known of a file that a save would replace.
struct FileStatus {
    bool exists = false;
    bool isRegular = false;
    bool isWritable = false;
    std::uint32_t mode = 0; ///< permission bits
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
};

/// The system calls of a save, one each, as the system answers them: an error comes back as its
/// negative number, and nothing is tried twice. All [main], [worker].
class FileOperations {
public:
    FileOperations() = default;
    FileOperations(const FileOperations&) = delete;
    FileOperations& operator=(const FileOperations&) = delete;
    virtual ~FileOperations() = default;

    /// The place that `path` names when symbolic links are followed, whether or not it is there.
    virtual int followLinks(const std::string& path, std::string& target) = 0;
    virtual int inspect(const std::string& path, FileStatus& status) = 0; ///< absent is no error
    /// Creates a file that must not be there yet, for writing. Returns its descriptor.
    virtual int create(const std::string& path) = 0;
    virtual int setPermissions(int descriptor, const FileStatus& like) = 0;
    virtual long write(int descriptor, const void* bytes, std::size_t count) = 0; ///< bytes taken
    /// The same over bytes that were written before, `offset` counted from the file's first one;
    /// the next write goes on at the file's end all the same.
    virtual long writeAt(int descriptor, std::uint64_t offset, const void* bytes,
                         std::size_t count) = 0;
    /// Has the system begin to bring that part of the file to the disk, without waiting for it and
    /// without an answer: finishSync or sync gives that.
    virtual void beginSync(int /*descriptor*/, std::uint64_t /*from*/, std::uint64_t /*bytes*/) {}
    /// Waits until that part, begun before, is on the disk, and gives up the system's own copy of
    /// it in memory. An error of the disk is answered here, and then not by sync.
    virtual int finishSync(int /*descriptor*/, std::uint64_t /*from*/, std::uint64_t /*bytes*/) {
        return 0;
    }
    virtual int sync(int descriptor) = 0;
    virtual int close(int descriptor) = 0;
    virtual int rename(const std::string& from, const std::string& to) = 0;
    virtual int syncFolder(const std::string& folder) = 0;
    virtual int remove(const std::string& path) = 0;
    /// A number that another save is not likely to get.
    virtual std::uint64_t uniqueNumber() = 0;
};

} // namespace zemo::platform
