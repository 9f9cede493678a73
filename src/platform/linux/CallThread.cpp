#include "platform_linux/CallThread.h"

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>

#include <pthread.h>

namespace zemo::platform {
namespace {

using namespace std::chrono_literals;

constexpr const char* kThreadName = "zemo-server"; // 15 letters at most
constexpr auto kLastPatience = 300ms;

constinit std::atomic<int> threads{0};

} // namespace

struct CallThread::Queue {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> calls;
    bool closed = false;
};

CallThread::CallThread() : queue_(std::make_shared<Queue>()) {
    threads.fetch_add(1);
    try {
        std::thread([queue = queue_]() mutable {
            // A server's library starts its threads from here, and they take this name over.
            pthread_setname_np(pthread_self(), kThreadName);
            serve(*queue);
            queue.reset();
            threads.fetch_sub(1);
        }).detach();
    } catch (const std::system_error&) { // no more threads: as if every call hung
        threads.fetch_sub(1);
    }
}

CallThread::~CallThread() {
    const std::lock_guard lock(queue_->mutex);
    queue_->closed = true;
    queue_->changed.notify_one();
}

void CallThread::post(std::function<void()> call) {
    const std::lock_guard lock(queue_->mutex);
    queue_->calls.push_back(std::move(call));
    queue_->changed.notify_one();
}

void CallThread::serve(Queue& queue) {
    std::unique_lock lock(queue.mutex);
    while (true) {
        queue.changed.wait(lock, [&] { return queue.closed || !queue.calls.empty(); });
        if (queue.calls.empty()) {
            return;
        }
        std::function<void()> call = std::move(queue.calls.front());
        queue.calls.pop_front();
        lock.unlock();
        call();
        call = nullptr; // what it holds is released on this thread, and without the lock
        lock.lock();
    }
}

int CallThread::alive() noexcept {
    return threads.load();
}

bool CallThread::awaitAll(std::chrono::milliseconds patience) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (alive() > 0) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

int leaveHungCallsBehind(int status) {
    if (!CallThread::awaitAll(kLastPatience)) {
        static_cast<void>(std::fflush(nullptr));
        std::_Exit(status);
    }
    return status;
}

} // namespace zemo::platform
