#include "rescue/RescueKeeper.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <new>
#include <system_error>
#include <utility>

#include "platform/OutOfMemory.h"

namespace zemo::rescue {
namespace {

using namespace std::chrono_literals;

constexpr auto kLastPatience = 60s;
constexpr auto kBetweenLooks = 10ms; ///< whether waiting work is to leave off

int thisThread() noexcept {
    return static_cast<int>(::syscall(SYS_gettid));
}

/// Others first, with the processor and with the disk, but not starved by them: it may hold what
/// the system lets only one thread have at a time, and the window would wait for that. Linux knows
/// niceness by thread. That it fails does no harm.
void stepBack() noexcept {
    constexpr int kNice = 10;
    constexpr int kThread = 1;
    constexpr int kLastOfTheUsualClass = (2 << 13) | 7;
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(thisThread()), kNice);
    ::syscall(SYS_ioprio_set, kThread, 0, kLastOfTheUsualClass);
}

/// What can be left out where there is no memory for it.
template <typename Work> void tryTo(const Work& work) {
    platform::unlessOutOfMemory(work, [] {});
}

} // namespace

RescueKeeper::RescueKeeper(std::filesystem::path root, RescueEvents events,
                           const RescueLimits& limits)
    : root_(std::move(root)), events_(std::move(events)), limits_(limits) {
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) { // no thread, no copies
        busy_ = false;
    }
}

RescueKeeper::~RescueKeeper() {
    finish(kLastPatience);
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        if (progress_ != nullptr) {
            progress_->requestStop();
        }
    }
    ordered_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

// What it is told ---------------------------------------------------------------------------------

template <typename Change> void RescueKeeper::order(const Change& change) {
    {
        const std::lock_guard lock(mutex_);
        change();
        busy_ = thread_.joinable();
    }
    ordered_.notify_all();
}

CopyNumber RescueKeeper::keep(const HeldSound& sound, const std::string& name) {
    CopyNumber number = kNoCopy;
    const bool isNoted = platform::unlessOutOfMemory(
        [&] {
            order([&] {
                number = copies_.add({.state = thread_.joinable() ? State::Wanted : State::Failed,
                                      .soundName = name,
                                      .time = std::chrono::system_clock::now(),
                                      .sound = sound,
                                      .mayRemoveOthers = removalIsAllowed_});
                copies_.retry();
            });
            return true;
        },
        [] { return false; });
    if (!isNoted || !thread_.joinable()) {
        events_.changed({.isFailing = true});
    }
    return number;
}

void RescueKeeper::drop(CopyNumber number) {
    order([&] {
        if (RescueCopy* const copy = copies_.find(number)) {
            copy->state = State::Dropped;
            if (beingWritten_ == copy) {
                progress_->requestStop();
            }
        }
    });
}

void RescueKeeper::setLost(CopyNumber number, bool isLost) {
    order([&] {
        if (RescueCopy* const copy = copies_.find(number)) {
            copy->isLost = isLost;
            isStateNew_ = true;
        }
    });
}

void RescueKeeper::retry() {
    if (thread_.joinable()) {
        order([&] { copies_.retry(); });
    }
}

void RescueKeeper::allowRemoval() {
    const std::lock_guard lock(mutex_);
    removalIsAllowed_ = true;
}

RescueKeeper::Place RescueKeeper::find(CopyNumber number) const {
    Lock lock(mutex_);
    const RescueCopy* const copy = copies_.find(number);
    if (copy == nullptr || copy->state != State::Written) {
        return {.sound = copy != nullptr ? copy->sound : HeldSound()};
    }
    const auto folder = copy->folder;
    const std::string file = copy->file;
    lock.unlock(); // the disk may take its time
    return {.file = folder->copy(file) ? folder->pathFor(file) : std::nullopt};
}

bool RescueKeeper::isWritten(CopyNumber number) const {
    const std::lock_guard lock(mutex_);
    const RescueCopy* const copy = copies_.find(number);
    return copy != nullptr && copy->state == State::Written;
}

bool RescueKeeper::isBehind() const {
    const std::lock_guard lock(mutex_);
    return copies_.isBehind(limits_);
}

// What is waited for ------------------------------------------------------------------------------

template <typename Condition> void RescueKeeper::await(const Condition& isOver) const {
    Lock lock(mutex_);
    while (!isOver() && !platform::isStopRequested()) {
        done_.wait_for(lock, kBetweenLooks);
    }
}

void RescueKeeper::awaitRoom() const {
    await([this] { return !copies_.isBehind(limits_); });
}

void RescueKeeper::awaitCopies() const {
    await([this] { return !copies_.has(State::Wanted); });
}

void RescueKeeper::finish(std::chrono::milliseconds patience) noexcept {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (busy_ && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(1ms);
    }
}

bool RescueKeeper::isThisThread() const noexcept {
    return threadId_ == thisThread();
}

// Its thread --------------------------------------------------------------------------------------

void RescueKeeper::run() {
    threadId_ = thisThread();
    tryTo([this] { takeAbandoned(); }); // no memory: they stay for the next program
    stepBack();
    Lock lock(mutex_);
    while (!ending_) {
        if (step(lock)) {
            done_.notify_all();
            continue;
        }
        busy_ = false;
        ordered_.wait(lock, [this] { return ending_ || busy_; });
    }
}

