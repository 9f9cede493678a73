#include "SleepWatch.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>

#include <unistd.h>

namespace zemo::recorders {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 4> kServers{"pulseaudio", "jackd", "pipewire",
                                                   "pipewire-pulse"};
constexpr std::array<std::string_view, 2> kPlayers{"zemo", "zemo-batch"};
// PulseAudio's client names its thread so; calls to servers, and JACK's threads, have the other
// name.
constexpr std::array<std::string_view, 2> kPlayersThreads{"threaded-ml", "zemo-server"};

template <std::size_t N>
bool isOneOf(std::string_view name, const std::array<std::string_view, N>& of) {
    return std::find(of.begin(), of.end(), name) != of.end();
}

// Whatever ends meanwhile has no files any more: then these are empty.
std::string firstLine(const fs::path& path) {
    std::string line;
    std::ifstream file(path);
    std::getline(file, line);
    return line;
}

std::vector<pid_t> numbersIn(const fs::path& folder) {
    std::vector<pid_t> numbers;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename();
        pid_t number = 0;
        if (std::from_chars(name.data(), name.data() + name.size(), number).ec == std::errc{}) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

fs::path tasksOf(pid_t process) {
    return fs::path("/proc") / std::to_string(process) / "task";
}

} // namespace

std::vector<pid_t> SleepWatch::children() const {
    std::vector<pid_t> found;
    for (const pid_t thread : numbersIn(tasksOf(parent_))) {
        std::istringstream line(firstLine(tasksOf(parent_) / std::to_string(thread) / "children"));
        for (pid_t child = 0; line >> child;) {
            found.push_back(child);
        }
    }
    return found;
}

SleepWatch::Thread SleepWatch::lookAt(pid_t id, const std::string& task) {
    Thread thread{id, 'X', 0};
    std::ifstream status(task + "/status");
    for (std::string key; status >> key;) {
        if (key == "State:") {
            status >> thread.state;
        } else if (key.ends_with("ctxt_switches:")) {
            std::uint64_t switches = 0;
            status >> switches;
            thread.switches += switches;
        }
    }
    return thread;
}

std::vector<SleepWatch::Thread> SleepWatch::look() const {
    std::vector<Thread> threads;
    const auto lookAtThreads = [&](pid_t process, const auto& isWatched) {
        for (const pid_t id : numbersIn(tasksOf(process))) {
            const std::string task = tasksOf(process) / std::to_string(id);
            if (isWatched(id, task)) {
                threads.push_back(lookAt(id, task));
            }
        }
    };
    lookAtThreads(getpid(), [](pid_t id, const std::string&) { return id != gettid(); });
    for (const pid_t process : children()) {
        const std::string name = firstLine(fs::path("/proc") / std::to_string(process) / "comm");
        if (isOneOf(name, kServers)) {
            lookAtThreads(process, [](pid_t, const std::string&) { return true; });
        } else if (isOneOf(name, kPlayers)) {
            lookAtThreads(process, [](pid_t, const std::string& task) {
                return isOneOf(firstLine(task + "/comm"), kPlayersThreads);
            });
        }
    }
    return threads;
}

// A thread that sleeps in both looks and has not run in between slept from the one to the other.
// The first look is over before the second begins: in the moment between the two all slept.
bool SleepWatch::allAsleep() const {
    const std::vector<Thread> first = look();
    return std::all_of(
               first.begin(), first.end(),
               [](const Thread& thread) { return thread.state != 'R' && thread.state != 'D'; }) &&
           look() == first;
}

bool SleepWatch::anyStopped() const {
    const std::vector<Thread> threads = look();
    return std::any_of(threads.begin(), threads.end(),
                       [](const Thread& thread) { return thread.state == 'T'; });
}

} // namespace zemo::recorders
