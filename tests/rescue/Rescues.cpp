#include "Rescues.h"

#include <cstdlib>

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
    if (openByExtension(FileUrl(file), false).status == "KO") {
        return {};
    }
    return {fBuffer.load(), fBuffer.load() + fBuffersize.load()};
}

std::vector<fs::path> RescueTest::copies() const {
    return rescueCopies(root_);
}

bool RescueTest::isRootEmpty() const {
    return !fs::exists(root_) || fs::is_empty(root_);
}

rescue::RescueEvents Told::events() {
    return {.found =
                [this](std::vector<rescue::RescueFolder> folders) {
                    const std::lock_guard lock(mutex);
                    found = std::move(folders);
                },
            .kept =
                [this](bool isKept) {
                    const std::lock_guard lock(mutex);
                    kept.push_back(isKept);
                }};
}

std::vector<bool> Told::keptSoFar() {
    const std::lock_guard lock(mutex);
    return kept;
}

std::vector<rescue::RescueFolder> Told::takeFound() {
    const std::lock_guard lock(mutex);
    return std::move(found);
}

} // namespace zemo::test
