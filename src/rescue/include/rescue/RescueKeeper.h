#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "files/AudioFileWriter.h"
#include "platform/Progress.h"
#include "rescue/RescueFolder.h"

namespace zemo::rescue {

/// What the keeper tells. Both [worker]; `kept` [main] as well, where there is no thread or memory.
struct RescueEvents {
    /// Once, after the start: the copies that programs have left which have ended, the latest
    /// first. Nothing when there are none.
    std::function<void(std::vector<RescueFolder>)> found;
    /// After every copy: whether it is on the disk.
    std::function<void(bool)> kept;
};

/// Keeps a copy of one sound on the disk, on a thread of its own that leaves the processor and the
/// disk to others. Only the latest order counts: a copy that is not wanted any more is
/// left off within a few milliseconds, so that at most one block of samples is held for it.
///
/// What it is told to do is [main] and returns at once, but for finish().
class RescueKeeper {
public:
    RescueKeeper(std::filesystem::path root, RescueEvents events);
    RescueKeeper(const RescueKeeper&) = delete;
    RescueKeeper& operator=(const RescueKeeper&) = delete;
    ~RescueKeeper(); ///< finishes first

    /// Has the copy be of this sound from now on. The one before it stays until that is done.
    void keep(const HeldSound& sound, const std::string& name);
    /// Removes the copy.
    void drop();
    /// Makes the copy in that folder the one that is kept. The one before it stays on the disk, for
    /// the next program to find.
    void adopt(RescueFolder folder);
    /// Removes a copy that was found.
    void discard(RescueFolder folder);

    /// [any] Waits until everything is done, at most that long.
    void finish(std::chrono::milliseconds patience) noexcept;
    /// [any] Whether there is anything to wait for. Safe in a signal handler, as is the next one.
    bool isBusy() const noexcept { return busy_.load(); }
    /// [any] Whether this is the keeper's own thread.
    bool isThisThread() const noexcept;

private:
    struct WantedCopy {
        HeldSound sound; ///< empty: none is wanted
        std::string name;
    };
    struct Orders {
        std::optional<RescueFolder> adopted;
        std::vector<RescueFolder> discarded;
        std::optional<WantedCopy> wanted;
        bool any() const noexcept { return adopted || !discarded.empty() || wanted; }
    };

    template <typename Change> void order(Change change);
    void run();
    void tellOfAbandoned();
    void carryOut(Orders orders);
    bool write(const WantedCopy& wanted);

    const std::filesystem::path root_;
    const RescueEvents events_;
    std::optional<RescueFolder> folder_; ///< the keeper's thread alone
    std::mutex mutex_;
    std::condition_variable changed_;
    Orders orders_;
    platform::Progress* progress_ = nullptr; ///< of what is being carried out
    bool ending_ = false;
    std::atomic<bool> busy_{true};
    std::atomic<int> threadId_{0};
    std::thread thread_;
};

} // namespace zemo::rescue
