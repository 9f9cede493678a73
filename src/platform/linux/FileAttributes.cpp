#include <endian.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <linux/posix_acl_xattr.h>

#include "platform_linux/LinuxServices.h"

/// Who may do what with a file, carried from one file to another.
namespace zemo::platform {
namespace {

using namespace std::string_view_literals;
using Value = std::vector<char>;

constexpr const char* kAccessList = "system.posix_acl_access";
constexpr const char* kAccessListOfNfs = "system.nfs4_acl"; ///< its entries are not looked at
constexpr std::uint16_t kOwningGroup = 0x04;                ///< the tag of an entry

// The bits of a mode.
constexpr mode_t kSetUser = 04000;
constexpr mode_t kSetGroup = 02000;
constexpr mode_t kSpecial = 07000;
constexpr mode_t kOwner = 0700;
constexpr mode_t kGroup = 0070;
constexpr mode_t kAccess = 0777;

/// These say something of the old content: signatures of it, and rights of a program.
constexpr std::array kOfTheContent{"security.ima"sv, "security.evm"sv, "security.capability"sv};

/// The file system or the user's rights do not allow it, or the old file is gone by now: not an
/// error, but the new file must not be open to more readers for it.
bool isRefusal(int error) {
    constexpr std::array kRefusals{EPERM,  EACCES,    EINVAL,  ENODATA,
                                   ENOENT, EOVERFLOW, ENOTSUP, ENOSYS};
    return std::find(kRefusals.begin(), kRefusals.end(), error) != kRefusals.end();
}

/// What an answer of the system comes to: done, refused, or an error (its negative number).
int judged(int result) {
    return result < 0 && !isRefusal(errno) ? -errno : 0;
}

/// Reads what may grow while it is read. A negative error number, or 0.
template <typename Read> int readWhole(const Read& read, Value& value) {
    while (true) {
        const ssize_t size = read(nullptr, 0);
        value.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        const ssize_t got = size > 0 ? read(value.data(), value.size()) : size;
        if (got >= 0) {
            value.resize(static_cast<std::size_t>(got));
            return 0;
        }
        if (errno != ERANGE) {
            return -errno;
        }
    }
}

/// The entries of an access list, without the rights of the owning group.
void denyOwningGroup(Value& list) {
    posix_acl_xattr_entry entry{};
    for (std::size_t at = sizeof(posix_acl_xattr_header); at + sizeof entry <= list.size();
         at += sizeof entry) {
        std::memcpy(&entry, list.data() + at, sizeof entry);
        if (le16toh(entry.e_tag) == kOwningGroup) {
            entry.e_perm = 0;
            std::memcpy(list.data() + at, &entry, sizeof entry);
        }
    }
}

class AttributeCopy {
public:
    AttributeCopy(const std::string& from, int to) : from_(from), to_(to) {}

    int run() {
        if (::lstat(from_.c_str(), &old_) != 0) {
            return errno == ENOENT || errno == ENOTDIR ? 0 : -errno;
        }
        if (!S_ISREG(old_.st_mode)) {
            return 0;
        }
        for (const auto step :
             {&AttributeCopy::copyOwners, &AttributeCopy::copyExtended, &AttributeCopy::copyMode}) {
            if (const int error = (this->*step)()) {
                return error;
            }
        }
        return 0;
    }

private:
    int copyOwners();
    int copyExtended();
    int copyOne(const char* name);
    int dropInheritedList();
    int copyMode();

    const std::string& from_;
    int to_;
    struct stat old_ {};
    bool hasOwner_ = true;
    bool hasGroup_ = true;
    bool oldHasList_ = false; ///< the old file has an access list
    bool hasList_ = false;    ///< and the new one has the same
    Value value_;
};

/// Only root may give a file away, and others only to a group of theirs.
int AttributeCopy::copyOwners() {
    struct stat now {};
    if (::fstat(to_, &now) != 0) {
        return -errno;
    }
    if (now.st_gid != old_.st_gid) {
        const int result = ::fchown(to_, static_cast<uid_t>(-1), old_.st_gid);
        hasGroup_ = result == 0;
        if (const int error = judged(result)) {
            return error;
        }
    }
    if (now.st_uid != old_.st_uid) {
        const int result = ::fchown(to_, old_.st_uid, static_cast<gid_t>(-1));
        hasOwner_ = result == 0;
        return judged(result);
    }
    return 0;
}

int AttributeCopy::copyExtended() {
    Value names;
    const int listed = readWhole(
        [&](char* to, std::size_t size) { return ::llistxattr(from_.c_str(), to, size); }, names);
    if (listed != 0 && !isRefusal(-listed)) {
        return listed;
    }
    names.push_back('\0');
    for (const char* name = names.data(); *name != '\0'; name += std::strlen(name) + 1) {
        const bool isOfTheContent =
            std::find(kOfTheContent.begin(), kOfTheContent.end(), name) != kOfTheContent.end();
        const int error = isOfTheContent ? 0 : copyOne(name);
        if (error != 0) {
            return error;
        }
    }
    return oldHasList_ ? 0 : dropInheritedList();
}

int AttributeCopy::copyOne(const char* name) {
    const bool isPosixList = std::strcmp(name, kAccessList) == 0;
    const bool isList = isPosixList || std::strcmp(name, kAccessListOfNfs) == 0;
    oldHasList_ = oldHasList_ || isList;
    if (isList && !isPosixList && !hasGroup_) {
        return 0;
    }
    const int read = readWhole(
        [&](char* to, std::size_t size) { return ::lgetxattr(from_.c_str(), name, to, size); },
        value_);
    if (read != 0) {
        return isRefusal(-read) ? 0 : read;
    }
    if (isPosixList && !hasGroup_) {
        denyOwningGroup(value_);
    }
    const int result = ::fsetxattr(to_, name, value_.data(), value_.size(), 0);
    hasList_ = hasList_ || (isList && result == 0);
    return judged(result);
}

/// One that the new file has from its folder would let in others than the old file did.
int AttributeCopy::dropInheritedList() {
    if (::fgetxattr(to_, kAccessList, nullptr, 0) <= 0) {
        return 0;
    }
    const int result = ::fremovexattr(to_, kAccessList);
    oldHasList_ = result != 0; // then as if the right one could not be had
    return judged(result);
}

/// Comes last: until now the file was its owner's alone, but for what the access list says.
int AttributeCopy::copyMode() {
    struct stat now {};
    if (::fstat(to_, &now) != 0) {
        return -errno;
    }
    mode_t special = old_.st_mode & kSpecial;
    special &= hasOwner_ ? kSpecial : ~kSetUser;
    special &= hasGroup_ ? kSpecial : ~kSetGroup;
    mode_t access = old_.st_mode & kAccess;
    if (hasList_) {
        access = now.st_mode & kAccess; // which the list has set
    } else if (oldHasList_) {
        access &= kOwner; // the other bits mean something else without the list
    } else if (!hasGroup_) {
        access &= ~kGroup;
    }
    const mode_t wanted = access | special;
    return (now.st_mode & (kAccess | kSpecial)) == wanted ? 0 : judged(::fchmod(to_, wanted));
}

} // namespace

int PosixFileOperations::copyAttributes(const std::string& like, int descriptor) {
    return AttributeCopy(like, descriptor).run();
}

} // namespace zemo::platform
