#include "Rescues.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "files/AudioFileReader.h"
#include "files/SoundLoader.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/RescueCopies.h"

namespace zemo::test {

namespace fs = std::filesystem;

RescueTest::RescueTest() {
    std::string name = fs::temp_directory_path() / "zemo-rescue-XXXXXX";
    folder_ = ::mkdtemp(name.data());
    root_ = folder_ / "zemo" / "rescue";
    platform::services().fileOperations = &operations_;
    platform::services().fileSystem = &fileSystem_;
    R = 48000.0;
}

RescueTest::~RescueTest() {
    emptyBuffer();
    fs::permissions(folder_, fs::perms::owner_all);
    fs::remove_all(folder_);
}

void RescueTest::makeSound(std::int64_t count, float sample) {
    SampleBlock samples = allocateSamples(count);
    std::fill_n(samples.get(), count, sample);
    replaceBuffer(std::move(samples), count);
}

std::vector<float> RescueTest::read(const fs::path& file) {
    SampleBlock before = heldSound();
    const std::int64_t count = fBuffersize.load();
    std::vector<float> samples;
    if (openByExtension(FileUrl(file), false).status != "KO") {
        samples.assign(fBuffer.load(), fBuffer.load() + fBuffersize.load());
        replaceBuffer(std::move(before), count);
    }
    return samples;
}

std::vector<fs::path> RescueTest::copies() const {
    return rescueCopies(root_);
}

std::vector<float> RescueTest::firstSamples() const {
    std::vector<float> samples;
    for (const fs::path& file : copies()) {
        samples.push_back(read(file).at(0));
    }
    std::sort(samples.begin(), samples.end());
    return samples;
}

bool RescueTest::isRootEmpty() const {
    return !fs::exists(root_) || fs::is_empty(root_);
}

rescue::RescueEvents Told::events() {
    return {.found =
                [this](std::vector<rescue::FoundCopy> copies) {
                    const std::lock_guard lock(mutex);
                    found = std::move(copies);
                },
            .changed =
                [this](const rescue::KeeperState& state) {
                    const std::lock_guard lock(mutex);
                    states.push_back(state);
                },
            .gone =
                [this](rescue::CopyNumber copy) {
                    const std::lock_guard lock(mutex);
                    gone.push_back(copy);
                }};
}

rescue::KeeperState Told::lastState() {
    const std::lock_guard lock(mutex);
    return states.empty() ? rescue::KeeperState() : states.back();
}

std::vector<rescue::FoundCopy> Told::foundSoFar() {
    const std::lock_guard lock(mutex);
    return found;
}

std::vector<rescue::CopyNumber> Told::goneSoFar() {
    const std::lock_guard lock(mutex);
    return gone;
}

} // namespace zemo::test
