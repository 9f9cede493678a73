#pragma once

#include <array>
#include <atomic>
#include <climits>
#include <cstddef>
#include <string>

namespace zemo::platform {

/// The hidden files that are being written, so that a signal that ends the program can remove them.
/// Empty, and nothing is kept, until RemoveUnfinishedOnSignal is made.
class UnfinishedFiles {
public:
    static constexpr std::size_t kMost = 8; ///< at a time; more are not remembered

    void enable() noexcept { isEnabled_ = true; }
    void add(const std::string& path) noexcept;    ///< [any] before the file is made
    void remove(const std::string& path) noexcept; ///< [any] once it is gone, or finished
    void unlinkAll() noexcept;                     ///< [signal]

private:
    struct Name {
        std::atomic<bool> isTaken{false};
        std::atomic<bool> isSet{false};
        std::array<char, PATH_MAX> path{};
    };

    std::atomic<bool> isEnabled_{false};
    std::array<Name, kMost> names_;
};

/// [any] Those of this process.
UnfinishedFiles& unfinishedFiles() noexcept;

/// [main] From now on a signal that would end the program removes the unfinished files first:
/// SIGHUP, SIGINT, SIGPIPE, SIGTERM, SIGXCPU and SIGXFSZ, each unless it is ignored. The program
/// ends by the signal all the same.
void removeUnfinishedFilesOnSignals();

} // namespace zemo::platform