void RescueKeeper::takeAbandoned() {
    std::vector<FoundCopy> found;
    for (RescueFolder& taken : RescueFolder::takeAbandoned(root_)) {
        const auto folder = std::make_shared<RescueFolder>(std::move(taken));
        for (CopyFile& file : folder->copies()) {
            const std::lock_guard lock(mutex_);
            found.push_back({.soundName = soundNameOf(file.name), .time = file.time});
            found.back().number = copies_.add({.state = State::Written,
                                               .soundName = found.back().soundName,
                                               .time = file.time,
                                               .isLost = true,
                                               .folder = folder,
                                               .file = std::move(file.name),
                                               .bytes = file.bytes});
            isStateNew_ = true;
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const FoundCopy& one, const FoundCopy& other) {
        return one.time > other.time;
    });
    if (!found.empty()) {
        events_.found(std::move(found));
    }
}

/// Does one thing of what there is to do; false: there is nothing.
bool RescueKeeper::step(Lock& lock) {
    updateLimit(lock);
    if (const CopyNumber dropped = copies_.first(State::Dropped)) {
        remove(dropped, lock);
    } else if (const CopyNumber tooMuch = copies_.tooMuchHeld(limits_)) {
        removeAndTell(tooMuch, lock);
    } else if (const CopyNumber wanted = copies_.first(State::Wanted)) {
        writeOrMakeRoom(wanted, lock);
    } else if (isStateNew_) {
        tellState(lock);
    } else {
        return false;
    }
    return true;
}

void RescueKeeper::updateLimit(Lock& lock) {
    if (const auto folder = copies_.anyFolder()) {
        lock.unlock();
        const std::uint64_t freeBytes = folder->freeBytes();
        lock.lock();
        mostBytes_ = std::min(limits_.mostBytes, freeBytes / limits_.partsOfFree);
    }
}

void RescueKeeper::writeOrMakeRoom(CopyNumber number, Lock& lock) {
    RescueCopy& copy = *copies_.find(number);
    const CopyNumber oldest = copies_.oldestLost(State::Written);
    if (copy.mayRemoveOthers && oldest != kNoCopy && isOverLimit()) {
        removeAndTell(oldest, lock);
    } else {
        write(copy, lock);
    }
}

/// The copy's sound and name change nowhere but here, and only this thread takes one out.
void RescueKeeper::write(RescueCopy& copy, Lock& lock) {
    platform::Progress progress;
    progress_ = &progress;
    beingWritten_ = &copy;
    lock.unlock();
    std::optional<CopyFile> written;
    {
        const platform::ProgressScope scope(&progress);
        written = platform::unlessOutOfMemory([&] { return writeFile(copy); },
                                              [] { return std::optional<CopyFile>(); });
    }
    lock.lock();
    progress_ = nullptr;
    beingWritten_ = nullptr;
    isStateNew_ = true;
    HeldSound held;
    if (written) {
        copy.folder = folder_;
        copy.file = std::move(written->name);
        copy.bytes = written->bytes;
        std::swap(held, copy.sound);
    }
    if (copy.state == State::Wanted && !progress.isStopRequested()) {
        copy.state = written ? State::Written : State::Failed;
    }
    lock.unlock();
    held = {}; // a large block takes its time to be freed
    lock.lock();
}

/// Nothing when it is not on the disk in the end.
std::optional<CopyFile> RescueKeeper::writeFile(const RescueCopy& copy) {
    for (const bool isLastAttempt : {false, true}) {
        if (!folder_) {
            auto made = RescueFolder::make(root_);
            if (!made) {
                return std::nullopt;
            }
            folder_ = std::make_shared<RescueFolder>(std::move(*made));
        }
        const std::string name = folder_->nameFor(copy.soundName);
        if (const auto path = folder_->pathFor(name)) {
            const bool isWritten = writeExactCopy(*path, copy.sound).done();
            return isWritten ? folder_->copy(name) : std::nullopt;
        }
        if (!isLastAttempt) {
            folder_.reset(); // somebody has moved it away
        }
    }
    return std::nullopt;
}

void RescueKeeper::remove(CopyNumber number, Lock& lock) {
    isStateNew_ = true;
    {
        const RescueCopies::Node node = copies_.takeOut(number);
        const RescueCopy& copy = node.mapped();
        lock.unlock();
        if (copy.folder != nullptr) {
            copy.folder->remove(copy.file);
        }
        tryTo([&] { removeFolders(copy.folder); });
    }
    lock.lock();
}

/// The program's own, and another one that a copy was in; each only when it is empty.
void RescueKeeper::removeFolders(const std::shared_ptr<RescueFolder>& other) {
    if (other != nullptr && other != folder_) {
        other->removeIfEmpty();
    }
    if (folder_ != nullptr && folder_->removeIfEmpty()) {
        folder_.reset();
    }
}

void RescueKeeper::removeAndTell(CopyNumber number, Lock& lock) {
    remove(number, lock);
    lock.unlock();
    tryTo([&] { events_.gone(number); });
    lock.lock();
}

void RescueKeeper::tellState(Lock& lock) {
    isStateNew_ = false;
    const CopyNumber oldest = isOverLimit() ? copies_.oldestLost(State::Written) : kNoCopy;
    removalIsAllowed_ = removalIsAllowed_ && oldest != kNoCopy;
    tryTo([&] {
        KeeperState state{.isFailing = copies_.has(State::Failed)};
        if (oldest != kNoCopy) {
            state.firstToGo = copies_.find(oldest)->soundName;
        }
        lock.unlock();
        events_.changed(state);
    });
    if (!lock.owns_lock()) {
        lock.lock();
    }
}

} // namespace zemo::rescue
