#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <sys/types.h>

namespace zemo::recorders {

/// Tells when a sound server and its players have answered everything: all their threads sleep
/// then. A thread that was woken counts as running in /proc from that moment on, however long it
/// waits for a processor, so a busy machine makes the answer come later and not wrong.
///
/// The processes are the children of one parent, the test: servers with all their threads, players
/// with those threads that deal with servers (what a player draws meanwhile does not matter); and
/// the other threads of the recorder itself.
class SleepWatch {
public:
    explicit SleepWatch(pid_t parent) : parent_(parent) {}

    /// Whether there was a moment in this call in which all of them slept. A stopped process
    /// sleeps.
    bool allAsleep() const;

    /// Whether one of them is stopped, by SIGSTOP.
    bool anyStopped() const;

private:
    struct Thread {
        pid_t id;
        char state;             // as in /proc: R runs, S sleeps, D waits for a disk, T is stopped
        std::uint64_t switches; // how often it has left a processor
        bool operator==(const Thread&) const = default;
    };

    static Thread lookAt(pid_t id, const std::string& task);
    std::vector<pid_t> children() const;
    std::vector<Thread> look() const;

    pid_t parent_;
};

} // namespace zemo::recorders
