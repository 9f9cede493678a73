#include "KeptCopy.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <utility>

#include "platform/Services.h"
#include "support/RescueCopies.h"

namespace zemo::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// The samples are the last that stands in the file, as they are in memory.
bool endsWith(const fs::path& file, const Samples& samples) {
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(stream), {});
    const std::size_t size = samples.size() * sizeof(float);
    return bytes.size() > size &&
           std::memcmp(bytes.data() + bytes.size() - size, samples.data(), size) == 0;
}

} // namespace

StressedDisk::StressedDisk(platform::FileSystem& memory) : memory_(memory) {
    std::string name = fs::temp_directory_path() / "zemo-stress-XXXXXX";
    folder_ = ::mkdtemp(name.data());
    platform::services().fileSystem = this;
    platform::services().fileOperations = &operations_;
}

StressedDisk::~StressedDisk() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

std::unique_ptr<platform::FileStream> StressedDisk::openForReading(const std::string& path,
                                                                   int& error) {
    const bool isHere = path.starts_with(folder_.string());
    return isHere ? posix_.openForReading(path, error) : memory_.openForReading(path, error);
}

KeptCopy::KeptCopy(fs::path root)
    : root_(std::move(root)),
      keeper_(root_, {.found = [](const auto&) {},
                      .changed =
                          [this](const rescue::KeeperState& state) {
                              if (state.isFailing) {
                                  hasFailed_ = true;
                              }
                          },
                      .gone = [](auto) {}}) {}

void KeptCopy::keep(const Samples& sound) {
    const rescue::CopyNumber before = copy_;
    kept_ = sound;
    copy_ = sound.empty() ? rescue::kNoCopy : keeper_.keep(HeldSound::take(), "bell.caf");
    keeper_.drop(before);
}

void KeptCopy::drop() {
    keeper_.drop(std::exchange(copy_, rescue::kNoCopy));
}

std::string KeptCopy::wrong() {
    keeper_.finish(60s);
    if (keeper_.isBusy()) {
        return "the keeper of the rescue copy does not come to rest";
    }
    if (hasFailed_) {
        return "a rescue copy could not be written";
    }
    const std::vector<fs::path> found = rescueCopies(root_);
    const bool isKept = copy_ != rescue::kNoCopy;
    if (found.size() != (isKept ? 1U : 0U)) {
        return std::to_string(found.size()) + " rescue copies";
    }
    return !isKept || endsWith(found[0], kept_) ? "" : "the rescue copy is not the sound";
}

} // namespace zemo::test
