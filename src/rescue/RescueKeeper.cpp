#include "rescue/RescueKeeper.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <exception>
#include <new>
#include <system_error>
#include <utility>

namespace zemo::rescue {
namespace {

using namespace std::chrono_literals;

constexpr auto kLastPatience = 60s;

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

} // namespace

RescueKeeper::RescueKeeper(std::filesystem::path root, RescueEvents events)
    : root_(std::move(root)), events_(std::move(events)) {
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
    changed_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

/// A copy under way is left off: whatever is ordered now comes in its place.
template <typename Change> void RescueKeeper::order(Change change) {
    try {
        const std::lock_guard lock(mutex_);
        change();
        busy_ = thread_.joinable();
    } catch (const std::bad_alloc&) {
        return events_.kept(false);
    }
    changed_.notify_all();
    if (!thread_.joinable()) {
        events_.kept(false);
    }
}

void RescueKeeper::keep(const HeldSound& sound, const std::string& name) {
    order([&] {
        orders_.wanted = {sound, name};
        if (progress_ != nullptr) {
            progress_->requestStop();
        }
    });
}

void RescueKeeper::drop() {
    keep({}, {});
}

void RescueKeeper::adopt(RescueFolder folder) {
    order([&] {
        orders_.adopted = std::move(folder);
        orders_.wanted.reset();
        if (progress_ != nullptr) {
            progress_->requestStop();
        }
    });
}

void RescueKeeper::discard(RescueFolder folder) {
    order([&] { orders_.discarded.push_back(std::move(folder)); });
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

void RescueKeeper::run() {
    threadId_ = thisThread();
    tellOfAbandoned();
    stepBack();
    std::unique_lock lock(mutex_);
    while (true) {
        busy_ = orders_.any();
        changed_.wait(lock, [this] { return ending_ || orders_.any(); });
        if (ending_) {
            return;
        }
        Orders orders = std::exchange(orders_, {});
        platform::Progress progress;
        progress_ = &progress;
        lock.unlock();
        const platform::ProgressScope scope(&progress);
        carryOut(std::move(orders));
        lock.lock();
        progress_ = nullptr;
    }
}

void RescueKeeper::tellOfAbandoned() {
    try {
        if (auto found = RescueFolder::takeAbandoned(root_); !found.empty()) {
            events_.found(std::move(found));
        }
    } catch (const std::exception&) { // no memory: they stay for the next program
    }
}

void RescueKeeper::carryOut(Orders orders) {
    if (orders.adopted) {
        folder_ = std::move(orders.adopted);
    }
    for (RescueFolder& folder : orders.discarded) {
        folder.remove();
    }
    if (!orders.wanted) {
        return;
    }
    if (!orders.wanted->sound.empty()) {
        const bool done = write(*orders.wanted);
        if (!platform::isStopRequested()) {
            events_.kept(done);
        }
    } else if (folder_) {
        folder_->remove();
        folder_.reset();
    }
}

bool RescueKeeper::write(const WantedCopy& wanted) {
    try {
        if (!folder_) {
            folder_ = RescueFolder::make(root_);
        }
        if (!folder_) {
            return false;
        }
        const std::filesystem::path file = folder_->fileFor(wanted.name);
        if (!writeExactCopy(file, wanted.sound).done()) {
            return false;
        }
        folder_->removeCopiesBut(file);
        return true;
    } catch (const std::exception&) { // for want of memory
        return false;
    }
}

} // namespace zemo::rescue
