#include "rescue/RescueFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/FileOperations.h"
#include "platform/Services.h"

namespace zemo::rescue {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLockName = ".lock"; ///< hidden, as are files in the making
constexpr std::string_view kUnfinished = ".zemo-";
constexpr std::string_view kExtension = ".caf";
constexpr std::size_t kLongestSoundName = 240; ///< bytes; the rest of a copy's name has room beside
constexpr std::size_t kFolderNameLength = 6;
constexpr int kMostNames = 100;
constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
constexpr mode_t kWrittenByOthers = S_IWGRP | S_IWOTH;

using Name = std::string;

/// An absolute folder that a variable of the environment names. [main]
std::optional<fs::path> folderIn(const char* variable) {
    const char* const text = std::getenv(variable); // NOLINT(concurrency-mt-unsafe): at launch
    if (text == nullptr || text[0] != '/') {        // a relative one is to be ignored
        return std::nullopt;
    }
    return text;
}

/// Makes every folder that is missing for this user alone.
bool makeFolders(const fs::path& path) {
    std::error_code error;
    if (fs::is_directory(path, error)) {
        return true;
    }
    if (path.has_parent_path() && path.parent_path() != path && !makeFolders(path.parent_path())) {
        return false;
    }
    return ::mkdir(path.c_str(), 0700) == 0 || fs::is_directory(path, error);
}

bool isSame(const struct stat& one, const struct stat& other) {
    return one.st_ino == other.st_ino && one.st_dev == other.st_dev;
}

/// What `name` is in an open folder, itself and not what a link of that name points to.
bool look(const Descriptor& folder, const Name& name, struct stat& found) {
    return ::fstatat(folder.number(), name.c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0;
}

bool isOwn(const struct stat& status, mode_t forbidden) {
    return status.st_uid == ::geteuid() && (status.st_mode & forbidden) == 0;
}

/// A folder in another one, opened only if it is no link, is this user's and grants others nothing
/// of `forbidden`.
Descriptor openOwn(const Descriptor& parent, const Name& name, mode_t forbidden) {
    Descriptor folder(
        ::openat(parent.number(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!folder || ::fstat(folder.number(), &status) != 0 || !isOwn(status, forbidden)) {
        return {};
    }
    return folder;
}

enum class Missing { Made, Left };

/// The root. Links on the way to the user's state folder are the user's own business; that folder
/// is two above the root.
Descriptor openRoot(const fs::path& root, Missing missing) {
    const fs::path above = root.parent_path();
    const fs::path state = above.parent_path();
    if (missing == Missing::Made && !makeFolders(state)) {
        return {};
    }
    const auto enter = [missing](const Descriptor& parent, const Name& name, mode_t forbidden) {
        if (parent && missing == Missing::Made) {
            ::mkdirat(parent.number(), name.c_str(), 0700); // it may be there; opening it tells
        }
        return parent ? openOwn(parent, name, forbidden) : Descriptor();
    };
    const Descriptor base(::open(state.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const Descriptor ours = enter(base, above.filename(), kWrittenByOthers);
    return enter(ours, root.filename(), kOthers);
}

std::vector<Name> namesIn(const Descriptor& folder) {
    std::vector<Name> names;
    const int again = ::openat(folder.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const stream = again >= 0 ? ::fdopendir(again) : nullptr;
    if (stream == nullptr) {
        static_cast<void>(Descriptor(again));
        return names;
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> closed(stream, ::closedir);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): this stream is this thread's alone
    while (const dirent* const entry = ::readdir(stream)) {
        const Name name(&entry->d_name[0]);
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    return names;
}

bool isAlphanumeric(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isFolderName(const Name& name) {
    return name.size() == kFolderNameLength &&
           std::all_of(name.begin(), name.end(), isAlphanumeric);
}

Name newFolderName() {
    static constexpr std::string_view kLetters =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    std::uint64_t number = platform::services().fileOperations->uniqueNumber();
    Name name;
    for (std::size_t i = 0; i < kFolderNameLength; ++i, number /= kLetters.size()) {
        name += kLetters[number % kLetters.size()];
    }
    return name;
}

bool isCopyName(const Name& name) {
    return name.ends_with(kExtension) && name.front() != '.';
}

/// Whether a file of that name could be one of ours at all, whatever the sound is called.
bool isPartOfAFileName(const Name& soundName) {
    return !soundName.empty() && soundName.size() <= kLongestSoundName &&
           soundName.front() != '.' && std::none_of(soundName.begin(), soundName.end(), [](char c) {
               return c == '/' || static_cast<unsigned char>(c) < ' ';
           });
}

/// Where "~" and a number end the name without its extension; npos where they do not.
std::size_t placeOfNumber(std::string_view stem) {
    const std::size_t lastOther = stem.find_last_not_of("0123456789");
    const bool isNumbered =
        lastOther != std::string_view::npos && lastOther > 0 && lastOther + 1 < stem.size();
    return isNumbered && stem[lastOther] == '~' ? lastOther : std::string_view::npos;
}

std::string_view withoutExtension(std::string_view name) {
    return name.substr(0, name.size() - kExtension.size());
}

CopyFile copyFile(const Name& name, const struct stat& status) {
    const auto time = std::chrono::system_clock::from_time_t(status.st_mtim.tv_sec) +
                      std::chrono::microseconds(status.st_mtim.tv_nsec / 1000);
    return {.name = name, .time = time, .bytes = static_cast<std::uint64_t>(status.st_size)};
}

std::chrono::system_clock::time_point latestIn(const RescueFolder& folder) {
    std::chrono::system_clock::time_point latest;
    for (const CopyFile& copy : folder.copies()) {
        latest = std::max(latest, copy.time);
    }
    return latest;
}

} // namespace

std::optional<fs::path> rescueRoot() {
    if (const auto state = folderIn("XDG_STATE_HOME")) {
        return *state / "zemo" / "rescue";
    }
    if (const auto home = folderIn("HOME")) {
        return *home / ".local" / "state" / "zemo" / "rescue";
    }
    return std::nullopt;
}

std::string soundNameOf(const std::string& copyName) {
    const std::string_view stem = withoutExtension(copyName);
    const std::size_t number = placeOfNumber(stem);
    return number == std::string_view::npos ? copyName : std::string(stem.substr(0, number));
}

RescueFolder::RescueFolder(fs::path root, std::string name, Descriptor folder, Descriptor lock)
    : root_(std::move(root)),
      name_(std::move(name)),
      folder_(std::move(folder)),
      lock_(std::move(lock)) {}

std::optional<RescueFolder> RescueFolder::make(const fs::path& root) {
    const Descriptor opened = openRoot(root, Missing::Made);
    // A program that looks for abandoned folders may take a new one for one before it is locked.
    for (int attempt = 0; opened && attempt < kMostNames; ++attempt) {
        const Name name = newFolderName();
        if (::mkdirat(opened.number(), name.c_str(), 0700) != 0) {
            if (errno == EEXIST) {
                continue;
            }
            return std::nullopt;
        }
        if (auto made = lock(root, opened, name, true)) {
            return made;
        }
        ::unlinkat(opened.number(), name.c_str(), AT_REMOVEDIR); // it is removed if it is empty
    }
    return std::nullopt;
}

std::vector<RescueFolder> RescueFolder::takeAbandoned(const fs::path& root) {
    const Descriptor opened = openRoot(root, Missing::Left);
    std::vector<RescueFolder> found;
    for (const Name& name : opened ? namesIn(opened) : std::vector<Name>()) {
        if (!isFolderName(name)) {
            continue;
        }
        auto folder = lock(root, opened, name, false);
        if (!folder) {
            ::unlinkat(opened.number(), name.c_str(), AT_REMOVEDIR); // only if it is empty
        } else if (folder->copies().empty()) {
            folder->removeIfEmpty();
        } else {
            found.push_back(std::move(*folder));
        }
        if (found.size() > kMostTaken) {
            found.erase(std::min_element(found.begin(), found.end(),
                                         [](const RescueFolder& one, const RescueFolder& other) {
                                             return latestIn(one) < latestIn(other);
                                         }));
        }
    }
    return found;
}

std::optional<RescueFolder> RescueFolder::lock(const fs::path& root, const Descriptor& opened,
                                               const std::string& name, bool isNew) {
    Descriptor folder = openOwn(opened, name, kOthers);
    if (!folder) {
        return std::nullopt;
    }
    Descriptor file(::openat(folder.number(), kLockName,
                             O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | (isNew ? O_CREAT : 0),
                             0600));
    struct stat status {};
    struct stat named {};
    if (!file || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode) ||
        !isOwn(status, 0) || ::flock(file.number(), LOCK_EX | LOCK_NB) != 0) {
        return std::nullopt;
    }
    RescueFolder locked(root, name, std::move(folder), std::move(file));
    // Another program may have removed the lock meanwhile, or the folder.
    if (!look(locked.folder_, kLockName, named) || !isSame(status, named) ||
        !locked.isInPlace(opened)) {
        return std::nullopt;
    }
    return locked;
}

bool RescueFolder::isInPlace(const Descriptor& root) const {
    struct stat open {};
    struct stat named {};
    return root && ::fstat(folder_.number(), &open) == 0 && look(root, name_, named) &&
           isSame(open, named);
}

std::string RescueFolder::nameFor(const std::string& soundName) const {
    struct stat there {};
    const auto isFree = [&](const Name& name) { return !look(folder_, name, there); };
    Name name = isPartOfAFileName(soundName) ? soundName : "sound.caf";
    const bool isPlain = isCopyName(name) && name.size() > kExtension.size() &&
                         placeOfNumber(withoutExtension(name)) == std::string_view::npos;
    if (isPlain && isFree(name)) {
        return name;
    }
    for (std::uint64_t number = isPlain ? 2 : 1;; ++number) {
        Name numbered = name + "~" + std::to_string(number);
        numbered += kExtension;
        if (isFree(numbered)) {
            return numbered;
        }
    }
}

std::optional<fs::path> RescueFolder::pathFor(const std::string& name) const {
    if (!isInPlace(openRoot(root_, Missing::Left))) {
        return std::nullopt;
    }
    return root_ / name_ / name;
}

std::optional<CopyFile> RescueFolder::copy(const std::string& name) const {
    struct stat status {};
    if (!isCopyName(name) || !look(folder_, name, status) || !S_ISREG(status.st_mode) ||
        !isOwn(status, 0)) {
        return std::nullopt;
    }
    return copyFile(name, status);
}

std::vector<CopyFile> RescueFolder::copies() const {
    std::vector<CopyFile> found;
    for (const Name& name : namesIn(folder_)) {
        if (const auto file = copy(name)) {
            found.push_back(*file);
        }
    }
    return found;
}

void RescueFolder::remove(const std::string& copyName) {
    if (isCopyName(copyName)) {
        ::unlinkat(folder_.number(), copyName.c_str(), 0);
    }
}

bool RescueFolder::removeIfEmpty() {
    const std::vector<Name> names = namesIn(folder_);
    const auto isKind = [](const Name& name) {
        return name == kLockName || name.starts_with(kUnfinished);
    };
    if (!std::all_of(names.begin(), names.end(), isKind)) {
        return std::none_of(names.begin(), names.end(), isCopyName);
    }
    for (const Name& name : names) {
        if (name != kLockName) {
            ::unlinkat(folder_.number(), name.c_str(), 0);
        }
    }
    ::unlinkat(folder_.number(), kLockName, 0);
    const Descriptor root = openRoot(root_, Missing::Left);
    if (isInPlace(root)) {
        ::unlinkat(root.number(), name_.c_str(), AT_REMOVEDIR);
    }
    return true;
}

std::uint64_t RescueFolder::freeBytes() const {
    struct statvfs disk {};
    if (::fstatvfs(folder_.number(), &disk) != 0) {
        return UINT64_MAX;
    }
    return static_cast<std::uint64_t>(disk.f_bavail) * disk.f_frsize;
}

} // namespace zemo::rescue
