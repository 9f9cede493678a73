#include <algorithm>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

#include "platform_linux/LinuxServices.h"

namespace zemo::platform {
namespace {

/// More would only wait for the memory, and each has its scratch space.
constexpr unsigned kMostWorkers = 16;

} // namespace

ThreadWorkers::ThreadWorkers(unsigned count)
    : count_(
          std::clamp(count > 0 ? count : std::thread::hardware_concurrency(), 1U, kMostWorkers)) {}

void ThreadWorkers::run(unsigned most, const Work& work) {
    std::vector<std::jthread> others;
    try {
        others.reserve(count_);
        for (unsigned worker = 1; worker < std::min(most, count_); ++worker) {
            others.emplace_back(work, worker);
        }
    } catch (const std::system_error&) { // no more threads: those that there are do it
    } catch (const std::bad_alloc&) {
    }
    work(0);
}

} // namespace zemo::platform
