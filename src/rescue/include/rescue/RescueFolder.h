#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "rescue/Descriptor.h"

namespace zemo::rescue {

/// Where rescue copies are kept: under the user's state folder, as the base directories of the
/// desktop have it. Nothing when neither variable tells. [main]
std::optional<std::filesystem::path> rescueRoot();

/// A rescue copy, as its folder has it.
struct CopyFile {
    std::string name; ///< of the file
    std::chrono::system_clock::time_point time;
    std::uint64_t bytes = 0;
};

/// The name of the sound that a copy of that file name is of; see RescueFolder::nameFor().
std::string soundNameOf(const std::string& copyName);

/// One program's folder for the copies of its sounds. A lock in it tells that the program lives:
/// the system lets go of it however the program ends. All [worker]; what an object no longer holds
/// may be taken over by another program.
///
/// The root and the folder above it are this user's and closed to others, or nothing is kept
/// there. No link below the user's state folder is followed, and of what a folder holds only what
/// has a name of ours is touched: `.lock`, `.zemo-…` in the making, and copies.
class RescueFolder {
public:
    /// A new one under `root`, for this user alone; nothing when it cannot be made.
    static std::optional<RescueFolder> make(const std::filesystem::path& root);

    /// Those with copies in them whose programs have ended; they are this program's now. Empty ones
    /// are removed. No more than kMostTaken at a time, those with the latest copies.
    static std::vector<RescueFolder> takeAbandoned(const std::filesystem::path& root);
    static constexpr std::size_t kMostTaken = 64; ///< each costs two open files

    /// A file name for a copy of a sound of that name, which no file in the folder has. It tells
    /// the sound's name to the letter, where that can be a part of a file name:
    ///     bell.caf                  the sound bell.caf
    ///     bell.caf~2.caf            another one of that name
    ///     bell.wav~1.caf            the sound bell.wav
    std::string nameFor(const std::string& soundName) const;

    /// Where a file of that name is to be written, by its path; nothing when the folder is not
    /// where it was made, or a link has taken its place.
    std::optional<std::filesystem::path> pathFor(const std::string& name) const;

    /// The copies in the folder.
    std::vector<CopyFile> copies() const;
    /// The one of that name; nothing when it is not a file of this user's in this very folder.
    std::optional<CopyFile> copy(const std::string& name) const;
    void remove(const std::string& copyName);

    /// Removes the folder, unless anything is in it beside the lock and what is half written. True:
    /// it is gone, or there is nothing left in it of ours.
    bool removeIfEmpty();

    /// How many bytes may still be written to the disk it is on.
    std::uint64_t freeBytes() const;

private:
    RescueFolder(std::filesystem::path root, std::string name, Descriptor folder, Descriptor lock);
    static std::optional<RescueFolder> lock(const std::filesystem::path& root,
                                            const Descriptor& opened, const std::string& name,
                                            bool isNew);
    bool isInPlace(const Descriptor& root) const;
    std::vector<std::string> names() const;

    std::filesystem::path root_;
    std::string name_;
    Descriptor folder_;
    Descriptor lock_;
};

} // namespace zemo::rescue
