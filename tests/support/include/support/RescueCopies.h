#pragma once

#include <filesystem>
#include <vector>

namespace zemo::test {

/// The copies of unsaved work under a folder, those of all programs.
inline std::vector<std::filesystem::path> rescueCopies(const std::filesystem::path& root) {
    std::vector<std::filesystem::path> found;
    if (std::filesystem::exists(root)) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
            if (entry.path().extension() == ".caf") {
                found.push_back(entry.path());
            }
        }
    }
    return found;
}

} // namespace zemo::test
