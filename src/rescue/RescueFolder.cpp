#include "rescue/RescueFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace zemo::rescue {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLockName = ".lock"; ///< hidden, as are files in the making
constexpr const char* kExtension = ".caf";
constexpr std::size_t kLongestStem = 200; ///< bytes
constexpr int kMostNames = 100;

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

/// Whether the open file is the one at `path`: another program may have removed that meanwhile.
bool isStillAt(const fs::path& path, int descriptor) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(descriptor, &opened) == 0 && ::stat(path.c_str(), &named) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

bool isCopy(const fs::path& file) {
    return file.extension() == kExtension && file.filename().native().front() != '.';
}

std::chrono::system_clock::time_point writtenAt(const fs::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) {
        return {};
    }
    return std::chrono::system_clock::from_time_t(status.st_mtim.tv_sec) +
           std::chrono::microseconds(status.st_mtim.tv_nsec / 1000);
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

std::optional<RescueFolder> RescueFolder::make(const fs::path& root) {
    if (!makeFolders(root)) {
        return std::nullopt;
    }
    // A program that looks for abandoned folders may take a new one for one before it is locked.
    for (int attempt = 0; attempt < kMostNames; ++attempt) {
        std::string name = root / "XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) {
            return std::nullopt;
        }
        if (auto made = lock(name, true)) {
            return made;
        }
        std::error_code ignored;
        fs::remove(name, ignored);
    }
    return std::nullopt;
}

std::vector<RescueFolder> RescueFolder::takeAbandoned(const fs::path& root) {
    std::vector<RescueFolder> found;
    std::error_code error;
    for (fs::directory_iterator entry(root, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code ignored;
        if (!entry->is_directory(ignored)) {
            continue;
        }
        auto folder = lock(entry->path(), false);
        if (!folder) {
            fs::remove(entry->path(), ignored); // it is, if it is empty
            continue;
        }
        folder->look();
        if (folder->copy().empty()) {
            folder->remove();
        } else {
            found.push_back(std::move(*folder));
        }
    }
    std::sort(found.begin(), found.end(), [](const RescueFolder& one, const RescueFolder& other) {
        return one.time_ > other.time_;
    });
    return found;
}

std::optional<RescueFolder> RescueFolder::lock(const fs::path& path, bool isNew) {
    const fs::path file = path / kLockName;
    const int descriptor =
        ::open(file.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | (isNew ? O_CREAT : 0), 0600);
    if (descriptor < 0) {
        return std::nullopt;
    }
    RescueFolder folder(path, descriptor);
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0 || !isStillAt(file, descriptor)) {
        return std::nullopt;
    }
    return folder;
}

RescueFolder::RescueFolder(RescueFolder&& other) noexcept
    : path_(std::move(other.path_)),
      copy_(std::move(other.copy_)),
      time_(other.time_),
      lock_(std::exchange(other.lock_, -1)) {}

RescueFolder& RescueFolder::operator=(RescueFolder&& other) noexcept {
    if (this != &other) {
        release();
        path_ = std::move(other.path_);
        copy_ = std::move(other.copy_);
        time_ = other.time_;
        lock_ = std::exchange(other.lock_, -1);
    }
    return *this;
}

RescueFolder::~RescueFolder() {
    release();
}

void RescueFolder::release() noexcept {
    if (lock_ >= 0) {
        ::close(std::exchange(lock_, -1));
    }
}

fs::path RescueFolder::fileFor(const std::string& soundName) const {
    const std::string stem = fs::path(soundName).stem();
    const bool isName = !stem.empty() && stem.size() <= kLongestStem && stem.front() != '.' &&
                        std::none_of(stem.begin(), stem.end(), [](char c) {
                            return c == '/' || static_cast<unsigned char>(c) < ' ';
                        });
    return path_ / ((isName ? stem : "sound") + kExtension);
}

std::vector<fs::path> RescueFolder::files() const {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator entry(path_, error), end; !error && entry != end;
         entry.increment(error)) {
        found.push_back(entry->path());
    }
    return found;
}

void RescueFolder::look() {
    copy_.clear();
    time_ = {};
    for (const fs::path& file : files()) {
        std::error_code ignored;
        if (isCopy(file) && fs::is_regular_file(file, ignored) &&
            (copy_.empty() || writtenAt(file) > time_)) {
            copy_ = file;
            time_ = writtenAt(file);
        }
    }
}

void RescueFolder::removeCopiesBut(const fs::path& kept) {
    for (const fs::path& file : files()) {
        if (isCopy(file) && file != kept) {
            std::error_code ignored;
            fs::remove(file, ignored);
        }
    }
}

void RescueFolder::remove() {
    std::error_code ignored;
    for (const fs::path& file : files()) {
        if (file.filename() != kLockName) {
            fs::remove(file, ignored);
        }
    }
    fs::remove(path_ / kLockName, ignored);
    fs::remove(path_, ignored);
    copy_.clear();
    release();
}

} // namespace zemo::rescue
