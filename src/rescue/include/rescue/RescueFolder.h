#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace zemo::rescue {

/// Where rescue copies are kept: under the user's state folder, as the base directories of the
/// desktop have it. Nothing when neither variable tells. [main]
std::optional<std::filesystem::path> rescueRoot();

/// One program's folder for the copy of its sound. A lock in it tells that the program lives: the
/// system lets go of it however the program ends. All [worker]; what an object no longer holds may
/// be taken over by another program.
class RescueFolder {
public:
    /// A new one under `root`, for this user alone; nothing when it cannot be made.
    static std::optional<RescueFolder> make(const std::filesystem::path& root);

    /// Those with a copy in them whose programs have ended, the latest copy first; they are this
    /// program's now. Empty ones are removed.
    static std::vector<RescueFolder> takeAbandoned(const std::filesystem::path& root);

    RescueFolder(RescueFolder&& other) noexcept;
    RescueFolder& operator=(RescueFolder&& other) noexcept;
    RescueFolder(const RescueFolder&) = delete;
    RescueFolder& operator=(const RescueFolder&) = delete;
    ~RescueFolder(); ///< lets go of it; what is in it stays

    /// Where the copy of a sound of that name belongs: a file of the same name, without its
    /// extension, where that makes a file name.
    std::filesystem::path fileFor(const std::string& soundName) const;
    /// The copy; empty when there is none.
    const std::filesystem::path& copy() const noexcept { return copy_; }
    /// When it was written.
    std::chrono::system_clock::time_point time() const noexcept { return time_; }

    /// Looks what the folder holds. Of several copies the latest one counts, and goes last.
    void look();
    void removeCopiesBut(const std::filesystem::path& kept);
    /// Removes the folder with all that is in it, the copy first.
    void remove();

private:
    RescueFolder(std::filesystem::path path, int lock) : path_(std::move(path)), lock_(lock) {}
    static std::optional<RescueFolder> lock(const std::filesystem::path& path, bool isNew);
    std::vector<std::filesystem::path> files() const;
    void release() noexcept;

    std::filesystem::path path_;
    std::filesystem::path copy_;
    std::chrono::system_clock::time_point time_;
    int lock_ = -1; ///< descriptor
};

} // namespace zemo::rescue
