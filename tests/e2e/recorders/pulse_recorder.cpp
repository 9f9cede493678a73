// pulse_recorder PARENT RATE PIPE FILE: records what a sink of PulseAudio writes into a pipe,
// 32-bit floats, channel beside channel.
//
// The sink plays when there is room in the pipe, so its clock is whoever reads from it. A sink that
// has nothing although all sleep is at rest, which is silence. SIGUSR1 makes the periods twice
// as long, and again as long as before.
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "Pace.h"

namespace {

constexpr std::uint32_t kFrames = 1024; // two pages of memory; a pipe has whole ones
constexpr std::size_t kFrameBytes = 2 * sizeof(float);

std::atomic<bool> changed{false};

} // namespace

int main(int count, char** words) {
    if (count != 5) {
        return 2;
    }
    const int pipe = open(words[3], O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    std::FILE* file = std::fopen(words[4], "wb");
    if (pipe < 0 || file == nullptr) {
        return 1;
    }
    std::signal(SIGUSR1, [](int) { changed = !changed; });
    zemo::recorders::Pace pace(static_cast<std::uint32_t>(std::atoi(words[2])),
                               std::atoi(words[1]));
    std::vector<char> heard;
    while (true) {
        const std::uint32_t frames = changed ? 2 * kFrames : kFrames;
        // One that is longer than the pipe's new length stays as it is until it has been read.
        static_cast<void>(fcntl(pipe, F_SETPIPE_SZ, frames * kFrameBytes));
        pace.waitAndTick(frames);
        heard.assign(frames * kFrameBytes, 0);
        const ssize_t got = read(pipe, heard.data(), heard.size());
        std::fwrite(heard.data(), 1, got > 0 ? static_cast<std::size_t>(got) : heard.size(), file);
        std::fflush(file);
    }
}
