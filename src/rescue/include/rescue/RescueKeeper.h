#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/Progress.h"
#include "rescue/RescueCopies.h"

namespace zemo::rescue {

/// A copy that a program has left which has ended.
struct FoundCopy {
    CopyNumber number = kNoCopy;
    std::string soundName = {};
    std::chrono::system_clock::time_point time = {}; ///< when it was written
};

/// What the window should say about the copies.
struct KeeperState {
    bool isFailing = false; ///< a copy that is wanted cannot be written
    /// The sound whose copy is the first to be removed when another one is written, because the
    /// copies take up more room than they may. Empty: none is.
    std::string firstToGo = {};
};

/// What the keeper tells. All [worker]; `changed` [main] as well, where there is no thread or
/// memory.
struct RescueEvents {
    /// Once, after the start: the copies that programs have left which have ended, the latest
    /// first. Nothing when there are none.
    std::function<void(std::vector<FoundCopy>)> found;
    /// After every copy, written or not, and every removal.
    std::function<void(const KeeperState&)> changed;
    /// The copy of a lost sound is no more, because there was no room for it.
    std::function<void(CopyNumber)> gone;
};

/// Keeps copies of sounds on the disk, on a thread of its own that leaves the processor and the
/// disk to others. Copies are written in the order in which they were asked for. Each sound is held
/// in memory until its copy is on the disk, and each copy stays until it is dropped, or its sound
/// is lost and there is no room for it. One that cannot be written is tried again with every later
/// one.
///
/// What it is told to do is [main] and returns at once, but for finish().
class RescueKeeper {
public:
    RescueKeeper(std::filesystem::path root, RescueEvents events, const RescueLimits& limits = {});
    RescueKeeper(const RescueKeeper&) = delete;
    RescueKeeper& operator=(const RescueKeeper&) = delete;
    ~RescueKeeper(); ///< finishes first

    /// Keeps a copy of this sound. kNoCopy, told as a failure, when there is no memory to note it.
    CopyNumber keep(const HeldSound& sound, const std::string& name);
    /// The copy is not wanted any more.
    void drop(CopyNumber number);
    /// The sound can be reached by this copy only, so that it counts among those that may have to
    /// go for want of room; or it can be reached again.
    void setLost(CopyNumber number, bool isLost);
    /// Tries once more to write what could not be written.
    void retry();
    /// The window says which copy is the first to go: any that is asked for from now on may remove
    /// it.
    void allowRemoval();

    /// Where a sound is that was to be kept. Neither: there is no such copy any more.
    struct Place {
        HeldSound sound = {};                           ///< empty once the copy is written
        std::optional<std::filesystem::path> file = {}; ///< nothing before
    };
    Place find(CopyNumber number) const;
    bool isWritten(CopyNumber number) const;
    /// [any] Whether lost sounds that are yet to be written take up more memory than they may.
    bool isBehind() const;

    /// [worker] Waits until isBehind() is over, or the work that this thread is at is to leave off.
    void awaitRoom() const;
    /// [worker] The same until every copy is written, or has failed.
    void awaitCopies() const;
    /// [any] Waits until everything is done, at most that long.
    void finish(std::chrono::milliseconds patience) noexcept;
    /// [any] Whether there is anything to wait for. Safe in a signal handler, as is the next one.
    bool isBusy() const noexcept { return busy_.load(); }
    /// [any] Whether this is the keeper's own thread.
    bool isThisThread() const noexcept;

private:
    using State = RescueCopy::State;
    using Lock = std::unique_lock<std::mutex>;

    template <typename Change> void order(const Change& change);
    template <typename Condition> void await(const Condition& isOver) const;
    void run();
    void takeAbandoned();
    bool step(Lock& lock);
    void updateLimit(Lock& lock);
    bool isOverLimit() const { return copies_.bytesOnDisk() > mostBytes_; }
    void writeOrMakeRoom(CopyNumber number, Lock& lock);
    void write(RescueCopy& copy, Lock& lock);
    std::optional<CopyFile> writeFile(const RescueCopy& copy);
    void remove(CopyNumber number, Lock& lock);
    void removeFolders(const std::shared_ptr<RescueFolder>& other);
    void removeAndTell(CopyNumber number, Lock& lock);
    void tellState(Lock& lock);

    const std::filesystem::path root_;
    const RescueEvents events_;
    const RescueLimits limits_;
    std::shared_ptr<RescueFolder> folder_; ///< the keeper's thread alone
    mutable std::mutex mutex_;             ///< for all below; never held while the disk works
    mutable std::condition_variable ordered_;
    mutable std::condition_variable done_;
    RescueCopies copies_;
    const RescueCopy* beingWritten_ = nullptr;
    platform::Progress* progress_ = nullptr;      ///< of the copy that is being written
    std::uint64_t mostBytes_ = limits_.mostBytes; ///< that the copies may take up on the disk
    bool removalIsAllowed_ = false;
    bool isStateNew_ = false; ///< it is to be told
    bool ending_ = false;
    std::atomic<bool> busy_{true};
    std::atomic<int> threadId_{0};
    std::thread thread_;
};

} // namespace zemo::rescue
