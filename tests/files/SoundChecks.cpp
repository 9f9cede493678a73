#include "files_test/SoundChecks.h"

#include <malloc.h>

#include <algorithm>
#include <cstring>

#include "playback/SharedState.h"

namespace zemo::test {
namespace {

std::vector<std::uint32_t> words(const float* samples, std::int64_t count) {
    std::vector<std::uint32_t> result(static_cast<std::size_t>(count));
    if (count > 0) {
        std::memcpy(result.data(), samples, result.size() * sizeof(float));
    }
    return result;
}

} // namespace

std::vector<std::uint32_t> soundWords() {
    return words(fBuffer.load(), fBuffersize.load());
}

bool slackIsZero() {
    const auto slack = words(fBuffer.load() + fBuffersize.load(), kSlackSamples);
    return std::all_of(slack.begin(), slack.end(), [](std::uint32_t word) { return word == 0; });
}

void dirtyFreshMemory() {
    mallopt(M_PERTURB, 0x55);
}

} // namespace zemo::test
