#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace zemo::platform {

/// What is known of the place that a save writes to.
struct FileStatus {
    bool exists = false;
    bool isRegular = false;
    /// A pipe, a device, or a descriptor of this process by its name (/dev/stdout): there is
    /// nothing to replace, so bytes are written to it directly.
    bool isStream = false;
    bool isWritable = false;
};

/// Who may read a new file while it is being written.
enum class NewFileAccess : std::uint8_t {
    OwnerOnly, ///< mode 0600
    Default,   ///< as the umask, or the folder's default access list, has it for any new file
};

/// The system calls of a save, one each unless said otherwise, as the system answers them: an error
/// comes back as its negative number, and nothing is tried twice. All [main], [worker].
class FileOperations {
public:
    FileOperations() = default;
    FileOperations(const FileOperations&) = delete;
    FileOperations& operator=(const FileOperations&) = delete;
    virtual ~FileOperations() = default;

    /// The place that `path` names when symbolic links are followed, whether or not it is there.
    /// The names of this process's descriptors and links under /proc are not followed: what they
    /// lead to is open already, and its name may lead elsewhere.
    virtual int followLinks(const std::string& path, std::string& target) = 0;
    virtual int inspect(const std::string& path, FileStatus& status) = 0; ///< absent is no error
    /// Creates a file without a name in `folder`, for writing. Returns its descriptor; any error
    /// where the file system has no such files.
    virtual int createNameless(const std::string& folder, NewFileAccess access) = 0;
    /// Creates a file that must not be there yet, for writing. Returns its descriptor.
    virtual int create(const std::string& path, NewFileAccess access) = 0;
    /// Opens a stream for writing. -EAGAIN: a named pipe that nobody reads yet.
    virtual int openStream(const std::string& path) = 0;
    /// Waits for a moment: until the descriptor takes bytes, or without one (-1), but never long.
    virtual void awaitStream(int descriptor) = 0;
    /// Gives the open file the owner, group, mode, access list and extended attributes of the file
    /// `like`, if that is there. What this user cannot give makes it narrower, never wider, and is
    /// no error.
    virtual int copyAttributes(const std::string& like, int descriptor) = 0;
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
    /// Closes a duplicate of the descriptor: any error that closing would report is reported, and
    /// the file stays open.
    virtual int closeDuplicate(int descriptor) = 0;
    virtual int close(int descriptor) = 0;
    /// Gives a nameless file a name that must not be there yet.
    virtual int link(int descriptor, const std::string& path) = 0;
    /// Gives a nameless file the name `path`, in place of the file that has it. Under the name
    /// `hidden`, which must not be there yet, it is to be seen for an instant; killing the process
    /// does not leave it there.
    virtual int linkOver(int descriptor, const std::string& hidden, const std::string& path) = 0;
    virtual int rename(const std::string& from, const std::string& to) = 0;
    virtual int syncFolder(const std::string& folder) = 0;
    virtual int remove(const std::string& path) = 0;
    /// A number that another save is not likely to get.
    virtual std::uint64_t uniqueNumber() = 0;
};

} // namespace zemo::platform
